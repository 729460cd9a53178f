// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/debuglog.h"
#include "views/testhost.h"
#include "views/viewrender.h"

#include <QGuiApplication>
#include <QScreen>
#include <QtTest>

#include <gtest/gtest.h>

#include <cmath>

TEST(ZoomTable, HoldsPowersOfTwo)
{
    for (const int steps : {1, 4, 7, 32}) { // where rounding could lose unity
        SCOPED_TRACE(steps);
        TestHost host;
        host.zoomSteps = steps;
        imgWindow *window = host.show(host.keep(plainImage(40, 30, 0, 0, 0)));
        const int unity = window->unityIndex;
        EXPECT_EQ(unity, steps * 10);
        EXPECT_EQ(window->zoomIndex, unity);
        EXPECT_FLOAT_EQ(window->zooms[0], 0.0009765625F);
        EXPECT_EQ(window->zooms[unity], 1.0F);
        EXPECT_FLOAT_EQ(window->zooms[unity + steps], 2.0F);
        EXPECT_EQ(window->presetZooms.size(), kZoomsFilled / steps + (kZoomsFilled % steps != 0));
        EXPECT_EQ(window->presetZooms[1], steps);
        EXPECT_TRUE(std::isfinite(window->zooms[kZoomsFilled - 1]));
        EXPECT_EQ(window->zooms[kZoomsFilled], 0.0F);
    }
}

TEST(Coordinates, FollowZoomAndPanOrSayWhyNot)
{
    TestHost host;
    image *img = host.keep(plainImage(400, 200, 0, 0, 0));
    imgWindow *window = host.show(img, {200, 100});
    window->panX = 10;
    window->panY = -4;
    window->zoom = 4.0F; // half a sample for each pixel
    EXPECT_EQ(window->windowToImage(30, 20), QPointF(25, 6));
    EXPECT_EQ(window->scaleToImage(30, 20), QPointF(15, 10));
    EXPECT_EQ(window->windowToSample(31, 20), QPoint(26, 6));
    EXPECT_EQ(window->imageToWindow({25.3, 6}), QPoint(30, 20));
    EXPECT_EQ(window->imageToWindow({-1e18, 1e18}), QPoint(-(1 << 30), 1 << 30));
    int nothing = 0;
    const auto expectSaid = [window](const QStringList &lines) {
        takeDebugLines();
        EXPECT_EQ(window->imageToWindow({5, 5}), QPoint(0, 0));
        EXPECT_EQ(window->windowToImage(5, 5), QPointF(0, 0));
        EXPECT_EQ(takeDebugLines(), lines);
    };
    window->img = nullptr;
    expectSaid({"imageToWindow has null image pointer, forcing 0,0",
                "windowToImage has null image pointer, forcing 0,0"});
    window->img = img;
    window->zoom = 0;
    expectSaid(
        {"imageToWindow has zero zoom, forcing 0,0", "windowToImage has zero zoom, forcing 0,0"});
    window->zoom = 1;
    window->hide();
    window->resize(0, 0);
    expectSaid({"wxw = 0, forcing 0,0", "wxw = 0, forcing 0,0"});
    window->resize(80, 60);
    std::swap(img->width, nothing);
    expectSaid({"xstep = 0, forcing 0,0", "xstep = 0, forcing 0,0"});
    std::swap(img->width, nothing);
    std::swap(img->height, nothing);
    expectSaid({"ystep = 0, forcing 0,0", "ystep = 0, forcing 0,0"});
    std::swap(img->height, nothing);
}

TEST(Fit, TakesTheLargestPresetOnTheDesktop)
{
    const int rows[][4] = {
        {6000, 4000, 300, 300}, {16, 16, 300, 300}, {300, 300, 300, 150}, {100, 700, 72, 72}};
    TestHost host;
    const QSize room = QGuiApplication::primaryScreen()->availableSize();
    for (const auto &[width, height, xDpi, yDpi] : rows) {
        image *img = host.keep(plainImage(width, height, 0, 0, 0));
        img->xDpi = xDpi;
        img->yDpi = yDpi;
        const double aspect = width / (height * (double(xDpi) / yDpi));
        double scale = 0.0009765625;
        while (width * scale * 2 <= room.width() && width * scale * 2 / aspect <= room.height())
            scale *= 2;
        const int wide = std::max(80, int(width * scale));
        EXPECT_EQ(host.show(img)->size(), QSize(wide, int(wide / aspect))) << width;
    }
}

