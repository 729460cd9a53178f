// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/debuglog.h"
#include "views/rulers.h"
#include "views/snapping.h"
#include "views/testhost.h"

#include <QtTest>

#include <gtest/gtest.h>

TEST(Snapping, NearGuidesThenTheGridThenNothing)
{
    const struct {
        const char *fault;
        QPointF from, to;
        SnapRules rules;
    } rows[] = {{"off", {10.4, -3.6}, {10.4, -3.6}, {}},
                {"the nearer guide", {11.6, 5}, {12, 5}, {{10, 12}, {}, 3, 3}},
                {"each axis by itself", {11, 48}, {11, 50}, {{14}, {50}, 2, 2}},
                {"at the end of its reach", {13, 0}, {10, 0}, {{10}, {}, 3, 3}},
                {"grid where no guide is", {13.1, 13.1}, {10, 16}, {{10}, {}, 4, 4, 8, 8}},
                {"grid set off, below zero", {-9, 13.1}, {-13, 11}, {{}, {}, 0, 0, 16, 10, 3, 1}}};
    for (const auto &row : rows)
        EXPECT_EQ(snapPosition(row.from, row.rules), row.to) << row.fault;
}

TEST(Rulers, ScalesStepBy1And2And5)
{
    const struct {
        double pixels;
        bool whole;
        double major;
        int parts, decimals;
    } rows[] = {{1, true, 100, 10, 0},  {0.1, true, 1000, 10, 0},  {3, true, 20, 10, 0},
                {20, true, 5, 5, 0},    {1000, true, 1, 1, 0},     {300, false, 0.2, 10, 1},
                {118, false, 1, 10, 0}, {5000, false, 0.02, 10, 2}};
    for (const auto &row : rows) {
        const RulerScale scale = rulerScale(row.pixels, 60, 5, row.whole);
        EXPECT_DOUBLE_EQ(scale.major, row.major) << row.pixels;
        EXPECT_EQ(scale.parts, row.parts) << row.pixels;
        EXPECT_EQ(scale.decimals, row.decimals) << row.pixels;
    }
    EXPECT_EQ(samplesPerRulerUnit(1, 300), 300);
    EXPECT_EQ(samplesPerRulerUnit(2, 254), 100);
    EXPECT_EQ(samplesPerRulerUnit(2, 0), 1);
}

class Overlay : public testing::Test
{
protected:
    TestHost host;
    image *img = host.keep(plainImage(400, 200, 32768, 32768, 32768));
    imgWindow *window = host.show(img, {400, 200});

    Overlay() { img->fillGmask(0); }
    void drag(QPoint from, QPoint to)
    {
        QTest::mousePress(window, Qt::LeftButton, {}, from);
        move(to, Qt::LeftButton);
        QTest::mouseRelease(window, Qt::LeftButton, {}, to);
    }
    void move(QPoint to, Qt::MouseButton button = Qt::NoButton)
    {
        QMouseEvent event(QEvent::MouseMove, to, Qt::NoButton, button, {});
        QCoreApplication::sendEvent(window, &event);
    }
    QRgb shown(int x, int y) { return window->grab().toImage().pixel(x, y); }
};

