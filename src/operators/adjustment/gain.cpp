// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/adjustment/gain.h"

#include "operators/adjustment/tablefill.h"

#include <cmath>

Gain::Gain(OperatorTable *table) : DeclaredOp(table)
{
    hotkeyKey = QStringLiteral("GainHotkey");
    declare({.field = &black,
             .key = "GainBlack",
             .low = 0,
             .high = 200,
             .control = ::slider(QT_TR_NOOP("Black"))});
    declare({.field = &gain,
             .key = "Gain",
             .low = 0,
             .high = 200,
             .control = ::slider(QT_TR_NOOP("Gain"))});
    declare({.field = &white,
             .key = "GainWhite",
             .low = 0,
             .high = 200,
             .initial = 200,
             .control = ::slider(QT_TR_NOOP("White"))});
}

void Gain::apply(image *target, image *)
{
    const int blackPoint = int(black / 200.0 * 65535);
    const int whitePoint = int(white / 200.0 * 65535);
    const double k = gain / 200.0 * 32 + 0.1;
    const double step = 1.0 / (whitePoint - blackPoint);
    double x = 0;
    resetLut();
    // Where the white point lies below the black one it wins: there is no ramp then.
    fillGreenTable([&](int i) {
        if (i >= whitePoint)
            return 65535.0;
        if (i < blackPoint)
            return 0.0;
        const double entry = (1 - std::exp(-k * x)) / (1 - std::exp(-k)) * 65535;
        x += step;
        return entry;
    });
    applyLumaLut(target);
}
