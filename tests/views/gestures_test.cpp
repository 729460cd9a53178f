// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/areastate.h"
#include "area/areatools.h"
#include "area/wand.h"
#include "core/memory.h"
#include "core/undo.h"
#include "layers/stack.h"
#include "views/testhost.h"
#include "views/windowacts.h"

#include <QPointer>
#include <QtTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace
{
constexpr auto kShift = Qt::ShiftModifier, kAlt = Qt::AltModifier, kControl = Qt::ControlModifier;
constexpr auto kLeft = Qt::LeftButton;
constexpr uint16_t kHalf = 40000, kFull = 65535;

class AreaHost : public TestHost
{
public:
    bool askNumericRectangle(imgWindow *window) override { return answerRectangle(window); }
    void makeCurrent(imgWindow *window) override
    {
        TestHost::makeCurrent(window);
        madeCurrent << window;
    }
    std::function<bool(imgWindow *)> answerRectangle = [](imgWindow *) { return true; };
    QList<imgWindow *> madeCurrent;
};

/// Windows of 200 by 150 show images of that size sample by sample.
class Gestures : public testing::Test
{
protected:
    AreaHost host;
    AreaState state;
    image *img = host.keep(plainImage(200, 150, 9, 9, 9));
    imgWindow *window = host.show(img, {200, 150});
    Qt::MouseButtons held;

    Gestures()
    {
        host.ellaa = host.polyaa = host.splineaa = host.pshapeaa = host.pencilaa = false;
        img->fillGmask(0);
    }
    void send(QEvent::Type type, QPoint at, Qt::MouseButton button, Qt::KeyboardModifiers keys)
    {
        held.setFlag(button, type == QEvent::MouseButtonPress);
        QMouseEvent event(type, at, button, held, keys);
        QCoreApplication::sendEvent(window, &event);
    }
    void press(QPoint at, Qt::KeyboardModifiers keys = {}, Qt::MouseButton button = kLeft)
    {
        send(QEvent::MouseButtonPress, at, button, keys);
    }
    void move(QPoint at, Qt::KeyboardModifiers keys = {})
    {
        QMouseEvent event(QEvent::MouseMove, at, Qt::NoButton, held, keys);
        QCoreApplication::sendEvent(window, &event);
    }
    void release(QPoint at, Qt::KeyboardModifiers keys = {}, Qt::MouseButton button = kLeft)
    {
        send(QEvent::MouseButtonRelease, at, button, keys);
    }
    void click(QPoint at, Qt::KeyboardModifiers keys = {}, Qt::MouseButton button = kLeft)
    {
        press(at, keys, button);
        release(at, keys, button);
    }
    void drag(QPoint from, QPoint to, Qt::KeyboardModifiers keys = {})
    {
        press(from, keys);
        move(to, keys);
        release(to, keys);
    }
    void clicks(const QList<QPoint> &places)
    {
        for (const QPoint &at : places)
            click(at);
    }
    QRect selected() const
    {
        const Bounds b = img->maskBounds();
        return b.left > b.right ? QRect() : QRect(b.left, b.top, b.width, b.height);
    }
    std::vector<uint16_t> mask() const { return {img->gmask, img->gmask + img->sampleCount()}; }
    std::vector<QPoint> points() const
    {
        std::vector<QPoint> found;
        for (int i = 0; i < state.pointCount; ++i)
            found.emplace_back(state.points[i].x, state.points[i].y);
        return found;
    }
    /// Columns of rising brightness, which a tolerance tells apart.
    void paintRamp() const
    {
        for (uint16_t *plane : {img->red, img->green, img->blue})
            for (int64_t i = 0; i < img->sampleCount(); ++i)
                plane[i] = uint16_t(i % 200 * 300);
    }
    std::vector<uint16_t> wandAt(int tolerance) const
    {
        std::vector<uint16_t> found(size_t(img->sampleCount()));
        EXPECT_TRUE(wandMask(*img, 100, 100, tolerance, false, false, found.data()));
        return found;
    }
};

TEST_F(Gestures, BandsBecomeRectanglesAndEllipses)
{
    const struct {
        const char *fault;
        int tool;
        Qt::KeyboardModifiers keys;
        QPoint from, to;
        int aspect, op;
        QRect expected;
    } rows[] = {
        {"inclusive", kToolRectangle, {}, {10, 20}, {29, 29}, 0, 0, {10, 20, 20, 10}},
        {"backwards", kToolRectangle, {}, {29, 29}, {10, 20}, 0, 0, {10, 20, 20, 10}},
        {"square", kToolRectangle, kControl, {50, 50}, {41, 45}, 0, 0, {41, 41, 10, 10}},
        {"landscape", kToolRectangle, {}, {10, 20}, {49, 24}, 2, kOpCrop, {10, 20, 40, 30}},
        {"portrait", kToolRectangle, {}, {60, 120}, {58, 81}, 2, kOpCrop, {31, 81, 30, 40}},
        {"control", kToolRectangle, kControl, {10, 20}, {49, 24}, 2, kOpCrop, {10, 20, 40, 40}},
        {"no crop", kToolRectangle, {}, {10, 20}, {49, 24}, 2, 0, {10, 20, 40, 5}},
        {"from its middle", kToolEllipse, {}, {100, 70}, {120, 80}, 0, 0, {80, 60, 41, 21}},
        {"circle", kToolEllipse, kControl, {100, 70}, {103, 74}, 0, 0, {95, 65, 11, 11}},
        {"everything", kToolEntire, {}, {100, 70}, {103, 74}, 0, 0, {0, 0, 200, 150}},
    };
    for (const auto &row : rows) {
        host.toolSelect = row.tool;
        host.cropAspect = row.aspect;
        host.mainOpIndex = row.op;
        img->fillGmask(0);
        drag(row.from, row.to, row.keys);
        EXPECT_EQ(selected(), row.expected) << row.fault;
    }
    EXPECT_EQ(host.sourceRefreshes, 0) << "a press does not move the preview";
}

TEST_F(Gestures, TheRightButtonMovesTheBandAndLostReleasesSelectNothing)
{
    press({10, 10});
    move({20, 20});
    press({20, 20}, {}, Qt::RightButton);
    move({50, 60});
    release({50, 60}, {}, Qt::RightButton);
    release({55, 62});
    EXPECT_EQ(selected(), QRect(40, 50, 16, 13));
    press({80, 80});
    move({90, 90});
    press({90, 90}, {}, Qt::MiddleButton); // the view is moved under the band
    move({95, 92});
    release({95, 92}, {}, Qt::MiddleButton);
    EXPECT_EQ(window->panX, -5);
    QTest::keyClick(window, Qt::Key_Escape);
    release({120, 120});
    press({80, 80});
    held = {};
    move({120, 120}); // a box took the release
    EXPECT_FALSE(window->gesture.rubberBand);
    EXPECT_EQ(selected(), QRect(40, 50, 16, 13));
    EXPECT_EQ(img->undoList.size(), 1);
}

TEST_F(Gestures, KeysJoinWithWhatWasSelectedAndUndoTakesItBack)
{
    const struct {
        Qt::KeyboardModifiers keys;
        uint16_t inside, outside;
    } rows[] = {
        {{}, kFull, 0}, {kShift, kFull, kHalf}, {kAlt, 0, kHalf}, {kShift | kAlt, kFull, kHalf}};
    for (const auto &row : rows) {
        img->fillGmask(kHalf);
        drag({10, 10}, {20, 20}, row.keys);
        EXPECT_EQ(img->maskAt(15, 15), row.inside) << int(row.keys);
        EXPECT_EQ(img->maskAt(40, 40), row.outside) << int(row.keys);
        EXPECT_FALSE(window->addToMask || window->subtractFromMask);
        window->command(kCommandUndo);
        EXPECT_EQ(img->maskAt(15, 15), kHalf);
    }
    host.toolSelect = kToolRedo; // the figure alone, not what it was joined with
    img->fillGmask(0);
    click({1, 1});
    EXPECT_EQ(selected(), QRect(10, 10, 11, 11));
    host.toolSelect = kToolRectangle;
    setSelectMode(true);
    EXPECT_EQ(selected(), QRect());
    const int records = img->undoList.size();
    drag({10, 10}, {20, 20}, kShift);
    EXPECT_EQ(host.operated, 1);
    EXPECT_EQ(img->undoList.size(), records) << "the operator makes its own";
    EXPECT_EQ(img->maskAt(40, 40), 0);
}

TEST_F(Gestures, ClicksGrowAFigureThatKeysAndVerticesEdit)
{
    for (const int tool : {kToolPolygon, kToolPolyspline}) {
        host.toolSelect = tool;
        img->fillGmask(0);
        clicks({{10, 10}, {50, 10}, {90, 90}, {50, 50}});
        QTest::keyClick(window, Qt::Key_Backspace);
        press({48, 12}, kShift); // the vertex jumps to the pointer, and follows it
        EXPECT_EQ(points()[1], QPoint(48, 12));
        move({60, 11}, kShift);
        QTest::keyClick(window, Qt::Key_Escape, kShift);
        EXPECT_EQ(points()[1], QPoint(50, 10));
        release({60, 11}, kShift);
        click({88, 88}, kShift | kAlt); // behind the last one is no place
        EXPECT_EQ(points().size(), 3U);
        click({11, 11}, kShift | kAlt);
        EXPECT_EQ(points(), (std::vector<QPoint>{{10, 10}, {30, 10}, {50, 10}, {90, 90}}));
        click({29, 10}, kAlt);
        click({88, 88}, kShift);
        EXPECT_EQ(points(), (std::vector<QPoint>{{10, 10}, {50, 10}, {88, 88}}));
        EXPECT_EQ(selected(), QRect());
        click({1, 1}, {}, Qt::RightButton);
        EXPECT_EQ(img->maskAt(50, 40), kFull);
        EXPECT_EQ(img->maskAt(86, 86), kFull);
        EXPECT_EQ(state.pointCount, 0);
        clicks({{100, 100}, {120, 100}, {120, 120}});
        QTest::keyClick(window, Qt::Key_Return, kShift);
        EXPECT_EQ(img->maskAt(118, 103), kFull);
        EXPECT_EQ(img->maskAt(50, 40), kFull);
    }
    clicks({{100, 100}, {120, 100}});
    QTest::keyClick(window, Qt::Key_Escape);
    EXPECT_EQ(state.pointCount, 0);
    EXPECT_FALSE(window->gesture.rubberBand);
}

TEST_F(Gestures, WhatSelectsNothingLeavesNoTrace)
{
    img->fillGmask(kHalf);
    selectWhole(img, true);
    selectWhole(img, true); // which changes nothing
    EXPECT_EQ(img->undoList.size(), 1);
    window->command(kCommandUndo);
    const auto nothing = [this](int tool, const std::function<void()> &act) {
        host.toolSelect = tool;
        act();
        EXPECT_EQ(img->gmask[7], kHalf) << tool;
        EXPECT_EQ(img->undoList.size(), 0) << tool;
        EXPECT_EQ(img->redoList.size(), 1) << tool;
        EXPECT_EQ(state.pointCount, 0) << tool;
    };
    nothing(kToolPencil, [this]() { click({5, 5}); });
    nothing(kToolPolygon, [this]() {
        click({5, 5});
        click({5, 5}, {}, Qt::RightButton);
    });
    nothing(kToolRedo, [this]() { click({5, 5}); });
    nothing(kToolPShape, [this]() { drag({5, 5}, {50, 50}); });
    nothing(kToolMagnify, [this]() { click({5, 5}); });
    window->command(kCommandZoomOne);
    window->command(kCommandHome);
    nothing(kToolWand, [this]() { click({-5, 5}); });
    host.answerRectangle = [](imgWindow *) { return false; };
    nothing(kToolNumericRectangle, [this]() { click({5, 5}, kShift); });
    EXPECT_FALSE(window->addToMask);
    EXPECT_FALSE(actOnSelection(img, []() { return false; }));
    EXPECT_EQ(img->redoList.size(), 1);
}

TEST_F(Gestures, PencilNumericRectangleAndShape)
{
    host.toolSelect = kToolPencil;
    press({10, 10});
    for (const QPoint &at : {QPoint(60, 10), QPoint(60, 40), QPoint(60, 40), QPoint(10, 40)})
        move(at);
    release({10, 40});
    EXPECT_EQ(selected(), QRect(10, 10, 51, 31));
    EXPECT_EQ(img->maskAt(35, 25), kFull);
    EXPECT_EQ(state.lastPointCount, 5) << "a resting pencil adds nothing";
    ASSERT_TRUE(state.shape.convert());
    host.toolSelect = kToolPShape;
    click({100, 75});
    EXPECT_NEAR(selected().width(), 51, 1);
    EXPECT_NEAR(selected().center().x(), 100, 1);
    drag({100, 75}, {110, 115});
    EXPECT_NEAR(selected().width(), 20, 1);
    EXPECT_NEAR(selected().height(), 80, 1);
    host.lockPAspect = true;
    drag({100, 75}, {110, 115});
    EXPECT_NEAR(selected().height(), 80, 1);
    EXPECT_NEAR(selected().width(), 80 * state.shape.aspect(), 2);
    press({100, 75});
    state.tick = 10;
    move({120, 95}, Qt::MetaModifier | kShift);
    EXPECT_GT(state.shape.rotation, 0.0);
    move({120, 95}, Qt::MetaModifier | kShift | kAlt);
    EXPECT_EQ(state.shape.rotation, 0.0);
    img->fillGmask(kHalf);
    release({120, 95}, Qt::MetaModifier | kShift);
    EXPECT_EQ(img->maskAt(0, 0), 0) << "Meta turns, its Shift does not add";
    host.toolSelect = kToolNumericRectangle;
    host.nrectX1 = 3;
    host.nrectY1 = 4;
    host.nrectX2 = 5;
    host.nrectY2 = 6;
    host.rectaa = true; // the switch of another tool
    host.aarange = 3;
    click({50, 50});
    EXPECT_EQ(selected(), QRect(3, 4, 3, 3));
}

TEST_F(Gestures, SmoothingKeepsLinesAtFullStrengthAndOutlinesComeLast)
{
    host.rectaa = true;
    host.aarange = 3;
    drag({50, 50}, {80, 80});
    EXPECT_LT(img->maskAt(50, 65), kFull);
    EXPECT_GT(img->maskAt(49, 65), 0);
    host.filledFigure = false;
    drag({50, 50}, {80, 80});
    EXPECT_EQ(img->maskAt(50, 65), kFull);
    EXPECT_GT(img->maskAt(49, 65), 0);
    EXPECT_EQ(img->maskAt(65, 65), 0);
    host.toolSelect = kToolPolyspline; // of which the list holds the knots, not the curve
    host.splineaa = true;
    clicks({{20, 20}, {100, 20}, {100, 100}, {20, 100}});
    click({1, 1}, {}, Qt::RightButton);
    const std::vector<uint16_t> curve = mask();
    EXPECT_GT(std::count(curve.begin(), curve.end(), kFull), 100);
    host.toolSelect = kToolRectangle;
    host.mainOpIndex = kOpMeasure; // counts samples
    host.filledFigure = true;
    drag({50, 50}, {80, 80});
    EXPECT_EQ(img->maskAt(50, 65), kFull);
    EXPECT_EQ(img->maskAt(49, 65), 0);
    host.outlineObject = true;
    host.outlineExpand = false; // by alpha, which is full everywhere
    drag({10, 10}, {20, 20});
    EXPECT_EQ(host.boxes, QStringList("Warning: No area selection was generated"));
    EXPECT_EQ(selected(), QRect(10, 10, 11, 11));
    host.outlineExpand = host.edgeOnly = true;
    drag({50, 50}, {80, 80});
    EXPECT_EQ(img->maskAt(65, 65), 0);
    EXPECT_EQ(state.savedSelection.mask[65 * 200 + 65], 0) << "as outlined";
    ASSERT_TRUE(img->maskBackupValid);
    EXPECT_EQ(img->mask3[65 * 200 + 65], kFull) << "as it was before the outline";
}

TEST_F(Gestures, AMastersSelectionGoesToItsShownTarget)
{
    image *layer = img;
    image *master = makeLayered(layer);
    ASSERT_TRUE(master);
    host.images.removeAll(layer);
    if (!host.images.contains(master))
        host.images << master;
    layer->xOffset = 30;
    layer->yOffset = 20;
    master->fillGmask(0);
    imgWindow *layerWindow = window;
    window = host.show(master, {200, 150});
    drag({50, 50}, {59, 59}); // no target: its own mask
    EXPECT_EQ(master->maskAt(55, 55), kFull);
    EXPECT_EQ(master->undoList.size(), 0);
    master->target = layer;
    host.madeCurrent.clear();
    drag({50, 50}, {59, 59}, kShift);
    EXPECT_EQ(selected(), QRect(20, 30, 10, 10));
    EXPECT_EQ(host.madeCurrent, (QList<imgWindow *>{window, layerWindow, window}));
    host.toolSelect = kToolPolygon;
    clicks({{40, 40}, {49, 40}, {49, 49}, {40, 49}});
    click({1, 1}, {}, Qt::RightButton);
    EXPECT_EQ(selected(), QRect(10, 20, 10, 10));
    window->command(kCommandUndo);
    EXPECT_EQ(selected(), QRect(20, 30, 10, 10));
    host.toolSelect = kToolRectangle;
    window->skipCommitOnce = true;
    drag({50, 50}, {60, 60});
    EXPECT_EQ(selected(), QRect(20, 30, 10, 10));
    EXPECT_FALSE(window->skipCommitOnce);
    master->fillGmask(0);
    window->command(kCommandSelectEntire);
    EXPECT_EQ(selected(), QRect(0, 0, layer->width, layer->height));
    EXPECT_FALSE(master->anyMaskSet());
}

TEST_F(Gestures, ACommandInTheTargetsWindowEndsADragThatGoesThere)
{
    paintRamp();
    image *layer = img;
    image *master = makeLayered(layer);
    ASSERT_TRUE(master);
    master->target = layer;
    imgWindow *layerWindow = window;
    window = host.show(master, {200, 150});
    host.toolSelect = kToolWand;
    press({100, 100});
    move({100, 60});
    ASSERT_TRUE(layerWindow->wandBusy);
    layerWindow->command(kCommandSelectNone);
    EXPECT_FALSE(layer->anyMaskSet());
    QTest::qWait(50);
    release({100, 60});
    EXPECT_FALSE(layer->anyMaskSet());
    layerWindow->command(kCommandUndo);
    EXPECT_TRUE(layer->anyMaskSet()) << "the drag was an act of its own";
}

TEST_F(Gestures, AWandDragFollowsTheLastToleranceAndIsOneAct)
{
    paintRamp();
    host.toolSelect = kToolWand;
    click({100, 100});
    EXPECT_EQ(mask(), wandAt(10));
    img->fillGmask(0);
    img->gmask[0] = kHalf;
    press({100, 100});
    move({100, 99});
    EXPECT_FALSE(window->wandBusy) << "a shaking hand";
    for (const int y : {80, 60, 41})
        move({100, y});
    EXPECT_TRUE(window->wandBusy);
    EXPECT_EQ(host.wandTolerance, 39);
    EXPECT_EQ(host.statusTexts.last(), wandStatus(39, false));
    EXPECT_TRUE(QTest::qWaitFor([this]() { return mask() == wandAt(39); }));
    move({100, 300}); // below the least
    EXPECT_EQ(host.wandTolerance, 1);
    move({100, 60}, kShift);
    release({100, 60});
    EXPECT_EQ(host.wandTolerance, 10);
    auto expected = wandAt(30);
    expected[0] = kHalf;
    EXPECT_EQ(mask(), expected);
    EXPECT_EQ(state.savedSelection.mask[0], 0);
    EXPECT_EQ(img->undoList.size(), 2);
    window->command(kCommandUndo);
    EXPECT_EQ(selected(), QRect(0, 0, 1, 1));
    press({100, 100});
    move({100, 60}, kAlt);
    EXPECT_TRUE(QTest::qWaitFor([this]() { return img->undoList.size() == 2; }));
    QTest::keyClick(window, Qt::Key_Escape);
    release({100, 60});
    EXPECT_EQ(selected(), QRect(0, 0, 1, 1));
    EXPECT_EQ(img->undoList.size(), 1);
    EXPECT_EQ(host.wandTolerance, 10);
    host.wandTolerance = 20;
    window->command(kCommandMaskJob);
    EXPECT_TRUE(QTest::qWaitFor([this]() { return mask() == wandAt(20); }));
    window->command(kCommandUndo);
    EXPECT_EQ(selected(), QRect(0, 0, 1, 1));
}

TEST_F(Gestures, MagnifyZoomsToABandAndGivesTheToolBack)
{
    window->command(kCommandMagnifyOnce);
    EXPECT_EQ(host.toolSelect, kToolMagnify);
    drag({50, 50}, {89, 79});
    EXPECT_NEAR(window->zoom, 5.0, 0.15);
    EXPECT_LE(std::abs(window->imageToWindow({70, 65}).x() - 100), 5);
    EXPECT_EQ(host.toolSelect, kToolRectangle);
    window->command(kCommandZoomOut);
    EXPECT_EQ(window->zoom, 4.0F) << "the next one of the table";
    host.toolSelect = kToolMagnify;
    const QPointF under = window->windowToImage(40, 40);
    click({40, 40});
    EXPECT_EQ(window->zoom, 8.0F);
    click({40, 40}, {}, Qt::RightButton);
    EXPECT_EQ(window->zoom, 4.0F);
    EXPECT_EQ(window->windowToImage(40, 40), under);
    EXPECT_EQ(img->undoList.size(), 0);
}

TEST_F(Gestures, WindowsMayGoInTheMiddle)
{
    image *other = host.keep(plainImage(20, 20, 1, 2, 3));
    imgWindow *rest = host.show(other);
    host.wandTolerance = 40;
    const std::function<void()> ways[] = {[this]() {
                                              host.toolSelect = kToolWand;
                                              press({100, 100});
                                              move({100, 80});
                                              window->close();
                                          },
                                          [this]() {
                                              host.toolSelect = kToolNumericRectangle;
                                              host.answerRectangle = [](imgWindow *asked) {
                                                  return asked->close();
                                              };
                                              press({50, 50});
                                              release({50, 50});
                                          }};
    for (const auto &way : ways) {
        way();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QTest::qWait(10);
        EXPECT_EQ(host.windows, QList<imgWindow *>{rest});
        EXPECT_EQ(host.wandTolerance, 40);
        img = host.keep(plainImage(200, 150, 9, 9, 9));
        window = host.show(img, {200, 150});
        held = {};
    }
}

TEST_F(Gestures, WithoutMemoryTheSelectionStandsOrIsWhole)
{
    host.rectaa = true;
    img->fillGmask(kHalf);
    for (int n = 1; n <= 14; ++n) {
        memFailAt(n);
        drag({10, 10}, {20, 20}, kShift);
        memFailAt(0);
        EXPECT_EQ(img->maskAt(0, 0), kHalf) << n;
        EXPECT_TRUE(img->maskAt(15, 15) == kHalf || img->maskAt(15, 15) == kFull) << n;
        img->fillGmask(kHalf);
    }
}
} // namespace

