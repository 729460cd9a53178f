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

/// For the small functions that pixel loops call: kernel files are compiled for several
/// instruction sets and must not share a copy of them.
#define KESTRANE_ALWAYS_INLINE [[gnu::always_inline]] inline
#define KESTRANE_INLINE_LAMBDA __attribute__((always_inline))

KESTRANE_ALWAYS_INLINE int clampByte(int value)
{
    return value < 0 ? 0 : value > 255 ? 255 : value;
}
KESTRANE_ALWAYS_INLINE double lesser(double a, double b)
{
    return a < b ? a : b;
}
KESTRANE_ALWAYS_INLINE double greater(double a, double b)
{
    return a > b ? a : b;
}
/// Limits to 0 to 65535. What is no number becomes 0, so the result can always be stored.
/// In this form compilers take one instruction for each limit.
KESTRANE_ALWAYS_INLINE double clampSampleValue(double value)
{
    return lesser(greater(value, 0.0), 65535.0);
}
KESTRANE_ALWAYS_INLINE double clampRange(double value, double low, double high)
{
    return value < low ? low : value > high ? high : value;
}
