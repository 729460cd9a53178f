// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/filter/channelmove_kernels.h"

#include "operators/pipeline/blendspan_inline.h"

namespace KERNEL_NAMESPACE
{
void moveChannelsSpan(const MixSpan &span, const ChannelOrder &order, const BlendPass &pass)
{
    inlined::blendSpan(span, pass,
                       [&order](const MixSpan &block, ResultBlock *results) KESTRANE_INLINE_LAMBDA {
                           const uint16_t *const planes[] = {block.red, block.green, block.blue};
                           results->wholeNumbers = true;
                           inlined::widen(planes[order.red], results->red, block.count);
                           inlined::widen(planes[order.green], results->green, block.count);
                           inlined::widen(planes[order.blue], results->blue, block.count);
                       });
}
} // namespace KERNEL_NAMESPACE
