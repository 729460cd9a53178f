// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/cpu.h"

#include <cstdint>

/// Pixels that one call of a span function blends at most.
constexpr int kSpanPixels = 256;

/// One piece of a row: `count` pixels of a layer over as many of the destination, each as
/// red, green, blue and alpha. `Sample` is uint16_t for planes as they are, double for
/// samples that were computed.
template <class Sample>
struct Span {
    const Sample *over[4];
    uint16_t *under[4];
    int count;        ///< 1 to kSpanPixels
    double opacity;   ///< 0 to 1
    double factor;    ///< of the layer
    double tolerance; ///< of the key modes, in samples
};

using PlaneSpan = Span<uint16_t>;
using RealSpan = Span<double>;

/// How one mode blends a span; null for a mode that blends no samples by itself.
struct SpanFunctions {
    void (*planes)(const PlaneSpan &span) = nullptr;
    void (*reals)(const RealSpan &span) = nullptr;
    /// As `planes` over zeros, whatever the destination holds; null if the mode has no such
    /// form. Every stack begins on zeros.
    void (*onEmpty)(const PlaneSpan &span) = nullptr;
};

/// The modes that work channel by channel or on alpha alone, and those that need the three
/// colours of a pixel together: two tables, since each is a file of its own.
DECLARE_KERNEL(SpanFunctions, channelModeSpans, (int mode))
DECLARE_KERNEL(SpanFunctions, pixelModeSpans, (int mode))

/// Turns luma, red and blue of the YRB encoding to red, green and blue, in place or not.
DECLARE_KERNEL(void, yrbSpan, (const double *const from[3], double *const to[3], int count))

/// A key for each pixel by which layers of whole samples sort as by the mean of their
/// colours, equal ones by `layer`, which is 0 to 65535 and the key's low 16 bits.
DECLARE_KERNEL(void, medianKeys,
               (const uint16_t *red, const uint16_t *green, const uint16_t *blue, int layer,
                int count, double *keys))
/// One compare and exchange of keys for all pixels of a span: the lesser ones come first.
DECLARE_KERNEL(void, exchangeKeys, (double *first, double *second, int count))

/// One compare and exchange of a stable sort for all pixels of a span: where the first mean
/// is greater than the second, means and their places in the order change places.
DECLARE_KERNEL(void, exchangeMeans,
               (double *first, double *second, double *firstOrder, double *secondOrder, int count))

/// The truncated roots that mixing stores, of 1 to kSpanPixels squares; tests hold them
/// against std::sqrt.
DECLARE_KERNEL(void, truncatedRoots, (const double *squares, int count, uint16_t *roots))
