// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/adjustment/winlevel.h"

#include "operators/adjustment/tablefill.h"

#include <algorithm>

WinLevel::WinLevel(OperatorTable *table) : DeclaredOp(table)
{
    hotkeyKey = QStringLiteral("WindowLevelHotkey");
    declare({.field = &window,
             .key = "WindowLevelWindow",
             .low = 0,
             .high = 255,
             .initial = 255,
             .control = ::slider(QT_TR_NOOP("Window"))});
    declare({.field = &level,
             .key = "WindowLevelLevel",
             .low = 0,
             .high = 255,
             .control = ::slider(QT_TR_NOOP("Level"))});
    declare({.field = &clip,
             .key = "WindowLevelClip",
             .low = 0,
             .high = 1,
             .control = check(QT_TR_NOOP("Clip"))});
}

void WinLevel::apply(image *target, image *)
{
    const int start = level * 257;
    const int end = std::min(start + window * 257, kLookupEntries);
    const double step = 65535.0 / (end - start);
    const double above = clip ? 0 : 65535;
    double sum = 0;
    fillGreenTable([&](int i) {
        if (i < start)
            return 0.0;
        if (i >= end)
            return above;
        const double entry = sum;
        sum += step;
        return entry;
    });
    applyLumaLut(target);
}
