// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/debuglog.h"
#include "views/rulers.h"
#include "views/selectionoutline.h"
#include "views/snapping.h"
#include "views/testhost.h"

#include <QPainter>
#include <QtTest>

#include <gtest/gtest.h>

#include <random>

namespace
{
/// An outline as it is drawn, on transparency.
QImage drawn(SelectionOutline *outline, QSize size, const DashLook &look = {})
{
    QImage out(size, QImage::Format_ARGB32_Premultiplied);
    out.fill(Qt::transparent);
    QPainter painter(&out);
    outline->draw(&painter, look);
    return out;
}
} // namespace

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

TEST(Outline, SurroundsTheSelectionAndNothingElse)
{
    const struct {
        const char *fault;
        ViewGeometry view;
        uint32_t clearOf; ///< one in so many samples is not selected, 0 for none
        uint16_t high, low;
        int line;
    } rows[] = {{"ragged", {0.4, 0.6, -3, 7, 200, 90}, 4, 65535, 0, 1},
                {"rows of one piece", {0.4, 0.6, -3, 7, 200, 90}, 80, 32768, 32767, 1},
                {"two pixels thick", {0.2, 0.3, -3, 7, 200, 90}, 80, 65535, 0, 2},
                {"whole and weak, at its edges", {0.6, 0.5, 0, 0, 100, 100}, 0, 9, 0, 2},
                {"whole within", {0.3, 0.5, -9, -9, 250, 150}, 0, 65535, 0, 3},
                {"one column", {100, 0.5, 0, 0, 1, 100}, 0, 65535, 0, 1}};
    TestHost host;
    const auto img = plainImage(60, 50, 0, 0, 0);
    std::mt19937 random(5);
    SelectionOutline outline;
    for (const auto &row : rows) {
        const ViewGeometry &view = row.view;
        for (int64_t i = 0; i < img->sampleCount(); ++i)
            img->gmask[i] = row.clearOf == 0 || random() % row.clearOf ? row.high : row.low;
        const auto selected = [&](int px, int py) {
            const double x = px * view.xStep + view.panX, y = py * view.yStep + view.panY;
            return x >= 0 && y >= 0 && x < 60 && y < 50 && img->maskAt(int(x), int(y)) == row.high;
        };
        ASSERT_TRUE(outline.trace(*img, view, row.line)) << row.fault;
        const QImage shown = drawn(&outline, {view.width, view.height});
        int wrong = 0;
        for (int i = 0; i < view.width * view.height; ++i) {
            const int x = i % view.width, y = i / view.width;
            bool inner = true;
            for (int away = 1; away <= row.line; ++away)
                inner = inner && selected(x - away, y) && selected(x + away, y) &&
                        selected(x, y - away) && selected(x, y + away);
            wrong += (selected(x, y) && !inner) != (qAlpha(shown.pixel(x, y)) != 0);
        }
        EXPECT_EQ(wrong, 0) << row.fault;
    }
    img->fillGmask(9);
    img->gmask[0] = 32768; // strong there, so that the rest is only its weak surroundings
    EXPECT_FALSE(outline.trace(*img, {1, 1, 20, 20, 30, 20}, 1));
    img->fillGmask(0);
    EXPECT_FALSE(outline.trace(*img, rows[0].view, 1));
    EXPECT_FALSE(outline.trace(image(), rows[0].view, 1));
}

TEST(Outline, EveryEdgeShowsBothColoursAndMoves)
{
    TestHost host;
    host.aSelectColor = QStringLiteral("#102030 #ffeedd");
    host.dashLength = 3;
    DashLook look = dashLook(2.0);
    EXPECT_EQ(look, (DashLook{0xFF102030, 0xFFFFEEDD, 6, 2, 0}));
    const auto img = plainImage(80, 80, 0, 0, 0);
    const ViewGeometry view{1, 1, 0, 0, 80, 80};
    look.dash = 4;
    // each edge runs through the middle, in direction (dx, dy)
    for (const QPoint way : {QPoint(1, 0), QPoint(0, 1), QPoint(1, 1), QPoint(1, -1)}) {
        for (int i = 0; i < 80 * 80; ++i)
            img->gmask[i] = (i % 80 - 40) * way.y() - (i / 80 - 40) * way.x() > 0 ? 65535 : 0;
        SelectionOutline outline;
        ASSERT_TRUE(outline.trace(*img, view, 1));
        const QImage still = drawn(&outline, {80, 80}, look);
        look.phase += look.dash;
        const QImage moved = drawn(&outline, {80, 80}, look);
        int first = 0, second = 0, turned = 0;
        for (int i = 10 * 80; i < 70 * 80; ++i) {
            const int x = i % 80, y = i / 80;
            if (x < 10 || x >= 70)
                continue;
            first += still.pixel(x, y) == look.first;
            second += still.pixel(x, y) == look.second;
            turned += still.pixel(x, y) != moved.pixel(x, y);
        }
        EXPECT_GE(first + second, 58);
        EXPECT_LE(std::abs(first - second), 2 * look.dash) << way.x() << way.y();
        EXPECT_EQ(turned, first + second);
        EXPECT_EQ(outline.traceCount(), 1);
    }
    const struct {
        const char *colours;
        int length, dash;
        uint32_t first;
    } rows[] = {{"#102030", 1, 4, 0xFF000000},
                {"#102030 red", 2, 2, 0xFF000000},
                {"#10203x #ffffff", 20, 20, 0xFF000000},
                {"#ffffff #000000", 21, 20, 0xFFFFFFFF}};
    for (const auto &row : rows) {
        host.aSelectColor = QLatin1String(row.colours);
        host.dashLength = row.length;
        EXPECT_EQ(dashLook(1.0).dash, row.dash);
        EXPECT_EQ(dashLook(1.0).first, row.first) << row.colours;
    }
}

TEST_F(Overlay, OutlineMarchesOnlyWhereThePersonWorks)
{
    const auto moving = [this] { return window->grab(), window->outlineMarch().running(); };
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    EXPECT_FALSE(moving()) << "nothing is selected";
    for (int i = 0; i < 100; ++i)
        img->gmask[50 * 400 + 50 + i] = 65535;
    window->refreshOverlay();
    ASSERT_TRUE(moving());
    const int traced = window->outlineShown().traceCount(), rendered = window->renderCount();
    const QImage before = window->grab().toImage();
    EXPECT_TRUE(QTest::qWaitFor([&] { return window->grab().toImage() != before; }, 2000));
    EXPECT_EQ(window->outlineShown().traceCount(), traced);
    EXPECT_EQ(window->renderCount(), rendered);
    host.marchingOutline = false;
    EXPECT_FALSE(moving());
    host.marchingOutline = true;
    window->gesture.rubberBand = true;
    EXPECT_FALSE(moving());
    window->gesture.rubberBand = false;
    EXPECT_TRUE(moving());
    imgWindow *other = host.show(img, {200, 100});
    EXPECT_FALSE(moving()) << "another is the current one";
    EXPECT_NE(other->grab().toImage().pixel(40, 25), shown(0, 0)) << "still, but drawn";
    host.makeCurrent(window);
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitFor(moving, 2000));
    window->hide();
    EXPECT_FALSE(window->outlineMarch().running());
    window->showMinimized();
    EXPECT_FALSE(moving());
}
