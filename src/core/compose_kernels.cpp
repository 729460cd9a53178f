// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/compose_kernels.h"

#include "core/composespan_inline.h"

using namespace composemodes;
using namespace composespan;

namespace
{
// Loops stand in functions of their own: only parameters can promise the compiler that
// planes do not overlap, without which it builds no vector code.

template <class Mode>
KESTRANE_ALWAYS_INLINE Lanes mixedLanes(Lanes over, Lanes under, Lanes k, double factor)
{
    const Lanes mixed = mixedSquare(Mode::value(over, under, factor), under, k);
    if constexpr (Mode::conditional) {
        const Lanes kept = under * under;
        return Mode::applies(over, under) ? mixed : kept;
    } else {
        return mixed;
    }
}

enum class Under { Present, Empty };

template <Under what>
KESTRANE_ALWAYS_INLINE Lanes lanesBelow(const uint16_t *under)
{
    return what == Under::Empty ? Lanes{} : loadLanes(under);
}

template <class Mode, int channel, Under what, class Sample>
KESTRANE_ALWAYS_INLINE void mixOneChannel(const Sample *const (&over)[4],
                                          uint16_t *const (&under)[4], int x, Lanes k,
                                          double factor)
{
    if constexpr ((Mode::channels >> channel & 1) != 0)
        storeRoots(mixedLanes<Mode>(loadLanes(over[channel] + x),
                                    lanesBelow<what>(under[channel] + x), k, factor),
                   under[channel] + x);
}

/// All channels of one group of pixels.
template <class Mode, Under what, class Sample>
KESTRANE_ALWAYS_INLINE void mixGroup(const Sample *const (&over)[4], uint16_t *const (&under)[4],
                                     int x, double opacity, double factor)
{
    const Lanes alpha = loadLanes(over[3] + x);
    const Lanes k = 1.0 - shareOf<Sample>(alpha) * opacity;
    mixOneChannel<Mode, 0, what>(over, under, x, k, factor);
    mixOneChannel<Mode, 1, what>(over, under, x, k, factor);
    mixOneChannel<Mode, 2, what>(over, under, x, k, factor);
    if constexpr (Mode::mixesAlpha)
        storeTruncated((1.0 - k) * alpha + k * lanesBelow<what>(under[3] + x), under[3] + x);
}

/// The pixels that do not fill a group, in a group of their own.
template <class Mode, Under what, class Sample>
void mixLast(const Span<Sample> &span, int x)
{
    const int size = span.count - x;
    Sample above[4][kLanes] = {};
    uint16_t below[4][kLanes] = {};
    for (int c = 0; c < 4; ++c) {
        std::copy(span.over[c] + x, span.over[c] + span.count, above[c]);
        std::copy(span.under[c] + x, span.under[c] + span.count, below[c]);
    }
    const Sample *const over[4] = {above[0], above[1], above[2], above[3]};
    uint16_t *const under[4] = {below[0], below[1], below[2], below[3]};
    mixGroup<Mode, what>(over, under, 0, span.opacity, span.factor);
    for (int c = 0; c < 4; ++c)
        std::copy(below[c], below[c] + size, span.under[c] + x);
}

/// Where nothing of the old value stays, the mix gives back the new one exactly.
template <class Mode>
void storeChannel(const uint16_t *__restrict over, uint16_t *__restrict under, int count,
                  double factor)
{
    for (int x = 0; x < count; ++x) {
        const double o = real(over[x]), u = real(under[x]);
        const double fresh = std::fabs(Mode::value(o, u, factor));
        if constexpr (Mode::conditional)
            under[x] = stored(Mode::applies(o, u) ? fresh : u);
        else
            under[x] = stored(fresh);
    }
}

template <class Mode, Under what, class Sample>
KESTRANE_ALWAYS_INLINE void mixSpan(const Span<Sample> &span)
{
    const Sample *const over[4] = {span.over[0], span.over[1], span.over[2], span.over[3]};
    uint16_t *const under[4] = {span.under[0], span.under[1], span.under[2], span.under[3]};
    eachGroup(
        span.count,
        [&](int x) KESTRANE_INLINE_LAMBDA {
            mixGroup<Mode, what>(over, under, x, span.opacity, span.factor);
        },
        [&](int x) KESTRANE_INLINE_LAMBDA { mixLast<Mode, what>(span, x); });
}

template <class Mode, class Sample>
void channelSpan(const Span<Sample> &span)
{
    const Cover cover = coverOf(span);
    if (cover == Cover::None)
        return;
    if constexpr (std::is_same_v<Sample, uint16_t>)
        if (cover == Cover::Full) {
            for (int c = 0; c < 3; ++c)
                if (Mode::channels >> c & 1)
                    storeChannel<Mode>(span.over[c], span.under[c], span.count, span.factor);
            if (Mode::mixesAlpha)
                std::fill(span.under[3], span.under[3] + span.count, uint16_t(65535));
            return;
        }
    mixSpan<Mode, Under::Present>(span);
}

/// The same over zeros. Its result does not depend on what the destination held.
template <class Mode>
void spanOnEmpty(const PlaneSpan &span)
{
    static_assert(Mode::channels == kAll && Mode::mixesAlpha && !Mode::conditional);
    mixSpan<Mode, Under::Empty>(span);
}

/// "Behind": what lies below covers the layer, by its own alpha.
template <class Sample>
void behindChannel(const Sample *__restrict over, const double *__restrict k,
                   const uint16_t *__restrict under, int count, double *__restrict squares)
{
    for (int x = 0; x < count; ++x)
        squares[x] = mixedSquare(real(over[x]), real(under[x]), k[x]);
}

template <class Sample>
void behindAlpha(const Sample *__restrict over, const double *__restrict k,
                 uint16_t *__restrict under, int count, double opacity)
{
    for (int x = 0; x < count; ++x)
        under[x] = stored(real(over[x]) * opacity * (1.0 - k[x]) + real(under[x]) * k[x]);
}

template <class Sample>
void behindSpan(const Span<Sample> &span)
{
    Reals k = {}, squares;
    for (int x = 0; x < span.count; ++x)
        k[x] = share(span.under[3][x]);
    for (int c = 0; c < 3; ++c) {
        behindChannel(span.over[c], k, span.under[c], span.count, squares);
        rootsOf(squares, span.count, span.under[c]);
    }
    behindAlpha(span.over[3], k, span.under[3], span.count, span.opacity);
}

/// Over zeros the layer shows as it is, as opaque as its opacity lets it be.
void behindOnEmpty(const PlaneSpan &span)
{
    for (int c = 0; c < 3; ++c)
        std::copy(span.over[c], span.over[c] + span.count, span.under[c]);
    eachGroup(
        span.count,
        [&](int x) KESTRANE_INLINE_LAMBDA {
            storeTruncated(loadLanes(span.over[3] + x) * span.opacity, span.under[3] + x);
        },
        [&](int x) KESTRANE_INLINE_LAMBDA {
            for (; x < span.count; ++x)
                span.under[3][x] = stored(real(span.over[3][x]) * span.opacity);
        });
}

template <class Mode, class Sample>
void bitChannel(const Sample *__restrict over, uint16_t *__restrict under, int count)
{
    for (int x = 0; x < count; ++x)
        under[x] = uint16_t(Mode::value(uint16_t(int32_t(over[x])), under[x]));
}

template <class Mode, class Sample>
void bitSpan(const Span<Sample> &span)
{
    for (int c = 0; c < 3; ++c)
        bitChannel<Mode>(span.over[c], span.under[c], span.count);
}

/// `Whole` may be another form of the mode for samples that are whole numbers.
template <class Mode, class Whole = Mode>
constexpr SpanFunctions channelFunctions()
{
    SpanFunctions functions = {channelSpan<Whole, uint16_t>, channelSpan<Mode, double>};
    if constexpr (Mode::channels == kAll && Mode::mixesAlpha && !Mode::conditional)
        functions.onEmpty = spanOnEmpty<Whole>;
    return functions;
}
template <class Mode>
constexpr SpanFunctions bitFunctions()
{
    return {bitSpan<Mode, uint16_t>, bitSpan<Mode, double>};
}

void fillKeys(const uint16_t *__restrict red, const uint16_t *__restrict green,
              const uint16_t *__restrict blue, int layer, int count, double *__restrict keys)
{
    constexpr double kLayerRange = 65536.0;
    for (int x = 0; x < count; ++x)
        keys[x] = double(int32_t(red[x]) + green[x] + blue[x]) * kLayerRange + layer;
}

void orderKeys(double *__restrict first, double *__restrict second, int count)
{
    for (int x = 0; x < count; ++x) {
        const double a = first[x], b = second[x];
        first[x] = lesser(a, b);
        second[x] = greater(a, b);
    }
}

void exchange(double *__restrict mean, double *__restrict nextMean, double *__restrict order,
              double *__restrict nextOrder, int count)
{
    for (int x = 0; x < count; ++x) {
        const double a = mean[x], b = nextMean[x], i = order[x], j = nextOrder[x];
        const bool swap = a > b;
        mean[x] = swap ? b : a;
        nextMean[x] = swap ? a : b;
        order[x] = swap ? j : i;
        nextOrder[x] = swap ? i : j;
    }
}

void convertYrb(const double *y, const double *r, const double *b, double *__restrict red,
                double *__restrict green, double *__restrict blue, int count)
{
    for (int x = 0; x < count; ++x) {
        const Rgb rgb = inlined::yrbToRgb({y[x], r[x], b[x]});
        red[x] = rgb.red;
        green[x] = rgb.green;
        blue[x] = rgb.blue;
    }
}
} // namespace

