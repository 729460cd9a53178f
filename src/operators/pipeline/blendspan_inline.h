// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/pipeline/blendspan_kernels.h"
#include "operators/pipeline/spans_inline.h"

namespace KERNEL_NAMESPACE
{
void blendBlock(const MixSpan &block, const ResultBlock &results, const BlendPass &pass);
}

/// For kernel files of operators whose results go through the Blend Mode.
namespace inlined
{
/// Calls fill(block, &results) for blocks of at most ResultBlock::kSize samples and mixes the
/// results in. Blocks that the mix would leave as they are, whatever the results, are left out.
template <class Fill>
KESTRANE_ALWAYS_INLINE void blendSpan(const MixSpan &span, const BlendPass &pass, const Fill &fill)
{
    static_assert(kBlock <= ResultBlock::kSize);
    const bool keeps = pass.keepsUnselected();
    overAllBlocks(span, [&](const MixSpan &block, Weight weight) KESTRANE_INLINE_LAMBDA {
        if (keeps && weight == Weight::None)
            return;
        ResultBlock results;
        fill(block, &results);
        KERNEL_NAMESPACE::blendBlock(block, results, pass);
    });
}

/// The same for a rule on one pixel: Rgb rule(Rgb old).
template <class Rule>
KESTRANE_ALWAYS_INLINE void blendPixels(const MixSpan &span, const BlendPass &pass,
                                        const Rule &rule)
{
    blendSpan(
        span, pass, [&rule](const MixSpan &block, ResultBlock *results) KESTRANE_INLINE_LAMBDA {
            const uint16_t *__restrict__ red = block.red;
            const uint16_t *__restrict__ green = block.green;
            const uint16_t *__restrict__ blue = block.blue;
            for (ptrdiff_t i = 0; i < block.count; ++i) {
                const Rgb result =
                    rule(Rgb{double(int(red[i])), double(int(green[i])), double(int(blue[i]))});
                results->red[i] = result.red;
                results->green[i] = result.green;
                results->blue[i] = result.blue;
            }
        });
}
} // namespace inlined
