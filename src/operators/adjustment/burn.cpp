// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/adjustment/burn.h"

#include "operators/adjustment/burndodge_kernels.h"
#include "operators/pipeline/blendspan.h"

Burn::Burn(OperatorTable *table) : DeclaredOp(table)
{
    hotkeyKey = QStringLiteral("BurnHotkey");
    declare({.field = &amount,
             .key = "Burn",
             .low = 0,
             .high = 100,
             .control = ::slider(QT_TR_NOOP("Amount"))});
}

void Burn::apply(image *target, image *)
{
    const int depth = 65535 - int((100 - amount) / 100.0 * 65535);
    if (depth == 0)
        return; // in no Blend Mode anything is stored
    const BlendPass pass = blendPass(BlendOrder::OldFirst);
    overBlendSpans(target, pass,
                   [&](const MixSpan &span) { KERNEL_DISPATCH(burnSpan, span, pass, depth); });
}
