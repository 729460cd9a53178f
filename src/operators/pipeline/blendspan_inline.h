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

/// Whole numbers become doubles in a loop of their own. In one loop with the work the compiler
/// would take as many pixels at once as a vector has of the former, four times too many of the
/// latter for the registers.
KESTRANE_ALWAYS_INLINE void widen(const uint16_t *__restrict__ plane, double *__restrict__ wide,
                                  ptrdiff_t count)
{
    for (ptrdiff_t i = 0; i < count; ++i)
        wide[i] = double(int(plane[i]));
}

KESTRANE_ALWAYS_INLINE void widen(const MixSpan &block, ResultBlock *samples)
{
    widen(block.red, samples->red, block.count);
    widen(block.green, samples->green, block.count);
    widen(block.blue, samples->blue, block.count);
}

/// The same for a rule on one pixel: Rgb rule(Rgb old).
template <class Rule>
KESTRANE_ALWAYS_INLINE void blendPixels(const MixSpan &span, const BlendPass &pass,
                                        const Rule &rule)
{
    blendSpan(
        span, pass, [&rule](const MixSpan &block, ResultBlock *results) KESTRANE_INLINE_LAMBDA {
            widen(block, results);
            for (ptrdiff_t i = 0; i < block.count; ++i) {
                const Rgb made = rule(Rgb{results->red[i], results->green[i], results->blue[i]});
                results->red[i] = made.red;
                results->green[i] = made.green;
                results->blue[i] = made.blue;
            }
        });
}
} // namespace inlined
