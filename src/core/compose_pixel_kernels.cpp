// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/compose_kernels.h"
#include "core/composespan_inline.h"

using namespace composemodes;
using namespace composespan;

namespace
{
/// A span's pixels as doubles.
struct RealPixels {
    double red[kSpanPixels], green[kSpanPixels], blue[kSpanPixels], alpha[kSpanPixels];
};

template <class Sample>
void planesToReals(const Sample *const (&planes)[4], int count, RealPixels *out)
{
    toReals(planes[0], count, out->red);
    toReals(planes[1], count, out->green);
    toReals(planes[2], count, out->blue);
    toReals(planes[3], count, out->alpha);
}

/// What lies below a span.
template <class Sample>
void underToReals(const Span<Sample> &span, RealPixels *out)
{
    const uint16_t *const planes[4] = {span.under[0], span.under[1], span.under[2], span.under[3]};
    planesToReals(planes, span.count, out);
}

/// Squares of the three channels, and alpha as it becomes.
struct MixedPixels {
    Reals red, green, blue;
    double alpha[kSpanPixels];
};

KESTRANE_ALWAYS_INLINE Rgb pixelAt(const RealPixels &pixels, int x)
{
    return {pixels.red[x], pixels.green[x], pixels.blue[x]};
}

template <class Mode>
void mixPixels(const RealPixels &__restrict layer, const RealPixels &__restrict below,
               const double *__restrict k, int count, MixedPixels *__restrict out)
{
    for (int x = 0; x < count; ++x) {
        const Rgb over = pixelAt(layer, x), under = pixelAt(below, x);
        const double oldAlpha = below.alpha[x], kept = k[x];
        const Rgb fresh = Mode::value(over, under, oldAlpha);
        const bool applies = Mode::applies(over, under);
        const auto square = [&](double n, double b) KESTRANE_INLINE_LAMBDA {
            const double mixed = mixedSquare(n, b, kept);
            return applies ? mixed : b * b;
        };
        if (Mode::channels & kRed)
            out->red[x] = square(fresh.red, under.red);
        if (Mode::channels & kGreen)
            out->green[x] = square(fresh.green, under.green);
        if (Mode::channels & kBlue)
            out->blue[x] = square(fresh.blue, under.blue);
        const double mixed = (1.0 - kept) * layer.alpha[x] + kept * oldAlpha;
        out->alpha[x] = applies ? mixed : oldAlpha;
    }
}

void storeAlpha(const double *__restrict from, int count, uint16_t *__restrict alpha)
{
    for (int x = 0; x < count; ++x)
        alpha[x] = stored(from[x]);
}

template <class Mode, class Sample>
void pixelSpan(const Span<Sample> &span)
{
    if (coverOf(span) == Cover::None)
        return;
    double k[kSpanPixels];
    RealPixels layer, below;
    MixedPixels mixed;
    fillKept(span.over[3], span.count, span.opacity, k);
    planesToReals(span.over, span.count, &layer);
    underToReals(span, &below);
    mixPixels<Mode>(layer, below, k, span.count, &mixed);
    Reals *const squares[3] = {&mixed.red, &mixed.green, &mixed.blue};
    for (int c = 0; c < 3; ++c)
        if (Mode::channels >> c & 1)
            rootsOf(*squares[c], span.count, span.under[c]);
    storeAlpha(mixed.alpha, span.count, span.under[3]);
}

template <class Sample>
KESTRANE_ALWAYS_INLINE Rgb pixel(const Sample *r, const Sample *g, const Sample *b, int x)
{
    return {real(r[x]), real(g[x]), real(b[x])};
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
    return (int(c.red < kHalf) | int(c.green < kHalf) | int(c.blue < kHalf)) != 0;
}

void boardPixels(const RealPixels &__restrict layer, const RealPixels &__restrict below, double k,
                 int count, MixedPixels *__restrict out)
{
    for (int x = 0; x < count; ++x) {
        const Rgb over = pixelAt(layer, x), under = pixelAt(below, x);
        const bool artwork = isArtwork(over);
        const auto square = [=](double n, double b) KESTRANE_INLINE_LAMBDA {
            const double mixed = mixedSquare(n, b, k);
            return artwork ? mixed : b * b;
        };
        out->red[x] = square(over.red, under.red);
        out->green[x] = square(over.green, under.green);
        out->blue[x] = square(over.blue, under.blue);
    }
}

template <class Sample>
void boardSpan(const Span<Sample> &span)
{
    RealPixels layer, below;
    MixedPixels mixed;
    planesToReals(span.over, span.count, &layer);
    underToReals(span, &below);
    boardPixels(layer, below, 1.0 - span.opacity, span.count, &mixed);
    rootsOf(mixed.red, span.count, span.under[0]);
    rootsOf(mixed.green, span.count, span.under[1]);
    rootsOf(mixed.blue, span.count, span.under[2]);
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
