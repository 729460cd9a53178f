// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/compose_kernels.h"
#include "core/composemodes_inline.h"

#include <algorithm>
#include <cmath>

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
KESTRANE_ALWAYS_INLINE double mixSquared(double fresh, double old, double k)
{
    return std::sqrt(fresh * fresh * (1.0 - k) + old * old * k);
}

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
