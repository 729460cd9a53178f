// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/dialog/pagebuilder.h"

#include "operators/base/operatortable.h"
#include "operators/base/opwrapper.h"
#include "operators/dialog/colorwell.h"
#include "operators/dialog/crange.h"
#include "operators/dialog/curve.h"
#include "operators/dialog/operators.h"
#include "views/codeedit.h"
#include "views/imgwindow.h"
#include "views/viewhost.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMetaMethod>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>

namespace
{
constexpr int kPageRows = 31;
constexpr int kWideStretch = 100; ///< of a curve against the room that is left below it
constexpr int kLeastHeight = 120, kMostHeight = 340; ///< of the page before it scrolls, at 96 dpi
constexpr int kRangeStripIndent = 31;

QFont valueFont(const QFont &beside)
{
    QFont font(QStringLiteral("Courier"));
    font.setStyleHint(QFont::TypeWriter);
    font.setPointSizeF(beside.pointSizeF() > 0 ? beside.pointSizeF() : 10);
    return font;
}
} // namespace

PageBuilder::PageBuilder(Operators *owner, QScrollArea *pageArea, QWidget *start)
    : QObject(owner), dialog(owner), area(pageArea), tabStart(start), lastControl(start)
{
}

void PageBuilder::rebuild(OpWrapper *op)
{
    clear();
    if (op)
        op->build(this);
    if (op && rows.empty()) // an empty page would look like one that failed
        addLabel(Operators::tr("This operator has no settings."), LabelAlign::Left, true);
    alignLabels();
    column->addStretch(1);
    connectPage();
    dialog->helpPageName = op ? op->helpPage : QString();
    page->show();
    fitArea();
}

void PageBuilder::fitArea()
{
    const int wanted = page->sizeHint().height() + 2 * area->frameWidth();
    const auto scaled = [this](int height) { return height * area->logicalDpiY() / 96; };
    area->setMinimumHeight(std::clamp(wanted, scaled(kLeastHeight), scaled(kMostHeight)));
    // A page too wide for the dialog would need a second scroll bar.
    area->setMinimumWidth(page->minimumSizeHint().width() + 2 * area->frameWidth() +
                          area->verticalScrollBar()->sizeHint().width());
}

void PageBuilder::clear()
{
    if (QWidget *old = area->takeWidget()) {
        // The old page may be the sender of the signal that is being handled, so it goes
        // later, and is not heard again until then.
        for (QObject *child : old->findChildren<QObject *>())
            child->disconnect(dialog);
        old->hide();
        old->deleteLater();
    }
    buttons.clear();
    checks.clear();
    combos.clear();
    intSpins.clear();
    doubleSpins.clear();
    sliders.clear();
    lines.clear();
    editors.clear();
    codeEditors.clear();
    wells.clear();
    curve = nullptr;
    strips.clear();
    valueLabels = {};
    rows.clear();
    row = 0;
    labels.clear();
    pendingLabel = nullptr;
    lastControl = tabStart;
    page = new QWidget;
    page->setObjectName(QStringLiteral("operatorPage"));
    column = new QVBoxLayout(page);
    area->setWidget(page);
    page->hide(); // what is added to a page that is seen has no size before the next events
}

QHBoxLayout *PageBuilder::currentRow()
{
    while (int(rows.size()) <= row) {
        auto *made = new QHBoxLayout;
        column->addLayout(made);
        rows.push_back(made);
    }
    return rows[size_t(row)];
}

void PageBuilder::nextRow()
{
    // What does not fit into the column any more shares its last row.
    row = std::min(row + 1, kPageRows - 1);
    pendingLabel = nullptr;
}

void PageBuilder::place(QWidget *control, const QString &name, int stretch, bool advance)
{
    control->setObjectName(name);
    if (pendingLabel) {
        pendingLabel->setBuddy(control);
        if (control->accessibleName().isEmpty())
            control->setAccessibleName(pendingLabel->text());
        pendingLabel = nullptr;
    }
    if (control->accessibleName().isEmpty())
        control->setAccessibleName(name);
    currentRow()->addWidget(control, stretch);
    QWidget::setTabOrder(lastControl, control);
    lastControl = control;
    if (advance)
        nextRow();
}

