// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/smoothing_kernels.h"

#include "core/colour.h"

namespace KERNEL_NAMESPACE
{
namespace
{
constexpr int kBlock = 64; // words whose sums stay in registers
constexpr int kChunk = 256;
constexpr double kSnapToFull = 65527.0, kSnapToNone = 8.0;

/// The upper half of word * weight, in words of 16 bits only: eight or sixteen of them fit
/// a register. The taps of one sum weigh 1 together, so the sums fit too.
KESTRANE_ALWAYS_INLINE void weigh(const uint16_t *source, const FixedTap *taps, int tapCount,
                                  int count, uint16_t *sums)
{
    uint16_t sum[kBlock] = {};
    for (int t = 0; t < tapCount; ++t) {
        const uint16_t *const from = source + taps[t].offset;
        const uint16_t high = uint16_t(taps[t].weight >> 16), low = uint16_t(taps[t].weight);
        for (int x = 0; x < count; ++x) {
            const uint16_t whole = uint16_t(uint32_t(from[x]) * high >> 16);
            const uint16_t part = uint16_t(from[x] * high);
            const uint16_t rest = uint16_t(uint32_t(from[x]) * low >> 16);
            const bool carry = uint16_t(part + rest) < part;
            sum[x] = uint16_t(sum[x] + whole + carry);
        }
    }
    for (int x = 0; x < count; ++x)
        sums[x] = sum[x];
}
} // namespace

void weighWords(const uint16_t *source, const FixedTap *taps, int tapCount, int count,
                uint16_t *sums)
{
    int x = 0;
    for (; x + kBlock <= count; x += kBlock)
        weigh(source + x, taps, tapCount, kBlock, sums + x);
    if (x < count)
        weigh(source + x, taps, tapCount, count - x, sums + x);
}

void mixWords(const SmoothMix &mix, const uint16_t *sums, int count, uint16_t *words)
{
    const double divisor = mix.divisor, amount = mix.amount, rest = 1 - mix.amount;
    for (int x = 0; x < count; ++x) {
        const double v = int(sums[x]) / divisor * amount + rest * int(words[x]);
        const double kept = v > kSnapToFull ? 65535.0 : v >= kSnapToNone ? v : 0.0;
        words[x] = uint16_t(int(kept));
    }
}

int firstMisweighed(double weight, uint32_t fixedWeight)
{
    for (int from = 0; from < 65536; from += kChunk) {
        int wrong = 0;
        for (int i = 0; i < kChunk; ++i)
            wrong |= int((from + i) * weight) ^ int(uint64_t(from + i) * fixedWeight >> 32);
        for (int i = 0; wrong && i < kChunk; ++i)
            if (int((from + i) * weight) != int(uint64_t(from + i) * fixedWeight >> 32))
                return from + i;
    }
    return 65536;
}
} // namespace KERNEL_NAMESPACE
