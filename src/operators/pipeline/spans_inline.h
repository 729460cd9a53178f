// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/colour.h"
#include "operators/pipeline/linearmix_kernels.h"

/// What kernel files share to walk a span. Always inlined, so that files compiled for
/// several instruction sets never share a copy.
namespace inlined
{
/// x / 65535 for a whole x of 0 to 65535, to the last bit, without the slow division. The
/// quotient is the number x repeated behind the binary point every 16 places. The first three
/// times fit a double; adding three more rounds once, as the division does, and no quotient
/// lies so close to the middle of two doubles that those after them could matter.
KESTRANE_ALWAYS_INLINE double shareOfFull(double x)
{
    constexpr double first = 0x1p-16 + 0x1p-32 + 0x1p-48;
    constexpr double next = 0x1p-64 + 0x1p-80 + 0x1p-96;
    return x * first + x * next;
}

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

constexpr ptrdiff_t kBlock = 256; ///< long enough for vectors, short enough to find runs

/// Calls work(block, weight) for all blocks of a span.
template <class Work>
KESTRANE_ALWAYS_INLINE void overAllBlocks(const MixSpan &span, const Work &work)
{
    for (ptrdiff_t at = 0; at < span.count; at += kBlock) {
        const ptrdiff_t rest = span.count - at;
        const ptrdiff_t count = rest < kBlock ? rest : kBlock;
        work(span.part(at, count), weightOf(span.mask + at, count));
    }
}

/// The same, but for blocks of no weight. There the linear mix is c * 1 + result * 0, which
/// with a finite result is c itself: keeping it gives the same bits.
template <class Work>
KESTRANE_ALWAYS_INLINE void overBlocks(const MixSpan &span, const Work &work)
{
    overAllBlocks(span, [&work](const MixSpan &block, Weight weight) KESTRANE_INLINE_LAMBDA {
        if (weight != Weight::None)
            work(block, weight);
    });
}
} // namespace inlined