QLabel *PageBuilder::makeLabel(const QString &text)
{
    auto *label = new QLabel(text, page);
    label->setObjectName(QStringLiteral("label%1").arg(labels.size()));
    labels.push_back(label);
    return label;
}

int PageBuilder::addSlider(const QString &label, int low, int high, int value, bool showsValue,
                           const QString &unit)
{
    if (sliders.full())
        return -1;
    QLabel *caption = makeLabel(label);
    currentRow()->addWidget(caption);
    auto *slider = new QSlider(Qt::Horizontal, page);
    slider->setRange(low, high);
    slider->setPageStep(1);
    slider->setValue(value);
    const int index = sliders.add(slider);
    if (showsValue) {
        auto *number = new QLabel(page);
        number->setObjectName(QStringLiteral("value%1").arg(index));
        number->setFont(valueFont(number->font()));
        currentRow()->addWidget(number);
        valueLabels[size_t(index)] = {number, unit};
        connect(slider, &QSlider::valueChanged, number,
                [this, index](int changed) { showValue(index, changed); });
        showValue(index, slider->value());
    }
    currentRow()->addStretch(1);
    nextRow();
    pendingLabel = caption;
    place(slider, QStringLiteral("slider%1").arg(index), 1, true);
    return index;
}

void PageBuilder::showValue(int index, int value)
{
    const ValueLabel &shown = valueLabels[size_t(index)];
    if (shown.label)
        shown.label->setText(QString::number(value) + shown.unit);
}

int PageBuilder::addIntSpin(int low, int high, int value, bool advance)
{
    if (intSpins.full())
        return -1;
    auto *spin = new QSpinBox(page);
    spin->setRange(low, high);
    spin->setValue(value);
    const int index = intSpins.add(spin);
    place(spin, QStringLiteral("intspin%1").arg(index), 0, advance);
    return index;
}

int PageBuilder::addDoubleSpin(double low, double high, double step, int decimals, double value,
                               bool advance)
{
    if (doubleSpins.full())
        return -1;
    auto *spin = new QDoubleSpinBox(page);
    spin->setDecimals(decimals); // first: it rounds the range and the value
    spin->setRange(low, high);
    spin->setSingleStep(step);
    spin->setValue(value);
    const int index = doubleSpins.add(spin);
    place(spin, QStringLiteral("dubspin%1").arg(index), 0, advance);
    return index;
}

int PageBuilder::addCombo(const QStringList &names, int index, bool advance)
{
    return addComboData(names, QVariantList(), index, advance);
}

int PageBuilder::addComboData(const QStringList &names, const QVariantList &values, int index,
                              bool advance)
{
    if (combos.full())
        return -1;
    auto *combo = new QComboBox(page);
    for (int i = 0; i < names.size(); ++i)
        combo->addItem(names.at(i), values.value(i));
    combo->setCurrentIndex(index);
    combo->installEventFilter(dialog);
    const int slot = combos.add(combo);
    place(combo, QStringLiteral("combo%1").arg(slot), 1, advance);
    return slot;
}

int PageBuilder::addCheck(const QString &text, bool state, bool advance)
{
    if (checks.full())
        return -1;
    auto *check = new QCheckBox(text, page);
    check->setChecked(state);
    check->setAccessibleName(text);
    const int index = checks.add(check);
    place(check, QStringLiteral("checkbox%1").arg(index), 0, advance);
    return index;
}

int PageBuilder::addButton(const QString &text, bool advance)
{
    if (buttons.full())
        return -1;
    auto *made = new QPushButton(text, page);
    made->setAutoDefault(false);
    made->setAccessibleName(text);
    const int index = buttons.add(made);
    place(made, QStringLiteral("button%1").arg(index), 0, advance);
    return index;
}

int PageBuilder::addLabel(const QString &text, LabelAlign align, bool advance)
{
    QLabel *label = makeLabel(text);
    const int index = int(labels.size()) - 1;
    const Qt::Alignment side = align == LabelAlign::Right    ? Qt::AlignRight
                               : align == LabelAlign::Centre ? Qt::AlignHCenter
                                                             : Qt::AlignLeft;
    label->setAlignment(side | Qt::AlignVCenter);
    currentRow()->addWidget(label, advance ? 1 : 0);
    if (advance)
        nextRow();
    else
        pendingLabel = label;
    return index;
}

