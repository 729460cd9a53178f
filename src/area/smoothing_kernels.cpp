// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/smoothing_kernels.h"

#include "core/colour.h"
#include "core/intrinsics.h"

namespace KERNEL_NAMESPACE
{
namespace
{
constexpr int kBlock = 64; // words whose sums stay in registers
constexpr int kChunk = 256;
constexpr double kSnapToFull = 65527.0, kSnapToNone = 8.0;

/// As many words as a register holds. The compiler's own code for their products takes many
/// times the time.
#if defined(__AVX512BW__)
using Words = uint16_t __attribute__((vector_size(64)));
KESTRANE_ALWAYS_INLINE Words upperProduct(Words a, Words b)
{
    return Words(_mm512_mulhi_epu16(__m512i(a), __m512i(b)));
}
#elif defined(__AVX2__)
using Words = uint16_t __attribute__((vector_size(32)));
KESTRANE_ALWAYS_INLINE Words upperProduct(Words a, Words b)
{
    return Words(_mm256_mulhi_epu16(__m256i(a), __m256i(b)));
}
#elif defined(__SSE2__)
using Words = uint16_t __attribute__((vector_size(16)));
KESTRANE_ALWAYS_INLINE Words upperProduct(Words a, Words b)
{
    return Words(_mm_mulhi_epu16(__m128i(a), __m128i(b)));
}
#else
using Words = uint16_t __attribute__((vector_size(16)));
KESTRANE_ALWAYS_INLINE Words upperProduct(Words a, Words b)
{
    for (unsigned i = 0; i < sizeof(Words) / sizeof(uint16_t); ++i)
        a[i] = uint16_t(uint32_t(a[i]) * b[i] >> 16);
    return a;
}
#endif
constexpr int kLanes = sizeof(Words) / sizeof(uint16_t);

/// The sums for a whole block. The upper half of word * weight is made of products of 16
/// bits; each tap counts a carry from the lower half, and takes it back where there is none.
/// The taps of one sum weigh 1 together, so the sums fit 16 bits.
KESTRANE_ALWAYS_INLINE void weighBlock(const uint16_t *source, const FixedTap *taps, int tapCount,
                                       uint16_t *sums)
{
    Words sum[kBlock / kLanes];
    for (Words &lanes : sum)
        lanes = Words{} + uint16_t(tapCount);
    for (int t = 0; t < tapCount; ++t) {
        const uint16_t *from = source + taps[t].offset;
        const Words high = Words{} + uint16_t(taps[t].weight >> 16);
        const Words low = Words{} + uint16_t(taps[t].weight);
        for (Words &lanes : sum) {
            Words word;
            __builtin_memcpy(&word, from, sizeof word);
            from += kLanes;
            const Words part = word * high;
            const Words noCarry = Words(part + upperProduct(word, low) >= part);
            lanes += upperProduct(word, high) + noCarry;
        }
    }
    __builtin_memcpy(sums, sum, sizeof sum);
}

/// The sum for one word.
KESTRANE_ALWAYS_INLINE uint16_t weighOne(const uint16_t *source, const FixedTap *taps, int tapCount)
{
    uint32_t sum = 0;
    for (int t = 0; t < tapCount; ++t)
        sum += uint32_t(uint64_t(source[taps[t].offset]) * taps[t].weight >> 32);
    return uint16_t(sum);
}
} // namespace

void weighWords(const uint16_t *source, const FixedTap *taps, int tapCount, int count,
                uint16_t *sums)
{
    int x = 0;
    for (; x + kBlock <= count; x += kBlock)
        weighBlock(source + x, taps, tapCount, sums + x);
    for (; x < count; ++x)
        sums[x] = weighOne(source + x, taps, tapCount);
}

void mixWords(const SmoothMix &mix, const uint16_t *sums, int count, uint16_t *words)
{
    const double divisor = mix.divisor, amount = mix.amount, rest = 1 - mix.amount;
    // One kind of number in each loop: compilers make little of loops that mix them.
    double sum[kBlock], word[kBlock];
    for (int first = 0; first < count; first += kBlock) {
        const int length = count - first < kBlock ? count - first : kBlock;
        for (int i = 0; i < length; ++i) {
            sum[i] = int(sums[first + i]);
            word[i] = int(words[first + i]);
        }
        for (int i = 0; i < length; ++i) {
            const double v = sum[i] / divisor * amount + rest * word[i];
            const double kept = v >= kSnapToNone ? v : 0.0;
            word[i] = v > kSnapToFull ? 65535.0 : kept;
        }
        for (int i = 0; i < length; ++i)
            words[first + i] = uint16_t(int(word[i]));
    }
}

void snapWords(const SmoothSnap &snap, const uint16_t *sums, int count, uint16_t *words)
{
    const uint16_t firstKept = snap.firstKept, firstFull = snap.firstFull, less = snap.less;
    for (int x = 0; x < count; ++x) {
        const uint16_t kept = sums[x] < firstKept ? 0 : uint16_t(sums[x] - less);
        words[x] = sums[x] >= firstFull ? 65535 : kept;
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
