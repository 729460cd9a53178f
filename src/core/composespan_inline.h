// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/compose_kernels.h"
#include "core/composemodes_inline.h"

#include <algorithm>
#include <cmath>

#ifdef __AVX2__
#include <immintrin.h>
#endif

/// Pieces of the span loops that both kernel files of the compositor share. Always inlined,
/// because each kernel file is compiled for several instruction sets.
namespace composespan
{
/// a / 65535 to the last bit without a division: the quotient repeats the sixteen bits of
/// `a` for ever; the first three repetitions are one exact product, the next two another,
/// and only their sum is rounded.
KESTRANE_ALWAYS_INLINE double share(uint16_t a)
{
    constexpr double first = 0x1p-16 + 0x1p-32 + 0x1p-48, rest = 0x1p-64 + 0x1p-80;
    const double value = int32_t(a);
    return value * first + value * rest;
}
KESTRANE_ALWAYS_INLINE double share(double a)
{
    return a / 65535.0;
}

KESTRANE_ALWAYS_INLINE double real(uint16_t sample)
{
    return int32_t(sample);
}
KESTRANE_ALWAYS_INLINE double real(double sample)
{
    return sample;
}
/// For values of 0 to 65535.
KESTRANE_ALWAYS_INLINE uint16_t stored(double value)
{
    return uint16_t(int32_t(value));
}
/// What is stored of a mix is the truncated root of this. Where a mode does not apply it
/// is the square of the old value, whose root is that value.
KESTRANE_ALWAYS_INLINE double mixedSquare(double fresh, double old, double k)
{
    return fresh * fresh * (1.0 - k) + old * old * k;
}

/// Room for the squares of one channel of a span.
using Squares = double[kSpanPixels];

/// out = std::sqrt(squares) truncated, for 1 to kSpanPixels squares of 0 to 65535 squared.
/// May set squares past `count` to 0.
///
/// The vector form pays for a single precision root only. The double root rounds up to a
/// whole number m from the last double below m * m too if that lies in the lower half of
/// an even power of two, which its exponent tells: such squares count as one step more.
/// The single root never passes m from either side, so truncated it can only be one too
/// high, where it is m itself and the square lies below m * m. A test holds all m and their
/// neighbours against std::sqrt.
#ifdef __AVX2__
constexpr int kRootLanes = 16;
static_assert(kSpanPixels % kRootLanes == 0);

KESTRANE_ALWAYS_INLINE __m256i eightRoots(const double *squares)
{
    const __m256i one = _mm256_set1_epi64x(1);
    __m256i low = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(squares));
    __m256i high = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(squares + 4));
    low = _mm256_add_epi64(low, _mm256_and_si256(_mm256_srli_epi64(low, 52), one));
    high = _mm256_add_epi64(high, _mm256_and_si256(_mm256_srli_epi64(high, 52), one));
    const __m256d lowSquare = _mm256_castsi256_pd(low), highSquare = _mm256_castsi256_pd(high);
    const __m256 single = _mm256_insertf128_ps(_mm256_castps128_ps256(_mm256_cvtpd_ps(lowSquare)),
                                               _mm256_cvtpd_ps(highSquare), 1);
    const __m256i root = _mm256_cvttps_epi32(_mm256_sqrt_ps(single));
    const __m256d lowRoot = _mm256_cvtepi32_pd(_mm256_castsi256_si128(root));
    const __m256d highRoot = _mm256_cvtepi32_pd(_mm256_extracti128_si256(root, 1));
    const __m256d lowOver = _mm256_cmp_pd(lowSquare, _mm256_mul_pd(lowRoot, lowRoot), _CMP_LT_OQ);
    const __m256d highOver =
        _mm256_cmp_pd(highSquare, _mm256_mul_pd(highRoot, highRoot), _CMP_LT_OQ);
    const __m256i over = _mm256_castps_si256(_mm256_shuffle_ps(
        _mm256_castpd_ps(lowOver), _mm256_castpd_ps(highOver), _MM_SHUFFLE(3, 1, 3, 1)));
    return _mm256_add_epi32(root, _mm256_permute4x64_epi64(over, _MM_SHUFFLE(3, 1, 2, 0)));
}

KESTRANE_ALWAYS_INLINE void sixteenRoots(const double *squares, uint16_t *out)
{
    const __m256i packed = _mm256_packus_epi32(eightRoots(squares), eightRoots(squares + 8));
    _mm256_storeu_si256(reinterpret_cast<__m256i *>(out),
                        _mm256_permute4x64_epi64(packed, _MM_SHUFFLE(3, 1, 2, 0)));
}

KESTRANE_ALWAYS_INLINE void storeRoots(Squares &squares, int count, uint16_t *out)
{
    const int whole = count - count % kRootLanes;
    for (int x = 0; x < whole; x += kRootLanes)
        sixteenRoots(squares + x, out + x);
    if (whole == count)
        return;
    uint16_t last[kRootLanes];
    std::fill(squares + count, squares + whole + kRootLanes, 0.0);
    sixteenRoots(squares + whole, last);
    std::copy(last, last + (count - whole), out + whole);
}
#else
KESTRANE_ALWAYS_INLINE void storeRoots(Squares &squares, int count, uint16_t *__restrict out)
{
    for (int x = 0; x < count; ++x)
        out[x] = uint16_t(int32_t(std::sqrt(squares[x])));
}
#endif

/// How the layer covers a span: not at all, wholly, or in between.
enum class Cover { None, Full, Partial };

template <class Sample>
KESTRANE_ALWAYS_INLINE Cover coverOf(const Span<Sample> &span)
{
    Sample least = span.over[3][0], most = least;
    for (int x = 1; x < span.count; ++x) {
        least = std::min(least, span.over[3][x]);
        most = std::max(most, span.over[3][x]);
    }
    if (most == 0)
        return Cover::None;
    return least == 65535 && span.opacity == 1.0 ? Cover::Full : Cover::Partial;
}

template <class Sample>
KESTRANE_ALWAYS_INLINE void fillKept(const Sample *__restrict alpha, int count, double opacity,
                                     double *__restrict k)
{
    for (int x = 0; x < count; ++x)
        k[x] = 1.0 - share(alpha[x]) * opacity;
}

template <class Sample>
KESTRANE_ALWAYS_INLINE void mixAlpha(const Sample *__restrict over, const double *__restrict k,
                                     uint16_t *__restrict under, int count)
{
    for (int x = 0; x < count; ++x)
        under[x] = stored((1.0 - k[x]) * real(over[x]) + k[x] * real(under[x]));
}
} // namespace composespan
