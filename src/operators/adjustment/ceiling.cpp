// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/adjustment/ceiling.h"

#include "operators/adjustment/tablefill.h"
#include "operators/adjustment/tonecut.h"

Ceiling::Ceiling(OperatorTable *table) : DeclaredOp(table)
{
    hotkeyKey = QStringLiteral("CeilingHotkey");
    declare({.field = &sample,
             .key = "CeilingSample",
             .low = 0,
             .high = 1,
             .initial = 1,
             .control = check(QT_TR_NOOP("Sample"))});
    declare({.field = &mode,
             .key = "CeilingMode",
             .low = 0,
             .high = 2,
             .control = choice(QT_TR_NOOP("Mode"), {QT_TR_NOOP("Minimum"), QT_TR_NOOP("Average"),
                                                    QT_TR_NOOP("Maximum")})});
}

void Ceiling::apply(image *target, image *)
{
    resetLut();
    if (const std::optional<int> cut = toneCut(toneRange(target, sample), mode)) {
        const double step = 65535.0 / *cut;
        double sum = 0;
        fillAllTables([&](int i) {
            if (i >= *cut)
                return 65535.0;
            const double entry = sum;
            sum += step;
            return entry;
        });
    }
    applyLumaLut(target);
}
