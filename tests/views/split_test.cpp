// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/areastate.h"
#include "core/undo.h"
#include "operators/base/operatortable.h"
#include "operators/pipeline/colorblending.h"
#include "operators/pipeline/random15.h"
#include "operators/table/allops.h"
#include "views/testhost.h"
#include "views/viewrender.h"

#include <QPainter>
#include <QtTest>

#include <gtest/gtest.h>

namespace
{
constexpr int kBurn = 6, kSample = 80, kExposure = 29, kNegative = 62;
constexpr int kCaptionReach = 110; ///< nothing of the border's looks is farther from it

class SplitHost : public TestHost
{
public:
    SplitHost()
    {
        addAllOperators(&table);
        table.currentOp = kExposure;
        table.setParameter("operatorExposure", "60");
        splitView = true;
    }
    OperatorTable *operatorTable() override { return &table; }
    void dropperPicked(image *, const QRect &samples) override { picked << samples; }
    void dropperEnded(bool hasRead) override { ends << hasRead; }

    AreaState area; ///< of the tools
    OperatorTable table;
    colorblending blending;
    QList<QRect> picked;
    QList<bool> ends;
};

class Split : public testing::Test
{
protected:
    SplitHost host;
    image *img = host.keep(randomImage(300, 200, 5));
    imgWindow *window = host.show(img, {600, 400});

    /// What stands in the window before selection, guides and notes are drawn.
    QImage shown()
    {
        window->grab();
        QImage out = window->cache.copy();
        QPainter painter(&out);
        window->split.draw(&painter, out.rect());
        return out;
    }
    ImagePtr twin() const
    {
        ImagePtr copy(undoMakeCopy(img, true));
        copy->copyWorkPlanes(*img);
        return copy;
    }
    /// The picture after an Apply, rendered plainly.
    QImage applied()
    {
        const ImagePtr copy = twin();
        QImage out;
        host.table.prepareAndApply(copy.get(), false);
        renderView(*copy, window->geometryShown(), window->backdropShown(), &out);
        return out;
    }
    int runs() { return window->grab(), window->split.runCount(); }
    void move(QPoint to, Qt::MouseButton button = Qt::NoButton)
    {
        QMouseEvent event(QEvent::MouseMove, to, Qt::NoButton, button, {});
        QCoreApplication::sendEvent(window, &event);
    }
    void drag(QPoint from, QPoint to)
    {
        QTest::mousePress(window, Qt::LeftButton, {}, from);
        move(to, Qt::LeftButton);
        QTest::mouseRelease(window, Qt::LeftButton, {}, to);
    }
    void softSelection()
    {
        img->fillGmask(0);
        for (int i = 60 * 300; i < 150 * 300; ++i)
            if (i % 300 >= 40 && i % 300 < 270)
                img->gmask[i] = uint16_t(65535 - i % 9 * 4000);
        window->refreshOverlay();
    }
};
} // namespace

TEST_F(Split, RightOfTheBorderStandsWhatApplyMakes)
{
    const struct {
        const char *fault;
        int op, blendMode, curve;
        double amplitude;
        bool inverted;
        double zoom;
        QPoint pan;
    } rows[] = {{"plain", kExposure, 0, 1, 1.0, false, 1, {0, 0}},
                {"closer and panned", kExposure, 0, 1, 0.5, false, 3, {77, 31}},
                {"reduced, past the edges", kNegative, 0, 0, 1.0, false, 0.3, {-40, -70}},
                {"cone in part in sight", kNegative, 0, 0, 1.0, false, 2.5, {90, 80}},
                {"cone inverted", kExposure, 0, 0, 1.0, true, 1.37, {10, -20}},
                {"hill", kNegative, 0, 2, 0.9, false, 0.71, {0, 0}},
                {"sine under Add", kBurn, 1, 3, 1.0, false, 2, {60, 50}},
                {"Multiply inverted", kBurn, 5, 1, 1.0, true, 0.5, {-10, 3}}};
    int differing = 0;
    softSelection();
    for (const auto &row : rows) {
        host.table.currentOp = row.op;
        host.blendMode = row.blendMode;
        host.curveMode = row.curve;
        host.curveAmplitude = row.amplitude;
        host.invertSelection = row.inverted;
        host.splitPlace = row.inverted ? 65 : 30;
        window->zoom = float(row.zoom);
        window->panX = row.pan.x();
        window->panY = row.pan.y();
        window->refresh();
        const QImage got = shown(), after = applied();
        const int at = window->split.column();
        EXPECT_EQ(at, 600 * host.splitPlace / 100);
        for (int i = 0; i < got.width() * got.height(); ++i) {
            const QPoint p(i % got.width(), i / got.width());
            if (std::abs(p.x() - at) <= kCaptionReach)
                continue;
            const QImage &wanted = p.x() < at ? window->cache : after;
            ASSERT_EQ(got.pixel(p), wanted.pixel(p)) << row.fault << p.x() << ' ' << p.y();
            differing += after.pixel(p) != window->cache.pixel(p);
        }
    }
    EXPECT_GT(differing, 100000); // there was something to see
}

TEST_F(Split, ItIsNoActOfThePersons)
{
    const ImagePtr before = twin();
    int observed = 0;
    host.table.applyObserver = [&](image *, int, bool) { ++observed; };
    const QString stamp = img->modificationTime;
    seedRandom15(3);
    const int wanted = random15();
    seedRandom15(3);
    host.table.currentOp = kBurn;
    host.blendMode = 7; // which draws random numbers
    EXPECT_EQ(runs(), 1);
    EXPECT_EQ(random15(), wanted);
    EXPECT_TRUE(samePlanes(*img, *before) && img->undoList.isEmpty() && !img->changed);
    EXPECT_EQ(img->modificationTime, stamp);
    EXPECT_EQ(observed + host.table.lastOp, 0);
    EXPECT_TRUE(!host.table.inPreview && !host.table.preview);
}

