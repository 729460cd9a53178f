// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/adjustment/floor.h"

#include "operators/adjustment/tablefill.h"
#include "operators/adjustment/tonecut.h"

Floor::Floor(OperatorTable *table) : DeclaredOp(table)
{
    hotkeyKey = QStringLiteral("FloorHotkey");
    declare({.field = &sample,
             .key = "FloorSample",
             .low = 0,
             .high = 1,
             .initial = 1,
             .control = check(QT_TR_NOOP("Sample"))});
    declare({.field = &mode,
             .key = "FloorMode",
             .low = 0,
             .high = 2,
             .control = choice(QT_TR_NOOP("Mode"), {QT_TR_NOOP("Minimum"), QT_TR_NOOP("Average"),
                                                    QT_TR_NOOP("Maximum")})});
}

void Floor::apply(image *target, image *)
{
    resetLut();
    if (const std::optional<int> cut = toneCut(toneRange(target, sample), mode)) {
        // A step below 1: the tones move down and do not reach white any more.
        const double step = (65536 - *cut) / 65536.0;
        double sum = 0;
        fillAllTables([&](int i) {
            if (i < *cut)
                return 0.0;
            const double entry = sum;
            sum += step;
            return entry;
        });
    }
    applyLumaLut(target);
}
