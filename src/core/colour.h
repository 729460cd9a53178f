// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Colour models on samples of 0 to 65535, in doubles: hue 0 to 360, the others 0 to 100.
/// The formulas are those of this program (hue in sectors of 120 degrees), not the
/// common ones, and their order of operations is part of the result.

struct Rgb {
    double red, green, blue;
};
struct Hsv {
    double hue, saturation, value;
};
struct Hsl {
    double hue, saturation, lightness;
};
/// Luma, red and blue, each 0 to 65535.
struct Yrb {
    double y, r, b;
};

Hsv rgbToHsv(Rgb rgb);
Rgb hsvToRgb(Hsv hsv);
Hsl rgbToHsl(Rgb rgb);
Rgb hslToRgb(Hsl hsl);
Yrb rgbToYrb(Rgb rgb);
Rgb yrbToRgb(Yrb yrb);

inline int clampByte(int value)
{
    return value < 0 ? 0 : value > 255 ? 255 : value;
}
inline double lesser(double a, double b)
{
    return a < b ? a : b;
}
inline double greater(double a, double b)
{
    return a > b ? a : b;
}
inline double clampSampleValue(double value)
{
    return value < 0.0 ? 0.0 : value > 65535.0 ? 65535.0 : value;
}
inline double clampRange(double value, double low, double high)
{
    return value < low ? low : value > high ? high : value;
}
