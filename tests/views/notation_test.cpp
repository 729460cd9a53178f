// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/image.h"
#include "core/undo.h"
#include "text/notationdraw.h"
#include "views/notationacts.h"
#include "views/testhost.h"

#include <QPainter>
#include <QTest>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace
{
class NotationHost : public TestHost
{
public:
    void notationsChanged(image *, int chosen) override { told << chosen; }
    void editNotation(imgWindow *, int index) override { edited = index; }

    QList<int> told;
    int edited = -1;
};

/// A window of 400 x 300 points on a picture of 200 x 150 samples: two points a sample.
class NotationTest : public testing::Test
{
protected:
    void SetUp() override
    {
        img = host.keep(plainImage(200, 150, 30000, 30000, 30000));
        window = host.show(img, {400, 300});
        host.editingNotations = true;
        ASSERT_TRUE(QTest::qWaitFor([this]() { return window->renderCount() > 0; }));
    }
    void drag(QPoint from, QPoint to, Qt::KeyboardModifiers keys = {})
    {
        QTest::mousePress(window, Qt::LeftButton, keys, from);
        QTest::mouseMove(window, (from + to) / 2);
        QTest::mouseMove(window, to);
        QTest::mouseRelease(window, Qt::LeftButton, keys, to);
    }
    void click(QPoint at, Qt::KeyboardModifiers keys = {})
    {
        QTest::mouseClick(window, Qt::LeftButton, keys, at);
    }
    const Notation &note(int i) const { return img->notations.at(i); }

    NotationHost host;
    image *img = nullptr;
    imgWindow *window = nullptr;
};

TEST_F(NotationTest, MouseMakesTextArrowAndPolygon)
{
    click({100, 60});
    ASSERT_EQ(img->notations.size(), 1);
    EXPECT_EQ(QPoint(note(0).textX, note(0).textY), QPoint(50, 30));
    EXPECT_EQ(host.edited, 0) << "a text note asks for its text";
    EXPECT_TRUE(img->changed);
    drag({200, 100}, {300, 200});
    ASSERT_EQ(img->notations.size(), 2);
    EXPECT_TRUE(note(1).pointing);
    EXPECT_EQ(QPoint(note(1).tailX, note(1).tailY), QPoint(100, 50));
    EXPECT_EQ(QPoint(note(1).headX, note(1).headY), QPoint(150, 100));
    const int undos = img->undoList.size();
    click({20, 200}, Qt::ShiftModifier);
    click({60, 200});
    click({60, 240});
    click({140, 260}); // and back
    QTest::keyClick(window, Qt::Key_Backspace);
    click({20, 240});
    EXPECT_EQ(img->notations.size(), 2) << "not before it is closed";
    QTest::keyClick(window, Qt::Key_Return);
    ASSERT_EQ(img->notations.size(), 3);
    EXPECT_EQ(note(2).points, QPolygon({{10, 100}, {30, 100}, {30, 120}, {10, 120}}));
    EXPECT_EQ(img->undoList.size(), undos + 1);
    click({220, 20}, Qt::ShiftModifier);
    QTest::keyClick(window, Qt::Key_Escape);
    EXPECT_EQ(img->notations.size(), 3) << "given up";
    for (int left = 2; left >= 0; --left) {
        undo(img);
        EXPECT_EQ(img->notations.size(), left);
    }
}

TEST_F(NotationTest, DragMovesWhatWasPressedWithoutRendering)
{
    Notation n;
    n.pointing = true;
    n.tailX = 50, n.tailY = 20;
    n.headX = 100, n.headY = 20;
    n.points = QPolygon({{50, 60}, {150, 60}, {150, 120}});
    n.textX = 20, n.textY = 100;
    n.text = "note";
    struct Case {
        const char *fault;
        QPoint press;
        Qt::KeyboardModifiers keys;
        int moved; ///< bits: text, tail, head, corners 0 to 2
    };
    const Case cases[] = {{"Text", {50, 208}, {}, 1},
                          {"Tail", {103, 42}, {}, 2},
                          {"Head", {199, 39}, {}, 4},
                          {"Shaft", {150, 44}, {}, 6},
                          {"Corner", {302, 120}, {}, 16},
                          {"Edge", {200, 121}, {}, 56},
                          {"Whole", {200, 121}, Qt::ControlModifier, 63}};
    for (const Case &c : cases) {
        SCOPED_TRACE(c.fault);
        img->notations = {n};
        clearUndoList(img);
        window->repaint();
        const int renders = window->renderCount();
        QTest::mousePress(window, Qt::LeftButton, c.keys, c.press);
        for (int step = 4; step <= 20; step += 4) {
            QTest::mouseMove(window, c.press + QPoint(step, -step / 2));
            window->repaint();
            EXPECT_TRUE(img->undoList.isEmpty()) << "one record when it ends";
        }
        QTest::mouseRelease(window, Qt::LeftButton, c.keys, c.press + QPoint(20, -10));
        window->repaint();
        EXPECT_EQ(window->renderCount(), renders);
        EXPECT_EQ(img->undoList.size(), 1);
        const Notation &got = note(0);
        const QPoint before[] = {{20, 100}, {50, 20}, {100, 20}, {50, 60}, {150, 60}, {150, 120}};
        const QPoint after[] = {{got.textX, got.textY}, {got.tailX, got.tailY},
                                {got.headX, got.headY}, got.points[0],
                                got.points[1],          got.points[2]};
        for (int i = 0; i < 6; ++i)
            EXPECT_EQ(after[i] - before[i], c.moved >> i & 1 ? QPoint(10, -5) : QPoint()) << i;
    }
}

TEST_F(NotationTest, ShiftGivesAndTakesCorners)
{
    Notation n;
    n.points = QPolygon({{50, 60}, {150, 60}, {150, 120}});
    img->notations = {n};
    click({200, 120}); // chooses
    click({200, 121}, Qt::ShiftModifier);
    EXPECT_EQ(note(0).points, QPolygon({{50, 60}, {100, 61}, {150, 60}, {150, 120}}));
    click({300, 120}, Qt::ShiftModifier);
    EXPECT_EQ(note(0).points, QPolygon({{50, 60}, {100, 61}, {150, 120}}));
    click({300, 240}, Qt::ShiftModifier);
    EXPECT_EQ(note(0).points.size(), 3) << "fewer are no polygon";
}

TEST_F(NotationTest, KeysStepMoveAndRemove)
{
    for (int i = 0; i < 3; ++i) {
        Notation n;
        n.textX = 30 * i;
        n.text = QString::number(i);
        img->notations << n;
    }
    QTest::keyClick(window, Qt::Key_Tab);
    QTest::keyClick(window, Qt::Key_Tab);
    EXPECT_EQ(window->notes.chosenNote(), 1);
    EXPECT_EQ(host.told.last(), 1);
    const int pan = window->panX;
    for (int i = 0; i < 5; ++i)
        QTest::keyClick(window, Qt::Key_Right);
    QTest::keyClick(window, Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(QPoint(note(1).textX, note(1).textY), QPoint(35, 10));
    EXPECT_EQ(window->panX, pan);
    EXPECT_EQ(img->undoList.size(), 1) << "steps in a row are one act";
    QTest::keyClick(window, Qt::Key_Return);
    EXPECT_EQ(host.edited, 1);
    QTest::keyClick(window, Qt::Key_Delete);
    EXPECT_EQ(img->notations.size(), 2);
    EXPECT_EQ(note(1).text, "2");
    undo(img);
    undo(img);
    EXPECT_EQ(note(1).textX, 30);
    host.editingNotations = false;
    QTest::keyClick(window, Qt::Key_Delete);
    QTest::mouseDClick(window, Qt::LeftButton, {}, {5, 5});
    EXPECT_EQ(img->notations.size(), 3) << "only while notes are edited";
}

TEST_F(NotationTest, MastersStepTheirNotesBackAlone)
{
    image *layer = img;
    image *master = host.keep(plainImage(200, 150, 0, 0, 0));
    master->kind = 1;
    imgWindow *view = host.show(master, {400, 300});
    QTest::mouseClick(view, Qt::LeftButton, {}, {100, 60});
    QTest::mouseClick(view, Qt::LeftButton, {}, {200, 160});
    EXPECT_EQ(master->notations.size(), 2);
    EXPECT_TRUE(master->changed && master->undoList.isEmpty() && layer->undoList.isEmpty());
    QTest::keyClick(view, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(master->notations.size(), 1);
    EXPECT_TRUE(redoMasterNotations(master));
    EXPECT_EQ(master->notations.size(), 2);
    EXPECT_FALSE(redoMasterNotations(master));
    EXPECT_FALSE(undoMasterNotations(layer));
}

/// How many pixels of a canvas of 300 x 200 a note changes.
int inkOf(const Notation &note, double scale, QColor ground, QRect *where = nullptr)
{
    QImage canvas(300, 200, QImage::Format_RGB32);
    canvas.fill(ground);
    {
        QPainter painter(&canvas);
        NotationView view;
        view.scaleX = view.scaleY = scale;
        view.visible = canvas.rect();
        drawNotation(&painter, note, view);
    }
    int count = 0;
    for (int y = 0; y < 200; ++y)
        for (int x = 0; x < 300; ++x)
            if (canvas.pixelColor(x, y) != ground) {
                ++count;
                if (where)
                    *where |= QRect(x, y, 1, 1);
            }
    return count;
}

TEST(NotationDraw, IsSeenOnEveryGroundAtEveryZoom)
{
    for (int mode = -1; mode <= 3; ++mode)
        for (const QColor ground : {Qt::black, Qt::white, Qt::yellow, Qt::gray})
            for (const double scale : {0.001, 1.0, 900.0}) {
                Notation n;
                n.text = "Wide text\nof two lines";
                n.mode = mode;
                QRect text;
                EXPECT_GT(inkOf(n, scale, ground, &text), 200) << mode << " " << scale;
                EXPECT_GT(text.height(), 25) << "of one size whatever the zoom";
                n.text.clear();
                EXPECT_GT(inkOf(n, scale, ground), 10) << "a pin";
                n.pointing = true;
                n.tailX = n.tailY = std::numeric_limits<int>::min();
                n.headX = n.headY = std::numeric_limits<int>::max();
                EXPECT_GT(inkOf(n, 1.0, ground), 200) << "the ends lie far outside";
            }
    Notation n;
    n.text = "x";
    n.opacity = 0;
    EXPECT_EQ(inkOf(n, 1, Qt::gray), 0);
    n.opacity = std::nan("");
    EXPECT_GT(inkOf(n, 1, Qt::gray), 0);
}

TEST(NotationDraw, LargePolygonsAreDrawnAtOnce)
{
    Notation circle, tangle;
    for (int i = 0; i < 256032; ++i) {
        const double turn = i * 2 * M_PI / 256032;
        circle.points << QPoint(int(15000 + 14000 * std::cos(turn)),
                                int(10000 + 9000 * std::sin(turn)));
        tangle.points << QPoint(int(int64_t(i) * 7919 % 30000), int(int64_t(i) * 104729 % 20000));
    }
    QRect where;
    EXPECT_GT(inkOf(circle, 0.01, Qt::gray, &where), 1500);
    EXPECT_LT(std::abs(where.width() - 280), 8);
    EXPECT_GT(inkOf(tangle, 0.01, Qt::gray), 50000);
}
} // namespace
