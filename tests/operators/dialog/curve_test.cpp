// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/dialog/curve.h"

#include "core/image.h"
#include "operators/adjustment/curvesop.h"
#include "operators/base/operatortable.h"
#include "operators/dialog/histogramview.h"
#include "operators/dialog/operators.h"
#include "operators/table/allops.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"
#include "views/imgwindow.h"
#include "views/viewhost.h"

#include <QtTest>
#include <QtWidgets>

#include <gtest/gtest.h>

#include <numeric>

namespace
{
void mouse(QWidget *widget, QEvent::Type type, const QPointF &place,
           Qt::MouseButton button = Qt::LeftButton)
{
    const bool up = type == QEvent::MouseButtonRelease;
    QMouseEvent event(type, place, widget->mapToGlobal(place.toPoint()),
                      type == QEvent::MouseMove ? Qt::NoButton : button,
                      up ? Qt::NoButton : Qt::MouseButtons(button), Qt::NoModifier);
    QApplication::sendEvent(widget, &event);
}

class CurveTest : public testing::Test
{
protected:
    CurveTest()
    {
        view.resize(300, 240);
        view.show();
        view.setFocus();
    }
    void press(double x, double y) { mouse(&view, QEvent::MouseButtonPress, view.placeOf(x, y)); }
    void move(double x, double y) { mouse(&view, QEvent::MouseMove, view.placeOf(x, y)); }
    void release() { mouse(&view, QEvent::MouseButtonRelease, {0, 0}); }
    void isNear(int index, double x, double y) const
    {
        EXPECT_NEAR(curve.knot(index).x, x, 0.005);
        EXPECT_NEAR(curve.knot(index).y, y, 0.005);
    }

    ToneCurve curve;
    Curve view{&curve};
    QSignalSpy edits{&view, &Curve::edited};
};

struct FilesHost : public ViewHost {
    QString askFile(QWidget *, const QString &, const QString &, bool) override { return path; }
    QString path;
};
} // namespace

TEST_F(CurveTest, KnotsAreAddedDraggedAndTakenAwayByTheMouse)
{
    press(0.5, 0.6);
    EXPECT_EQ(curve.count(), 3);
    isNear(1, 0.5, 0.6);
    move(0.4, 0.7);
    isNear(1, 0.4, 0.7);
    EXPECT_EQ(view.readout(), QString("%1 -> %2").arg(102).arg(179)) << "0.4 and 0.7 of 255";
    EXPECT_EQ(view.cursor().shape(), Qt::ClosedHandCursor);
    move(2, 0.7);
    EXPECT_EQ(curve.count(), 2) << "dragged out";
    move(0.3, 0.2);
    isNear(1, 0.3, 0.2); // and back in
    QTest::keyClick(&view, Qt::Key_Escape);
    EXPECT_TRUE(curve == ToneCurve()) << "as before the press";
    release();

    press(0.25, 0.25);
    release();
    press(0.25, 0.25); // takes the knot that is there
    move(0.9, 0.9);
    move(0.9, 9);
    release();
    EXPECT_EQ(curve.count(), 2);
    press(0, 0);
    move(-3, 0.5);
    release();
    EXPECT_EQ(curve.count(), 2) << "ends stay";
    isNear(0, 0, 0.5);
    press(0.6, 0.6);
    release();
    mouse(&view, QEvent::MouseButtonPress, view.placeOf(0.6, 0.6), Qt::RightButton);
    EXPECT_EQ(curve.count(), 2);
    const int told = edits.count();
    EXPECT_GE(told, 9);
    move(0.8, 0.2);
    EXPECT_EQ(edits.count(), told) << "nothing is held";
}

TEST_F(CurveTest, KeysDoWhatTheMouseDoes)
{
    QTest::keyClick(&view, Qt::Key_Home);
    QTest::keyClick(&view, Qt::Key_Insert);
    isNear(1, 0.5, 0.5);
    QTest::keyClick(&view, Qt::Key_Up, Qt::ShiftModifier);
    QTest::keyClick(&view, Qt::Key_Left);
    EXPECT_NEAR(curve.knot(1).y, 0.5 + 10 / 255.0, 1e-8);
    EXPECT_NEAR(curve.knot(1).x, 0.5 - 1 / 255.0, 1e-8);
    EXPECT_TRUE(view.accessibleDescription().contains("Knot 2 of 3: in 126, out 137"))
        << view.accessibleDescription().toStdString();
    QTest::keyClick(&view, Qt::Key_Right, Qt::ControlModifier);
    EXPECT_EQ(curve.chosen, 2);
    QTest::keyClick(&view, Qt::Key_Delete);
    EXPECT_EQ(curve.count(), 3) << "an end";
    QTest::keyClick(&view, Qt::Key_Tab, Qt::ShiftModifier);
    EXPECT_EQ(curve.chosen, 1);
    QTest::keyClick(&view, Qt::Key_Delete);
    EXPECT_TRUE(curve == ToneCurve());
}

