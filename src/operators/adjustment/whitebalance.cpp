// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/adjustment/whitebalance.h"

#include "operators/adjustment/statisticstext.h"
#include "operators/adjustment/tablefill.h"
#include "operators/base/operatortable.h"
#include "operators/base/oppage.h"

#include <QThread>

#include <algorithm>
#include <array>

namespace
{
enum Button { kEyedropper, kSample };
constexpr int kIdSample = 80;

using Reference = std::array<double, 3>;

void fillTables(Workspace *space, const Reference &reference)
{
    const double average = (reference[0] + reference[1] + reference[2]) / 3;
    const double u = average / 65535;
    uint16_t *const tables[] = {space->colorMapRed, space->colorMapGreen, space->colorMapBlue};
    for (size_t channel = 0; channel < 3; ++channel) {
        const double shift = (average - reference[channel]) / u;
        for (int i = 0; tables[channel] && i < kLookupEntries; ++i)
            tables[channel][i] = lutEntry(i + shift * (i / 65535.0));
    }
}
} // namespace

WhiteBalance::WhiteBalance(OperatorTable *table) : DeclaredOp(table)
{
    hotkeyKey = QStringLiteral("WhiteBalanceHotkey");
    declare({.field = &direct,
             .key = "WhiteBalanceDirect",
             .low = 0,
             .high = 1,
             .control = check(QT_TR_NOOP("Direct correction")),
             .inScriptLine = false});
    const auto component = [this](int32_t *field, const char *key, const char *label) {
        OpControl shown; // in the well alone
        shown.label = label;
        declare({.field = field,
                 .key = key,
                 .low = 0,
                 .high = 255,
                 .initial = 128,
                 .control = shown,
                 .inScriptLine = false});
    };
    component(&red, "WhiteBalanceRed", QT_TR_NOOP("Red of the reference"));
    component(&green, "WhiteBalanceGreen", QT_TR_NOOP("Green of the reference"));
    component(&blue, "WhiteBalanceBlue", QT_TR_NOOP("Blue of the reference"));
    declareWell(QT_TR_NOOP("Reference"), &red, &green, &blue);
}

void WhiteBalance::apply(image *target, image *)
{
    Workspace *space = workspace();
    if (!space)
        return;
    const int32_t *kept = space->sampleStatistics;
    // A black reference, and one that was never read, divides by 0: all becomes black.
    fillTables(space, direct ? Reference{red * 257.0, green * 257.0, blue * 257.0}
                             : Reference{double(kept[6]), double(kept[7]), double(kept[8])});
    applyLut(target);
    // The preview comes here after the eyedropper has read: the page shows what it found.
    if (OpPage *page = QThread::currentThread() == thread() ? ownPage() : nullptr)
        page->setLabel(readingLabel, readingText());
}

/// What was read, or what to do where nothing was.
QString WhiteBalance::readingText() const
{
    const int32_t *kept = workspace() ? workspace()->sampleStatistics : nullptr;
    const bool sampled =
        kept && std::any_of(kept, kept + 9, [](int32_t value) { return value != 0; });
    return sampled || direct ? statisticsText()
                             : tr("Nothing was sampled yet, and without a<br>reference all turns "
                                  "black: point the<br>eyedropper at something grey.");
}

void WhiteBalance::build(OpPage *page)
{
    if (!page)
        return;
    DeclaredOp::build(page);
    page->addButton(tr("Eyedropper"), false);
    page->addButton(tr("Sample…"), true);
    readingLabel = page->addLabel(readingText(), OpPage::LabelAlign::Left, true);
}

int WhiteBalance::button(int index)
{
    OpPage *page = ownPage();
    if (!page)
        return 0;
    if (index == kEyedropper) {
        page->armEyedropper();
    } else if (index == kSample) {
        ops->returnOp = id;
        page->chooseOperator(kIdSample);
    }
    return 1;
}
