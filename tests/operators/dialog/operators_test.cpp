// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/dialog/dialogfixture.h"

#include "operators/base/opwrapper.h"
#include "operators/dialog/oppreview.h"
#include "operators/filter/exposure.h"

#include <QColorDialog>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QSlider>
#include <QTemporaryDir>

#include <algorithm>

class OperatorDialog : public DialogTest
{
protected:
    Exposure *exposure() { return static_cast<Exposure *>(table.byId(kExposure)); }
};

TEST_F(OperatorDialog, ListsTheTableAndRemembersTheChoice)
{
    ws.mainOpIndex = kNegative;
    open(120, 110);
    auto *combo = child<QComboBox>("opCombo");
    EXPECT_EQ(combo->currentText(), QLatin1String("Negative"));
    EXPECT_EQ(combo->itemText(0), QLatin1String("No Operator Selected"));
    EXPECT_EQ(combo->count(), int(table.operators().size()) + 1);
    EXPECT_EQ(table.currentOp, kNegative);

    QTest::keyClick(combo, Qt::Key_Home);
    EXPECT_EQ(table.currentOp, 0);
    EXPECT_EQ(ws.mainOpIndex, 0);
    EXPECT_EQ(table.page, nullptr);
    for (const char *name : {"operate", "reset", "setHotkey"})
        EXPECT_FALSE(child<QPushButton>(name)->isEnabled()) << name;

    dialog->selectOperator(kExposure);
    EXPECT_EQ(combo->currentText(), QLatin1String("Exposure"));
    EXPECT_NE(table.page, nullptr);
    EXPECT_EQ(dialog->helpPageName, QLatin1String("opexposure.html"));
    dialog->selectOperator(95); // has no row
    EXPECT_EQ(combo->currentIndex(), 0);
}

TEST_F(OperatorDialog, SliderKeysChangeFieldValueAndPreview)
{
    ws.mainOpIndex = kExposure;
    ws.thumbnail = false;
    open(120, 110);
    auto *slider = child<QSlider>("slider0");
    for (int i = 0; i < 25; ++i)
        QTest::keyClick(slider, i % 2 ? Qt::Key_Right : Qt::Key_PageUp);
    EXPECT_EQ(exposure()->amount, 25);
    EXPECT_EQ(child<QLabel>("value0")->text(), QLatin1String("25"));
    for (int i : {0, 1, 99})
        EXPECT_EQ(table.preview->green[i], uint16_t(std::min(1.25 * picture->green[i], 65535.0)));
    const int opaque = int(std::find(picture->alpha, picture->alpha + 100, 65535) - picture->alpha);
    ASSERT_LT(opaque, 100);
    EXPECT_EQ(qGreen(child<OpPreview>("oppreview")->shown().pixel(opaque, 0)),
              table.preview->green[opaque] >> 8);
    child<QComboBox>("combo0")->setCurrentIndex(1);
    EXPECT_EQ(exposure()->mode, 1);

    QTest::mouseClick(child<QPushButton>("reset"), Qt::LeftButton);
    EXPECT_EQ(exposure()->amount, 0);
    EXPECT_EQ(slider->value(), 0);
    EXPECT_EQ(child<QLabel>("value0")->text(), QLatin1String("0"));
    EXPECT_EQ(table.preview->alpha[5], picture->alpha[5]);

    QSignalSpy applied(dialog.get(), &Operators::operateRequested);
    QTest::mouseClick(child<QPushButton>("operate"), Qt::LeftButton);
    EXPECT_EQ(applied.count(), 1);
}

TEST_F(OperatorDialog, NStepsThroughTheOperators)
{
    open(120, 110);
    const auto row = [this] { return child<QComboBox>("opCombo")->currentIndex(); };
    QTest::keyClick(dialog.get(), Qt::Key_N, Qt::ShiftModifier);
    EXPECT_EQ(row(), 0);
    const int last = int(table.operators().size());
    for (int i = 0; i < last + 3; ++i)
        QTest::keyClick(dialog.get(), Qt::Key_N);
    EXPECT_EQ(row(), last);
    QTest::keyClick(dialog.get(), Qt::Key_N, Qt::ShiftModifier);
    EXPECT_EQ(row(), last - 1);
    QTest::keyClick(dialog.get(), Qt::Key_N, Qt::MetaModifier);
    EXPECT_EQ(row(), last - 1);
    EXPECT_EQ(host.newImageDialogs, 1);
}

