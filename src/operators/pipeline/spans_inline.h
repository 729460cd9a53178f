// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/colour.h"
#include "operators/pipeline/linearmix_kernels.h"

/// What kernel files share to walk a span. Always inlined, so that files compiled for
/// several instruction sets never share a copy.
namespace inlined
{
enum class Weight { None, Full, Soft };

/// Whether mask words are all 0, all 65535, or anything else.
KESTRANE_ALWAYS_INLINE Weight weightOf(const uint16_t *mask, ptrdiff_t count)
{
    uint16_t any = 0;
    uint16_t all = 65535;
    for (ptrdiff_t i = 0; i < count; ++i) {
        any |= mask[i];
        all &= mask[i];
    }
    return any == 0 ? Weight::None : all == 65535 ? Weight::Full : Weight::Soft;
}

/// Calls work(block, weight) for blocks of a span, but for those of no weight. There the
/// mix is c * 1 + result * 0, which with a finite result is c itself: keeping it gives the
/// same bits. Blocks are long enough for full vectors and short enough to find the runs
/// of a real selection.
template <class Work>
KESTRANE_ALWAYS_INLINE void overBlocks(const MixSpan &span, const Work &work)
{
    constexpr ptrdiff_t kBlock = 256;
    for (ptrdiff_t at = 0; at < span.count; at += kBlock) {
        const ptrdiff_t rest = span.count - at;
        const ptrdiff_t count = rest < kBlock ? rest : kBlock;
        const Weight weight = weightOf(span.mask + at, count);
        if (weight != Weight::None)
            work(MixSpan{span.red + at, span.green + at, span.blue + at, span.mask + at, count},
                 weight);
    }
}
} // namespace inlined