TEST_F(Overlay, GuidesComeOutOfRulersAndGoBack)
{
    const QRgb plain = shown(100, 50);
    drag({5, 80}, {100, 80}); // no rulers: a drag in the picture
    EXPECT_TRUE(img->guidesX.isEmpty());
    window->command(kCommandRulers);
    imgWindow *other = host.show(img, {200, 100});
    host.makeCurrent(window);
    const int rendered = (shown(0, 0), other->grab(), window->renderCount());
    drag({5, 80}, {100, 80});
    drag({150, 5}, {150, 60});
    EXPECT_EQ(img->guidesX, QList<int>{100});
    EXPECT_EQ(img->guidesY, QList<int>{60});
    EXPECT_NE(shown(100, 50), plain);
    EXPECT_NE(shown(300, 60), plain);
    EXPECT_EQ(shown(101, 50), plain);
    EXPECT_NE(other->grab().toImage().pixel(50, 28), plain);
    drag({101, 120}, {120, 120}); // within reach of the guide
    EXPECT_EQ(img->guidesX, QList<int>{120});
    QTest::mousePress(window, Qt::LeftButton, {}, {120, 120});
    move({200, 120}, Qt::LeftButton);
    QTest::keyClick(window, Qt::Key_Escape);
    EXPECT_EQ(img->guidesX, QList<int>{120});
    QTest::mouseRelease(window, Qt::LeftButton, {}, {200, 120});
    drag({120, 120}, {6, 120}); // back into the ruler
    EXPECT_TRUE(img->guidesX.isEmpty());
    drag({5, 80}, {-30, 80}); // never came into the picture
    EXPECT_TRUE(img->guidesX.isEmpty());
    window->command(kCommandGuides);
    EXPECT_EQ(shown(300, 60), plain);
    window->command(kCommandClearGuides);
    EXPECT_TRUE(img->guidesY.isEmpty());
    window->command(kCommandClearGuides);
    EXPECT_EQ(host.statusTexts.last(), "This image has no guides");
    EXPECT_EQ(shown(0, 0) * 0 + window->renderCount(), rendered); // overlays never render
}

TEST_F(Overlay, PositionsSnapAsTheSettingsSay)
{
    window->resize(800, 400); // two pixels for each sample
    img->guidesX << 100;
    const auto at = [this](double x, Qt::KeyboardModifiers keys = {}) {
        return window->snapped({x, 51}, keys);
    };
    EXPECT_EQ(at(102.9), QPointF(100, 51));
    EXPECT_EQ(at(103.5), QPointF(103.5, 51));
    EXPECT_EQ(at(102.9, Qt::AltModifier), QPointF(102.9, 51));
    host.guidesShown = false;
    EXPECT_EQ(at(102.9), QPointF(102.9, 51));
    window->command(kCommandSnapToGrid);
    EXPECT_EQ(at(102.9), QPointF(96, 48));
    host.guidesShown = true;
    EXPECT_EQ(at(102.9), QPointF(100, 48));
    window->command(kCommandSnapToGuides);
    EXPECT_EQ(at(102.9), QPointF(96, 48));
}

TEST_F(Overlay, SnapGridIsShownWhereItIsNotTooFine)
{
    const QRgb plain = shown(35, 35);
    host.snapOffsetX = 3;
    window->command(kCommandSnapGrid);
    EXPECT_NE(shown(35, 35), plain);
    EXPECT_EQ(shown(34, 35), plain);
    EXPECT_NE(shown(34, 48), plain);
    host.snapGridX = 7;
    EXPECT_EQ(shown(38, 35), plain);
}

TEST_F(Overlay, RulersAreDrawnAnewOnlyWhenTheirLookChanges)
{
    window->command(kCommandRulers);
    const QImage with = window->grab().toImage();
    EXPECT_NE(with.pixel(200, 10), shown(200, 100));
    move({150, 100});
    EXPECT_NE(window->grab().toImage().copy(140, 0, 20, 18), with.copy(140, 0, 20, 18));
    window->refresh();
    window->grab();
    EXPECT_EQ(window->rulersShown().drawCount(), 1);
    QTest::mouseClick(window, Qt::LeftButton, {}, {5, 5}); // the corner: another unit
    EXPECT_EQ(host.rulerUnit, 1);
    EXPECT_EQ(host.statusTexts.last(), "Rulers count inches");
    window->grab();
    window->command(kCommandRight);
    window->grab();
    QPalette dark = window->palette();
    dark.setColor(QPalette::Button, Qt::black);
    window->setPalette(dark);
    EXPECT_EQ(shown(300, 2), QColor(Qt::black).rgb());
    EXPECT_EQ(window->rulersShown().drawCount(), 4);
}
