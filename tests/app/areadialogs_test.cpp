// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/antialiassettings.h"
#include "app/helppage.h"
#include "app/pshapecontroller.h"
#include "app/transsetter.h"
#include "app/xyrect.h"
#include "area/areastate.h"
#include "support/widgets.h"
#include "views/testhost.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QDial>
#include <QPointer>
#include <QScrollBar>
#include <QSlider>
#include <QTest>
#include <QTextBrowser>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace
{
constexpr int kClick = std::numeric_limits<int>::min();

/// Sets a field, a slider or a list, or presses a button.
void use(const QWidget &in, const char *name, int value = kClick)
{
    auto *widget = child<QWidget>(in, name);
    if (auto *button = qobject_cast<QAbstractButton *>(widget))
        button->click();
    else if (auto *spin = qobject_cast<QSpinBox *>(widget))
        spin->setValue(value);
    else if (auto *slider = qobject_cast<QAbstractSlider *>(widget))
        slider->setValue(value);
    else
        qobject_cast<QComboBox *>(widget)->setCurrentIndex(value);
}

class AreaDialogs : public testing::Test
{
protected:
    AreaDialogs() { picture = host.keep(plainImage(200, 150, 30000, 30000, 30000)); }

    void startWith(int left, int top, int right, int bottom)
    {
        host.nrectX1 = left;
        host.nrectY1 = top;
        host.nrectX2 = right;
        host.nrectY2 = bottom;
    }
    std::vector<int> accepted() const
    {
        return {host.nrectX1, host.nrectY1,    host.nrectX2,
                host.nrectY2, host.nrectWidth, host.nrectHeight};
    }

    TestHost host;
    AreaState area;
    image *picture;
};

TEST_F(AreaDialogs, NumericRectangleFollowsEachField)
{
    area.rectLeft = 5;
    area.rectTop = 6;
    area.rectRight = 17;
    area.rectBottom = 28;
    area.rectKnown = true;
    host.stepXY = 7;
    const struct {
        const char *widget;
        int value;
        int left, top, right, bottom;
    } cases[] = {
        {"sx1", 30, 30, 20, 80, 79},
        {"sy1", -30, 10, -30, 60, 29},
        {"sx2", 100, 10, 20, 100, 79},
        {"sy2", 149, 10, 20, 60, 149},
        {"scx", 100, 75, 20, 125, 79},
        {"scy", 75, 10, 45, 60, 104},
        {"sw", 7, 10, 20, 16, 79},
        {"sh", 9, 10, 20, 60, 28},
        {"flushLeft", kClick, 0, 20, 50, 79},
        {"flushRight", kClick, 149, 20, 199, 79},
        {"flushTop", kClick, 10, 0, 60, 59},
        {"flushBottom", kClick, 10, 90, 60, 149},
        {"center", kClick, 75, 45, 125, 104},
        {"capture", kClick, 5, 6, 17, 28},
        {"shiftUp", kClick, 10, 13, 60, 72},
        {"shiftDown", kClick, 10, 27, 60, 86},
        {"shiftLeft", kClick, 3, 20, 53, 79},
        {"shiftRight", kClick, 17, 20, 67, 79},
        {"sx1", 49999, 49949, 20, 49999, 79}, // pushed back by the far edge
        {"sw", 99999, 10, 20, 49999, 79},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.widget);
        startWith(10, 20, 60, 79); // 51 x 60
        XYRect dialog(picture, nullptr);
        use(dialog, c.widget, c.value);
        EXPECT_EQ(host.nrectX2, 60) << "nothing is written yet";
        dialog.accept();
        EXPECT_EQ(dialog.result(), QDialog::Accepted);
        EXPECT_EQ(accepted(), (std::vector{c.left, c.top, c.right, c.bottom, c.right - c.left + 1,
                                           c.bottom - c.top + 1}));
    }
}

