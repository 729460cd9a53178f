// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/workspace.h"
#include "operators/pipeline/lookup.h"

// What operators that only fill look-up tables share. Without tables, for want of memory,
// nothing is filled.

constexpr int kLookupEntries = 65536;

/// Entry i of the green table, which applyLumaLut takes, becomes rule(i), truncated and
/// limited. The rule is asked for 0 to 65535 in this order, so it can keep a running sum.
template <class Rule>
void fillGreenTable(Rule rule)
{
    uint16_t *green = workspace() ? workspace()->colorMapGreen : nullptr;
    for (int i = 0; green && i < kLookupEntries; ++i)
        green[i] = lutEntry(rule(i));
}

/// The same for all three tables alike.
template <class Rule>
void fillAllTables(Rule rule)
{
    Workspace *space = workspace();
    if (!space || !space->colorMapRed || !space->colorMapGreen || !space->colorMapBlue)
        return;
    for (int i = 0; i < kLookupEntries; ++i)
        space->colorMapRed[i] = space->colorMapGreen[i] = space->colorMapBlue[i] =
            lutEntry(rule(i));
}
