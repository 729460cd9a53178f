// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/adjustment/darknessgain.h"

#include "operators/adjustment/tablefill.h"

#include <cmath>

DarknessGain::DarknessGain(OperatorTable *table) : DeclaredOp(table)
{
    hotkeyKey = QStringLiteral("DarknessGainHotkey");
    declare({.field = &gain,
             .key = "DarknessGain",
             .low = 0,
             .high = 100,
             .control = ::slider(QT_TR_NOOP("Gain"))});
    declare({.field = &hump,
             .key = "DarknessGainHump",
             .low = 0,
             .high = 100,
             .initial = 50,
             .control = ::slider(QT_TR_NOOP("Hump"))});
    declare({.field = &range,
             .key = "DarknessGainRange",
             .low = 0,
             .high = 100,
             .initial = 100,
             .control = ::slider(QT_TR_NOOP("Range"))});
}

void DarknessGain::apply(image *target, image *)
{
    const double g = 2.0 * gain / 100;
    const int entries = int(range / 100.0 * 32767);
    double phase = hump / 100.0 * M_PI / 2;
    const double phaseStep = (M_PI - phase) / entries;
    double fade = 1;
    fillAllTables([&](int i) {
        if (i >= entries)
            return double(i);
        const double entry = (std::sin(phase) * g * fade + 1) * i;
        phase += phaseStep;
        fade -= 1.0 / entries;
        return entry;
    });
    applyLumaLut(target);
}
