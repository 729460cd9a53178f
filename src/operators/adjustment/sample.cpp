// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/adjustment/sample.h"

#include "core/image.h"
#include "core/workspace.h"
#include "operators/adjustment/statisticstext.h"
#include "operators/base/operatortable.h"
#include "operators/base/oppage.h"
#include "operators/pipeline/colourset.h"

#include <QLocale>
#include <QThread>

#include <algorithm>
#include <utility>

namespace
{
enum Button { kEyedropper, kEmptySet, kPreviousSet };

/// Statistics that something else than Sample wrote, as if `count` samples had given them.
SampleSums asSums(const int32_t statistics[9], int64_t count)
{
    SampleSums sums;
    if (std::all_of(statistics, statistics + 9, [](int32_t value) { return value == 0; }))
        return sums; // nothing was read yet
    sums.count = count;
    for (size_t channel = 0; channel < 3; ++channel) {
        sums.least[channel] = statistics[channel];
        sums.most[channel] = statistics[3 + channel];
        sums.sum[channel] = statistics[6 + channel] * count;
    }
    return sums;
}
} // namespace

Sample::Sample(OperatorTable *table) : DeclaredOp(table)
{
    hotkeyKey = QStringLiteral("SampleHotkey");
    declare({.field = &accumulate,
             .key = "SampleAccumulate",
             .low = 0,
             .high = 1,
             .control = check(QT_TR_NOOP("Accumulate"))});
    declare({.field = &subtract,
             .key = "SampleSubtract",
             .low = 0,
             .high = 1,
             .control = check(QT_TR_NOOP("Subtract"))});
}

void Sample::apply(image *target, image *)
{
    if (!workspace() || !Workspace::validImage(target))
        return;
    const SampleSums now = sumSelected(*target, 0);
    if (now.count == 0) {
        workspace()->statusText(tr("There is nothing to sample: no visible sample is selected."));
        return;
    }
    if (!changeColourSet(target, subtract     ? ColourSetChange::Remove
                                 : accumulate ? ColourSetChange::Add
                                              : ColourSetChange::Replace))
        workspace()->statusText(tr("There is not enough memory for the set of colors."));
    if (!subtract)
        keepStatistics(now);
    showReading();
}

/// Joined readings weigh by their numbers of samples. The eyedropper writes statistics too:
/// of how many samples is not known, so it weighs as much as the new reading.
void Sample::keepStatistics(const SampleSums &now)
{
    int32_t *kept = workspace()->sampleStatistics;
    int32_t ours[9] = {};
    if (!accumulate)
        all = SampleSums();
    else if (!all.write(ours) || !std::equal(ours, ours + 9, kept))
        all = asSums(kept, now.count);
    all.join(now);
    all.write(kept);
}

void Sample::build(OpPage *page)
{
    if (!page)
        return;
    page->addCheck(tr("Accumulate"), accumulate, false);
    page->addCheck(tr("Subtract"), subtract, true);
    const OpWrapper *sender = ops && ops->returnOp ? ops->byId(ops->returnOp) : nullptr;
    if (sender)
        page->addLabel(tr("Apply reads the selection,\nthen %1 comes back.").arg(sender->menuName),
                       OpPage::LabelAlign::Left, true);
    readingLabel = page->addLabel(statisticsText(), OpPage::LabelAlign::Left, true);
    page->addButton(tr("Eyedropper"), true);
    setLabel = page->addLabel(setText(), OpPage::LabelAlign::Left, true);
    page->addButton(tr("Empty Set"), false);
    page->addButton(tr("Previous Set"), true);
}

int Sample::button(int index)
{
    OpPage *page = ownPage();
    Workspace *space = workspace();
    if (!page || !space)
        return 0;
    if (index == kEyedropper)
        page->armEyedropper();
    else if (index == kEmptySet)
        changeColourSet(nullptr, ColourSetChange::Replace);
    else if (index == kPreviousSet && space->ensureColorSpace())
        std::swap(space->colorSpace, space->colorSpaceBackup);
    showReading();
    return 1;
}

QString Sample::setText() const
{
    return tr("Colors in the set: %1").arg(QLocale().toString(qlonglong(colourSetSize())));
}

void Sample::showReading()
{
    OpPage *page = QThread::currentThread() == thread() ? ownPage() : nullptr;
    if (!page)
        return;
    page->setLabel(readingLabel, statisticsText());
    page->setLabel(setLabel, setText());
}
