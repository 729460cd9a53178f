// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/undo.h"
#include "support/debuglog.h"
#include "views/keytable.h"
#include "views/testhost.h"

#include <QMimeData>
#include <QtTest>

#include <gtest/gtest.h>

#include <set>

class Input : public testing::Test
{
protected:
    TestHost host;
    image *img = host.keep(randomImage(400, 200, 9));
    imgWindow *window = host.show(img, {200, 100});

    void wheel(QPoint delta, Qt::KeyboardModifiers modifiers = {}, QPointF at = {50, 40})
    {
        QWheelEvent event(at, at, {}, delta, Qt::NoButton, modifiers, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(window, &event);
    }
    QPoint pan() const { return {window->panX, window->panY}; }
};

TEST_F(Input, PanKeysAndWheel)
{
    struct {
        int key;
        Qt::KeyboardModifiers modifiers;
        QPoint moved;
    } const rows[] = {{Qt::Key_Up, {}, {0, -10}},
                      {Qt::Key_Up, Qt::ShiftModifier, {0, -1}},
                      {Qt::Key_Down, Qt::KeypadModifier, {0, 10}},
                      {Qt::Key_Down, Qt::ShiftModifier, {0, 1}},
                      {Qt::Key_Left, {}, {-10, 0}},
                      {Qt::Key_Left, Qt::ShiftModifier, {-1, 0}},
                      {Qt::Key_Right, {}, {10, 0}},
                      {Qt::Key_Right, Qt::ShiftModifier, {1, 0}}};
    for (const auto &row : rows) {
        const QPoint before = pan();
        QTest::keyClick(window, Qt::Key(row.key), row.modifiers);
        EXPECT_EQ(pan() - before, row.moved) << row.key;
    }
    EXPECT_EQ(host.started, 8);
    EXPECT_EQ(host.ended, 8);
    window->panX = window->panY = 0;
    wheel({0, -120});
    EXPECT_EQ(pan(), QPoint(0, -1));
    wheel({0, 120});
    wheel({120, 0});
    EXPECT_EQ(pan(), QPoint(1, 0));
    wheel({-120, 0});
    EXPECT_EQ(pan(), QPoint(0, 0));
    QTest::keyClick(window, Qt::Key_C);
    EXPECT_EQ(pan(), QPoint(200, 100));
    QTest::keyClick(window, Qt::Key_Home);
    EXPECT_EQ(pan(), QPoint(0, 0));
}

TEST_F(Input, ZoomKeepsThePlaceUnderTheCursor)
{
    const QPointF at(50, 40), before = window->windowToImage(at.x(), at.y());
    wheel({0, 60}, Qt::ControlModifier, at); // half a notch
    EXPECT_EQ(window->zoom, 1.0F);
    wheel({0, 60}, Qt::ControlModifier, at);
    EXPECT_EQ(window->zoom, 2.0F);
    EXPECT_EQ(window->windowToImage(at.x(), at.y()), before);
    const QPointF middle = window->windowToImage(100, 50);
    QTest::keyClick(window, Qt::Key_Plus, Qt::ShiftModifier);
    EXPECT_EQ(window->zoom, 4.0F);
    EXPECT_EQ(window->windowToImage(100, 50), middle);
    QTest::keyClick(window, Qt::Key_Minus);
    QTest::keyClick(window, Qt::Key_0);
    EXPECT_EQ(window->zoom, 1.0F);
    EXPECT_EQ(pan(), QPoint(0, 0));
    for (int i = 0; i < 600; ++i)
        window->command(kCommandZoomIn);
    EXPECT_GE(img->height / window->zoom, 2.0F);
    for (int i = 0; i < 600; ++i)
        window->command(kCommandZoomOut);
    EXPECT_GE(window->width() * window->zoom, 16.0F);
    window->command(kCommandZoomOne);
    EXPECT_EQ(window->zoomIndex, window->unityIndex);
}

TEST_F(Input, DragsWithMiddleButtonOrSpace)
{
    QTest::mousePress(window, Qt::MiddleButton, {}, {100, 50});
    QMouseEvent move(QEvent::MouseMove, QPointF(90, 55), Qt::NoButton, Qt::MiddleButton, {});
    QCoreApplication::sendEvent(window, &move);
    QTest::mouseRelease(window, Qt::MiddleButton, {}, {90, 55});
    EXPECT_EQ(pan(), QPoint(20, -10));
    EXPECT_EQ(host.pointer, QPoint(-1, -1) + QPoint(201, 101)); // still over the same sample
    QTest::keyPress(window, Qt::Key_Space);
    QTest::mousePress(window, Qt::LeftButton, {}, {100, 50});
    QMouseEvent second(QEvent::MouseMove, QPointF(110, 45), Qt::NoButton, Qt::LeftButton, {});
    QCoreApplication::sendEvent(window, &second);
    QTest::mouseRelease(window, Qt::LeftButton, {}, {110, 45});
    QTest::keyRelease(window, Qt::Key_Space);
    EXPECT_EQ(pan(), QPoint(0, 0));
    EXPECT_EQ(window->previewX, 0); // dragging the view chooses no preview
    QTest::mouseClick(window, Qt::LeftButton, {}, {100, 50});
    EXPECT_EQ(QPoint(window->previewX, window->previewY), QPoint(150, 50));
}

TEST_F(Input, UndoAndRedoKeys)
{
    const auto before = undoMakeCopy(img, true);
    beginAct(img);
    img->fill(1, 2, 3, 4);
    QTest::keyClick(window, Qt::Key_U);
    EXPECT_TRUE(sameColors(*img, *before));
    QTest::keyClick(window, Qt::Key_R);
    EXPECT_EQ(img->green[5], 2);
    QTest::keyClick(window, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(sameColors(*img, *before));
    QTest::keyClick(window, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(img->green[5], 2);
    QTest::keyClick(window, Qt::Key_R); // nothing left
    EXPECT_EQ(img->green[5], 2);
    delete before;
}

TEST_F(Input, ModifiersAndForeignKeys)
{
    QTest::keyPress(window, Qt::Key_F9, Qt::ShiftModifier | Qt::AltModifier);
    EXPECT_EQ(window->lastKey, int(Qt::Key_F9));
    EXPECT_TRUE(window->shift && window->alt && !window->control && !window->meta);
    EXPECT_GE(host.globalKeys, 1);
    QTest::keyRelease(window, Qt::Key_Shift);
    EXPECT_FALSE(window->shift);
    QTest::keyClick(window, Qt::Key_Escape); // no dialog that Escape takes away
    EXPECT_TRUE(window->isVisible());
    QTest::keyClick(window, Qt::Key_Return, Qt::ControlModifier);
    EXPECT_EQ(host.operated, 1);
}

TEST_F(Input, DropsGoToTheHost)
{
    QMimeData data;
    QDragEnterEvent text({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, {});
    text.ignore();
    QCoreApplication::sendEvent(window, &text);
    EXPECT_FALSE(text.isAccepted());
    data.setUrls({QUrl::fromLocalFile("/a.png")});
    QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, {});
    QCoreApplication::sendEvent(window, &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, {});
    QCoreApplication::sendEvent(window, &drop);
    EXPECT_EQ(host.dropped, data.urls());
}

TEST(KeyTable, EveryKeyHasANamedCommandAndOneMeaning)
{
    std::set<int> named, keys;
    for (const WindowCommand &command : windowCommands())
        EXPECT_TRUE(named.insert(command.number).second) << command.name;
    for (const KeyTable::Binding &binding : keyTable().bindings()) {
        EXPECT_TRUE(named.count(binding.command)) << binding.command;
        EXPECT_TRUE(keys.insert(binding.key).second) << binding.key;
        EXPECT_EQ(keyTable().command(
                      binding.key & ~int(Qt::KeyboardModifierMask),
                      Qt::KeyboardModifiers(QFlag(binding.key & int(Qt::KeyboardModifierMask)))),
                  binding.command);
    }
    EXPECT_EQ(keyTable().keyOf(kCommandUndo), int(Qt::Key_U));
    EXPECT_EQ(keyTable().command(Qt::Key_H, {}), 0);
    KeyTable table = KeyTable::defaults();
    table.bind(Qt::Key_U, kCommandRedo);
    EXPECT_EQ(table.command(Qt::Key_U, {}), kCommandRedo);
    table.bind(Qt::Key_U, 0);
    EXPECT_EQ(table.command(Qt::Key_U, {}), 0);
}
