// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/wand_kernels.h"

#include "core/colour.h"

namespace KERNEL_NAMESPACE
{
namespace
{
constexpr int kBits = 16; // gathered and spread at a time, one to a lane

alignas(32) constexpr uint16_t kLaneBit[kBits] = {
    1u << 0, 1u << 1, 1u << 2,  1u << 3,  1u << 4,  1u << 5,  1u << 6,  1u << 7,
    1u << 8, 1u << 9, 1u << 10, 1u << 11, 1u << 12, 1u << 13, 1u << 14, 1u << 15};

KESTRANE_ALWAYS_INLINE void match(const ColourRange &range, int from, int count, uint16_t *words)
{
    const uint16_t *const red = range.plane[0] + from, *const green = range.plane[1] + from,
                          *const blue = range.plane[2] + from, *const alpha = range.plane[3] + from;
    const uint16_t low0 = range.low[0], low1 = range.low[1], low2 = range.low[2];
    const uint16_t span0 = range.span[0], span1 = range.span[1], span2 = range.span[2];
    const uint16_t leastAlpha = range.leastAlpha;
    // Below the range a difference wraps round to more than any span.
    for (int i = 0; i < count; ++i)
        words[i] = uint16_t(red[i] - low0) <= span0 && uint16_t(green[i] - low1) <= span1 &&
                           uint16_t(blue[i] - low2) <= span2 && alpha[i] >= leastAlpha
                       ? 65535
                       : 0;
}

KESTRANE_ALWAYS_INLINE uint64_t gather(const uint16_t *words)
{
    uint16_t bits = 0;
    for (int i = 0; i < kBits; ++i)
        bits |= uint16_t(words[i] & kLaneBit[i]);
    return bits;
}
} // namespace

void matchWords(const ColourRange &range, int count, uint16_t *words)
{
    match(range, 0, count, words);
}

void matchBits(const ColourRange &range, int count, uint64_t *bits)
{
    for (int from = 0; from < count; from += 64, ++bits) {
        alignas(32) uint16_t words[64] = {};
        if (count - from >= 64)
            match(range, from, 64, words);
        else
            match(range, from, count - from, words);
        *bits = gather(words) | gather(words + 16) << 16 | gather(words + 32) << 32 |
                gather(words + 48) << 48;
    }
}

void spreadBits(const uint64_t *bits, int count, uint16_t *words)
{
    for (int from = 0; from < count; from += kBits) {
        const uint16_t some = uint16_t(bits[from / 64] >> from % 64);
        if (count - from >= kBits)
            for (int i = 0; i < kBits; ++i)
                words[from + i] = some & kLaneBit[i] ? 65535 : 0;
        else
            for (int i = 0; i < count - from; ++i)
                words[from + i] = some & kLaneBit[i] ? 65535 : 0;
    }
}
} // namespace KERNEL_NAMESPACE