namespace KERNEL_NAMESPACE
{
SpanFunctions channelModeSpans(int mode)
{
    switch (mode) {
    case 0:
    case 29: // a median is blended as "Normal"
        return channelFunctions<Normal>();
    case 1:
        return channelFunctions<Add>();
    case 2:
        return channelFunctions<AbsSubtract>();
    case 3:
        return channelFunctions<Subtract>();
    case 4:
        return channelFunctions<AddGrey>();
    case 5:
        return channelFunctions<Multiply>();
    case 8:
        return channelFunctions<Dodge>();
    case 9:
        return channelFunctions<Burn>();
    case 15:
        return channelFunctions<OnlyRed>();
    case 16:
        return channelFunctions<OnlyGreen>();
    case 17:
        return channelFunctions<OnlyBlue>();
    case 23:
        return channelFunctions<Screen>();
    case 27:
        return channelFunctions<Averaged>();
    case 36:
        return channelFunctions<Overlay, WholeOverlay>();
    case 37:
        return {behindSpan<uint16_t>, behindSpan<double>, behindOnEmpty};
    case 38:
        return channelFunctions<Divide>();
    case 39:
        return channelFunctions<Brightness>();
    case 40:
        return channelFunctions<Contrast>();
    case 42:
        return channelFunctions<Dominate>();
    case 43:
        return channelFunctions<Submit>();
    case 44:
        return bitFunctions<And>();
    case 45:
        return bitFunctions<Nand>();
    case 46:
        return bitFunctions<Or>();
    case 47:
        return bitFunctions<Nor>();
    case 48:
        return bitFunctions<Xor>();
    case 49:
        return bitFunctions<Xnor>();
    case 50:
        return channelFunctions<Drive>();
    case 54:
        return channelFunctions<Difference>();
    default:
        return {};
    }
}

void yrbSpan(const double *const from[3], double *const to[3], int count)
{
    double red[kSpanPixels], green[kSpanPixels], blue[kSpanPixels];
    convertYrb(from[0], from[1], from[2], red, green, blue, count);
    std::copy(red, red + count, to[0]);
    std::copy(green, green + count, to[1]);
    std::copy(blue, blue + count, to[2]);
}

void medianKeys(const uint16_t *red, const uint16_t *green, const uint16_t *blue, int layer,
                int count, double *keys)
{
    fillKeys(red, green, blue, layer, count, keys);
}

void exchangeKeys(double *first, double *second, int count)
{
    orderKeys(first, second, count);
}

void truncatedRoots(const double *squares, int count, uint16_t *roots)
{
    Reals copied;
    std::copy(squares, squares + count, copied);
    rootsOf(copied, count, roots);
}

void exchangeMeans(double *first, double *second, double *firstOrder, double *secondOrder,
                   int count)
{
    exchange(first, second, firstOrder, secondOrder, count);
}
} // namespace KERNEL_NAMESPACE
