// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/adjustment/forcedynamic.h"

#include "operators/adjustment/tablefill.h"
#include "operators/adjustment/tonecut.h"

ForceDynamic::ForceDynamic(OperatorTable *table) : DeclaredOp(table)
{
    hotkeyKey = QStringLiteral("ForceDynamicHotkey");
    declare({.field = &sample,
             .key = "ForceDynamicSample",
             .low = 0,
             .high = 1,
             .initial = 1,
             .control = check(QT_TR_NOOP("Sample"))});
    declare({.field = &exclude,
             .key = "ForceDynamicExclude",
             .low = 0,
             .high = 1,
             .control = check(QT_TR_NOOP("Exclude"))});
}

void ForceDynamic::apply(image *target, image *)
{
    constexpr uint16_t almostFull = 65500;
    const ToneRange range = toneRange(target, sample, exclude ? almostFull : 0);
    fillAllTables([range](int i) {
        if (i < range.low)
            return 0.0;
        if (i > range.high)
            return 65535.0;
        return double(i - range.low) / (range.high - range.low) * 65535;
    });
    applyLumaLut(target);
}
