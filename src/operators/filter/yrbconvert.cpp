// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/filter/yrbconvert.h"

#include "operators/filter/yrbconvert_kernels.h"
#include "operators/pipeline/linearmix.h"

yrbConvert::yrbConvert(OperatorTable *table) : DeclaredOp(table)
{
    hotkeyKey = QStringLiteral("YRBConvertHotkey");
    declare({.field = &mode,
             .key = "YRBConvertMode",
             .low = 0,
             .high = 1,
             .control =
                 choice(QT_TR_NOOP("Mode"), {QT_TR_NOOP("RGB to YRB"), QT_TR_NOOP("YRB to RGB")})});
}

void yrbConvert::apply(image *target, image *)
{
    if (!target || !target->valid())
        return;
    if (mode == ToYrb)
        overSpans(target, [](const MixSpan &span) { KERNEL_DISPATCH(toYrbSpan, span); });
    else
        overSpans(target, [](const MixSpan &span) { KERNEL_DISPATCH(fromYrbSpan, span); });
    target->imageMode = mode == ToYrb ? 1 : 0;
}
