// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/busyguard.h"
#include "app/mainwindow.h"
#include "app/myapplication.h"
#include "app/recovery.h"
#include "app/recoverydialog.h"
#include "ui_mainwindow.h"
#include "views/imgwindow.h"

#include <QApplication>
#include <QFileInfo>
#include <QStatusBar>

namespace
{
constexpr int kPhases = 50;
constexpr int kTransientTicks = 40;
constexpr int kRepaintTicks = 10;
constexpr int kTraceTicks = 10;
} // namespace

void MainWindow::OnTimer()
{
    phase = (phase + 1) % kPhases;
    updateEnabledStates();
    syncToggles();
    updateImageList();
    lookForTrace();
    offerRecovery();
    openPending();
    dropTransients();
    tellRefusedDrop();
    repaintAndDiscard();
}

void MainWindow::OnTimerTwo()
{
    ++tick;
    areaTools.tick = tick;
}

/// A ray tracer works beside the program: its picture may come at any time.
void MainWindow::lookForTrace()
{
    if (traceResultFile.isEmpty() || phase % kTraceTicks != 0)
        return;
    ui->actionRetrieve_Ray_Trace->setVisible(true);
    traceReady = QFileInfo(traceResultFile).isFile();
}

/// Once, when the program is up: what a run that ended badly left behind.
void MainWindow::offerRecovery()
{
    if (recoveryOffered || busy > 0 || !isVisible() || QApplication::activeModalWidget())
        return;
    recoveryOffered = true;
    const BusyGuard guard(busy);
    RecoveryDialog::offer(recovery, this);
}

void MainWindow::openPending()
{
    if (busy > 0)
        return;
    QString name;
    if (takePendingOpen(&name))
        loadFile(name);
    else if (!openQueue.isEmpty())
        loadFile(openQueue.takeFirst());
}

void MainWindow::dropTransients()
{
    if (statusTicks <= 0 || ++statusTicks <= kTransientTicks)
        return;
    statusTicks = 0;
    showStatus();
}

void MainWindow::tellRefusedDrop()
{
    if (refusedUrl.isEmpty() || busy > 0)
        return;
    // Taken first: the box runs an event loop, in which this timer goes on.
    const QString url = refusedUrl;
    refusedUrl.clear();
    messageBox(QString(),
               tr("Drop attempt:<br>\"%1\"<br><br>").arg(url.toHtmlEscaped()) +
                   tr("Notice: Cannot drop a non-local URL as an image.<br>") +
                   tr("Save the picture on this computer first, then drop its file here."));
}

void MainWindow::repaintAndDiscard()
{
    if (++repaintTicks < kRepaintTicks || busy > 0)
        return;
    repaintTicks = 0;
    imgWindow *window = validCurrent();
    if (window && window->waitingPaint) {
        window->waitingPaint = false;
        window->refresh();
    }
    discardPending();
    updateImageList();
    ui->imageList->drawStale();
    if (areaStale)
        updateAreaLabel();
}

void MainWindow::discardPending()
{
    if (!pendingDiscard)
        return;
    pendingDiscard = false;
    image *doomed = pendingDiscardImage;
    pendingDiscardImage = nullptr;
    if (ownsImage(doomed)) {
        leaveMaster(masterOf(doomed));
        discardMasterAndLayers(doomed, true);
    }
    updateMenus();
}
