// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/adjustment/saturation.h"

#include "operators/adjustment/colourmodel_kernels.h"
#include "operators/pipeline/blendspan.h"

Saturation::Saturation(OperatorTable *table) : DeclaredOp(table)
{
    hotkeyKey = QStringLiteral("SaturationHotkey");
    declare({.field = &saturation,
             .key = "Saturation",
             .low = -100,
             .high = 100,
             .control = ::slider(QT_TR_NOOP("Saturation"))});
}

void Saturation::apply(image *target, image *)
{
    const double factor = (saturation + 100) / 100.0;
    const BlendPass pass = blendPass(BlendOrder::OldFirst, true);
    overBlendSpans(target, pass,
                   [&](const MixSpan &span) { KERNEL_DISPATCH(saturateSpan, span, pass, factor); });
}
