// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/debuglog.h"
#include "views/testhost.h"
#include "views/viewrender.h"

#include <QGuiApplication>
#include <QScreen>
#include <QtTest>

#include <gtest/gtest.h>

#include <cmath>

struct ZoomCase {
    const char *fault;
    int steps, unity, presets;
};
class ZoomTable : public testing::TestWithParam<ZoomCase>
{
};

TEST_P(ZoomTable, HoldsPowersOfTwo)
{
    TestHost host;
    const ZoomCase &row = GetParam();
    host.zoomSteps = row.steps;
    imgWindow *window = host.show(host.keep(plainImage(40, 30, 0, 0, 0)));
    EXPECT_FLOAT_EQ(window->zooms[0], 0.0009765625F);
    EXPECT_EQ(window->unityIndex, row.unity);
    EXPECT_EQ(window->zoomIndex, row.unity);
    EXPECT_EQ(window->zooms[row.unity], 1.0F);
    EXPECT_FLOAT_EQ(window->zooms[row.unity + row.steps], 2.0F);
    EXPECT_EQ(window->presetZooms.size(), row.presets);
    EXPECT_EQ(window->presetZooms[1], row.steps);
    EXPECT_TRUE(std::isfinite(window->zooms[kZoomsFilled - 1]));
    EXPECT_EQ(window->zooms[kZoomsFilled], 0.0F);
}
INSTANTIATE_TEST_SUITE_P(Steps, ZoomTable,
                         testing::Values(ZoomCase{"One", 1, 10, 502}, ZoomCase{"Four", 4, 40, 126},
                                         ZoomCase{"RoundingLosesUnity", 7, 70, 72},
                                         ZoomCase{"Most", 32, 320, 16}),
                         [](const auto &test) { return test.param.fault; });

TEST(Coordinates, FollowZoomAndPan)
{
    TestHost host;
    imgWindow *window = host.show(host.keep(plainImage(400, 200, 0, 0, 0)), {200, 100});
    window->panX = 10;
    window->panY = -4;
    window->zoom = 4.0F; // half a sample for each pixel
    EXPECT_EQ(window->windowToImage(30, 20), QPointF(25, 6));
    EXPECT_EQ(window->scaleToImage(30, 20), QPointF(15, 10));
    EXPECT_EQ(window->windowToSample(31, 20), QPoint(26, 6));
    EXPECT_EQ(window->imageToWindow({25.3, 6}), QPoint(30, 20));
    EXPECT_EQ(window->imageToWindow({-1e18, 1e18}), QPoint(-(1 << 30), 1 << 30));
}

TEST(Coordinates, TroubleGivesZeroAndALine)
{
    TestHost host;
    image *img = host.keep(plainImage(40, 30, 0, 0, 0));
    imgWindow *window = host.show(img);
    const auto said = [window]() {
        takeDebugLines();
        EXPECT_EQ(window->imageToWindow({5, 5}), QPoint(0, 0));
        EXPECT_EQ(window->windowToImage(5, 5), QPointF(0, 0));
        return takeDebugLines();
    };
    window->img = nullptr;
    EXPECT_EQ(said(), QStringList({"imageToWindow has null image pointer, forcing 0,0",
                                   "windowToImage has null image pointer, forcing 0,0"}));
    window->img = img;
    window->zoom = 0;
    EXPECT_EQ(said(), QStringList({"imageToWindow has zero zoom, forcing 0,0",
                                   "windowToImage has zero zoom, forcing 0,0"}));
    window->zoom = 1;
    window->hide();
    window->resize(0, 0);
    EXPECT_EQ(said(), QStringList({"wxw = 0, forcing 0,0", "wxw = 0, forcing 0,0"}));
    window->resize(80, 60);
    const int width = img->width, height = img->height;
    img->width = 0;
    EXPECT_EQ(said(), QStringList({"xstep = 0, forcing 0,0", "xstep = 0, forcing 0,0"}));
    img->width = width;
    img->height = 0;
    EXPECT_EQ(said(), QStringList({"ystep = 0, forcing 0,0", "ystep = 0, forcing 0,0"}));
    img->height = height;
}

struct FitCase {
    const char *fault;
    int width, height, xDpi, yDpi;
};
class Fit : public testing::TestWithParam<FitCase>
{
};

TEST_P(Fit, TakesTheLargestPresetOnTheDesktop)
{
    TestHost host;
    const FitCase &row = GetParam();
    image *img = host.keep(plainImage(row.width, row.height, 0, 0, 0));
    img->xDpi = row.xDpi;
    img->yDpi = row.yDpi;
    const imgWindow *window = host.show(img);
    const QSize room = QGuiApplication::primaryScreen()->availableSize();
    const double aspect = row.width / (row.height * (double(row.xDpi) / row.yDpi));
    double scale = 0.0009765625;
    while (row.width * scale * 2 <= room.width() && row.width * scale * 2 / aspect <= room.height())
        scale *= 2;
    const int wide = std::max(80, int(row.width * scale));
    EXPECT_EQ(window->size(), QSize(wide, int(wide / aspect)));
}
INSTANTIATE_TEST_SUITE_P(Images, Fit,
                         testing::Values(FitCase{"Photograph", 6000, 4000, 300, 300},
                                         FitCase{"Icon", 16, 16, 300, 300},
                                         FitCase{"UnequalDpi", 300, 300, 300, 150},
                                         FitCase{"Upright", 100, 700, 72, 72}),
                         [](const auto &test) { return test.param.fault; });

TEST(Fit, ExtremeSizesStayOnTheDesktop)
{
    TestHost host;
    const imgWindow *thread = host.show(host.keep(plainImage(1, 32767, 0, 0, 0)));
    EXPECT_EQ(thread->width(), 80);
    EXPECT_LE(thread->height(), QGuiApplication::primaryScreen()->availableSize().height());
    imgWindow *line = host.show(host.keep(plainImage(32767, 1, 0, 0, 0)));
    EXPECT_GE(line->height(), 1);
    line->showAt(10.0);
    EXPECT_LE(line->width(), 32767);
}

TEST(Fit, ShowAtTakesTheImageSize)
{
    TestHost host;
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
