// SPDX-License-Identifier: GPL-3.0-or-later
// Recording: what is done by hand is written into the Script operator as a macro.
#include "app/mainwindow.h"

#include "app/scriptdesk.h"
#include "operators/base/operatortable.h"
#include "operators/dialog/operators.h"
#include "script/run/macrorecorder.h"
#include "script/run/script.h"
#include "ui_mainwindow.h"
#include "views/commitselection.h"
#include "views/imgwindow.h"

#include <QSignalBlocker>

/// After the operators and the script desk were made.
void MainWindow::createRecorder()
{
    auto *script = qobject_cast<Script *>(table->byId(kScriptOperator));
    if (!script)
        return;
    macroRecorder = std::make_unique<MacroRecorder>(table.get(), script);
    macroRecorder->textChanged = [this]() {
        scripts->followOperator();
        operators->updateScriptButtons();
        scriptTextChanged();
    };
    table->applyObserver = [this](image *target, int id, bool begins) {
        macroRecorder->applied(*target, id, begins);
    };
}

MacroRecorder *MainWindow::recorder()
{
    return macroRecorder.get();
}

void MainWindow::on_actionRecord_Macro_toggled(bool recording)
{
    imgWindow *window = validCurrent();
    if (!macroRecorder || busy > 0) {
        const QSignalBlocker quiet(ui->actionRecord_Macro);
        ui->actionRecord_Macro->setChecked(!recording);
        return;
    }
    if (window)
        window->settleJobs(); // a drag of the wand is over
    macroRecorder->setOn(recording, window ? selectionTaker(window)->img : nullptr);
    statusText(recording ? tr("Recording: what you select and apply is added to the script")
                         : tr("Recording stopped: the macro is in the script editor"));
}
