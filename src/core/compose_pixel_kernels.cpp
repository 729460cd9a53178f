// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/compose_kernels.h"
#include "core/composespan_inline.h"

using namespace composemodes;
using namespace composespan;

namespace
{
template <class Sample>
KESTRANE_ALWAYS_INLINE Rgb pixel(const Sample *r, const Sample *g, const Sample *b, int x)
{
    return {real(r[x]), real(g[x]), real(b[x])};
}

/// The last parameter is alpha as it was, before the layer.
template <class Mode, class Sample>
void mixPixels(const Sample *__restrict overRed, const Sample *__restrict overGreen,
               const Sample *__restrict overBlue, const Sample *__restrict overAlpha,
               const double *__restrict k, uint16_t *__restrict red, uint16_t *__restrict green,
               uint16_t *__restrict blue, uint16_t *__restrict alpha, int count)
{
    for (int x = 0; x < count; ++x) {
        const Rgb over = pixel(overRed, overGreen, overBlue, x);
        const Rgb under = pixel(red, green, blue, x);
        const double oldAlpha = real(alpha[x]);
        const Rgb fresh = Mode::value(over, under, oldAlpha);
        const bool applies = Mode::applies(over, under);
        const double kept = k[x];
        if (Mode::channels & kRed)
            red[x] = stored(applies ? mixSquared(fresh.red, under.red, kept) : under.red);
        if (Mode::channels & kGreen)
            green[x] = stored(applies ? mixSquared(fresh.green, under.green, kept) : under.green);
        if (Mode::channels & kBlue)
            blue[x] = stored(applies ? mixSquared(fresh.blue, under.blue, kept) : under.blue);
        const double mixed = (1.0 - kept) * real(overAlpha[x]) + kept * oldAlpha;
        alpha[x] = stored(applies ? mixed : oldAlpha);
    }
}

template <class Mode, class Sample>
void pixelSpan(const Span<Sample> &span)
{
    if (coverOf(span) == Cover::None)
        return;
    double k[kSpanPixels];
    fillKept(span.over[3], span.count, span.opacity, k);
    mixPixels<Mode>(span.over[0], span.over[1], span.over[2], span.over[3], k, span.under[0],
                    span.under[1], span.under[2], span.under[3], span.count);
}

template <class Mode, class Sample>
void alphaPixels(const Sample *__restrict overRed, const Sample *__restrict overGreen,
                 const Sample *__restrict overBlue, const Sample *__restrict overAlpha,
                 const uint16_t *__restrict red, const uint16_t *__restrict green,
                 const uint16_t *__restrict blue, uint16_t *__restrict alpha, int count,
                 AlphaTerms terms, double opacity)
{
    for (int x = 0; x < count; ++x) {
        terms.over = real(overAlpha[x]);
        terms.under = real(alpha[x]);
        terms.k = 1.0 - share(overAlpha[x]) * opacity;
        alpha[x] = stored(clampSampleValue(Mode::value(pixel(overRed, overGreen, overBlue, x),
                                                       pixel(red, green, blue, x), terms)));
    }
}

template <class Mode, class Sample>
void alphaSpan(const Span<Sample> &span)
{
    AlphaTerms terms{};
    terms.factor = span.factor;
    terms.tolerance = span.tolerance;
    alphaPixels<Mode>(span.over[0], span.over[1], span.over[2], span.over[3], span.under[0],
                      span.under[1], span.under[2], span.under[3], span.count, terms, span.opacity);
}

/// Artwork of a board: any channel in the dark half.
KESTRANE_ALWAYS_INLINE bool isArtwork(Rgb c)
{
    return (c.red < kHalf) | (c.green < kHalf) | (c.blue < kHalf);
}

template <class Sample>
void boardPixels(const Sample *__restrict overRed, const Sample *__restrict overGreen,
                 const Sample *__restrict overBlue, uint16_t *__restrict red,
                 uint16_t *__restrict green, uint16_t *__restrict blue, int count, double k)
{
    for (int x = 0; x < count; ++x) {
        const Rgb over = pixel(overRed, overGreen, overBlue, x);
        const Rgb under = pixel(red, green, blue, x);
        const bool artwork = isArtwork(over);
        red[x] = stored(artwork ? mixSquared(over.red, under.red, k) : under.red);
        green[x] = stored(artwork ? mixSquared(over.green, under.green, k) : under.green);
        blue[x] = stored(artwork ? mixSquared(over.blue, under.blue, k) : under.blue);
    }
}

template <class Sample>
void boardSpan(const Span<Sample> &span)
{
    boardPixels(span.over[0], span.over[1], span.over[2], span.under[0], span.under[1],
                span.under[2], span.count, 1.0 - span.opacity);
}

template <class Sample>
void profilePixels(const Sample *__restrict overRed, const Sample *__restrict overGreen,
                   const Sample *__restrict overBlue, uint16_t *__restrict red,
                   uint16_t *__restrict green, uint16_t *__restrict blue, int count)
{
    for (int x = 0; x < count; ++x) {
        const Rgb over = pixel(overRed, overGreen, overBlue, x);
        const bool artwork = isArtwork(over);
        red[x] = stored(artwork ? over.red : kFull);
        green[x] = stored(artwork ? over.green : kFull);
        blue[x] = stored(artwork ? over.blue : kFull);
    }
}

template <class Sample>
void profileSpan(const Span<Sample> &span)
{
    profilePixels(span.over[0], span.over[1], span.over[2], span.under[0], span.under[1],
                  span.under[2], span.count);
    std::fill(span.under[3], span.under[3] + span.count, uint16_t(65535));
}

template <class Mode>
constexpr SpanFunctions pixelFunctions()
{
    return {pixelSpan<Mode, uint16_t>, pixelSpan<Mode, double>};
}
template <class Mode>
constexpr SpanFunctions alphaFunctions()
{
    return {alphaSpan<Mode, uint16_t>, alphaSpan<Mode, double>};
}
} // namespace

