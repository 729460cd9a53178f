// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/mainwindow.h"

#include "app/busyguard.h"
#include "app/downloadmanager.h"
#include "app/imageinformation.h"
#include "app/memreport.h"
#include "app/notations.h"
#include "app/scriptdesk.h"
#include "app/undolevels.h"
#include "core/undo.h"
#include "operators/base/operatortable.h"
#include "operators/dialog/operators.h"
#include "ui_mainwindow.h"
#include "views/clipboardacts.h"
#include "views/imgwindow.h"

#include <QApplication>
#include <QColorDialog>
#include <QInputDialog>
#include <QMessageBox>
#include <QPointer>

namespace
{
/// More steps would push scale 1 out of the zoom table.
constexpr int kMostZoomSteps = 50;
} // namespace

void MainWindow::on_actionQuit_triggered()
{
    close();
}

void MainWindow::on_actionClose_All_triggered()
{
    if (windows.isEmpty() || busy > 0)
        return;
    bool changed = false;
    for (const image *img : qAsConst(images))
        changed = changed || img->hasUnsavedChanges();
    if (changed &&
        question(tr("Important"),
                 tr("Some images have unsaved changes. If you close all images now, those changes "
                    "will be lost.<br><br><i>Are you sure you want to do that?</i>"),
                 {tr("Cancel and don't lose changes"), tr("Proceed and lose any changes")}, 1,
                 0) != 1)
        return;
    closingAll = true;
    const QList<imgWindow *> open = windows;
    for (imgWindow *window : open)
        if (isWindow(window)) // the views of one image may go together
            window->close();
    closingAll = false;
    updateMenus();
}

void MainWindow::on_actionChecker_triggered(bool on)
{
    checkerOn = on;
    repaintAllWindows();
    refreshOperatorSource();
}

void MainWindow::repaintAllWindows()
{
    for (imgWindow *window : qAsConst(windows))
        window->refresh();
}

void MainWindow::on_actionAssign_as_Brush_triggered()
{
    if (const imgWindow *window = validCurrent())
        assignBrush(window->img);
    updateAssignmentLabels();
    updateEnabledStates();
}

void MainWindow::on_actionAssign_as_Origin_triggered()
{
    if (const imgWindow *window = validCurrent())
        assignOrigin(window->img);
    updateAssignmentLabels();
    updateEnabledStates();
}

void MainWindow::on_actionClear_Brush_triggered()
{
    assignBrush(nullptr);
    updateEnabledStates();
}

void MainWindow::on_actionClear_Origin_triggered()
{
    assignOrigin(nullptr);
    updateEnabledStates();
}

void MainWindow::activate(imgWindow *window)
{
    if (!window || !isWindow(window))
        return;
    if (window->isMinimized())
        window->showNormal();
    window->raise();
    window->activateWindow();
    makeCurrent(window);
}

void MainWindow::stepWindow(int by)
{
    const imgWindow *window = validCurrent();
    if (!window || images.isEmpty())
        return;
    image *shown = window->img->master ? window->img->master : window->img;
    const int count = images.size();
    const int next = (images.indexOf(shown) + by + count) % count;
    activate(findWindow(images.at(next)));
}

void MainWindow::on_actionNext_Image_triggered()
{
    stepWindow(1);
}

void MainWindow::on_actionPrevious_Image_triggered()
{
    stepWindow(-1);
}

void MainWindow::on_imageList_imagePicked(image *img)
{
    if (images.contains(img))
        activate(findWindow(img));
}

void MainWindow::operate()
{
    on_operate_clicked();
}

/// What the current operator works on from a window of this image: a master is composed
/// anew at any time, so what would change its samples goes to its target. Null, and told,
/// if there is none.
image *MainWindow::operated(image *img)
{
    if (img->kind != 1 || table->currentOp == 0 || OperatorTable::allowedOnMaster(table->currentOp))
        return img;
    if (img->target && img->layers.contains(img->target) && validImage(img->target)) {
        img->changed = true; // a layer without a window would not be asked about
        return img->target;
    }
    statusText(tr("No target assigned: choose one in the layer dialog"));
    return nullptr;
}

/// Whether a run beside the main thread is to change this picture: another Apply would work on
/// samples that it takes away. Told if so.
bool MainWindow::isWorkedOn(const image *img)
{
    for (const imgWindow *view : windowsOf(img))
        if (view->previewJobRunning()) {
            statusText(tr("An operator is still at work on this picture: apply when it is done"));
            return true;
        }
    return false;
}

void MainWindow::on_operate_clicked()
{
    imgWindow *window = validCurrent();
    if (!window || busy > 0)
        return;
    image *img = operated(window->img);
    if (!img || isWorkedOn(img))
        return;
    // A script may select for itself.
    if (img->kind != 1 && !invertSelection && !img->anyMaskSet() &&
        table->currentOp != kScriptOperator)
        statusText(img == window->img ? tr("Nothing selected (Ctrl+A selects all)")
                                      : tr("Nothing selected in the target layer"));
    // Disabling the button that was pressed would hand the keyboard to its neighbour.
    const QPointer<QWidget> focused = QApplication::focusWidget();
    {
        BusyGuard guard(busy);
        const ScriptDesk::Run run(scripts.get());
        updateEnabledStates();
        window->prepareAndApply(img);
    }
    if (table->currentOp == kScriptOperator)
        previewOutdated(); // which a run puts off
    updateEnabledStates();
    if (focused)
        focused->setFocus();
    areaStale = true; // the curve and the inversion stay in the mask
}

