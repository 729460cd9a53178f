// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/mainwindow.h"

#include "app/getstringgeneral.h"
#include "app/scriptdesk.h"
#include "app/singleslider.h"
#include "operators/base/operatortable.h"
#include "operators/base/opwrapper.h"
#include "operators/dialog/operators.h"
#include "script/run/script.h"
#include "ui_mainwindow.h"
#include "views/keytable.h"

#include <QApplication>

namespace
{
constexpr int kPreviewMs = 400; ///< without typing, until the preview shows a script anew

QWidget *parentOfQuestion(QWidget *otherwise)
{
    QWidget *parent = QApplication::activeModalWidget();
    if (!parent)
        parent = QApplication::activeWindow();
    return parent ? parent : otherwise;
}
} // namespace

void MainWindow::createScripts()
{
    scripts =
        std::make_unique<ScriptDesk>(this, table.get(), &scriptFileBag, &scriptPresetsFileBag);
    scriptPreview.setSingleShot(true);
    scriptPreview.setInterval(kPreviewMs);
    connect(&scriptPreview, &QTimer::timeout, this, [this]() {
        if (OpWrapper *op = table->byId(kScriptOperator))
            op->settings(true); // a text is work, which no bad end may take along
        if (table->currentOp == kScriptOperator)
            previewOutdated();
    });
    connect(scripts.get(), &ScriptDesk::libraryChanged, this,
            [this]() { scripts->fillLibraryMenu(ui->menuSaved_Scripts); });
    connect(ui->menuRecent_Scripts, &QMenu::aboutToShow, this,
            [this]() { scripts->fillRecentMenu(ui->menuRecent_Scripts); });
    scripts->fillLibraryMenu(ui->menuSaved_Scripts);
    connect(ui->menuScript, &QMenu::aboutToShow, this, [this]() {
        ui->actionRun_Script->setEnabled(!scripts->isRunning());
        ui->actionStop_Script->setEnabled(scripts->isRunning());
    });
}

void MainWindow::connectScripts()
{
    operators->scriptWords = scripts->words;
    connect(operators, &Operators::scriptEdited, scripts.get(), &ScriptDesk::followOperator);
    connect(operators, &Operators::scriptEdited, this, &MainWindow::scriptTextChanged);
    connect(operators, &Operators::operatorChanged, this, [this](int id) {
        if (id != kScriptOperator)
            scripts->closeEditor();
    });
}

void MainWindow::scriptTextChanged()
{
    scriptPreview.start();
}

bool MainWindow::askText(const QString &title, const QString &prompt, QString *text)
{
    if (!text || table->inPreview)
        return text;
    GetStringGeneral dialog(title, prompt, *text, parentOfQuestion(this));
    if (dialog.exec() != QDialog::Accepted)
        return false;
    *text = dialog.text();
    return true;
}

bool MainWindow::askSlider(const QString &title, const QString &label, int low, int high,
                           int *value)
{
    if (!value || table->inPreview)
        return value;
    SingleSlider dialog(title, label, low, high, *value, parentOfQuestion(this));
    if (dialog.exec() != QDialog::Accepted)
        return false;
    *value = dialog.value();
    return true;
}

void MainWindow::on_actionScript_Editor_triggered()
{
    scripts->openEditor();
}

void MainWindow::on_actionRun_Script_triggered()
{
    scripts->run();
}

void MainWindow::on_actionStop_Script_triggered()
{
    scripts->stop();
}

void MainWindow::on_actionScript_Debug_triggered()
{
    scripts->showDebug();
}

void MainWindow::on_actionScript_Reference_triggered()
{
    scripts->showReference();
}
