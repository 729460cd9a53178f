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
#include <QScreen>
#include <QSettings>
#include <QSignalBlocker>

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
    for (const OpWrapper *op : table->operators())
        ui->opCombo->addItem(op->menuName, op->id);
}

void Operators::selectOperator(int id)
{
    const int row = std::max(0, ui->opCombo->findData(id));
    if (row != ui->opCombo->currentIndex())
        ui->opCombo->setCurrentIndex(row);
    else
        on_opCombo_currentIndexChanged(row);
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
    const int oldId = table->currentOp;
    const int id = ui->opCombo->itemData(row).toInt();
    table->currentOp = id;
    workspace()->mainOpIndex = id;
    OpWrapper *op = currentOperator();
    table->page = op ? builder : nullptr;
    builder->rebuild(op);
    emit operatorChanged(id);
    refreshPreview();
    if (!viewHost() || (oldId != kIdCenterSelection && id != kIdCenterSelection))
        return;
    for (imgWindow *window : viewHost()->windows)
        window->refresh(); // that operator draws over the picture
}

void Operators::on_comboBox_currentIndexChanged(int row)
{
    workspace()->thumbnail = row == kPreviewThumb;
    workspace()->opsX2Preview = row == kPreviewTwo;
    refreshPreview();
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
    refreshPreview();
}

void Operators::on_before_pressed()
{
    beforeShown = true;
    refreshPreview();
}

void Operators::on_before_released()
{
    beforeShown = false;
    refreshPreview();
}

void Operators::on_operate_clicked()
{
    emit operateRequested();
}

void Operators::timetopreview()
{
    refreshPreview();
}

void Operators::updateButtons()
{
    const OpWrapper *op = currentOperator();
    ui->operate->setEnabled(op && currentView());
    ui->reset->setEnabled(op);
    ui->setHotkey->setEnabled(op);
    ui->hotkeyLabel->setText(op && !op->hotkey.isEmpty() ? op->hotkey : tr("none"));
}

void Operators::pressed(int index)
{
    if (OpWrapper *op = currentOperator())
        op->button(index);
    refreshPreview();
}

void Operators::checked(int index, bool state)
{
    if (OpWrapper *op = currentOperator())
        op->checkbox(index, state);
    tellScript();
    refreshPreview();
}

void Operators::chosen(int index, int value)
{
    if (OpWrapper *op = currentOperator())
        op->combo(index, value);
    refreshPreview();
}

void Operators::spun(int index, int value)
{
    if (OpWrapper *op = currentOperator())
        op->intspin(index, value);
    refreshPreview();
}

void Operators::spunDouble(int index, double value)
{
    if (OpWrapper *op = currentOperator())
        op->dubspin(index, value);
    refreshPreview();
}

void Operators::slid(int index, int value)
{
    if (OpWrapper *op = currentOperator())
        op->slider(index, value);
    refreshPreview();
}

void Operators::typed(int index, const QString &text)
{
    if (OpWrapper *op = currentOperator())
        op->lineedit(index, text);
    refreshPreview();
}

void Operators::editor0()
{
    if (OpWrapper *op = currentOperator())
        op->editor(0, reinterpret_cast<QObject *>(builder->editors.at(0)));
    refreshPreview();
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
    refreshPreview();
}

void Operators::ccursor0()
{
    if (const CodeEdit *editor = builder->codeEditors.at(0))
        scriptCursorLine = editor->currentLine();
}

void Operators::colorwellhit(int index, int value)
{
    if (OpWrapper *op = currentOperator())
        op->colorwell(index, value);
    refreshPreview();
}

void Operators::changeEvent(QEvent *event)
{
    QDialog::changeEvent(event);
    // The preview is drawn over the colours of the palette.
    if (event->type() == QEvent::PaletteChange && builder)
        refreshPreview();
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