TEST_F(AreaDialogs, NumericRectangleRefusesWhatHasNoSizeAndStaysOpen)
{
    const QString refusal = QStringLiteral("Rectangle has negative size");
    for (const auto &[name, value, mended] : {std::tuple("sx2", 10, 11), std::tuple("sy2", 2, 40),
                                              std::tuple("sw", -3, 5), std::tuple("sh", 0, 2)}) {
        SCOPED_TRACE(name);
        startWith(10, 20, 60, 79);
        XYRect dialog(picture, nullptr);
        EXPECT_FALSE(child<QAbstractButton>(dialog, "capture")->isEnabled()) << "none recorded";
        dialog.show();
        use(dialog, name, value);
        dialog.accept();
        EXPECT_TRUE(dialog.isVisible());
        EXPECT_EQ(child<QLabel>(dialog, "message")->text(), refusal);
        EXPECT_EQ(host.nrectX2, 60);
        use(dialog, name, mended);
        EXPECT_EQ(child<QLabel>(dialog, "message")->text(), QString());
        dialog.accept();
        EXPECT_EQ(dialog.result(), QDialog::Accepted);
    }
}

TEST_F(AreaDialogs, NumericRectangleMovesWithTheDragFromItsSecondMoveOn)
{
    startWith(10, 20, 60, 79);
    XYRect dialog(picture, nullptr);
    dialog.show();
    auto *handle = child<QLabel>(dialog, "drag");
    const auto drag = [handle](QPoint to) {
        QMouseEvent move(QEvent::MouseMove, to, handle->mapToGlobal(to), Qt::NoButton,
                         Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(handle, &move);
    };
    drag({50, 5}); // no button went down
    for (int round = 0; round < 2; ++round) {
        QTest::mousePress(handle, Qt::LeftButton, {}, {2, 2});
        drag({20, 9});
        drag({20, 9});
        drag({25, 6});
        QTest::mouseRelease(handle, Qt::LeftButton, {}, {25, 6});
        drag({90, 90});
    }
    dialog.accept();
    EXPECT_EQ(accepted(), (std::vector{20, 14, 70, 73, 51, 60}));
}

TEST_F(AreaDialogs, BlendingWritesShowsAndTakesBack)
{
    host.curveMode = 3;
    host.curveAmplitude = 1.7; // more than the slider reaches
    host.curveFloor = 0.25;
    host.curveFactor = 2;
    QPointer<TransSetter> dialog = new TransSetter(nullptr);
    EXPECT_EQ(dialog->windowTitle(), "Area Selection Blending");
    EXPECT_EQ(child<QSlider>(*dialog, "floor")->value(), 50);
    EXPECT_EQ(host.curveAmplitude, 1.7) << "kept until the slider is moved";
    use(*dialog, "curveType", 0);
    EXPECT_EQ(host.curveMode, 0);
    EXPECT_EQ(host.curveAmplitude, 1.7);
    use(*dialog, "floor", 33);
    EXPECT_EQ(host.curveFloor, 33 * 0.005);
    EXPECT_EQ(host.sourceRefreshes, 2) << "previews follow each change";
    use(*dialog, "amplitude", 101);
    EXPECT_EQ(host.curveAmplitude, 101 / 200.0);
    use(*dialog, "normalize");
    EXPECT_EQ(host.curveAmplitude, 1.0 / 3) << "not what the slider makes of it";
    EXPECT_EQ(child<QSlider>(*dialog, "amplitude")->value(), 67);
    const QImage plotted = child<QWidget>(*dialog, "plot")->grab().toImage();
    use(*dialog, "factor", 6);
    EXPECT_EQ(host.curveFactor, 6);
    EXPECT_NE(child<QWidget>(*dialog, "plot")->grab().toImage(), plotted)
        << "the plot holds the factor";
    use(*dialog, "reset");
    EXPECT_EQ(std::tuple(host.curveMode, host.curveAmplitude, host.curveFloor, host.curveFactor),
              std::tuple(1, 1.0, 0.0, 0));
    EXPECT_EQ(child<QSlider>(*dialog, "amplitude")->value(), 200);
    EXPECT_EQ(child<QComboBox>(*dialog, "factor")->currentIndex(), 0);
    dialog->show();
    dialog->move(40, 30);
    EXPECT_EQ(QPoint(host.transX, host.transY), QPoint(40, 30));
    QTest::keyClick(dialog, Qt::Key_Escape);
    EXPECT_EQ(std::tuple(host.curveMode, host.curveAmplitude, host.curveFloor, host.curveFactor),
              std::tuple(3, 1.7, 0.25, 2));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(dialog.isNull());
    for (const int x : {40, 100000}) { // the second is on no screen
        host.transX = x;
        EXPECT_EQ(TransSetter(nullptr).pos() == QPoint(40, 30), x == 40);
    }
}

TEST_F(AreaDialogs, ShapeIsTurnedByDialFieldAndButtons)
{
    {
        const pShapeController idle(nullptr);
        EXPECT_FALSE(child<QDial>(idle, "dial")->isEnabled()) << "there is no shape";
    }
    const AreaPoint corners[] = {{0, 0}, {40, 0}, {40, 20}, {0, 0}};
    area.shape.remember(corners, 4, QStringLiteral("Polygonal"), false);
    ASSERT_TRUE(area.shape.convert());
    pShapeController dialog(nullptr);
    EXPECT_EQ(child<QLabel>(dialog, "shapeName")->text(), "Polygonal");
    EXPECT_EQ(child<QDial>(dialog, "dial")->value(), 1800) << "upright is up";
    const struct {
        const char *widget;
        int value, tenths;
    } cases[] = {
        {"dial", 0, 1800},      {"dial", 1799, 3599},   {"dial", 1801, 1},
        {"dial", 3600, 1800},   {"digits", 1234, 1234}, {"r000", kClick, 0},
        {"r045", kClick, 450},  {"r090", kClick, 900},  {"r135", kClick, 1350},
        {"r180", kClick, 1800}, {"r225", kClick, 2250}, {"r270", kClick, 2700},
        {"r315", kClick, 3150},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.widget);
        use(dialog, c.widget, c.value);
        EXPECT_NEAR(area.shape.rotation, c.tenths / 3600.0 * 2 * M_PI, 1e-9);
        EXPECT_EQ(child<QSpinBox>(dialog, "digits")->value(), c.tenths);
        EXPECT_EQ(child<QDial>(dialog, "dial")->value(), (c.tenths + 1800) % 3600);
    }
    auto *digits = child<QSpinBox>(dialog, "digits");
    digits->selectAll();
    QTest::keyClicks(digits, "12.5");
    QTest::keyClick(digits, Qt::Key_Return);
    EXPECT_NEAR(area.shape.rotation, 12.5 / 180 * M_PI, 1e-9);
    const QImage before = child<QWidget>(dialog, "preview")->grab().toImage();
    area.shape.setRotation(-M_PI / 2); // by the mouse, for instance
    dialog.shapeChanged();
    EXPECT_EQ(digits->value(), 2700);
    EXPECT_NE(child<QWidget>(dialog, "preview")->grab().toImage(), before);
    use(dialog, "lockAspect");
    EXPECT_TRUE(host.lockPAspect);
}

