// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <limits>

/// A place without its fraction, kept to what a point can hold; NaN becomes the lowest.
inline int32_t truncatedSample(double value)
{
    using Limits = std::numeric_limits<int32_t>;
    if (!(value > Limits::min()))
        return Limits::min();
    return value < Limits::max() ? int32_t(value) : Limits::max();
}