TEST_F(Split, TheOperatorRunsOncePerChangeAndPaint)
{
    EXPECT_EQ(runs(), 1);
    EXPECT_EQ(runs(), 1);
    drag({300, 200}, {417, 210});
    EXPECT_EQ(host.splitPlace, 70); // of 69.5 per cent
    EXPECT_EQ(window->split.column(), 417);
    EXPECT_EQ(runs(), 1) << "the border moves over what is known";
    for (int i = 0; i < 5; ++i)
        host.splitOutdated();
    EXPECT_EQ(runs(), 2);
    softSelection();
    EXPECT_EQ(runs(), 3);
    window->command(kCommandRight);
    EXPECT_EQ(runs(), 4);
    host.refreshViews(img);
    host.foreRed ^= 1;
    EXPECT_EQ(runs(), 5);
    img->inUse = true; // an operator is at work on it
    host.splitOutdated();
    EXPECT_EQ(runs(), 5);
    EXPECT_FALSE(window->split.drawn());
    img->inUse = false;
    EXPECT_EQ(runs(), 6);
    const QImage old = shown();
    host.table.setParameter("operatorExposure", "-60");
    host.splitOutdated();
    EXPECT_NE(shown(), old);
    imgWindow *other = host.show(img, {150, 100}); // takes it over
    EXPECT_EQ(runs(), 7);
    EXPECT_FALSE(window->split.drawn());
    other->grab();
    EXPECT_TRUE(other->split.drawn());
    host.splitView = false;
    host.splitOutdated();
    other->grab();
    EXPECT_FALSE(other->split.drawn());
}

TEST_F(Split, NothingIsDrawnWhereApplyShowsNothing)
{
    const struct {
        const char *reason;
        int op;
        uint16_t kind;
        double zoom;
    } rows[] = {{"Choose an operator", 0, 0, 1},
                {"Operators work on layers", kExposure, 1, 1},
                {"no split view of Sample", kSample, 0, 1},
                {"", kNegative, 2, 4}};
    for (const auto &row : rows) {
        host.table.currentOp = row.op;
        img->kind = row.kind;
        window->zoom = float(row.zoom);
        window->refresh();
        window->grab();
        EXPECT_TRUE(window->split.hindrance().contains(row.reason)) << row.reason;
        EXPECT_EQ(window->split.hindrance().isEmpty(), window->split.drawn()) << row.reason;
    }
    img->kind = 0;
    window->panX = 5000; // all surround
    window->refresh();
    window->grab();
    EXPECT_FALSE(window->split.drawn());
}

TEST_F(Split, TheBorderIsDraggedWithinItsReachOnly)
{
    host.toolSelect = 0;
    window->grab();
    move({305, 100});
    EXPECT_EQ(window->cursor().shape(), Qt::SplitHCursor);
    move({309, 100});
    EXPECT_EQ(window->cursor().shape(), Qt::CrossCursor);
    img->fillGmask(7);
    drag({309, 50}, {400, 150}); // a rectangle of the tool
    EXPECT_EQ(host.splitPlace, 50);
    EXPECT_NE(img->gmask[0], 7);
    img->fillGmask(7);
    drag({304, 50}, {154, 150});
    EXPECT_EQ(host.splitPlace, 25);
    EXPECT_EQ(window->split.column(), 150) << "it keeps its distance from the mouse";
    drag({150, 50}, {-90, 50});
    EXPECT_EQ(host.splitPlace, 0);
    QTest::mousePress(window, Qt::LeftButton, {}, {2, 90});
    move({200, 90}, Qt::LeftButton);
    QTest::keyClick(window, Qt::Key_Escape);
    EXPECT_EQ(host.splitPlace, 0);
    QTest::mouseRelease(window, Qt::LeftButton, {}, {200, 90});
    QTest::mouseDClick(window, Qt::LeftButton, {}, {3, 90});
    EXPECT_EQ(host.splitPlace, 50);
    EXPECT_TRUE(img->gmask[0] == 7 && img->gmask[100 * 300 + 100] == 7) << "no tool took part";
}

TEST_F(Split, TheEyedropperReadsSquaresOnce)
{
    img->fillGmask(7);
    host.editingNotations = true;
    host.dropperSize = 5;
    host.armDropper(true);
    EXPECT_EQ(window->cursor().shape(), Qt::BitmapCursor);
    QTest::mousePress(window, Qt::LeftButton, {}, {300, 200}); // on the border too
    for (const QPoint to : {QPoint(300, 201), QPoint(302, 200), QPoint(1, 1), QPoint(-40, 1)})
        move(to, Qt::LeftButton);
    EXPECT_TRUE(host.dropperArmed && host.ends.isEmpty());
    QTest::mouseRelease(window, Qt::LeftButton, {}, {-40, 1});
    EXPECT_EQ(host.picked, (QList<QRect>{{148, 98, 5, 5}, {149, 98, 5, 5}, {0, 0, 3, 3}}));
    EXPECT_TRUE(!host.dropperArmed && host.ends == QList<bool>{true});
    EXPECT_NE(window->cursor().shape(), Qt::BitmapCursor);
    for (const bool byKey : {true, false}) {
        host.armDropper(true);
        if (byKey)
            QTest::keyClick(window, Qt::Key_Escape);
        else
            QTest::mouseClick(window, Qt::RightButton, {}, {50, 50});
        EXPECT_TRUE(!host.dropperArmed && !host.ends.last()) << byKey;
    }
    EXPECT_EQ(host.picked.size(), 3);
    EXPECT_TRUE(img->notations.isEmpty() && img->gmask[0] == 7 && host.splitPlace == 50);
}