TEST(Fit, ExtremeAndChosenSizes)
{
    TestHost host;
    const imgWindow *thread = host.show(host.keep(plainImage(1, 32767, 0, 0, 0)));
    EXPECT_EQ(thread->width(), 80);
    EXPECT_LE(thread->height(), QGuiApplication::primaryScreen()->availableSize().height());
    imgWindow *line = host.show(host.keep(plainImage(32767, 1, 0, 0, 0)));
    EXPECT_GE(line->height(), 1);
    line->showAt(10.0);
    EXPECT_LE(line->width(), 32767);
    imgWindow *window = host.show(host.keep(plainImage(120, 90, 0, 0, 0)));
    EXPECT_EQ(window->sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
    window->ona3to1triggered();
    EXPECT_EQ(window->size(), QSize(360, 270));
    window->ona1to4triggered();
    EXPECT_EQ(window->size(), QSize(30, 22));
    EXPECT_EQ(imgWindow(window->img).size(), QSize(400, 300));
}

TEST(Fit, ResizingSettlesOnTheAspect)
{
    TestHost host;
    imgWindow *window = host.show(host.keep(plainImage(400, 200, 0, 0, 0)));
    window->resize(300, 290); // a corner: the width counts
    EXPECT_TRUE(QTest::qWaitFor([window]() { return window->size() == QSize(300, 150); }));
    window->resize(300, 200); // the lower edge: the height counts
    EXPECT_TRUE(QTest::qWaitFor([window]() { return window->size() == QSize(400, 200); }));
}

TEST(Fit, ASizeThatIsGivenKeepsTheAspectWithinIt)
{
    TestHost host;
    image *img = host.keep(plainImage(400, 100, 65535, 65535, 65535));
    imgWindow *window = host.show(img, {200, 50});
    window->command(kCommandFullScreen);
    ASSERT_TRUE(window->isFullScreen());
    const QSize screen = window->size();
    const int high = screen.width() / 4, top = (screen.height() - high) / 2;
    EXPECT_EQ(window->deviceArea(), QRect(0, top, screen.width(), high));
    EXPECT_EQ(window->imageToWindow({400, 100}), QPoint(screen.width(), top + high));
    EXPECT_EQ(window->windowToImage(screen.width() / 2, screen.height() / 2), QPointF(200, 50));
    const QImage seen = window->grab().toImage();
    EXPECT_EQ(seen.pixel(5, top), 0xFFFFFFFF);
    EXPECT_NE(seen.pixel(5, top - 1), 0xFFFFFFFF);
    EXPECT_EQ(seen.pixel(5, top + high - 1), 0xFFFFFFFF);
    EXPECT_NE(seen.pixel(5, top + high), 0xFFFFFFFF);
    window->command(kCommandHalfTurn);
    window->command(kCommandQuarterTurnLeft);
    EXPECT_EQ(window->deviceArea().width(), screen.height() / 4);
    QTest::keyClick(window, Qt::Key_Escape);
    EXPECT_FALSE(window->isFullScreen());
    EXPECT_TRUE(QTest::qWaitFor([&]() { return window->height() / window->width() == 4; }));
}

TEST(Fit, TheWindowManagerMayInsist)
{
    TestHost host;
    imgWindow *window = host.show(host.keep(plainImage(400, 200, 0, 0, 0)), {400, 200});
    const auto settles = [&](QSize size) {
        return QTest::qWaitFor([&]() { return window->size() == size; });
    };
    window->resize(300, 290);
    ASSERT_TRUE(settles({300, 150}));
    window->resize(300, 290); // as at the end of a drag
    ASSERT_TRUE(settles({300, 150}));
    window->resize(300, 290);
    EXPECT_TRUE(QTest::qWaitFor([&]() { return window->deviceArea().top() == 70; }));
    EXPECT_EQ(window->size(), QSize(300, 290));
    window->resize(300, 200); // of his own will again
    EXPECT_TRUE(settles({400, 200}));
}
