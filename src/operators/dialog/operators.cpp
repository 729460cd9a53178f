// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/dialog/operators.h"

#include "core/workspace.h"
#include "operators/base/operatortable.h"
#include "operators/base/opwrapper.h"
#include "operators/dialog/histogramview.h"
#include "operators/dialog/oppreview.h"
#include "operators/dialog/pagebuilder.h"
#include "views/codeedit.h"
#include "views/imgwindow.h"
#include "views/viewhost.h"

#include "ui_operators.h"

#include <QColorDialog>
#include <QGuiApplication>
#include <QPointer>
#include <QScreen>
#include <QSettings>
#include <QSignalBlocker>
#include <QStandardItemModel>

namespace
{
constexpr int kIdCenterSelection = 10;
enum PreviewType { kPreviewThumb, kPreviewOne, kPreviewTwo };
} // namespace

Operators::Operators(OperatorTable *shownTable, QWidget *parent)
    : QDialog(parent), table(shownTable), ui(std::make_unique<Ui::Operators>())
{
    ui->setupUi(this);
    makeInternalImages();
    builder = new PageBuilder(this, ui->pageArea, ui->setHotkey);
    connect(ui->oppreview, &OpPreview::prod, this, &Operators::prod);
    refreshTimer.setSingleShot(true);
    connect(&refreshTimer, &QTimer::timeout, this, &Operators::refreshWhenFree);
    for (QComboBox *combo : {ui->opCombo, ui->comboBox})
        combo->installEventFilter(this);
    fillOperatorCombo();
    showPreviewType();
    selectOperator(workspace()->mainOpIndex);
}

Operators::~Operators()
{
    table->page = nullptr;
    table->preview = table->previewHalf = table->previewThumb = nullptr;
}

void Operators::fillOperatorCombo()
{
    const QSignalBlocker quiet(ui->opCombo);
    ui->opCombo->addItem(tr("No Operator Selected"), 0);
    const auto *items = qobject_cast<QStandardItemModel *>(ui->opCombo->model());
    for (const OpWrapper *op : table->operators()) {
        ui->opCombo->addItem(op->menuName, op->id);
        if (!op->self && items)
            items->item(ui->opCombo->count() - 1)->setEnabled(false);
    }
}

bool Operators::isChoosable(int row) const
{
    const int id = ui->opCombo->itemData(row).toInt();
    const OpWrapper *op = table->byId(id);
    return row >= 0 && (id == 0 || (op && op->self));
}

void Operators::selectOperator(int id)
{
    const int found = ui->opCombo->findData(id);
    const int row = isChoosable(found) ? found : 0;
    if (row != ui->opCombo->currentIndex())
        ui->opCombo->setCurrentIndex(row);
    else
        rowChosen(row);
}

int Operators::firstOperator() const
{
    for (const OpWrapper *op : table->operators())
        if (op->self)
            return op->id;
    return 0;
}

OpWrapper *Operators::currentOperator() const
{
    OpWrapper *op = table->current();
    return op ? op->self : nullptr;
}

imgWindow *Operators::currentView() const
{
    const ViewHost *host = viewHost();
    return host ? host->validCurrent() : nullptr;
}

void Operators::on_opCombo_currentIndexChanged(int row)
{
    // Searching the list by letters can come upon a row without an operator.
    if (isChoosable(row))
        rowChosen(row);
    else
        ui->opCombo->setCurrentIndex(shownRow);
}

void Operators::rowChosen(int row)
{
    const int oldId = table->currentOp;
    const int id = ui->opCombo->itemData(row).toInt();
    shownRow = row;
    table->currentOp = id;
    workspace()->mainOpIndex = id;
    OpWrapper *op = currentOperator();
    table->page = op ? builder : nullptr;
    builder->rebuild(op);
    ui->gethelp->setToolTip(op ? tr("Open manual to\n\"%1\"\noperator help page").arg(helpPageName)
                               : QString());
    emit operatorChanged(id);
    updateButtons();
    schedulePreview();
    if (!viewHost() || (oldId != kIdCenterSelection && id != kIdCenterSelection))
        return;
    for (imgWindow *window : viewHost()->windows)
        window->refresh(); // that operator draws over the picture
}

void Operators::on_comboBox_currentIndexChanged(int row)
{
    workspace()->thumbnail = row == kPreviewThumb;
    workspace()->opsX2Preview = row == kPreviewTwo;
    schedulePreview();
}

void Operators::showPreviewType()
{
    const QSignalBlocker quiet(ui->comboBox);
    ui->comboBox->setCurrentIndex(workspace()->thumbnail      ? kPreviewThumb
                                  : workspace()->opsX2Preview ? kPreviewTwo
                                                              : kPreviewOne);
}

void Operators::on_reset_clicked()
{
    if (OpWrapper *op = currentOperator())
        op->reset();
    tellScript();
    schedulePreview();
}

void Operators::on_before_pressed()
{
    beforeShown = true;
    scheduleKeepingSource();
}

void Operators::on_before_released()
{
    beforeShown = false;
    scheduleKeepingSource();
}

void Operators::on_operate_clicked()
{
    emit operateRequested();
}

