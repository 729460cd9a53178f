// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/adjustment/burndodge_kernels.h"

#include "operators/pipeline/blendspan_inline.h"
#include "operators/pipeline/colorblending.h"
#include "operators/pipeline/linearmix_inline.h"

namespace
{
KESTRANE_ALWAYS_INLINE uint16_t burnt(uint16_t old, uint16_t depth)
{
    return uint16_t(old > depth ? old - depth : 0);
}

KESTRANE_ALWAYS_INLINE uint16_t dodged(uint16_t old, uint16_t room, uint16_t height)
{
    const uint16_t raised = uint16_t((old < room ? old : room) + height);
    return old == 0 ? uint16_t(0) : raised;
}

void burnPlane(uint16_t *__restrict__ plane, uint16_t depth, ptrdiff_t count)
{
    for (ptrdiff_t i = 0; i < count; ++i)
        plane[i] = burnt(plane[i], depth);
}

void burnResults(const uint16_t *__restrict__ plane, uint16_t depth, double *__restrict__ results,
                 ptrdiff_t count)
{
    for (ptrdiff_t i = 0; i < count; ++i)
        results[i] = double(int(burnt(plane[i], depth)));
}
} // namespace

namespace KERNEL_NAMESPACE
{
void burnSpan(const MixSpan &span, const BlendPass &pass, int amount)
{
    const auto depth = uint16_t(amount);
    const bool keeps = pass.keepsUnselected();
    inlined::overAllBlocks(
        span, [&](const MixSpan &block, inlined::Weight weight) KESTRANE_INLINE_LAMBDA {
            if (keeps && weight == inlined::Weight::None)
                return;
            // The mix of squares at full weight is the root of the new sample's square.
            if (pass.mode == kBlendMatte && weight == inlined::Weight::Full) {
                burnPlane(block.red, depth, block.count);
                burnPlane(block.green, depth, block.count);
                burnPlane(block.blue, depth, block.count);
                return;
            }
            ResultBlock results;
            results.wholeNumbers = true;
            burnResults(block.red, depth, results.red, block.count);
            burnResults(block.green, depth, results.green, block.count);
            burnResults(block.blue, depth, results.blue, block.count);
            blendBlock(block, results, pass);
        });
}

void dodgeSpan(const MixSpan &span, int amount)
{
    const auto height = uint16_t(amount);
    const auto room = uint16_t(65535 - height);
    inlined::mixChannels(span, [height, room](uint16_t old)
                                   KESTRANE_INLINE_LAMBDA { return dodged(old, room, height); });
}
} // namespace KERNEL_NAMESPACE
