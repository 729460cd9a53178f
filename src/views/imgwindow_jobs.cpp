// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/maskops.h"
#include "core/image.h"
#include "core/rows.h"
#include "core/undo.h"
#include "core/workspace.h"
#include "views/commitselection.h"
#include "views/imgwindow.h"
#include "views/viewhost.h"
#include "views/windowacts.h"

#include <QHideEvent>

#include <algorithm>

// A job reads the image and writes memory of its own, so that the main thread may go on
// painting. What it made is taken over on the main thread. Whatever changes the image waits
// for the window's jobs first, and so does whatever ends the window or the image.

bool imgWindow::startWorker(WorkerThread::Mode mode)
{
    if (!validImage() || (mode == WorkerThread::Mask && wandBusy))
        return false;
    std::function<void()> work, takeOver;
    if (mode == WorkerThread::Preview && previewProducer) {
        const std::shared_ptr<image> copy(undoMakeCopy(img, true));
        if (!copy)
            return false;
        const auto made = std::make_shared<bool>(false);
        work = [=, produce = previewProducer]() { *made = produce(copy.get()); };
        takeOver = [=, this]() {
            if (*made)
                takePreview(*copy);
        };
    } else if (mode == WorkerThread::Mask && maskProducer) {
        jobMask.reset(); // room for the next one
        const auto mask = std::make_shared<MaskBuffer>(size_t(img->sampleCount()), "mask job");
        const bool add = addToMask, joins = add || subtractFromMask;
        if (!*mask || (joins && !backSaved && !saveBackMask()))
            return false;
        const auto made = std::make_shared<bool>(false);
        const image *of = img;
        work = [=, produce = maskProducer]() { *made = produce(*of, mask->get()); };
        takeOver = [=, this]() {
            if (!*made || of != img)
                return;
            takeMask(*mask, joins, add);
            jobMask = mask;
        };
    }
    auto *worker = new WorkerThread(mode, this, std::move(work), std::move(takeOver));
    workers << worker;
    if (mode == WorkerThread::Mask) {
        wandBusy = true;
        connect(worker, &WorkerThread::ready, this, &imgWindow::maskReady);
    } else {
        wandClick = false;
        connect(worker, &WorkerThread::ready, this, &imgWindow::inTheBalls);
    }
    worker->start();
    return true;
}

void imgWindow::beginMaskDrag()
{
    backSaved = actRecorded = false;
    jobMask.reset();
}

void imgWindow::cancelMaskDrag()
{
    finishJobs(false);
    if (actRecorded && backSaved) {
        copyPlane(backMask->get(), img->gmask, img->width, img->height);
        if (img->kind != 1)
            dropLastUndo(img);
        selectionChanged(img);
    }
    beginMaskDrag();
}

bool imgWindow::saveBackMask()
{
    const QSize size(img->width, img->height);
    if (!backMask || backSize != size) {
        backMask.reset();
        backMask = std::make_unique<MaskBuffer>(size_t(img->sampleCount()), "backmask() back");
    }
    backSize = size;
    backSaved = bool(*backMask);
    if (backSaved)
        copyPlane(img->gmask, backMask->get(), img->width, img->height);
    else
        backMask.reset();
    return backSaved;
}

void imgWindow::takeMask(const MaskBuffer &mask, bool joins, bool add)
{
    if (!actRecorded && img->kind != 1) // a master's undo goes to its target
        beginAct(img);
    actRecorded = true;
    copyPlane(mask.get(), img->gmask, img->width, img->height);
    if (joins)
        combineMasks(img->gmask, backMask->get(), img->width, img->height, add);
    selectionChanged(img);
}

bool imgWindow::takeJobMask()
{
    if (!jobMask)
        return false;
    copyPlane(jobMask->get(), img->gmask, img->width, img->height);
    return true;
}

void imgWindow::takePreview(const image &copy)
{
    if (copy.width != img->width || copy.height != img->height)
        return;
    beginAct(img);
    img->copyWorkPlanes(copy);
    changeDone(img);
}

void imgWindow::endJob(WorkerThread *worker, bool keepResult)
{
    if (!workers.removeOne(worker))
        return; // it was waited for, and its report came late
    worker->finish();
    if (worker->mode == WorkerThread::Mask)
        wandBusy = false;
    if (keepResult && validImage())
        worker->takeOver();
    worker->deleteLater();
}

void imgWindow::finishJobs(bool keepResults)
{
    while (!workers.isEmpty())
        endJob(workers.constFirst(), keepResults);
}

void imgWindow::settleJobs()
{
    // A drag in the window of a master makes its selection here if this shows the target.
    const QList<imgWindow *> open = viewHost() ? viewHost()->windows : QList<imgWindow *>();
    for (imgWindow *window : open)
        if (window != this && viewHost()->isWindow(window) && window->validImage() &&
            selectionTaker(window) == this)
            window->gesture.settle();
    gesture.settle();
    finishJobs(true);
}

void imgWindow::maskReady()
{
    endJob(qobject_cast<WorkerThread *>(sender()), true);
    if (maskJobEnded)
        maskJobEnded();
}

bool imgWindow::previewJobRunning() const
{
    return std::any_of(workers.begin(), workers.end(), [](const WorkerThread *worker) {
        return worker->mode == WorkerThread::Preview;
    });
}

void imgWindow::inTheBalls()
{
    auto *worker = qobject_cast<WorkerThread *>(sender());
    if (worker)
        endJob(worker, true);
    (worker ? worker->window : this)->viewMoved();
}

void imgWindow::hideEvent(QHideEvent *event)
{
    QDialog::hideEvent(event);
    // Who takes a window away may go on to take its image away. A window that is only
    // minimised (the window system did that) goes on.
    if (event->spontaneous())
        return;
    finishJobs(validImage());
    gesture.letGo();
}
