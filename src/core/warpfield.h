// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/image.h"
#include "core/layermodes.h"

#include <cmath>

/// A displacement of one sample of a warp layer, in samples.
struct Displacement {
    double x, y;
};

/// What a warp layer's planes say at one sample: red and blue hold the whole part of x
/// and y as signed 16-bit numbers, green and alpha the fraction in units of 1 / 65536.
inline Displacement displacementAt(const image &field, int64_t index)
{
    return {int16_t(field.red[index]) + field.green[index] / 65536.0,
            int16_t(field.blue[index]) + field.alpha[index] / 65536.0};
}

/// One component in that form, rounded down to 1 / 65536 and limited to what it can hold:
/// -32768 to just below 32768. What is no number becomes 0.
inline void storeDisplacement(double value, uint16_t *whole, uint16_t *fraction)
{
    constexpr double least = -32768.0, most = 32767.0 + 65535.0 / 65536.0;
    const double limited = !(value == value) ? 0.0
                           : value < least   ? least
                           : value > most    ? most
                                             : value;
    const double floored = std::floor(limited);
    *whole = uint16_t(int16_t(floored));
    *fraction = uint16_t((limited - floored) * 65536.0);
}

inline void setDisplacement(image *field, int64_t index, Displacement d)
{
    storeDisplacement(d.x, field->red + index, field->green + index);
    storeDisplacement(d.y, field->blue + index, field->alpha + index);
}
