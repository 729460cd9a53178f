// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/adjustment/darken.h"

#include "operators/adjustment/tablefill.h"

Darken::Darken(OperatorTable *table) : DeclaredOp(table)
{
    hotkeyKey = QStringLiteral("DarkenHotkey");
    declare({.field = &amount,
             .key = "Darken",
             .low = 0,
             .high = 200,
             .control = ::slider(QT_TR_NOOP("Amount"))});
    declare({.field = &limit,
             .key = "DarkenLimit",
             .low = 0,
             .high = 255,
             .initial = 128,
             .control = ::slider(QT_TR_NOOP("Limit"))});
}

void Darken::apply(image *target, image *)
{
    const double top = limit * 257;
    const double a = amount / 100.0;
    // A limit of 0 makes no number of entry 0, which stores the 0 that belongs there.
    fillGreenTable([=](int i) { return i <= top ? i - (top - i) / top * i * a : double(i); });
    applyLumaLut(target);
}
