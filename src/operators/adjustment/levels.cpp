// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/adjustment/levels.h"

#include "operators/adjustment/tablefill.h"

#include <cmath>

Levels::Levels(OperatorTable *table) : DeclaredOp(table)
{
    hotkeyKey = QStringLiteral("LevelsHotkey");
    declare({.field = &black,
             .key = "LevelsBlack",
             .low = -100,
             .high = 100,
             .control = ::slider(QT_TR_NOOP("Black"))});
    declare({.field = &shadow,
             .key = "LevelsShadow",
             .low = 0,
             .high = 100,
             .control = ::slider(QT_TR_NOOP("Shadow"))});
    declare({.field = &mid,
             .key = "LevelsMid",
             .low = 0,
             .high = 100,
             .initial = 50,
             .control = ::slider(QT_TR_NOOP("Mid"))});
    declare({.field = &highlight,
             .key = "LevelsHighlight",
             .low = 0,
             .high = 100,
             .initial = 100,
             .control = ::slider(QT_TR_NOOP("Highlight"))});
    declare({.field = &white,
             .key = "LevelsWhite",
             .low = -100,
             .high = 100,
             .control = ::slider(QT_TR_NOOP("White"))});
}

namespace
{
constexpr int kStraightMid = 50;
/// One hundred more than the largest index, and meant so: it keeps the white end of the table
/// just under full scale.
constexpr double kIndexScale = 65635.0;

/// The exponent of the curve through the middle.
double midExponent(int mid)
{
    double t = 2.0 * mid / 100;
    if (mid < kStraightMid) {
        const double d = (1 - t) * 9 + 1;
        return d > 9.99 ? 0.10010010010010009 : 1 / d;
    }
    t -= 1;
    const double d = 1 - t;
    return d < 0.01 ? 100.0 : 1 / d;
}
} // namespace

void Levels::apply(image *target, image *)
{
    double inBlack = 0, inScale = 1, outFloor = 0, outTop = 1;
    if (white > 0)
        inScale = (100 - white) / 100.0;
    if (white < 0)
        outTop = (white + 100) / 100.0;
    if (black > 0) {
        inBlack = black / 100.0;
        inScale -= inBlack;
    }
    if (black < 0)
        outFloor = -black / 100.0;
    const double lo = shadow / 100.0 * 0.5;
    const double hi = highlight / 100.0 * 0.5 + 0.5;
    const double span = hi - lo;
    const bool curved = mid != kStraightMid;
    const double exponent = midExponent(mid);

    fillAllTables([=](int i) {
        double x = i / kIndexScale;
        if (inScale < 1)
            x = (x - inBlack) * (1 / inScale);
        if (span != 0)
            x = (x - lo) / span;
        if (curved)
            x = (x + std::pow(x, exponent)) * 0.5;
        x = x * (outTop - outFloor) + outFloor;
        return x < 0 ? 0.0 : x > 1 ? 65535.0 : x * 65535;
    });
    applyLumaLut(target);
}
