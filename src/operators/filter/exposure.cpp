// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/filter/exposure.h"

#include "operators/filter/exposure_kernels.h"
#include "operators/pipeline/linearmix.h"

Exposure::Exposure(OperatorTable *table) : DeclaredOp(table)
{
    hotkeyKey = QStringLiteral("ExposureHotkey");
    declare({.field = &amount,
             .key = "Exposure",
             .low = -100,
             .high = 100,
             .control = ::slider(QT_TR_NOOP("Amount"))});
    declare({.field = &mode,
             .key = "ExposureMode",
             .low = 0,
             .high = 1,
             .control = choice(QT_TR_NOOP("Mode"), {QT_TR_NOOP("Raw RGB"), QT_TR_NOOP("Luma")}),
             .keptByReset = true});
}

void Exposure::apply(image *target, image *)
{
    const double k = (amount + 100) / 100.0;
    if (mode == RawRgb)
        mixScaled(target, k);
    else
        overSpans(target, [k](const MixSpan &span) { KERNEL_DISPATCH(exposeValueSpan, span, k); });
}
