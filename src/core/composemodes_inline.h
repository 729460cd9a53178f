// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/colour_inline.h"

/// The layer modes as pure functions of samples. `over` is the layer, `under` what lies
/// below it, both 0 to 65535 in doubles; the result is the new value that the row loop
/// mixes in. Only for compose kernels: everything is always inlined.
namespace composemodes
{
constexpr double kFull = 65535.0;
constexpr double kHalf = 32768.0;
/// 1 / 65535 as the formulas of the modes have it; both spellings are part of the result.
constexpr double kPerFull = 1.52590218967e-05;
constexpr double kPerFullFine = 1.5259021896696422e-05;

#define KESTRANE_MODE KESTRANE_ALWAYS_INLINE static

KESTRANE_ALWAYS_INLINE double mean(Rgb c)
{
    return (c.red + c.green + c.blue) / 3.0;
}
KESTRANE_ALWAYS_INLINE double luma(Rgb c)
{
    return 0.3 * c.red + 0.59 * c.green + 0.11 * c.blue;
}

enum Channels : unsigned { kRed = 1, kGreen = 2, kBlue = 4, kAll = 7 };

// --- One channel at a time ---------------------------------------------------------------

/// What a channel mode has unless it says otherwise.
struct ChannelMode {
    static constexpr bool mixesAlpha = true;
    static constexpr unsigned channels = kAll;
    /// Where this is false the channel stays as it is.
    KESTRANE_MODE bool applies(double, double) { return true; }
};

struct Normal : ChannelMode {
    KESTRANE_MODE double value(double over, double, double) { return over; }
};
struct OnlyRed : Normal {
    static constexpr unsigned channels = kRed;
};
struct OnlyGreen : Normal {
    static constexpr unsigned channels = kGreen;
};
struct OnlyBlue : Normal {
    static constexpr unsigned channels = kBlue;
};
/// The average of a run of layers, which leaves alpha alone.
struct Averaged : Normal {
    static constexpr bool mixesAlpha = false;
};
struct Add : ChannelMode {
    KESTRANE_MODE double value(double over, double under, double)
    {
        return clampSampleValue(over + under);
    }
};
struct AbsSubtract : ChannelMode {
    /// Negative values stand for their magnitude: mixing squares them.
    KESTRANE_MODE double value(double over, double under, double) { return under - over; }
};
struct Subtract : ChannelMode {
    KESTRANE_MODE double value(double over, double under, double)
    {
        return clampSampleValue(under - over);
    }
};
struct AddGrey : ChannelMode {
    KESTRANE_MODE double value(double over, double under, double)
    {
        return clampSampleValue(over - kHalf + under);
    }
};
struct Multiply : ChannelMode {
    KESTRANE_MODE double value(double over, double under, double)
    {
        return clampSampleValue(over * kPerFull * under);
    }
};
struct Dodge : ChannelMode {
    KESTRANE_MODE double value(double over, double under, double)
    {
        const double lit = clampSampleValue(under + over * under / greater(1.0, under));
        return over == 0.0 ? under : lit;
    }
};
struct Burn : ChannelMode {
    KESTRANE_MODE double value(double over, double under, double)
    {
        const double burnt = clampSampleValue(under - (kFull - over));
        return over == kFull ? under : burnt;
    }
};
struct Screen : ChannelMode {
    KESTRANE_MODE double value(double over, double under, double)
    {
        return kFull - (kFull - over) * (kFull - under) * kPerFullFine;
    }
};
struct Overlay : ChannelMode {
    KESTRANE_MODE double value(double over, double under, double)
    {
        // One division serves both cases.
        const bool light = under >= kHalf;
        const double product = light ? (kFull - under) * (kFull - over) : over * (2.0 * under);
        const double scaled = product / kFull;
        return light ? kFull - scaled : scaled;
    }
};
struct Divide : ChannelMode {
    KESTRANE_MODE double value(double over, double under, double)
    {
        return clampSampleValue(((1.0 - over * kPerFull) + 1.0) * under);
    }
};
struct Brightness : ChannelMode {
    KESTRANE_MODE double value(double over, double under, double)
    {
        return clampSampleValue(2.0 * over * kPerFull * under);
    }
};
struct Contrast : ChannelMode {
    KESTRANE_MODE double value(double over, double under, double)
    {
        return clampSampleValue(2.0 * over * kPerFull * (under - kHalf) + kHalf);
    }
};
struct Drive : ChannelMode {
    KESTRANE_MODE double value(double over, double under, double factor)
    {
        const double gain = (over * kPerFull - 0.5) * 8.0 * factor + 1.0;
        return clampSampleValue(gain * (under - kHalf) + kHalf);
    }
};
struct Difference : ChannelMode {
    KESTRANE_MODE double value(double over, double under, double)
    {
        return clampSampleValue(under - over + kHalf);
    }
};
struct Dominate : Normal {
    KESTRANE_MODE bool applies(double over, double under) { return under < over; }
};
struct Submit : Normal {
    KESTRANE_MODE bool applies(double over, double under) { return over < under; }
};

// --- All channels of a pixel together ------------------------------------------------------

struct PixelMode {
    static constexpr unsigned channels = kAll;
    /// Where this is false the pixel stays as it is, alpha included.
    KESTRANE_MODE bool applies(Rgb, Rgb) { return true; }
};

struct Maximum : PixelMode {
    KESTRANE_MODE bool applies(Rgb over, Rgb under) { return mean(over) > mean(under); }
    KESTRANE_MODE Rgb value(Rgb over, Rgb, double) { return over; }
};
struct Minimum : PixelMode {
    KESTRANE_MODE bool applies(Rgb over, Rgb under) { return mean(over) < mean(under); }
    KESTRANE_MODE Rgb value(Rgb over, Rgb, double) { return over; }
};
struct Average : PixelMode {
    KESTRANE_MODE Rgb value(Rgb over, Rgb, double)
    {
        const double grey = mean(over);
        return {grey, grey, grey};
    }
};
struct Luma : PixelMode {
    KESTRANE_MODE Rgb value(Rgb over, Rgb, double)
    {
        const double grey = luma(over);
        return {grey, grey, grey};
    }
};
struct Cyan : PixelMode {
    static constexpr unsigned channels = kRed;
    KESTRANE_MODE Rgb value(Rgb over, Rgb, double)
    {
        return {clampSampleValue((over.green + over.blue) / 2.0), 0.0, 0.0};
    }
};
struct Magenta : PixelMode {
    static constexpr unsigned channels = kGreen;
    KESTRANE_MODE Rgb value(Rgb over, Rgb, double)
    {
        return {0.0, clampSampleValue((over.red + over.blue) / 2.0), 0.0};
    }
};
struct Yellow : PixelMode {
    static constexpr unsigned channels = kBlue;
    KESTRANE_MODE Rgb value(Rgb over, Rgb, double)
    {
        return {0.0, 0.0, clampSampleValue((over.red + over.green) / 2.0)};
    }
};
struct Black : PixelMode {
    KESTRANE_MODE Rgb value(Rgb over, Rgb under, double underAlpha)
    {
        const double ink = mean(over);
        const bool clear = underAlpha == 0.0;
        return {clampSampleValue(clear ? ink : under.red + ink),
                clampSampleValue(clear ? ink : under.green + ink),
                clampSampleValue(clear ? ink : under.blue + ink)};
    }
};
struct Vivid : PixelMode {
    KESTRANE_MODE Rgb value(Rgb over, Rgb under, double)
    {
        const double m = mean(over) / kFull;
        const bool light = m > 0.5;
        const double d = light ? 1.0 - 2.0 * (m - 0.5) : 2.0 * m;
        return {one(under.red, d, light), one(under.green, d, light), one(under.blue, d, light)};
    }
    KESTRANE_MODE double one(double under, double d, bool light)
    {
        const double u = under / kFull;
        const double ratio = (light ? u : 1.0 - u) / d;
        return clampSampleValue((light ? ratio : 1.0 - ratio) * kFull);
    }
};
struct Darken : PixelMode {
    KESTRANE_MODE Rgb value(Rgb over, Rgb under, double)
    {
        const bool keep = luma(under) < luma(over);
        return {keep ? under.red : over.red, keep ? under.green : over.green,
                keep ? under.blue : over.blue};
    }
};
struct Brighten : PixelMode {
    KESTRANE_MODE Rgb value(Rgb over, Rgb under, double)
    {
        const bool keep = luma(over) < luma(under);
        return {keep ? under.red : over.red, keep ? under.green : over.green,
                keep ? under.blue : over.blue};
    }
};

/// -0.5 for black to 0.5 for white, how far the tinting modes go.
KESTRANE_ALWAYS_INLINE double tilt(Rgb over)
{
    return (over.red + over.green + over.blue) / 196605.0 - 0.5;
}
struct Hue : PixelMode {
    KESTRANE_MODE Rgb value(Rgb over, Rgb under, double)
    {
        Hsv hsv = inlined::rgbToHsv(under);
        hsv.hue = inlined::rgbToHsv(over).hue;
        return inlined::hsvToRgb(hsv);
    }
};
struct Saturation : PixelMode {
    KESTRANE_MODE Rgb value(Rgb over, Rgb under, double)
    {
        Hsv hsv = inlined::rgbToHsv(under);
        hsv.saturation = inlined::rgbToHsv(over).saturation;
        return inlined::hsvToRgb(hsv);
    }
};
struct Value : PixelMode {
    KESTRANE_MODE Rgb value(Rgb over, Rgb under, double)
    {
        Hsv hsv = inlined::rgbToHsv(under);
        hsv.value = inlined::rgbToHsv(over).value;
        return inlined::hsvToRgb(hsv);
    }
};
struct Tint : PixelMode {
    KESTRANE_MODE Rgb value(Rgb over, Rgb under, double)
    {
        Hsv hsv = inlined::rgbToHsv(under);
        const double turned = hsv.hue + 2.0 * tilt(over) * 45.0;
        hsv.hue = turned > 360.0 ? turned - 360.0 : turned < 0.0 ? turned + 360.0 : turned;
        return inlined::hsvToRgb(hsv);
    }
};
struct Saturate : PixelMode {
    KESTRANE_MODE Rgb value(Rgb over, Rgb under, double)
    {
        Hsv hsv = inlined::rgbToHsv(under);
        hsv.saturation = clampRange(hsv.saturation + 2.0 * tilt(over) * 100.0, 0.0, 100.0);
        return inlined::hsvToRgb(hsv);
    }
};
struct Envalue : PixelMode {
    KESTRANE_MODE Rgb value(Rgb over, Rgb under, double)
    {
        Hsv hsv = inlined::rgbToHsv(under);
        hsv.value = clampRange(hsv.value + 2.0 * tilt(over) * 100.0, 0.0, 100.0);
        return inlined::hsvToRgb(hsv);
    }
};
struct SetHue : PixelMode {
    KESTRANE_MODE Rgb value(Rgb over, Rgb under, double)
    {
        Hsv hsv = inlined::rgbToHsv(under);
        hsv.hue = mean(over) / kFull * 360.0;
        return inlined::hsvToRgb(hsv);
    }
};
struct SetSaturation : PixelMode {
    KESTRANE_MODE Rgb value(Rgb over, Rgb under, double)
    {
        Hsv hsv = inlined::rgbToHsv(under);
        hsv.saturation = mean(over) / kFull * 100.0;
        return inlined::hsvToRgb(hsv);
    }
};
struct SetValue : PixelMode {
    KESTRANE_MODE Rgb value(Rgb over, Rgb under, double)
    {
        Hsv hsv = inlined::rgbToHsv(under);
        hsv.value = mean(over) / kFull * 100.0;
        return inlined::hsvToRgb(hsv);
    }
};

// --- Alpha alone -----------------------------------------------------------------------------

/// What the alpha modes are told beside the colours.
struct AlphaTerms {
    double over, under; ///< alpha of the layer and of what lies below
    double k;           ///< the part of the old value that stays
    double factor, tolerance;
};

struct Mask {
    KESTRANE_MODE double value(Rgb, Rgb, AlphaTerms t) { return t.over * t.factor; }
};
struct InvMask {
    KESTRANE_MODE double value(Rgb, Rgb, AlphaTerms t) { return (kFull - t.over) * t.factor; }
};
struct GreyMask {
    KESTRANE_MODE double value(Rgb over, Rgb, AlphaTerms t)
    {
        return (1.0 - t.k) * mean(over) + t.k * t.under;
    }
};
KESTRANE_ALWAYS_INLINE bool outside(double over, double under, double tolerance)
{
    return (under < over - tolerance) | (under > over + tolerance);
}
KESTRANE_ALWAYS_INLINE bool anyOutside(Rgb over, Rgb under, double tolerance)
{
    return outside(over.red, under.red, tolerance) | outside(over.green, under.green, tolerance) |
           outside(over.blue, under.blue, tolerance);
}
struct PlusKey {
    KESTRANE_MODE double value(Rgb over, Rgb under, AlphaTerms t)
    {
        return anyOutside(over, under, t.tolerance) ? kFull : 0.0;
    }
};
struct MinusKey {
    KESTRANE_MODE double value(Rgb over, Rgb under, AlphaTerms t)
    {
        return anyOutside(over, under, t.tolerance) ? 0.0 : kFull;
    }
};
KESTRANE_ALWAYS_INLINE bool same(Rgb a, Rgb b)
{
    return (a.red == b.red) & (a.green == b.green) & (a.blue == b.blue);
}
struct Match {
    KESTRANE_MODE double value(Rgb over, Rgb under, AlphaTerms)
    {
        return same(over, under) ? kFull : 0.0;
    }
};
struct NoMatch {
    KESTRANE_MODE double value(Rgb over, Rgb under, AlphaTerms)
    {
        return same(over, under) ? 0.0 : kFull;
    }
};

// --- Bits ------------------------------------------------------------------------------------

struct And {
    KESTRANE_MODE unsigned value(unsigned over, unsigned under) { return over & under; }
};
struct Nand {
    KESTRANE_MODE unsigned value(unsigned over, unsigned under) { return ~(over & under); }
};
struct Or {
    KESTRANE_MODE unsigned value(unsigned over, unsigned under) { return over | under; }
};
struct Nor {
    KESTRANE_MODE unsigned value(unsigned over, unsigned under) { return ~(over | under); }
};
struct Xor {
    KESTRANE_MODE unsigned value(unsigned over, unsigned under) { return over ^ under; }
};
struct Xnor {
    KESTRANE_MODE unsigned value(unsigned over, unsigned under) { return ~(over ^ under); }
};
#undef KESTRANE_MODE
} // namespace composemodes
