// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "script/engine/exparser.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

/// Numbers of the language as whole numbers. Any double may come: what does not fit is kept to
/// what does, and what is no number counts as 0.

/// Without its fraction.
inline int32_t wholeNumber(double value)
{
    using Limits = std::numeric_limits<int32_t>;
    if (!(value > Limits::min()))
        return value <= Limits::min() ? Limits::min() : 0;
    return value < Limits::max() ? int32_t(value) : Limits::max();
}

/// To the nearest, halves away from zero.
inline int32_t roundedNumber(double value)
{
    return wholeNumber(std::round(value));
}

/// The 64 bits of the nearest whole number, below 0 as the complement of two.
inline uint64_t wholeBits(double value)
{
    const double whole = std::round(value);
    if (!(whole >= -0x1p63))
        return whole < 0 ? uint64_t(1) << 63 : 0;
    if (whole < 0)
        return uint64_t(int64_t(whole));
    return whole < 0x1p64 ? uint64_t(whole) : ~uint64_t(0);
}

/// A sample, without its fraction.
inline uint16_t sampleNumber(double value)
{
    return uint16_t(std::clamp(wholeNumber(value), 0, 65535));
}

/// The same with its fraction.
inline double sampleValue(double value)
{
    return value > 0.0 ? std::min(value, 65535.0) : 0.0;
}

/// A share of 0 to 1.
inline double shareNumber(double value)
{
    return value > 0.0 ? std::min(value, 1.0) : 0.0;
}

/// Whether a call has as many numbers as it needs; if not, the failed check is reported.
inline bool takesNumbers(FunctionCall &call, int least, int most, int tag)
{
    if (call.count >= least && call.count <= most)
        return true;
    call.parser.badParameters(call.opCode, tag);
    return false;
}

inline bool takesNumbers(FunctionCall &call, int count, int tag)
{
    return takesNumbers(call, count, count, tag);
}
