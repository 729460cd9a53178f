// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/adjustment/contrastbrightness.h"

#include "operators/adjustment/tablefill.h"
#include "operators/base/oppage.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace
{
constexpr std::array<double, 10> kMultipliers = {0.5, 1.0, 1.5, 2.0, 2.5, 3.0, 3.5, 4.0, 4.5, 5.0};
constexpr int kRowsShown = 6; ///< the rows beyond are for stored settings
} // namespace

ContrastBrightness::ContrastBrightness(OperatorTable *table) : DeclaredOp(table)
{
    hotkeyKey = QStringLiteral("ContrastHotkey");
    declare({.field = &contrast,
             .key = "Contrast",
             .low = -100,
             .high = 100,
             .control = ::slider(QT_TR_NOOP("Contrast"))});
    declare({.field = &brightness,
             .key = "Brightness",
             .low = -100,
             .high = 100,
             .control = ::slider(QT_TR_NOOP("Brightness"))});
    declare({.field = &center,
             .key = "ContrastCenter",
             .low = -100,
             .high = 100,
             .control = ::slider(QT_TR_NOOP("Center"))});
    declare({.field = &multiplier,
             .key = "ContrastMultiplier",
             .low = 0,
             .high = kMultipliers.size() - 1,
             .initial = 1,
             .control = choice(QT_TR_NOOP("Range"),
                               {QT_TR_NOOP("Contrast 1x"), QT_TR_NOOP("Contrast 2x"),
                                QT_TR_NOOP("Contrast 3x"), QT_TR_NOOP("Contrast 4x"),
                                QT_TR_NOOP("Contrast 5x"), QT_TR_NOOP("Contrast 6x")}),
             .inScriptLine = false});
    declare({.field = &red,
             .key = "ContrastRed",
             .low = 0,
             .high = 1,
             .initial = 1,
             .control = check(QT_TR_NOOP("Red"))});
    declare({.field = &green,
             .key = "ContrastGreen",
             .low = 0,
             .high = 1,
             .initial = 1,
             .control = check(QT_TR_NOOP("Green"))});
    declare({.field = &blue,
             .key = "ContrastBlue",
             .low = 0,
             .high = 1,
             .initial = 1,
             .control = check(QT_TR_NOOP("Blue"))});
}

/// The three channels stand in one row; a stored multiplier beyond the list's rows is shown.
void ContrastBrightness::build(OpPage *page)
{
    if (!page)
        return;
    page->addSlider(tr("Contrast"), -100, 100, contrast, true);
    page->addSlider(tr("Brightness"), -100, 100, brightness, true);
    page->addSlider(tr("Center"), -100, 100, center, true);
    QStringList rows;
    for (int row = 1; row <= std::max(kRowsShown, multiplier + 1); ++row)
        rows << tr("Contrast %1x").arg(row);
    page->addLabel(tr("Range"), OpPage::LabelAlign::Left, false);
    page->addCombo(rows, multiplier, true);
    page->addCheck(tr("Red"), red, false);
    page->addCheck(tr("Green"), green, false);
    page->addCheck(tr("Blue"), blue, true);
}

void ContrastBrightness::apply(image *target, image *)
{
    const double c = std::trunc(32768 - center / 100.0 * 32768);
    const double k = (contrast / 100.0 + 1) * kMultipliers[size_t(multiplier)];
    resetLut();
    const Workspace *space = workspace();
    const std::pair<bool, uint16_t *> channels[] = {{red, space ? space->colorMapRed : nullptr},
                                                    {green, space ? space->colorMapGreen : nullptr},
                                                    {blue, space ? space->colorMapBlue : nullptr}};
    const uint16_t *made = nullptr; // the first of the chosen, of which the others are copies
    for (const auto &[chosen, table] : channels) {
        if (!chosen || !table)
            continue;
        for (int i = 0; !made && i < kLookupEntries; ++i)
            table[i] = lutEntry((i - c) * k + c + brightness / 100.0 * 65535);
        if (made)
            std::copy_n(made, kLookupEntries, table);
        made = table;
    }
    applyLut(target);
}