TEST(CurvesPage, NumbersPresetsAndFilesFollowTheCurve)
{
    RecordingWorkspace space;
    FilesHost host;
    OperatorTable table;
    addAllOperators(&table);
    ImagePtr picture = randomImage(300, 200, 3);
    space.images = {picture.get()};
    imgWindow window(picture.get());
    host.windows = {&window};
    host.currentWindow = &window;
    {
        Operators dialog(&table);
        dialog.selectOperator(21);
        dialog.show();
        auto *op = dynamic_cast<Curvesop *>(table.byId(21));
        auto *view = dialog.findChild<Curve *>("curve0");
        auto *preset = dialog.findChild<QComboBox *>("combo0");
        auto *in = dialog.findChild<QDoubleSpinBox *>("dubspin0");
        auto *out = dialog.findChild<QDoubleSpinBox *>("dubspin1");
        ASSERT_TRUE(op && view && preset && in && out);
        const QImage straight = dialog.findChild<QWidget *>("oppreview")->grab().toImage();

        mouse(view, QEvent::MouseButtonPress, view->placeOf(0.5, 0.8));
        mouse(view, QEvent::MouseButtonRelease, view->placeOf(0.5, 0.8));
        EXPECT_NEAR(in->value(), 127.5, 1);
        EXPECT_NEAR(out->value(), 204, 1);
        EXPECT_EQ(preset->currentIndex(), preset->count() - 1) << "an own curve";
        QCoreApplication::processEvents();
        EXPECT_NE(dialog.findChild<QWidget *>("oppreview")->grab().toImage(), straight);

        in->setValue(64);
        out->setValue(300);
        EXPECT_NEAR(op->curve.knot(1).x, 64 / 255.0, 1e-8);
        EXPECT_EQ(op->curve.knot(1).y, 1);
        QTemporaryDir folder;
        host.path = folder.filePath("own.json");
        const QString own = op->curve.text();
        dialog.findChild<QPushButton *>("button1")->click();
        preset->setCurrentIndex(4);
        EXPECT_TRUE(op->curve == ToneCurve::preset(4));
        dialog.findChild<QPushButton *>("button0")->click();
        EXPECT_EQ(op->curve.text(), own);
        host.path = KESTRANE_SOURCE_DIR "/README.md";
        dialog.findChild<QPushButton *>("button0")->click();
        EXPECT_EQ(op->curve.text(), own);
        EXPECT_TRUE(space.boxes.value(0).contains("no curve file"));
    }
    host.windows.clear();
    space.images.clear();
}

TEST(Histogram, ClicksAndKeysSwitchItAndLargePicturesAreSharedOut)
{
    RecordingWorkspace space;
    HistogramView view;
    view.resize(256, 60);
    view.show();
    const auto shown = [&] { return view.grab().toImage(); };
    ImagePtr picture = plainImage(3000, 2000, 0x1000, 0x8000, 0xF000);
    for (int y = 0; y < 2000; ++y) // stripes that a plain grid of samples would miss
        std::fill_n(picture->red + int64_t(y) * 3000 + (y % 2) * 1500, 1500, uint16_t(0x4000));
    view.setPicture(picture.get());
    const auto total = [&](int c) {
        return std::accumulate(view.counts(c).begin(), view.counts(c).end(), 0);
    };
    EXPECT_NEAR(total(0), 3000 * 2000 / 25, 10000) << "every fifth row and run";
    EXPECT_NEAR(view.counts(0)[0x40], total(0) / 2.0, total(0) * 0.05);
    EXPECT_EQ(view.counts(1)[0x80], total(3));
    const QImage linear = shown();
    QTest::mouseClick(&view, Qt::LeftButton);
    EXPECT_TRUE(space.histogramLog);
    EXPECT_NE(shown(), linear);
    QTest::keyClick(&view, Qt::Key_Space);
    EXPECT_FALSE(space.histogramLog);
    QContextMenuEvent menu(QContextMenuEvent::Mouse, {5, 5}, {5, 5});
    QApplication::sendEvent(&view, &menu);
    const auto actions = view.findChild<QMenu *>()->actions();
    actions.at(HistogramView::Blue)->trigger();
    EXPECT_EQ(space.histogramChannel, HistogramView::Blue);
    EXPECT_NE(shown(), linear);
}
