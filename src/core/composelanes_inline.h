// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/intrinsics.h"

#include <cmath>
#include <cstdint>

/// As many doubles as the kernels of the compositor work on at a time, and their way from
/// and to 16-bit samples. The compiler's own vector code for loops that mix the two takes
/// nearly twice the time. Always inlined, because each kernel file is compiled for several
/// instruction sets.
///
/// storeRoots stores std::sqrt(squares) truncated, for squares of 0 to 65535 squared. The
/// vector forms pay for a single precision root only. The double root rounds up to a whole
/// number m from the last double below m * m too if that lies in the lower half of an even
/// power of two, which its exponent tells: such squares count as one step more. The single
/// root never passes m from either side, so truncated it can only be one too high, where
/// it is m itself and the square lies below m * m. A test holds all m and their neighbours
/// against std::sqrt.
namespace composelanes
{
#define KESTRANE_LANE [[gnu::always_inline]] inline

#if defined(__AVX512F__)

constexpr int kLanes = 8;
using Lanes = double __attribute__((vector_size(64)));

KESTRANE_LANE Lanes loadLanes(const double *from)
{
    return _mm512_loadu_pd(from);
}
KESTRANE_LANE Lanes loadLanes(const uint16_t *from)
{
    const __m128i samples = _mm_loadu_si128(reinterpret_cast<const __m128i *>(from));
    return _mm512_cvtepi64_pd(_mm512_cvtepu16_epi64(samples));
}
KESTRANE_LANE void storeReals(Lanes values, double *to)
{
    _mm512_storeu_pd(to, values);
}
KESTRANE_LANE void storeWhole(__m256i values, uint16_t *to)
{
    _mm_storeu_si128(reinterpret_cast<__m128i *>(to), _mm256_cvtepi32_epi16(values));
}
KESTRANE_LANE void storeTruncated(Lanes values, uint16_t *to)
{
    storeWhole(_mm512_cvttpd_epi32(values), to);
}
KESTRANE_LANE void storeRoots(Lanes squares, uint16_t *to)
{
    const __m256i root = _mm256_cvttps_epi32(_mm256_sqrt_ps(_mm512_cvtpd_ps(squares)));
    const __m512d real = _mm512_cvtepi32_pd(root), realSquare = _mm512_mul_pd(real, real);
    __mmask8 over = _mm512_cmp_pd_mask(squares, realSquare, _CMP_LT_OQ);
    if (over) [[unlikely]] {
        const __m512i bits = _mm512_castpd_si512(squares);
        const __mmask8 evenPower =
            _mm512_test_epi64_mask(bits, _mm512_set1_epi64(int64_t(1) << 52));
        const __m512i stepped = _mm512_mask_add_epi64(bits, evenPower, bits, _mm512_set1_epi64(1));
        over = _mm512_cmp_pd_mask(_mm512_castsi512_pd(stepped), realSquare, _CMP_LT_OQ);
    }
    storeWhole(_mm256_mask_sub_epi32(root, over, root, _mm256_set1_epi32(1)), to);
}

#elif defined(__AVX2__)

constexpr int kLanes = 4;
using Lanes = double __attribute__((vector_size(32)));

KESTRANE_LANE Lanes loadLanes(const double *from)
{
    return _mm256_loadu_pd(from);
}
KESTRANE_LANE Lanes loadLanes(const uint16_t *from)
{
    const __m128i samples = _mm_loadl_epi64(reinterpret_cast<const __m128i *>(from));
    return _mm256_cvtepi32_pd(_mm_cvtepu16_epi32(samples));
}
KESTRANE_LANE void storeReals(Lanes values, double *to)
{
    _mm256_storeu_pd(to, values);
}
KESTRANE_LANE void storeWhole(__m128i values, uint16_t *to)
{
    _mm_storel_epi64(reinterpret_cast<__m128i *>(to), _mm_packus_epi32(values, values));
}
KESTRANE_LANE void storeTruncated(Lanes values, uint16_t *to)
{
    storeWhole(_mm256_cvttpd_epi32(values), to);
}
KESTRANE_LANE void storeRoots(Lanes squares, uint16_t *to)
{
    __m256i bits = _mm256_castpd_si256(squares);
    bits = _mm256_add_epi64(bits,
                            _mm256_and_si256(_mm256_srli_epi64(bits, 52), _mm256_set1_epi64x(1)));
    const __m256d square = _mm256_castsi256_pd(bits);
    const __m128i root = _mm_cvttps_epi32(_mm_sqrt_ps(_mm256_cvtpd_ps(square)));
    const __m256d real = _mm256_cvtepi32_pd(root);
    const __m256d over = _mm256_cmp_pd(square, _mm256_mul_pd(real, real), _CMP_LT_OQ);
    const __m128i minusOne = _mm_castps_si128(
        _mm_shuffle_ps(_mm_castpd_ps(_mm256_castpd256_pd128(over)),
                       _mm_castpd_ps(_mm256_extractf128_pd(over, 1)), _MM_SHUFFLE(2, 0, 2, 0)));
    storeWhole(_mm_add_epi32(root, minusOne), to);
}

#else

constexpr int kLanes = 1;
using Lanes = double;

KESTRANE_LANE Lanes loadLanes(const double *from)
{
    return *from;
}
KESTRANE_LANE Lanes loadLanes(const uint16_t *from)
{
    return int32_t(*from);
}
KESTRANE_LANE void storeReals(Lanes value, double *to)
{
    *to = value;
}
KESTRANE_LANE void storeTruncated(Lanes value, uint16_t *to)
{
    *to = uint16_t(int32_t(value));
}
KESTRANE_LANE void storeRoots(Lanes square, uint16_t *to)
{
    *to = uint16_t(int32_t(std::sqrt(square)));
}

#endif

/// The same value in all lanes.
template <class Value>
KESTRANE_LANE Value all(double value)
{
    return Value{} + value;
}
/// As the comparisons of single doubles, lane by lane. What is no number gives the second.
template <class Value>
KESTRANE_LANE Value greaterOf(Value a, Value b)
{
    return a > b ? a : b;
}
template <class Value>
KESTRANE_LANE Value lesserOf(Value a, Value b)
{
    return a < b ? a : b;
}
/// Limits to 0 to 65535; what is no number becomes 0.
template <class Value>
KESTRANE_LANE Value limited(Value value)
{
    return lesserOf(greaterOf(value, all<Value>(0.0)), all<Value>(65535.0));
}
/// The same for what cannot be negative, as sums and products of samples are.
template <class Value>
KESTRANE_LANE Value limitedAbove(Value value)
{
    return lesserOf(value, all<Value>(65535.0));
}
/// The same for what cannot exceed 65535, as differences of samples do not.
template <class Value>
KESTRANE_LANE Value limitedBelow(Value value)
{
    return greaterOf(value, all<Value>(0.0));
}
} // namespace composelanes
