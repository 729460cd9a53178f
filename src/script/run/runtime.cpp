// SPDX-License-Identifier: GPL-3.0-or-later
// What happens between the statements of a run: the limit of operations, the person who
// looks on, images that come and go.
#include "script/run/scriptrunner.h"

#include "core/image.h"
#include "core/workspace.h"
#include "operators/base/operatortable.h"
#include "script/engine/exparser.h"

#include <QCoreApplication>

#include <algorithm>

namespace
{
using std::chrono::milliseconds;
constexpr milliseconds kBreath(50);
constexpr milliseconds kLongestPreview(150);
constexpr int kDispatchesPerCheck = 100;
} // namespace

/// The limit is looked at once per hundred dispatches, those of user functions included.
void ScriptRunner::countDispatch()
{
    if (++dispatchCount <= kDispatchesPerCheck)
        return;
    dispatchCount = 0;
    bool readable = false;
    const double limit = parser->getNumber(QStringLiteral("m_maxops"), &readable);
    if (readable && limit > 0 && limit >= double(stepsDone))
        return;
    if (running)
        ended = readable ? ScriptEnd::LimitPassed : ScriptEnd::LimitBad;
    running = false;
}

/// Called before each statement: now and then the person is let in.
void ScriptRunner::breathe()
{
    const Clock::time_point now = Clock::now();
    if (internal) {
        if (now - started > kLongestPreview)
            stop();
        return;
    }
    if (now - lastBreath < kBreath || !workspace())
        return;
    showChanges();
    const double limit = parser->numberOr(QStringLiteral("m_maxops"), 0);
    const int64_t total = limit > 0 && limit < 1e15 ? int64_t(limit) : 0;
    workspace()->progress(QCoreApplication::translate("ScriptRunner", "Running the script"),
                          stepsDone, std::max<int64_t>({total, stepsDone, 1}));
    progressShown = true;
    followEvents();
    lastBreath = Clock::now();
}

/// After events were handled anything may have happened to the images, and the person may
/// have asked to stop.
void ScriptRunner::followEvents()
{
    if (!workspace())
        return;
    if (workspace()->cancelRequested())
        stop();
    if (targetIsListed && !workspace()->ownsImage(target)) {
        target = nullptr;
        samplesChanged = false;
        stop();
    }
    followImages();
}

/// The images that functions reach, as they are now. The source image of the run stands in
/// the undo list, from which it can go.
void ScriptRunner::followImages()
{
    ScriptImages &images = parser->images;
    if (!target || internal) {
        images = {};
        return;
    }
    images.target = target;
    images.origin = workspace() && Workspace::validImage(workspace()->originImage)
                        ? workspace()->originImage
                        : nullptr;
    if (images.source && !target->undoList.contains(images.source))
        images.source = target->undoList.isEmpty() ? nullptr : target->undoList.last();
}

void ScriptRunner::markChanged(bool samples)
{
    samplesChanged = true;
    if (!samples || internal || !target)
        return;
    target->changed = true;
    if (target->kind == 2) {
        if (Workspace::validImage(target->master))
            target->master->parentDirty = true;
        target->markMasterForRebuild();
    }
}

void ScriptRunner::showChanges()
{
    if (samplesChanged && target && !internal && workspace())
        workspace()->refreshViews(target);
    samplesChanged = false;
}

void ScriptRunner::endProgress()
{
    if (progressShown && workspace())
        workspace()->progress(QString(), 0, 0);
    progressShown = false;
}