void Operators::on_gethelp_clicked()
{
    if (const OpWrapper *op = currentOperator())
        emit helpRequested(op->id);
}

void Operators::timetopreview()
{
    updateButtons();
    schedulePreview();
}

void Operators::updateButtons()
{
    const OpWrapper *op = currentOperator();
    ui->operate->setEnabled(op && currentView());
    ui->reset->setEnabled(op);
    ui->setHotkey->setEnabled(op);
    ui->gethelp->setEnabled(op && !op->helpPage.isEmpty());
    ui->hotkeyLabel->setText(op && !op->hotkey.isEmpty() ? op->hotkey : tr("none"));
    updateScriptButtons();
}

void Operators::pressed(int index)
{
    if (OpWrapper *op = currentOperator())
        op->button(index);
    schedulePreview();
}

void Operators::checked(int index, bool state)
{
    if (OpWrapper *op = currentOperator())
        op->checkbox(index, state);
    tellScript();
    parameterChanged();
}

void Operators::chosen(int index, int value)
{
    if (OpWrapper *op = currentOperator())
        op->combo(index, value);
    parameterChanged();
}

void Operators::spun(int index, int value)
{
    if (OpWrapper *op = currentOperator())
        op->intspin(index, value);
    parameterChanged();
}

void Operators::spunDouble(int index, double value)
{
    if (OpWrapper *op = currentOperator())
        op->dubspin(index, value);
    parameterChanged();
}

void Operators::slid(int index, int value)
{
    if (OpWrapper *op = currentOperator())
        op->slider(index, value);
    parameterChanged();
}

void Operators::typed(int index, const QString &text)
{
    if (OpWrapper *op = currentOperator())
        op->lineedit(index, text);
    parameterChanged();
}

void Operators::editor0()
{
    if (OpWrapper *op = currentOperator())
        op->editor(0, reinterpret_cast<QObject *>(builder->editors.at(0)));
    parameterChanged();
}

void Operators::tellScript()
{
    if (builder->codeEditors.count() > 0)
        emit scriptEdited();
}

void Operators::ceditor0()
{
    if (OpWrapper *op = currentOperator())
        op->codeedit(builder->codeEditors.at(0));
    tellScript();
    parameterChanged();
}

void Operators::knotchosen()
{
    if (OpWrapper *op = currentOperator())
        op->curveEdited();
}

void Operators::curveedited()
{
    knotchosen();
    parameterChanged();
}

void Operators::ccursor0()
{
    if (const CodeEdit *editor = builder->codeEditors.at(0))
        scriptCursorLine = editor->currentLine();
}

void Operators::colorwellhit(int index, int value)
{
    const QPointer<OpWrapper> op = currentOperator();
    if (!op)
        return;
    const QColor chosen = QColorDialog::getColor(QColor(QRgb(value)), this, tr("Choose a Color"));
    // The person may have been away for long: the page may show another operator.
    if (!chosen.isValid() || op != currentOperator())
        return;
    op->colorwell(index, int(chosen.rgb() & 0xFFFFFF));
    parameterChanged();
}

void Operators::changeEvent(QEvent *event)
{
    QDialog::changeEvent(event);
    // The preview is drawn over the colours of the palette.
    if (event->type() == QEvent::PaletteChange && builder)
        scheduleKeepingSource();
}

void Operators::resizeEvent(QResizeEvent *event)
{
    QDialog::resizeEvent(event);
    fitScriptButtons();
}

void Operators::settings(bool save)
{
    QSettings *store = table->store;
    if (!store)
        return;
    if (save) {
        store->setValue(QStringLiteral("opsX2Preview"), workspace()->opsX2Preview);
        savePlace();
    } else {
        workspace()->opsX2Preview =
            store->value(QStringLiteral("opsX2Preview"), workspace()->opsX2Preview).toBool();
        showPreviewType();
        if (workspace()->rememberPosition)
            restorePlace();
    }
    for (int i = 0; i < QColorDialog::customCount(); ++i) {
        QColor colour = QColorDialog::customColor(i);
        const QString keys[] = {QStringLiteral("CustomColorR%1").arg(i),
                                QStringLiteral("CustomColorG%1").arg(i),
                                QStringLiteral("CustomColorB%1").arg(i)};
        const int parts[] = {colour.red(), colour.green(), colour.blue()};
        int read[3];
        for (int c = 0; c < 3; ++c) {
            if (save)
                store->setValue(keys[c], parts[c]);
            else
                read[c] = qBound(0, store->value(keys[c], parts[c]).toInt(), 255);
        }
        if (!save)
            QColorDialog::setCustomColor(i, QColor(read[0], read[1], read[2]));
    }
}

void Operators::savePlace()
{
    table->store->setValue(QStringLiteral("opsX"), x());
    table->store->setValue(QStringLiteral("opsY"), y());
}

void Operators::restorePlace()
{
    bool isX = false, isY = false;
    const QPoint place(table->store->value(QStringLiteral("opsX")).toInt(&isX),
                       table->store->value(QStringLiteral("opsY")).toInt(&isY));
    // A place on a screen that is gone would hide the dialog for good.
    if (isX && isY && QGuiApplication::screenAt(place + QPoint(20, 20)))
        move(place);
}
