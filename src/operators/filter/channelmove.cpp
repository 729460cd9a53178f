// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/filter/channelmove.h"

#include "core/workspace.h"
#include "operators/filter/channelmove_kernels.h"
#include "operators/pipeline/blendspan.h"

namespace
{
constexpr ChannelOrder kOrders[] = {{1, 0, 2}, {0, 2, 1}, {2, 1, 0}, {2, 0, 1}, {1, 2, 0}};
} // namespace

ChannelMove::ChannelMove(OperatorTable *table) : DeclaredOp(table)
{
    hotkeyKey = QStringLiteral("ChannelMoveHotkey");
    declare({.field = &select,
             .key = "ChannelMoveSelect",
             .low = 0,
             .high = 4,
             .control = choice(QT_TR_NOOP("Move"),
                               {QT_TR_NOOP("Swap red and green"), QT_TR_NOOP("Swap green and blue"),
                                QT_TR_NOOP("Swap red and blue"),
                                QT_TR_NOOP("Rotate: red to green to blue"),
                                QT_TR_NOOP("Rotate back: blue to green to red")})});
}

void ChannelMove::apply(image *target, image *)
{
    if (select < RedGreen || select > Back)
        return;
    const ChannelOrder &order = kOrders[select];
    BlendPass pass = blendPass(BlendOrder::OldFirst, true);
    pass.throughAlpha = workspace() && workspace()->maskWithTargetAlpha;
    overBlendSpans(target, pass, [&](MixSpan span) {
        // Without M/Alpha transparency does not count: only what is not selected is passed over.
        if (!pass.throughAlpha)
            span.alpha = const_cast<uint16_t *>(span.mask); // read, not written
        KERNEL_DISPATCH(moveChannelsSpan, span, order, pass);
    });
}
