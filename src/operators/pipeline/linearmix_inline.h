// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/pipeline/spans_inline.h"

/// For kernel files of operators whose results are mixed in linearly by the mask, whatever the
/// Blend Mode.
namespace inlined
{
/// The linear mix of one sample. Both operands lie within 0 to 65535 and the weights add up to
/// 1, give or take a rounding, so the truncated value always fits a sample.
KESTRANE_ALWAYS_INLINE uint16_t mixedLinearly(uint16_t old, double result, double m)
{
    return uint16_t(int(double(int(old)) * (1.0 - m) + result * m));
}

/// Mixes what a rule makes of each sample by itself: uint16_t rule(uint16_t old).
template <class Rule>
KESTRANE_ALWAYS_INLINE void mixChannels(const MixSpan &span, const Rule &rule)
{
    const auto store = [&rule](uint16_t *__restrict__ plane, ptrdiff_t count)
                           KESTRANE_INLINE_LAMBDA {
                               for (ptrdiff_t i = 0; i < count; ++i)
                                   plane[i] = rule(plane[i]);
                           };
    overBlocks(span, [&](const MixSpan &block, Weight weight) KESTRANE_INLINE_LAMBDA {
        // Under a full mask the mix is old * 0 + result * 1, which is the result itself.
        if (weight == Weight::Full) {
            store(block.red, block.count);
            store(block.green, block.count);
            store(block.blue, block.count);
            return;
        }
        // First what the rule makes, in vectors of samples; then the mix, in vectors of doubles.
        uint16_t made[3][kBlock];
        const auto make = [&rule](const uint16_t *__restrict__ plane, uint16_t *__restrict__ out,
                                  ptrdiff_t count) KESTRANE_INLINE_LAMBDA {
            for (ptrdiff_t i = 0; i < count; ++i)
                out[i] = rule(plane[i]);
        };
        make(block.red, made[0], block.count);
        make(block.green, made[1], block.count);
        make(block.blue, made[2], block.count);
        uint16_t *__restrict__ red = block.red;
        uint16_t *__restrict__ green = block.green;
        uint16_t *__restrict__ blue = block.blue;
        const uint16_t *__restrict__ mask = block.mask;
        for (ptrdiff_t i = 0; i < block.count; ++i) {
            const double m = shareOfFull(double(int(mask[i])));
            red[i] = mixedLinearly(red[i], double(int(made[0][i])), m);
            green[i] = mixedLinearly(green[i], double(int(made[1][i])), m);
            blue[i] = mixedLinearly(blue[i], double(int(made[2][i])), m);
        }
    });
}
} // namespace inlined
