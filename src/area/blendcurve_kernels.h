// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/colour.h"
#include "core/cpu.h"

#include <cstdint>

/// Maps a profile's value to the height of the curve, limited to 0 to 1.
struct CurveMap {
    double amplitude, floorValue;

    /// Also turns a value that is no number into 0.
    KESTRANE_ALWAYS_INLINE static double clampUnit(double value)
    {
        return !(value > 0.0) ? 0.0 : value > 1.0 ? 1.0 : value;
    }
    KESTRANE_ALWAYS_INLINE double operator()(double v) const
    {
        return clampUnit(v * amplitude * (1.0 - floorValue) + floorValue);
    }
};

/// One row of the hill of the maximum axis: the distances of its first sample and of the
/// row itself from the centre, and where the hill ends.
struct HillRow {
    int dx, dy;
    double radius;
    CurveMap map;
};

/// Writes `count` factors of a row of the hill.
DECLARE_KERNEL(void, hillRow, (const HillRow &row, int count, double *out))
/// Multiplies mask words by factors of 0 to 1, truncating.
DECLARE_KERNEL(void, shapeWords, (uint16_t * words, const double *factor, int count))
