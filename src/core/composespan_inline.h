// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/compose_kernels.h"
#include "core/composemodes_inline.h"

#include <algorithm>
#include <type_traits>

/// Pieces of the span loops that both kernel files of the compositor share. Always inlined,
/// because each kernel file is compiled for several instruction sets.
namespace composespan
{
using namespace composelanes;

/// a / 65535 to the last bit, for 16-bit samples without a division: the quotient repeats the
/// sixteen bits of `a` for ever; the first three repetitions are one exact product, the next two
/// another, and only their sum is rounded.
template <class Sample, class V>
KESTRANE_ALWAYS_INLINE V shareOf(V a)
{
    constexpr double first = 0x1p-16 + 0x1p-32 + 0x1p-48, rest = 0x1p-64 + 0x1p-80;
    if constexpr (std::is_same_v<Sample, uint16_t>)
        return a * first + a * rest;
    else
        return a / 65535.0;
}
KESTRANE_ALWAYS_INLINE double share(uint16_t a)
{
    return shareOf<uint16_t>(double(int32_t(a)));
}
KESTRANE_ALWAYS_INLINE double share(double a)
{
    return shareOf<double>(a);
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
template <class V>
KESTRANE_ALWAYS_INLINE V mixedSquare(V fresh, V old, V k)
{
    return fresh * fresh * (1.0 - k) + old * old * k;
}

/// Room for one value of each pixel of a span, and to work on whole groups of lanes.
using Reals = double[kSpanPixels];
static_assert(kSpanPixels % kLanes == 0);

/// Calls work(x) for each group of lanes that lies wholly in the span, then `last` with the
/// first pixel of the others, if there are any.
template <class Work, class Last>
KESTRANE_ALWAYS_INLINE void eachGroup(int count, Work work, Last last)
{
    const int whole = count - count % kLanes;
    for (int x = 0; x < whole; x += kLanes)
        work(x);
    if (whole < count)
        last(whole);
}

/// A group of lanes of which only the first few belong to the span.
template <class Sample>
struct LastGroup {
    KESTRANE_ALWAYS_INLINE LastGroup(const Sample *from, int size)
    {
        std::copy(from, from + size, values);
    }
    Sample values[kLanes] = {};
};

/// out = the truncated roots of squares.
KESTRANE_ALWAYS_INLINE void rootsOf(const Reals &squares, int count, uint16_t *out)
{
    eachGroup(
        count, [&](int x) KESTRANE_INLINE_LAMBDA { storeRoots(loadLanes(squares + x), out + x); },
        [&](int x) KESTRANE_INLINE_LAMBDA {
            uint16_t roots[kLanes];
            storeRoots(loadLanes(LastGroup(squares + x, count - x).values), roots);
            std::copy(roots, roots + (count - x), out + x);
        });
}

/// Loops that mix 16-bit samples and doubles get poor vector code; loops over doubles alone
/// get good code, which pays for turning samples into doubles first.
template <class Sample>
KESTRANE_ALWAYS_INLINE void toReals(const Sample *__restrict from, int count, double *__restrict to)
{
    for (int x = 0; x < count; ++x)
        to[x] = real(from[x]);
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
} // namespace composespan
