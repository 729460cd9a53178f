// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/dialog/dialogfixture.h"

#include "operators/base/oppage.h"
#include "operators/base/opwrapper.h"
#include "operators/dialog/colorwell.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSlider>

namespace
{
/// Fills every pool of the page and keeps what its handlers are told.
class Crowd : public OpWrapper
{
public:
    using OpWrapper::OpWrapper;

    void build(OpPage *page) override
    {
        // One more of each than there is room for.
        for (int i = 0; i <= 6; ++i)
            added << page->addSlider(QStringLiteral("S%1").arg(i), -9, 9, 0, true, "%");
        for (int i = 0; i <= 9; ++i) {
            page->addLabel(QStringLiteral("I%1").arg(i), OpPage::LabelAlign::Right, false);
            added << page->addIntSpin(0, 99, 0, false);
            added << page->addDoubleSpin(0, 9, 0.25, 2, 0, true);
            added << page->addCheck(QStringLiteral("check"), false, false);
        }
        for (int i = 0; i <= 13; ++i)
            added << page->addComboData({"a", "b"}, {5, 6}, 0, i % 3 == 2);
        for (int i = 0; i <= 8; ++i)
            added << page->addButton(QStringLiteral("B"), false);
        for (int i = 0; i <= 2; ++i)
            added << page->addLine(QString(), false);
        added << page->addEditor(QString()) << page->addEditor(QString());
        page->addWell(0x1234, 0x5678, 0x9ABC, false);
        page->addWell(65535, 0, 0, true);
    }
    int slider(int i, int v) override { return told("slider", i, v); }
    int intspin(int i, int v) override { return told("intspin", i, v); }
    int dubspin(int i, double v) override { return told("dubspin", i, v); }
    int combo(int i, int v) override { return told("combo", i, v); }
    int checkbox(int i, bool v) override { return told("checkbox", i, v); }
    int button(int i) override { return told("button", i, 0); }
    int lineedit(int i, QString v) override { return told("lineedit", i, v.toDouble()); }
    int editor(int i, QObject *sender) override
    {
        return told("editor", i, qobject_cast<QPlainTextEdit *>(sender)->toPlainText().toDouble());
    }
    int colorwell(int i, int v) override { return told("colorwell", i, v); }

    int told(const char *handler, int index, double value)
    {
        last = QStringLiteral("%1 %2 %3").arg(handler).arg(index).arg(value);
        return 0;
    }
    QString last;
    QList<int> added;
};
} // namespace

class Page : public DialogTest
{
protected:
    void SetUp() override
    {
        auto made = std::make_unique<Crowd>(&table);
        crowd = made.get();
        table.add(1, 0, "crowd", "Crowd", "opcrowd.html", std::move(made));
        makeDialog();
        dialog->selectOperator(1);
    }
    template <class Widget, class Act>
    void check(const char *pool, int size, const char *handler, double value, Act act)
    {
        for (int i = 0; i < size; ++i) {
            const QByteArray name = pool + QByteArray::number(i);
            act(child<Widget>(name.constData()));
            EXPECT_EQ(crowd->last.toStdString(),
                      QStringLiteral("%1 %2 %3").arg(handler).arg(i).arg(value).toStdString());
        }
        EXPECT_EQ(dialog->findChild<Widget *>(pool + QString::number(size)), nullptr);
    }
    Crowd *crowd = nullptr;
};

TEST_F(Page, EveryControlReachesItsHandler)
{
    EXPECT_EQ(crowd->added.count(-1), 8) << "one refusal for each pool that is full";
    check<QSlider>("slider", 6, "slider", 1, [](QSlider *w) { QTest::keyClick(w, Qt::Key_Right); });
    check<QSpinBox>("intspin", 9, "intspin", 1,
                    [](QSpinBox *w) { QTest::keyClick(w, Qt::Key_Up); });
    check<QDoubleSpinBox>("dubspin", 9, "dubspin", 0.25,
                          [](QDoubleSpinBox *w) { QTest::keyClick(w, Qt::Key_Up); });
    check<QComboBox>("combo", 13, "combo", 1,
                     [](QComboBox *w) { QTest::keyClick(w, Qt::Key_Down); });
    check<QCheckBox>("checkbox", 9, "checkbox", 1,
                     [](QCheckBox *w) { QTest::keyClick(w, Qt::Key_Space); });
    check<QPushButton>("button", 8, "button", 0,
                       [](QPushButton *w) { QTest::mouseClick(w, Qt::LeftButton); });
    check<QLineEdit>("lineeditor", 2, "lineedit", 7,
                     [](QLineEdit *w) { QTest::keyClicks(w, "7"); });
    check<QPlainTextEdit>("editor", 1, "editor", 8,
                          [](QPlainTextEdit *w) { QTest::keyClicks(w, "8"); });
    QTest::mouseClick(child<ColorWell>("well0"), Qt::LeftButton);
    EXPECT_EQ(crowd->last, QStringLiteral("colorwell 0 %1").arg(double(0x12569A)));
    QTest::keyClick(child<ColorWell>("well1"), Qt::Key_Space);
    EXPECT_EQ(crowd->last, QStringLiteral("colorwell 1 %1").arg(double(0xFF0000)));
}

TEST_F(Page, ShownValuesAreNoChanges)
{
    OpPage *page = table.page;
    page->setSlider(2, 5);
    page->setIntSpin(1, 42);
    page->setDoubleSpin(0, 1.5);
    page->setCombo(12, 1);
    page->setCheck(8, true);
    page->setLine(1, QStringLiteral("text"));
    for (int index : {-1, 99}) { // not on this page
        page->setSlider(index, 1);
        page->setCombo(index, 1);
        page->setLine(index, QString());
    }
    EXPECT_TRUE(crowd->last.isEmpty());
    EXPECT_EQ(child<QLabel>("value2")->text(), QLatin1String("5%"));
    EXPECT_EQ(child<QSpinBox>("intspin1")->value(), 42);
    EXPECT_EQ(child<QComboBox>("combo12")->currentData().toInt(), 6);
    EXPECT_TRUE(child<QCheckBox>("checkbox8")->isChecked());
}

TEST_F(Page, NamesControlsForScreenReaders)
{
    const QWidget *shown = child<QWidget>("operatorPage");
    for (const QWidget *widget :
         shown->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly)) {
        const bool named = !widget->accessibleName().isEmpty();
        EXPECT_TRUE(named || widget->focusPolicy() == Qt::NoFocus)
            << widget->objectName().toStdString();
    }
    EXPECT_EQ(child<QSpinBox>("intspin3")->accessibleName(), QLatin1String("I3"));
    EXPECT_EQ(child<QSlider>("slider1")->accessibleName(), QLatin1String("S1"));
}

TEST_F(Page, AnOldPageIsNotHeardAnyMore)
{
    auto *slider = child<QSlider>("slider0");
    dialog->selectOperator(kNegative);
    slider->setValue(3);
    EXPECT_TRUE(crowd->last.isEmpty());
}