namespace KERNEL_NAMESPACE
{
SpanFunctions pixelModeSpans(int mode)
{
    switch (mode) {
    case 7:
        return alphaFunctions<Mask>();
    case 10:
        return alphaFunctions<InvMask>();
    case 11:
        return pixelFunctions<Maximum>();
    case 12:
        return pixelFunctions<Minimum>();
    case 13:
        return pixelFunctions<Average>();
    case 14:
        return pixelFunctions<Luma>();
    case 18:
        return pixelFunctions<Cyan>();
    case 19:
        return pixelFunctions<Magenta>();
    case 20:
        return pixelFunctions<Yellow>();
    case 21:
        return pixelFunctions<Black>();
    case 22:
        return pixelFunctions<Vivid>();
    case 24:
        return alphaFunctions<GreyMask>();
    case 25:
        return alphaFunctions<PlusKey>();
    case 26:
        return alphaFunctions<MinusKey>();
    case 28:
        return pixelFunctions<Darken>();
    case 30:
        return pixelFunctions<Hue>();
    case 31:
        return pixelFunctions<Saturation>();
    case 32:
        return pixelFunctions<Value>();
    case 33:
        return pixelFunctions<Tint>();
    case 34:
        return pixelFunctions<Saturate>();
    case 35:
        return pixelFunctions<Envalue>();
    case 41:
        return pixelFunctions<Brighten>();
    case 51:
        return pixelFunctions<SetHue>();
    case 52:
        return pixelFunctions<SetSaturation>();
    case 53:
        return pixelFunctions<SetValue>();
    case 55:
    case 56:
    case 57:
    case 59:
        return {boardSpan<uint16_t>, boardSpan<double>};
    case 58:
        return {profileSpan<uint16_t>, profileSpan<double>};
    case 60:
        return alphaFunctions<Match>();
    case 61:
        return alphaFunctions<NoMatch>();
    default:
        return {};
    }
}
} // namespace KERNEL_NAMESPACE
