// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/undo.h"
#include "support/debuglog.h"
#include "views/testhost.h"

#include <QMimeData>
#include <QtTest>

#include <gtest/gtest.h>

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
    void drag(Qt::MouseButton button, QPoint from, QPoint to)
    {
        QTest::mousePress(window, button, {}, from);
        QMouseEvent move(QEvent::MouseMove, to, Qt::NoButton, button, {});
        QCoreApplication::sendEvent(window, &move);
        QTest::mouseRelease(window, button, {}, to);
    }
    QPoint pan() const { return {window->panX, window->panY}; }
};

TEST_F(Input, PanKeysAndWheel)
{
    const int rows[][3] = {
        {Qt::Key_Up, 0, -1}, {Qt::Key_Down, 0, 1}, {Qt::Key_Left, -1, 0}, {Qt::Key_Right, 1, 0}};
    for (const auto &[number, x, y] : rows) {
        const auto key = Qt::Key(number);
        const QPoint before = pan(), way(x, y);
        QTest::keyClick(window, key, Qt::KeypadModifier);
        EXPECT_EQ(pan() - before, way * 10) << key;
        QTest::keyClick(window, key, Qt::ShiftModifier);
        EXPECT_EQ(pan() - before, way * 11) << key;
        wheel(way * 120);
        EXPECT_EQ(pan() - before, way * 12) << key;
    }
    EXPECT_EQ(host.started + host.ended, 24);
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
    drag(Qt::MiddleButton, {100, 50}, {90, 55});
    EXPECT_EQ(pan(), QPoint(20, -10));
    EXPECT_EQ(host.pointer, QPoint(200, 100)); // still over the same sample
    QTest::keyPress(window, Qt::Key_Space);
    drag(Qt::LeftButton, {100, 50}, {110, 45});
    QTest::keyRelease(window, Qt::Key_Space);
    EXPECT_EQ(pan(), QPoint(0, 0));
    EXPECT_EQ(window->previewX, 0); // dragging the view chooses no preview
    host.eyepointPending = true;
    QTest::mouseClick(window, Qt::LeftButton, {}, {100, 50});
    EXPECT_EQ(QPoint(window->previewX, window->previewY), QPoint(150, 50));
    EXPECT_FALSE(host.eyepointPending);
}

TEST_F(Input, UndoAndRedoKeys)
{
    beginAct(img);
    img->fill(1, 2, 3, 4);
    QTest::keyClick(window, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(samePlanes(*img, *randomImage(400, 200, 9)));
    for (int twice = 0; twice < 2; ++twice) { // the second time there is nothing left
        QTest::keyClick(window, Qt::Key_R);
        EXPECT_EQ(img->green[5], 2);
    }
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