/// Everything at once, in any order, with memory that ends now and then: the sanitizers see
/// what goes wrong inside.
TEST_F(Gestures, WhateverHandsDoNoFenceBreaks)
{
    image *layer = host.keep(randomImage(90, 70, 1));
    image *master = makeLayered(layer);
    layer->xOffset = 13;
    const QList<imgWindow *> views{window, host.show(layer, {200, 160}), host.show(img, {90, 200}),
                                   host.show(master, {240, 200})};
    const int keys[] = {Qt::Key_Escape, Qt::Key_Backspace, Qt::Key_Return, Qt::Key_U,
                        Qt::Key_R,      Qt::Key_Z,         Qt::Key_Plus,   Qt::Key_Minus};
    bool Workspace::*const flags[] = {
        &Workspace::openFigure,          &Workspace::filledFigure, &Workspace::outlineObject,
        &Workspace::outlineExpand,       &Workspace::globalPick,   &Workspace::selectMode,
        &Workspace::maskWithTargetAlpha, &Workspace::rectaa,       &Workspace::useCropGuides};
    std::mt19937 random(7);
    const auto any = [&random](int count) { return int(random() % unsigned(count)); };
    QPoint at;
    Qt::KeyboardModifiers modifiers;
    for (int i = 0; i < 40000; ++i) {
        if (any(50) == 0) {
            window = views[any(views.size())];
            modifiers = Qt::KeyboardModifiers(any(16) << 25);
            host.toolSelect = any(12);
            host.*flags[any(int(std::size(flags)))] ^= true;
            host.cropAspect = any(10);
            master->target = any(3) ? layer : nullptr;
            state.shape.convert();
            memFailAt(any(4) ? 0 : 1 + any(12));
        }
        at = any(9) ? at + QPoint(any(31) - 15, any(31) - 15)
                    : QPoint(any(400) - 100, any(300) - 80);
        const Qt::MouseButton button = any(3) ? kLeft : Qt::RightButton;
        if (any(4))
            move(at, modifiers);
        else if (held & button)
            release(at, modifiers, button);
        else
            press(at, modifiers, button);
        if (any(60) == 0)
            QTest::keyClick(window, Qt::Key(keys[any(int(std::size(keys)))]));
        if (any(200) == 0)
            window->grab();
        if (any(100) == 0)
            QCoreApplication::processEvents();
    }
    memFailAt(0);
    memSweep();
    EXPECT_EQ(memRecord.overruns + memRecord.underruns, 0);
}