int PageBuilder::addLine(const QString &text, bool advance)
{
    if (lines.full())
        return -1;
    auto *line = new QLineEdit(text, page);
    const int index = lines.add(line);
    place(line, QStringLiteral("lineeditor%1").arg(index), 1, advance);
    return index;
}

int PageBuilder::addEditor(const QString &text)
{
    if (editors.full())
        return -1;
    auto *editor = new QPlainTextEdit(text, page);
    editor->setLineWrapMode(QPlainTextEdit::WidgetWidth);
    editor->setTabChangesFocus(true);
    const int index = editors.add(editor);
    place(editor, QStringLiteral("editor%1").arg(index), 1, true);
    return index;
}

int PageBuilder::addCodeEditor(const QString &text)
{
    if (codeEditors.full())
        return -1;
    auto *editor = new CodeEdit(page);
    editor->setMarginShown(false);
    editor->setWords(dialog->scriptWords);
    editor->setPlainText(text);
    editor->setTabChangesFocus(true);
    const int index = codeEditors.add(editor);
    place(editor, QStringLiteral("ceditor%1").arg(index), 1, true);
    return index;
}

int PageBuilder::addWell(int red, int green, int blue, bool advance)
{
    const int index = int(wells.size());
    auto *well = new ColorWell(page, index);
    well->setColor16(red, green, blue);
    wells.push_back(well);
    place(well, QStringLiteral("well%1").arg(index), 0, advance);
    return index;
}

void PageBuilder::setSlider(int index, int value)
{
    if (QSlider *slider = sliders.at(index)) {
        const QSignalBlocker quiet(slider);
        slider->setValue(value);
        showValue(index, slider->value());
    }
}

void PageBuilder::setIntSpin(int index, int value)
{
    if (QSpinBox *spin = intSpins.at(index)) {
        const QSignalBlocker quiet(spin);
        spin->setValue(value);
    }
}

void PageBuilder::setDoubleSpin(int index, double value)
{
    if (QDoubleSpinBox *spin = doubleSpins.at(index)) {
        const QSignalBlocker quiet(spin);
        spin->setValue(value);
    }
}

void PageBuilder::setCombo(int index, int value)
{
    if (QComboBox *combo = combos.at(index)) {
        const QSignalBlocker quiet(combo);
        combo->setCurrentIndex(value);
    }
}

void PageBuilder::setCheck(int index, bool state)
{
    if (QCheckBox *check = checks.at(index)) {
        const QSignalBlocker quiet(check);
        check->setChecked(state);
    }
}

void PageBuilder::setLine(int index, const QString &text)
{
    if (QLineEdit *line = lines.at(index)) {
        const QSignalBlocker quiet(line);
        line->setText(text);
    }
}

void PageBuilder::setCodeEditor(int index, const QString &text)
{
    if (CodeEdit *editor = codeEditors.at(index)) {
        const QSignalBlocker quiet(editor);
        editor->replaceText(text);
    }
}

void PageBuilder::setWell(int index, int red, int green, int blue)
{
    if (index >= 0 && index < int(wells.size()))
        wells[size_t(index)]->setColor16(red, green, blue);
}

void PageBuilder::setLabel(int index, const QString &text)
{
    if (index >= 0 && index < int(labels.size()))
        labels[size_t(index)]->setText(text);
}

int PageBuilder::addRangeStrip(std::function<uint32_t(double)> colourAt)
{
    // A wide item has a row of its own.
    if (currentRow()->count() > 0)
        nextRow();
    const int index = int(strips.size());
    auto *strip = new cRange(std::move(colourAt), dialog->width() - kRangeStripIndent, page);
    strip->setObjectName(QStringLiteral("range%1").arg(index));
    strip->setAccessibleName(Operators::tr("Range of colors"));
    strips.push_back(strip);
    currentRow()->addWidget(strip, 1);
    nextRow();
    return index;
}