struct HotkeyCase {
    const char *fault, *keys, *hotkey, *box;
};
class Hotkey : public OperatorDialog, public testing::WithParamInterface<HotkeyCase>
{
};

TEST_P(Hotkey, IsTakenOrRefused)
{
    const HotkeyCase &c = GetParam();
    ws.mainOpIndex = kExposure;
    open(120, 110);
    exposure()->hotkey = QStringLiteral("z");
    table.byId(kNegative)->hotkey = QStringLiteral("k");
    ModalPerson person(QString::fromLatin1(c.keys));
    QTest::mouseClick(child<QPushButton>("setHotkey"), Qt::LeftButton);
    EXPECT_EQ(person.grabbers, 1);
    EXPECT_EQ(exposure()->hotkey.toStdString(), c.hotkey);
    EXPECT_EQ(person.boxes.join(QLatin1Char('|')).toStdString(), c.box);
    if (*c.box) {
        EXPECT_GE(person.boxSize.width(), 500);
        EXPECT_GE(person.boxSize.height(), 200);
    }
    const QString shown = child<QLabel>("hotkeyLabel")->text();
    EXPECT_TRUE(qstrcmp(c.hotkey, "z") == 0 || shown == QLatin1String(c.hotkey));
}

INSTANTIATE_TEST_SUITE_P(
    Keys, Hotkey,
    testing::Values(
        HotkeyCase{"Reserved", "h", "z",
                   "Key Not Allowed: \"h\" cannot be used as a hotkey.\nHow about \"H\" instead?"},
        HotkeyCase{"UpperCaseOfTheReserved", "H", "H", ""},
        HotkeyCase{"OfAnother", "k", "z", "Key In Use: This hotkey is already in use"},
        HotkeyCase{"ItsOwnAgain", "z", "z", ""}, HotkeyCase{"GivenUp", "", "z", ""}),
    [](const auto &row) { return row.param.fault; });

TEST_F(OperatorDialog, ControlKeysGoToTheMainWindowUnlessThereIsText)
{
    class KeyCounter : public QWidget
    {
    public:
        int keys = 0;

    protected:
        void keyPressEvent(QKeyEvent *) override { ++keys; }
    };
    open(120, 110);
    KeyCounter main;
    dialog->setParent(&main, Qt::Dialog);
    QTest::keyClick(dialog.get(), Qt::Key_Control, Qt::ControlModifier);
    EXPECT_EQ(main.keys, 0);
    QTest::keyClick(dialog.get(), Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(main.keys, 1);
    table.currentOp = 3;
    QTest::keyClick(dialog.get(), Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(main.keys, 1);
    EXPECT_FALSE(dialog->modControl) << "recorded from the release too";
    table.currentOp = 0;
    dialog->setParent(nullptr);
}

TEST_F(OperatorDialog, SettingsKeepPreviewTypeAndCustomColors)
{
    open(120, 110);
    QTemporaryDir folder;
    QSettings store(folder.filePath(QStringLiteral("s.ini")), QSettings::IniFormat);
    dialog->settings(true); // without a store: nothing to write to
    table.store = &store;
    child<QComboBox>("comboBox")->setCurrentIndex(2);
    QColorDialog::setCustomColor(1, QColor(1, 2, 3));
    dialog->settings(true);
    EXPECT_EQ(store.value(QStringLiteral("CustomColorG1")).toInt(), 2);
    ws.opsX2Preview = false;
    QColorDialog::setCustomColor(1, Qt::white);
    store.setValue(QStringLiteral("CustomColorB1"), 4711);
    dialog->settings(false);
    EXPECT_TRUE(ws.opsX2Preview);
    EXPECT_EQ(child<QComboBox>("comboBox")->currentIndex(), 2);
    EXPECT_EQ(QColor(QColorDialog::customColor(1)), QColor(1, 2, 255));
    table.store = nullptr;
}

TEST_F(OperatorDialog, LeavesNothingBehindInTheTable)
{
    open(120, 110);
    dialog->selectOperator(kExposure);
    dialog.reset();
    EXPECT_EQ(table.page, nullptr);
    EXPECT_EQ(table.preview, nullptr);
    exposure()->reset(); // would show its fields on a page
}
