// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/image.h"
#include "core/rows.h"
#include "core/undo.h"
#include "core/workspace.h"
#include "views/imgwindow.h"
#include "views/viewhost.h"
#include "views/windowacts.h"

#include <QHideEvent>

#include <algorithm>

// A job reads the image and writes memory of its own, so that the main thread may go on
// painting. What it made is taken over on the main thread. Whatever changes the image waits
// for the window's jobs first, and so does whatever ends the window or the image.

namespace
{
using Mask = TrackedBuffer<uint16_t>;

/// The new selection joined with the one before it.
void combine(uint16_t *mask, const uint16_t *old, int width, int height, bool add)
{
    parallelRows(height, width, [=](int first, int end) {
        for (int64_t i = int64_t(first) * width; i < int64_t(end) * width; ++i)
            mask[i] = add ? uint16_t(std::min(int(mask[i]) + old[i], 65535))
                          : uint16_t(std::max(int(old[i]) - mask[i], 0));
    });
}
} // namespace

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
        const auto mask = std::make_shared<Mask>(size_t(img->sampleCount()), "mask job");
        if (!*mask)
            return false;
        const bool joins = addToMask || subtractFromMask;
        if (joins && !backSaved)
            saveBackMask(*img);
        const uint16_t *old = joins && backMask ? backMask->get() : nullptr;
        const auto made = std::make_shared<bool>(false);
        const image *of = img;
        work = [=, produce = maskProducer, add = addToMask]() {
            *made = produce(*of, mask->get());
            if (*made && old)
                combine(mask->get(), old, of->width, of->height, add);
        };
        takeOver = [=, this]() {
            if (*made)
                takeMask(of, *mask);
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

void imgWindow::saveBackMask(const image &of)
{
    const QSize size(of.width, of.height);
    if (!backMask || backSize != size)
        backMask = std::make_unique<Mask>(size_t(of.sampleCount()), "backmask() back");
    backSize = size;
    if (!*backMask) {
        backMask.reset();
        return;
    }
    uint16_t *to = backMask->get();
    parallelRows(of.height, of.width, [&of, to](int first, int end) {
        std::copy(of.gmask + int64_t(first) * of.width, of.gmask + int64_t(end) * of.width,
                  to + int64_t(first) * of.width);
    });
    backSaved = true;
}

void imgWindow::takeMask(const image *of, const Mask &mask)
{
    if (of != img)
        return;
    uint16_t *to = img->gmask;
    const uint16_t *from = mask.get();
    const int64_t width = img->width;
    parallelRows(img->height, img->width, [=](int first, int end) {
        std::copy(from + first * width, from + end * width, to + first * width);
    });
    selectionChanged(img);
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

void imgWindow::maskReady()
{
    endJob(qobject_cast<WorkerThread *>(sender()), true);
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
    if (!event->spontaneous())
        finishJobs(validImage());
}