int PageBuilder::addCurve(ToneCurve *edited)
{
    if (curve)
        return -1;
    if (currentRow()->count() > 0)
        nextRow();
    curve = new Curve(edited, page);
    column->setStretchFactor(currentRow(), kWideStretch);
    place(curve, QStringLiteral("curve0"), 1, true);
    return 0;
}

void PageBuilder::setRangeStrip(int index)
{
    if (index >= 0 && index < int(strips.size()))
        strips[size_t(index)]->update();
}

void PageBuilder::setCurve(int index)
{
    if (curve && index == 0)
        curve->showCurve();
}

void PageBuilder::showCurveSource(const image *picture)
{
    if (curve)
        curve->setPicture(picture);
}

void PageBuilder::chooseOperator(int id)
{
    dialog->selectOperator(id);
}

void PageBuilder::armEyedropper()
{
    ViewHost *host = viewHost();
    imgWindow *window = host ? host->validCurrent() : nullptr;
    if (!window)
        return;
    host->armDropper(true);
    window->raise();
    window->activateWindow();
}

QString PageBuilder::askFile(const QString &title, const QString &filter, bool save)
{
    ViewHost *host = viewHost();
    return host ? host->askFile(dialog, title, filter, save) : QString();
}

void PageBuilder::alignLabels()
{
    std::vector<QLabel *> first;
    for (const QHBoxLayout *line : rows) {
        auto *label = line->count() ? qobject_cast<QLabel *>(line->itemAt(0)->widget()) : nullptr;
        if (label && line->count() > 1 && label->buddy() && line->indexOf(label->buddy()) == 1)
            first.push_back(label);
    }
    int widest = 0;
    for (const QLabel *label : first)
        widest = std::max(widest, label->sizeHint().width());
    for (QLabel *label : first)
        label->setMinimumWidth(widest);
    // A row of controls that do not grow keeps to the left.
    for (QHBoxLayout *line : rows) {
        bool grows = false;
        for (int i = 0; i < line->count(); ++i)
            grows = grows || line->stretch(i) > 0;
        if (!grows)
            line->addStretch(1);
    }
}

void PageBuilder::hook(QObject *widget, const char *signal, const char *slot, int index,
                       const char *arguments)
{
    const QMetaObject *from = widget->metaObject();
    const QMetaObject *to = dialog->metaObject();
    const QByteArray name = QByteArray(slot) + QByteArray::number(index) + arguments;
    connect(widget, from->method(from->indexOfSignal(signal)), dialog,
            to->method(to->indexOfSlot(name.constData())));
}

void PageBuilder::connectPage()
{
    for (int i = 0; i < buttons.count(); ++i)
        hook(buttons.at(i), "clicked()", "button", i, "()");
    for (int i = 0; i < checks.count(); ++i)
        hook(checks.at(i), "clicked(bool)", "checkbox", i, "(bool)");
    for (int i = 0; i < combos.count(); ++i)
        hook(combos.at(i), "currentIndexChanged(int)", "combo", i, "(int)");
    for (int i = 0; i < intSpins.count(); ++i)
        hook(intSpins.at(i), "valueChanged(int)", "intspin", i, "(int)");
    for (int i = 0; i < doubleSpins.count(); ++i)
        hook(doubleSpins.at(i), "valueChanged(double)", "dubspin", i, "(double)");
    for (int i = 0; i < sliders.count(); ++i)
        hook(sliders.at(i), "valueChanged(int)", "slider", i, "(int)");
    for (int i = 0; i < lines.count(); ++i)
        hook(lines.at(i), "textChanged(QString)", "lineeditor", i, "(QString)");
    for (int i = 0; i < editors.count(); ++i)
        hook(editors.at(i), "textChanged()", "editor", i, "()");
    for (int i = 0; i < codeEditors.count(); ++i) {
        hook(codeEditors.at(i), "textChanged()", "ceditor", i, "()");
        hook(codeEditors.at(i), "cursorPositionChanged()", "ccursor", i, "()");
    }
    if (curve) {
        connect(curve, &Curve::knotChosen, dialog, &Operators::knotchosen);
        connect(curve, &Curve::edited, dialog, &Operators::curveedited);
    }
    for (ColorWell *well : wells)
        connect(well, &ColorWell::sendId, dialog, &Operators::colorwellhit);
}