void MainWindow::on_actionApply_Again_triggered()
{
    const imgWindow *window = validCurrent();
    if (!window || busy > 0 || table->currentOp == 0)
        return;
    image *img = operated(window->img);
    if (!img || isWorkedOn(img))
        return;
    for (imgWindow *view : windowsOf(img))
        view->settleJobs();
    {
        BusyGuard guard(busy);
        const ScriptDesk::Run run(scripts.get());
        updateEnabledStates();
        table->apply(img, true);
    }
    if (table->currentOp == kScriptOperator)
        previewOutdated(); // which a run puts off
    updateEnabledStates();
    refreshViews(img);
}

void MainWindow::on_actionShow_Operators_triggered()
{
    operators->show();
    operators->raise();
    operators->activateWindow();
}

void MainWindow::on_actionPaste_as_New_Image_triggered()
{
    pasteAsNew();
}

void MainWindow::on_actionInformation_triggered()
{
    const imgWindow *window = validCurrent();
    if (!window || busy > 0)
        return;
    ImageInformation dialog(window->img, this);
    dialog.exec();
    updateMenus();
}

void MainWindow::on_actionNotations_triggered()
{
    if (!notationsDialog) {
        notationsDialog = new Notations(this);
        notationsDialog->setAttribute(Qt::WA_DeleteOnClose);
    }
    notationsDialog->follow(validCurrent());
    notationsDialog->show();
    notationsDialog->raise();
    notationsDialog->activateWindow();
}

void MainWindow::notationsChanged(image *img, int chosen)
{
    if (notationsDialog)
        notationsDialog->notationsChanged(img, chosen);
    updateEnabledStates();
}

void MainWindow::editNotation(imgWindow *window, int index)
{
    if (notationsDialog)
        notationsDialog->editNotation(window, index);
}

void MainWindow::on_actionRetrieve_Ray_Trace_triggered()
{
    if (traceReady)
        openLater({traceResultFile});
}

void MainWindow::on_actionSet_Undo_Levels_triggered()
{
    UndoLevels dialog(this);
    dialog.exec();
}

void MainWindow::on_actionClear_Undos_and_Redos_triggered()
{
    for (const imgWindow *window : qAsConst(windows)) {
        if (!window->validImage())
            continue;
        clearRedoList(window->img);
        clearUndoList(window->img);
    }
    updateMenus();
}

void MainWindow::on_actionMemory_Report_2_triggered()
{
    MemReport dialog(this);
    dialog.exec();
}

void MainWindow::on_actionSet_Zoom_Sep_Size_triggered()
{
    bool accepted = false;
    const int steps =
        QInputDialog::getInt(this, tr("Set Zoom Step Size"), tr("Zoom steps per doubling"),
                             zoomSteps, 1, kMostZoomSteps, 1, &accepted);
    if (!accepted || steps == zoomSteps)
        return;
    zoomSteps = steps;
    for (imgWindow *window : qAsConst(windows)) {
        window->buildZooms();
        window->refresh();
    }
}

void MainWindow::on_actionRemember_Position_triggered(bool on)
{
    rememberPosition = on;
}

void MainWindow::on_actionAsk_on_Close_triggered(bool on)
{
    imgClose = on;
}

void MainWindow::wellClick()
{
    const bool fore = sender() == ui->foreWell;
    int *red = fore ? &foreRed : &backRed;
    int *green = fore ? &foreGreen : &backGreen;
    int *blue = fore ? &foreBlue : &backBlue;
    const QColor chosen =
        QColorDialog::getColor((fore ? ui->foreWell : ui->backWell)->color(), this,
                               fore ? tr("Foreground Colour") : tr("Background Colour"));
    if (!chosen.isValid())
        return;
    *red = chosen.red() * 257;
    *green = chosen.green() * 257;
    *blue = chosen.blue() * 257;
    showWells();
    previewOutdated();
}

void MainWindow::on_actionAbout_triggered()
{
    QString text = tr("<h3>Kestrane %1</h3><p>An image editor with 16 bits per channel.</p>"
                      "<p>Free software under the GNU General Public License, version 3 or "
                      "later.</p><p>Qt %2 · %3</p>")
                       .arg(QStringLiteral(KESTRANE_VERSION), QString::fromLatin1(qVersion()),
                            platform.toHtmlEscaped());
    if (!downloadManager->host.isEmpty())
        text += tr("<p>Newest version: %1</p>").arg(downloadManager->versionText.toHtmlEscaped());
    QMessageBox::about(this, tr("About Kestrane"), text);
}