TEST_F(AreaDialogs, AntialiasSettingsHoldAtOnce)
{
    host.aaamount = 3.0; // more than the controls reach
    AntialiasSettings dialog(nullptr);
    const QImage before = dialog.grab().toImage();
    use(dialog, "radius", 30);
    EXPECT_EQ(host.aarange, 30);
    EXPECT_EQ(child<QSlider>(dialog, "radiusSlider")->value(), 20);
    use(dialog, "radiusSlider", 4);
    EXPECT_EQ(host.aarange, 4);
    EXPECT_EQ(host.aaamount, 3.0);
    use(dialog, "amountSlider", 25);
    EXPECT_EQ(host.aaamount, 0.25);
    for (const auto &[name, flag] : {std::pair("rectaa", &host.rectaa), {"wandaa", &host.wandaa}}) {
        use(dialog, name);
        EXPECT_TRUE(*flag);
    }
    host.textaa = false;
    dialog.settingsChanged();
    EXPECT_FALSE(child<QAbstractButton>(dialog, "textaa")->isChecked());
    auto *sample = dialog.findChild<SmoothingSample *>();
    const QImage soft = sample->grab().toImage();
    use(dialog, "amountSlider", 0);
    EXPECT_NE(sample->grab().toImage(), soft);
}

TEST(HelpPage, OpensAtAPlaceAndShowsAnotherPage)
{
    QWidget parent;
    showHelpPage(&parent, QStringLiteral("one"), QStringLiteral("areatools.html#outline"));
    auto *page = parent.findChild<QTextBrowser *>();
    ASSERT_NE(page, nullptr);
    EXPECT_TRUE(QTest::qWaitFor([page]() { return page->verticalScrollBar()->value() > 0; }));
    showHelpPage(&parent, QStringLiteral("two"), QStringLiteral("blending.html"));
    EXPECT_EQ(parent.findChildren<QTextBrowser *>().size(), 1);
    EXPECT_TRUE(page->toPlainText().contains(QStringLiteral("Maximum Axis")));
}
} // namespace
