// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/adjustment/hue.h"

#include "operators/adjustment/colourmodel_kernels.h"
#include "operators/pipeline/blendspan.h"

Hue::Hue(OperatorTable *table) : DeclaredOp(table)
{
    hotkeyKey = QStringLiteral("HueHotkey");
    declare({.field = &hue,
             .key = "Hue",
             .low = -100,
             .high = 100,
             .control = ::slider(QT_TR_NOOP("Hue"))});
}

void Hue::apply(image *target, image *)
{
    const double shift = hue / 100.0 * 36.0;
    const BlendPass pass = blendPass(BlendOrder::OldFirst, true);
    overBlendSpans(target, pass,
                   [&](const MixSpan &span) { KERNEL_DISPATCH(turnHueSpan, span, pass, shift); });
}
