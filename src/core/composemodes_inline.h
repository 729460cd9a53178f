// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/colour_inline.h"
#include "core/composelanes_inline.h"

/// The layer modes as pure functions of samples. `over` is the layer, `under` what lies
/// below it, both 0 to 65535 in doubles; the result is the new value that the row loop
/// mixes in. Only for compose kernels: everything is always inlined.
namespace composemodes
{
using composelanes::all, composelanes::greaterOf, composelanes::limited, composelanes::limitedAbove,
    composelanes::limitedBelow;

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
// These work on one double or on several lanes of them.

/// What a channel mode has unless it says otherwise.
struct ChannelMode {
    static constexpr bool mixesAlpha = true;
    static constexpr unsigned channels = kAll;
    /// Some modes change a channel only where `applies` holds.
    static constexpr bool conditional = false;
};

struct Normal : ChannelMode {
    template <class V>
    KESTRANE_MODE V value(V over, V, double)
    {
        return over;
    }
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
    template <class V>
    KESTRANE_MODE V value(V over, V under, double)
    {
        return limitedAbove(over + under);
    }
};
struct AbsSubtract : ChannelMode {
    /// Negative values stand for their magnitude: mixing squares them.
    template <class V>
    KESTRANE_MODE V value(V over, V under, double)
    {
        return under - over;
    }
};
struct Subtract : ChannelMode {
    template <class V>
    KESTRANE_MODE V value(V over, V under, double)
    {
        return limitedBelow(under - over);
    }
};
struct AddGrey : ChannelMode {
    template <class V>
    KESTRANE_MODE V value(V over, V under, double)
    {
        return limited(over - kHalf + under);
    }
};
struct Multiply : ChannelMode {
    template <class V>
    KESTRANE_MODE V value(V over, V under, double)
    {
        return limitedAbove(over * kPerFull * under);
    }
};
struct Dodge : ChannelMode {
    template <class V>
    KESTRANE_MODE V value(V over, V under, double)
    {
        const V lit = limitedAbove(under + over * under / greaterOf(all<V>(1.0), under));
        return over == all<V>(0.0) ? under : lit;
    }
};
struct Burn : ChannelMode {
    template <class V>
    KESTRANE_MODE V value(V over, V under, double)
    {
        const V burnt = limitedBelow(under - (kFull - over));
        return over == all<V>(kFull) ? under : burnt;
    }
};
struct Screen : ChannelMode {
    template <class V>
    KESTRANE_MODE V value(V over, V under, double)
    {
        return kFull - (kFull - over) * (kFull - under) * kPerFullFine;
    }
};
struct Overlay : ChannelMode {
    template <class V>
    KESTRANE_MODE V value(V over, V under, double)
    {
        return of(over, under, product(over, under) / kFull);
    }
    /// One division serves both cases.
    template <class V>
    KESTRANE_MODE V product(V over, V under)
    {
        const V light = (kFull - under) * (kFull - over);
        const V dark = over * (2.0 * under);
        return under >= all<V>(kHalf) ? light : dark;
    }
    template <class V>
    KESTRANE_MODE V of(V, V under, V scaled)
    {
        const V inverted = kFull - scaled;
        return under >= all<V>(kHalf) ? inverted : scaled;
    }
};
/// For samples that are whole numbers: their product is one of 32 bits at most, which
/// divided by 65535 repeats itself every 16 bits. Two exact products hold the first four
/// repetitions and the third the next. No such quotient lies closer to the middle of two
/// doubles than the rest is worth, so the sum is the quotient to the last bit.
struct WholeOverlay : Overlay {
    template <class V>
    KESTRANE_MODE V value(V over, V under, double)
    {
        constexpr double first = 0x1p-16 + 0x1p-32, next = 0x1p-48 + 0x1p-64, rest = 0x1p-80;
        const V p = product(over, under);
        return of(over, under, p * first + (p * next + p * rest));
    }
};
struct Divide : ChannelMode {
    template <class V>
    KESTRANE_MODE V value(V over, V under, double)
    {
        return limitedAbove(((1.0 - over * kPerFull) + 1.0) * under);
    }
};
struct Brightness : ChannelMode {
    template <class V>
    KESTRANE_MODE V value(V over, V under, double)
    {
        return limitedAbove(2.0 * over * kPerFull * under);
    }
};
struct Contrast : ChannelMode {
    template <class V>
    KESTRANE_MODE V value(V over, V under, double)
    {
        return limited(2.0 * over * kPerFull * (under - kHalf) + kHalf);
    }
};
struct Drive : ChannelMode {
    template <class V>
    KESTRANE_MODE V value(V over, V under, double factor)
    {
        // Eight times the factor is exact, so it may be joined first.
        const V gain = (over * kPerFull - 0.5) * (8.0 * factor) + 1.0;
        return limited(gain * (under - kHalf) + kHalf);
    }
};
struct Difference : ChannelMode {
    template <class V>
    KESTRANE_MODE V value(V over, V under, double)
    {
        return limited(under - over + kHalf);
    }
};
struct Dominate : Normal {
    static constexpr bool conditional = true;
    template <class V>
    KESTRANE_MODE auto applies(V over, V under)
    {
        return under < over;
    }
};
struct Submit : Normal {
    static constexpr bool conditional = true;
    template <class V>
    KESTRANE_MODE auto applies(V over, V under)
    {
        return over < under;
    }
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
/// What lies below with one of its components set by `Change`.
template <class Change>
struct HsvMode : PixelMode {
    KESTRANE_MODE Rgb value(Rgb over, Rgb under, double)
    {
        Hsv hsv = inlined::rgbToHsv(under);
        Change::apply(over, hsv);
        return inlined::hsvToRgb(hsv);
    }
};
struct TakeHue {
    KESTRANE_MODE void apply(Rgb over, Hsv &hsv) { hsv.hue = inlined::rgbToHsv(over).hue; }
};
struct TakeSaturation {
    KESTRANE_MODE void apply(Rgb over, Hsv &hsv)
    {
        hsv.saturation = inlined::rgbToHsv(over).saturation;
    }
};
struct TakeValue {
    KESTRANE_MODE void apply(Rgb over, Hsv &hsv) { hsv.value = inlined::rgbToHsv(over).value; }
};
struct TurnHue {
    KESTRANE_MODE void apply(Rgb over, Hsv &hsv)
    {
        const double turned = hsv.hue + 2.0 * tilt(over) * 45.0;
        hsv.hue = turned > 360.0 ? turned - 360.0 : turned < 0.0 ? turned + 360.0 : turned;
    }
};
struct TiltSaturation {
    KESTRANE_MODE void apply(Rgb over, Hsv &hsv)
    {
        hsv.saturation = clampRange(hsv.saturation + 2.0 * tilt(over) * 100.0, 0.0, 100.0);
    }
};
struct TiltValue {
    KESTRANE_MODE void apply(Rgb over, Hsv &hsv)
    {
        hsv.value = clampRange(hsv.value + 2.0 * tilt(over) * 100.0, 0.0, 100.0);
    }
};
struct MeanAsHue {
    KESTRANE_MODE void apply(Rgb over, Hsv &hsv) { hsv.hue = mean(over) / kFull * 360.0; }
};
struct MeanAsSaturation {
    KESTRANE_MODE void apply(Rgb over, Hsv &hsv) { hsv.saturation = mean(over) / kFull * 100.0; }
};
struct MeanAsValue {
    KESTRANE_MODE void apply(Rgb over, Hsv &hsv) { hsv.value = mean(over) / kFull * 100.0; }
};
using Hue = HsvMode<TakeHue>;
using Saturation = HsvMode<TakeSaturation>;
using Value = HsvMode<TakeValue>;
using Tint = HsvMode<TurnHue>;
using Saturate = HsvMode<TiltSaturation>;
using Envalue = HsvMode<TiltValue>;
using SetHue = HsvMode<MeanAsHue>;
using SetSaturation = HsvMode<MeanAsSaturation>;
using SetValue = HsvMode<MeanAsValue>;

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
// Comparisons are joined as numbers: branches would keep row loops from running in vectors.
KESTRANE_ALWAYS_INLINE int outside(double over, double under, double tolerance)
{
    return int(under < over - tolerance) | int(under > over + tolerance);
}
KESTRANE_ALWAYS_INLINE bool anyOutside(Rgb over, Rgb under, double tolerance)
{
    return (outside(over.red, under.red, tolerance) | outside(over.green, under.green, tolerance) |
            outside(over.blue, under.blue, tolerance)) != 0;
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
    return (int(a.red == b.red) & int(a.green == b.green) & int(a.blue == b.blue)) != 0;
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
