// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/colour.h"

/// The one definition of the colour models, for row loops that want them inlined; all
/// others call the functions of core/colour.h. Always inlined, so that kernel files
/// compiled for several instruction sets never share a copy.
namespace inlined
{
/// Hue in three sectors, by the channel that is the minimum. On a tie blue is taken
/// before red and red before green, so grey has hue 0. Selections stand in place of
/// branches, so that row loops run it in vectors.
KESTRANE_ALWAYS_INLINE Hsv rgbToHsv(Rgb c)
{
    const double most = greater(greater(c.red, c.green), c.blue);
    const double least = lesser(lesser(c.red, c.green), c.blue);
    const bool noBlue = least == c.blue;
    const bool noRed = least == c.red;
    const double channel = noBlue ? c.green : noRed ? c.blue : c.red;
    const double other = noBlue ? c.red : noRed ? c.green : c.blue;
    const double start = noBlue ? 0.0 : noRed ? 120.0 : 240.0;
    const double divisor = channel + other - 2.0 * least;
    const double hue = (channel - least) * 120.0 / (divisor == 0.0 ? 1.0 : divisor) + start;
    // Black has no saturation; the divisor keeps the division from being 0 / 0.
    const double saturation = (most - least) * 100.0 / (most == 0.0 ? 1.0 : most);
    return {clampRange(hue, 0.0, 360.0), clampRange(saturation, 0.0, 100.0),
            clampRange(most * 100.0 / 65535.0, 0.0, 100.0)};
}

/// Where a hue stands in its sector of 120 degrees: how far from its nearer and its further
/// end. There the channel of that end is the largest, and the third lies between.
struct HuePlace {
    KESTRANE_ALWAYS_INLINE explicit HuePlace(double hue) : h(hue)
    {
        const double start = h <= 120.0 ? 0.0 : h <= 240.0 ? 120.0 : 240.0;
        const double after = h - start;
        const double before = start + 120.0 - h;
        early = after <= 60.0;
        nearer = early ? after : before;
        further = early ? before : after;
    }
    /// The three channels in their places.
    KESTRANE_ALWAYS_INLINE Rgb join(double top, double between, double bottom) const
    {
        const double first = early ? top : between;
        const double second = early ? between : top;
        if (h <= 120.0)
            return {first, second, bottom};
        if (h <= 240.0)
            return {bottom, first, second};
        return {second, bottom, first};
    }
    double h, nearer, further;
    bool early;
};

KESTRANE_ALWAYS_INLINE Rgb hsvToRgb(Hsv c)
{
    const double m = (100.0 - c.saturation) * c.value / 100.0;
    const double d = c.value - m;
    const double top = clampSampleValue(c.value * 65535.0 / 100.0);
    const double bottom = clampSampleValue(m * 65535.0 / 100.0);
    const HuePlace place(c.hue);
    const double part = d * place.nearer / place.further;
    const double x = clampSampleValue((m + part) * 65535.0 / 100.0);
    return place.join(top, x, bottom);
}

/// The hue is that of rgbToHsv. Lightness 50 is the turning point of the saturation.
KESTRANE_ALWAYS_INLINE Hsl rgbToHsl(Rgb c)
{
    const double most = greater(greater(c.red, c.green), c.blue);
    const double least = lesser(lesser(c.red, c.green), c.blue);
    const double lightness = (most + least) * 100.0 / 131070.0;
    const double full = lightness < 50.0 ? most + least : 131070.0 - most - least;
    // Without a span the saturation is 0, also where its divisor is.
    const double saturation = 100.0 * (most - least) / (most == least ? 1.0 : full);
    return {inlined::rgbToHsv(c).hue, saturation, lightness};
}

/// The six branches of hsvToRgb between the smallest and the largest channel that lightness
/// and saturation stand for.
KESTRANE_ALWAYS_INLINE Rgb hslToRgb(Hsl c)
{
    const double sum = c.lightness * 131070.0 / 100.0;
    const double span = c.saturation * (c.lightness < 50.0 ? sum : 131070.0 - sum) / 100.0;
    const double least = (sum - span) / 2.0;
    const double top = clampSampleValue((sum + span) / 2.0);
    const double bottom = clampSampleValue(least);
    const HuePlace place(c.hue);
    const double part = span * place.nearer / place.further;
    const double x = clampSampleValue(least + part);
    return place.join(top, x, bottom);
}

KESTRANE_ALWAYS_INLINE Yrb rgbToYrb(Rgb c)
{
    const double red = c.red / 65535.0, green = c.green / 65535.0, blue = c.blue / 65535.0;
    const double y = 0.3 * red + 0.59 * green + 0.11 * blue;
    const double r = (red * 0.3 - y) * 0.5 + 0.5;
    const double b = (blue * 0.11 - y) * 0.5 + 0.5;
    return {clampRange(y, 0.0, 1.0) * 65535.0, clampRange(r, 0.0, 1.0) * 65535.0,
            clampRange(b, 0.0, 1.0) * 65535.0};
}

KESTRANE_ALWAYS_INLINE Rgb yrbToRgb(Yrb c)
{
    const double y = c.y / 65535.0;
    const double a = 2.0 * (c.r / 65535.0 - 0.5) + y;
    const double b = 2.0 * (c.b / 65535.0 - 0.5) + y;
    return {clampSampleValue(a * 218450.0), clampSampleValue((y - (a + b)) * 111076.27118644069),
            clampSampleValue(b * 595772.7272727273)};
}
} // namespace inlined
