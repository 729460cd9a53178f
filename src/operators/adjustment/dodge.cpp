// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/adjustment/dodge.h"

#include "operators/adjustment/burndodge_kernels.h"
#include "operators/pipeline/linearmix.h"

Dodge::Dodge(OperatorTable *table) : DeclaredOp(table)
{
    hotkeyKey = QStringLiteral("DodgeHotkey");
    declare({.field = &amount,
             .key = "Dodge",
             .low = 0,
             .high = 100,
             .control = ::slider(QT_TR_NOOP("Amount"))});
}

void Dodge::apply(image *target, image *)
{
    const int height = int(amount / 100.0 * 65535);
    if (height == 0)
        return;
    overSpans(target, [height](const MixSpan &span) { KERNEL_DISPATCH(dodgeSpan, span, height); });
}
