// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/dialog/operators.h"

#include "core/workspace.h"
#include "operators/base/operatortable.h"
#include "script/run/script.h"

#include "ui_operators.h"

namespace
{
constexpr int kIdScript = 82;
}

Script *Operators::scriptOperator() const
{
    return qobject_cast<Script *>(table->byId(kIdScript));
}

void Operators::updateScriptButtons()
{
    const OpWrapper *op = currentOperator();
    const Script *script = scriptOperator();
    ui->buildscript->setEnabled(script && op && op->scriptable && op != script);
    ui->reset_2->setEnabled(script && !script->text.isEmpty());
}

/// The row has the long text of its last button where there is room.
void Operators::fitScriptButtons()
{
    const QString texts[] = {tr("Clear Script"), tr("CS")};
    const auto fits = [this](const QString &text) {
        ui->reset_2->setText(text);
        return ui->reset_2->sizeHint().width() + ui->buildscript->sizeHint().width() +
                   ui->gethelp->sizeHint().width() + 2 * ui->scriptRow->spacing() <=
               contentsRect().width() - layout()->contentsMargins().left() -
                   layout()->contentsMargins().right();
    };
    if (!fits(texts[0]))
        ui->reset_2->setText(texts[1]);
}

void Operators::on_buildscript_clicked()
{
    OpWrapper *op = currentOperator();
    Script *script = scriptOperator();
    if (!op || !script || !op->scriptable)
        return;
    QString line;
    op->scriptLine(&line);
    QString text = script->text;
    if (!text.isEmpty() && !text.endsWith(QLatin1Char('\n')))
        text += QLatin1Char('\n');
    script->setText(text + line);
    emit scriptEdited();
    updateScriptButtons();
    if (workspace()->showBuiltScript)
        selectOperator(kIdScript);
    else
        workspace()->statusText(tr("Added to the script: %1").arg(line.trimmed()));
}

void Operators::on_reset_2_clicked()
{
    Script *script = scriptOperator();
    if (!script || script->text.isEmpty())
        return;
    constexpr int kKeep = 0, kErase = 1;
    if (workspace()->confirmClearScript &&
        workspace()->question(tr("Clear Script"), tr("Erase entire script?"),
                              {tr("Keep"), tr("Erase")}, kErase, kKeep) != kErase)
        return;
    script->setText(QString());
    emit scriptEdited();
    updateScriptButtons();
    schedulePreview();
}
