// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/areatools.h"
#include "area/polygon.h"
#include "area/wand.h"
#include "core/image.h"
#include "core/workspace.h"
#include "views/areagesture.h"
#include "views/commitselection.h"
#include "views/imgwindow.h"

#include <QMouseEvent>
#include <QPointer>

#include <algorithm>

// A drag of the wand up and down changes its tolerance, and the selection follows: a job
// beside the main thread finds it. While one runs a new tolerance is only noted; the next job
// starts with what it is then. The release completes the last one as a click would.

void AreaGesture::pressWand(const QMouseEvent &event)
{
    wandStartY = event.pos().y();
    wandStartTolerance = workspace()->wandTolerance;
    wandDown = window->wandClick = true;
    wandPlace = sampleUnder(pointer);
    wandImage = window->img;
    wandStarted.reset();
}

void AreaGesture::dragWand(const QMouseEvent &event)
{
    constexpr int mostTravel = 100, leastTolerance = 1, mostTolerance = 100;
    Workspace &space = *workspace();
    if (space.selectMode)
        return;
    const int travel = std::clamp(wandStartY - event.pos().y(), -mostTravel, mostTravel);
    const int tolerance =
        std::clamp(wandStartTolerance + travel / 2, leastTolerance, mostTolerance);
    if (window->wandClick && travel / 2 == 0)
        return; // a hand that shakes is no drag
    if (window->wandClick) {
        QPoint offset;
        imgWindow *taker = selectionTaker(window, &offset);
        taker->beginMaskDrag();
        if (!taker->saveBackMask()) {
            workspace()->statusText(imgWindow::tr("Not enough memory: the selection is as it was"));
            return;
        }
        window->wandClick = false;
        window->addToMask = window->subtractFromMask = false;
        wandDragged = true;
    }
    // Once read they stay, so that the fingers may leave the keys before the button.
    if (event.modifiers() & (Qt::ShiftModifier | Qt::AltModifier))
        joinBy(event.modifiers());
    space.wandTolerance = tolerance;
    space.statusText(wandStatus(tolerance, space.globalPick));
    runWandJob();
}

void AreaGesture::runWandJob()
{
    const Workspace &space = *workspace();
    QPoint offset;
    imgWindow *taker = selectionTaker(window, &offset);
    const WandRun run{space.wandTolerance, window->addToMask, window->subtractFromMask};
    if (taker->wandBusy || wandStarted == run)
        return;
    taker->addToMask = run.add;
    taker->subtractFromMask = run.subtract;
    taker->maskProducer = [at = wandPlace - offset, tolerance = run.tolerance,
                           globally = space.globalPick,
                           skips = space.maskWithTargetAlpha](const image &img, uint16_t *mask) {
        return wandMask(img, at.x(), at.y(), tolerance, globally, skips, mask);
    };
    taker->maskJobEnded = [source = QPointer<imgWindow>(window)]() {
        if (source && source->validImage())
            source->gesture.wandJobEnded();
    };
    if (taker->startWorker(WorkerThread::Mask))
        wandStarted = run;
}

void AreaGesture::wandJobEnded()
{
    if (wandDragged && wandDown)
        runWandJob();
    else
        settle();
}

void AreaGesture::settle()
{
    if (wandDragged)
        endWandDrag();
}

void AreaGesture::endWandDrag()
{
    const int tolerance = wandStartTolerance;
    wandDown = wandDragged = false;
    const QPointer<imgWindow> taker(selectionTaker(window));
    taker->finishJobs(true);
    commitSelection(window, kToolWand, true); // which may close the window
    workspace()->wandTolerance = tolerance;
    if (taker)
        taker->beginMaskDrag(); // the masks of this one have served
}

/// The selection is again what it was at the press.
void AreaGesture::stopWand()
{
    workspace()->wandTolerance = wandStartTolerance;
    if (!wandDragged)
        return;
    wandDragged = false;
    window->addToMask = window->subtractFromMask = false;
    QPoint offset;
    selectionTaker(window, &offset)->cancelMaskDrag();
}

bool AreaGesture::rerunWand()
{
    settle();
    if (wandImage != window->img)
        return false;
    QPoint offset;
    imgWindow *taker = selectionTaker(window, &offset);
    taker->beginMaskDrag();
    window->addToMask = window->subtractFromMask = false;
    wandStartTolerance = workspace()->wandTolerance;
    wandStarted.reset();
    runWandJob();
    wandDragged = wandStarted.has_value();
    return true;
}

/// What the last job of a drag found serves, if it ran with the tolerance that stands.
bool AreaGesture::produceWand(imgWindow *taker, QPoint offset)
{
    const QPoint at = wandPlace - offset;
    const int tolerance = workspace()->wandTolerance;
    if (!wandStarted || wandStarted->tolerance != tolerance || !taker->takeJobMask())
        return wandSelect(taker->img, at.x(), at.y(), tolerance);
    followSelectionCenter(taker->img);
    return true;
}
