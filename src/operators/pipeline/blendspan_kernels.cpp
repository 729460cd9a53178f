// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/pipeline/blendspan_kernels.h"

#include "core/colour_inline.h"
#include "operators/pipeline/blendspan_inline.h"
#include "operators/pipeline/colorblending.h"

namespace
{
constexpr double kFull = 65535.0;
constexpr double kFullSquared = 4294836225.0;

KESTRANE_ALWAYS_INLINE double squareToWhite(double s)
{
    return s > kFull ? kFullSquared : s * s;
}

KESTRANE_ALWAYS_INLINE double rootMix(double square, double a, double t)
{
    return __builtin_sqrt(t * square + (1.0 - t) * a * a);
}

// One struct a mode: mix(a, b, t) as it is defined, and whole(a, b), to which it comes at a
// weight of exactly 1: there the root of a square is taken, and that is its magnitude.

struct Matte {
    KESTRANE_ALWAYS_INLINE static double mix(double a, double b, double t)
    {
        return __builtin_sqrt((1.0 - t) * a * a + t * b * b);
    }
    KESTRANE_ALWAYS_INLINE static double whole(double, double b) { return b; }
};

struct Add {
    KESTRANE_ALWAYS_INLINE static double mix(double a, double b, double t)
    {
        return rootMix(squareToWhite(a + b), a, t);
    }
    KESTRANE_ALWAYS_INLINE static double whole(double a, double b) { return lesser(a + b, kFull); }
};

KESTRANE_ALWAYS_INLINE double magnitudeToWhite(double s)
{
    return lesser(__builtin_fabs(s), kFull);
}

struct AddGrey {
    KESTRANE_ALWAYS_INLINE static double mix(double a, double b, double t)
    {
        return rootMix(squareToWhite((b - 32768.0) + a), a, t);
    }
    KESTRANE_ALWAYS_INLINE static double whole(double a, double b)
    {
        return magnitudeToWhite((b - 32768.0) + a);
    }
};

struct SubtractGrey {
    KESTRANE_ALWAYS_INLINE static double mix(double a, double b, double t)
    {
        return rootMix(squareToWhite(a - (b - 32768.0)), a, t);
    }
    KESTRANE_ALWAYS_INLINE static double whole(double a, double b)
    {
        return magnitudeToWhite(a - (b - 32768.0));
    }
};

struct Subtract {
    KESTRANE_ALWAYS_INLINE static double mix(double a, double b, double t)
    {
        const double s = greater(a - b, 0.0);
        return rootMix(s * s, a, t);
    }
    KESTRANE_ALWAYS_INLINE static double whole(double a, double b) { return greater(a - b, 0.0); }
};

/// b / 65535, where b may be known to be a whole number.
template <bool wholeNumbers>
KESTRANE_ALWAYS_INLINE double share(double b)
{
    return wholeNumbers ? inlined::shareOfFull(b) : b / kFull;
}

template <bool wholeNumbers>
struct Multiply {
    KESTRANE_ALWAYS_INLINE static double mix(double a, double b, double t)
    {
        const double p = share<wholeNumbers>(b) * a;
        return __builtin_sqrt(t * p * p + (1.0 - t) * a * a);
    }
    KESTRANE_ALWAYS_INLINE static double whole(double a, double b)
    {
        return share<wholeNumbers>(b) * a;
    }
};

/// A divisor below 1 gives white whatever the weight is: as the limit of the quotient, and a
/// weight of 1. Choices at the end would have compilers divide and take roots twice.
template <bool wholeNumbers>
struct Divide {
    KESTRANE_ALWAYS_INLINE static double whole(double a, double b)
    {
        const bool none = b < 1.0;
        const double quotient = lesser(a / share<wholeNumbers>(none ? 1.0 : b), kFull);
        return none ? kFull : quotient;
    }
    /// The mix before its root.
    KESTRANE_ALWAYS_INLINE static double square(double a, double b, double t)
    {
        const double quotient = whole(a, b), weight = b < 1.0 ? 1.0 : t;
        return weight * (quotient * quotient) + (1.0 - weight) * a * a;
    }
};

/// Any mode without a rule: the first operand stays.
struct Keep {
    KESTRANE_ALWAYS_INLINE static double mix(double a, double, double) { return a; }
    KESTRANE_ALWAYS_INLINE static double whole(double a, double) { return a; }
};

KESTRANE_ALWAYS_INLINE uint16_t stored(double value)
{
    return uint16_t(int(value));
}

/// One plane of a block under weights of its own.
template <class Mode, bool reversed>
void mixPlane(uint16_t *__restrict__ plane, const double *__restrict__ results,
              const double *__restrict__ weights, ptrdiff_t count)
{
    if constexpr (!requires { Mode::square(0.0, 0.0, 0.0); }) {
        for (ptrdiff_t i = 0; i < count; ++i) {
            const double old = double(int(plane[i]));
            plane[i] = stored(reversed ? Mode::mix(results[i], old, 1.0 - weights[i])
                                       : Mode::mix(old, results[i], weights[i]));
        }
    } else { // too many terms for one loop with samples at both of its ends
        double squares[ResultBlock::kSize];
        inlined::widen(plane, squares, count);
        for (ptrdiff_t i = 0; i < count; ++i)
            squares[i] = reversed ? Mode::square(results[i], squares[i], 1.0 - weights[i])
                                  : Mode::square(squares[i], results[i], weights[i]);
        for (ptrdiff_t i = 0; i < count; ++i)
            plane[i] = stored(__builtin_sqrt(squares[i]));
    }
}

/// One plane of a fully selected block, where the old sample comes first.
template <class Mode>
void storePlane(uint16_t *__restrict__ plane, const double *__restrict__ results, ptrdiff_t count)
{
    for (ptrdiff_t i = 0; i < count; ++i)
        plane[i] = stored(Mode::whole(double(int(plane[i])), results[i]));
}

void weightsOf(const MixSpan &block, const BlendPass &pass, double *__restrict__ weights)
{
    const uint16_t *__restrict__ mask = block.mask;
    const uint16_t *__restrict__ alpha = block.alpha;
    for (ptrdiff_t i = 0; i < block.count; ++i)
        weights[i] = inlined::shareOfFull(double(int(mask[i])));
    if (pass.throughAlpha)
        for (ptrdiff_t i = 0; i < block.count; ++i)
            weights[i] = inlined::shareOfFull(double(int(alpha[i]))) * weights[i];
}

/// Gives samples that are passed over what they held before.
class KeptSamples
{
public:
    explicit KeptSamples(const MixSpan &block) : span(block)
    {
        __builtin_memcpy(red, span.red, bytes());
        __builtin_memcpy(green, span.green, bytes());
        __builtin_memcpy(blue, span.blue, bytes());
    }
    void restore() const
    {
        restorePlane(span.red, red);
        restorePlane(span.green, green);
        restorePlane(span.blue, blue);
    }

private:
    size_t bytes() const { return size_t(span.count) * sizeof(uint16_t); }
    void restorePlane(uint16_t *__restrict__ plane, const uint16_t *__restrict__ old) const
    {
        const uint16_t *__restrict__ mask = span.mask;
        const uint16_t *__restrict__ alpha = span.alpha;
        for (ptrdiff_t i = 0; i < span.count; ++i)
            plane[i] = alpha[i] == 0 || mask[i] == 0 ? old[i] : plane[i];
    }

    const MixSpan &span;
    uint16_t red[ResultBlock::kSize], green[ResultBlock::kSize], blue[ResultBlock::kSize];
};

bool allSeen(const MixSpan &block)
{
    for (ptrdiff_t i = 0; i < block.count; ++i)
        if (block.alpha[i] == 0 || block.mask[i] == 0)
            return false;
    return true;
}

template <class Mode>
void mixBlock(const MixSpan &block, const ResultBlock &results, const BlendPass &pass)
{
    const bool full =
        !pass.throughAlpha && inlined::weightOf(block.mask, block.count) == inlined::Weight::Full;
    if (full && !pass.reversed) {
        storePlane<Mode>(block.red, results.red, block.count);
        storePlane<Mode>(block.green, results.green, block.count);
        storePlane<Mode>(block.blue, results.blue, block.count);
        return;
    }
    double weights[ResultBlock::kSize];
    weightsOf(block, pass, weights);
    const auto each = [&](uint16_t *plane, const double *result) KESTRANE_INLINE_LAMBDA {
        if (pass.reversed)
            mixPlane<Mode, true>(plane, result, weights, block.count);
        else
            mixPlane<Mode, false>(plane, result, weights, block.count);
    };
    each(block.red, results.red);
    each(block.green, results.green);
    each(block.blue, results.blue);
}

/// Modes 9 and 10: Matte towards one colour. The new operand of the reversed order is the old
/// sample, which the colour stands for then.
void mixColour(const MixSpan &block, const ResultBlock &results, const BlendPass &pass)
{
    double weights[ResultBlock::kSize];
    weightsOf(block, pass, weights);
    const auto each = [&](uint16_t *__restrict__ plane, const double *__restrict__ result,
                          double colour) KESTRANE_INLINE_LAMBDA {
        for (ptrdiff_t i = 0; i < block.count; ++i)
            plane[i] =
                stored(pass.reversed ? Matte::mix(result[i], colour, 1.0 - weights[i])
                                     : Matte::mix(double(int(plane[i])), colour, weights[i]));
    };
    each(block.red, results.red, pass.colour[0]);
    each(block.green, results.green, pass.colour[1]);
    each(block.blue, results.blue, pass.colour[2]);
}

void mixByMode(const MixSpan &block, const ResultBlock &results, const BlendPass &pass)
{
    // The second operand of the reversed order is a sample.
    const bool whole = pass.reversed || results.wholeNumbers;
    switch (pass.mode) {
    case kBlendMatte:
        return mixBlock<Matte>(block, results, pass);
    case kBlendAdd:
        return mixBlock<Add>(block, results, pass);
    case kBlendAddGrey:
        return mixBlock<AddGrey>(block, results, pass);
    case kBlendSubtractGrey:
        return mixBlock<SubtractGrey>(block, results, pass);
    case kBlendSubtract:
        return mixBlock<Subtract>(block, results, pass);
    case kBlendMultiply:
        return whole ? mixBlock<Multiply<true>>(block, results, pass)
                     : mixBlock<Multiply<false>>(block, results, pass);
    case kBlendDivide:
        return whole ? mixBlock<Divide<true>>(block, results, pass)
                     : mixBlock<Divide<false>>(block, results, pass);
    case kBlendForeground:
    case kBlendBackground:
        return mixColour(block, results, pass);
    default:
        return mixBlock<Keep>(block, results, pass);
    }
}

void lookUp(const uint16_t *__restrict__ table, const uint16_t *__restrict__ plane,
            double *__restrict__ results, ptrdiff_t count)
{
    for (ptrdiff_t i = 0; i < count; ++i)
        results[i] = double(int(table[plane[i]]));
}

/// Looks up and mixes under Matte in one go, which keeps the loads and the roots busy at once.
void lookUpSoftly(const uint16_t *__restrict__ table, uint16_t *__restrict__ plane,
                  const double *__restrict__ weights, ptrdiff_t count, bool reversed)
{
    if (reversed)
        for (ptrdiff_t i = 0; i < count; ++i)
            plane[i] = stored(
                Matte::mix(double(int(table[plane[i]])), double(int(plane[i])), 1.0 - weights[i]));
    else
        for (ptrdiff_t i = 0; i < count; ++i)
            plane[i] =
                stored(Matte::mix(double(int(plane[i])), double(int(table[plane[i]])), weights[i]));
}

constexpr ptrdiff_t kLine = 32; ///< samples of a cache line
/// So far ahead samples are asked for. The loads through a table keep the processor from seeing
/// that far by itself.
constexpr ptrdiff_t kAhead = 24 * kLine;

/// `next`, where not null, is asked for on the way: it is what will be read after this.
void replace(const uint16_t *__restrict__ table, uint16_t *__restrict__ plane, ptrdiff_t count,
             const uint16_t *next = nullptr)
{
    ptrdiff_t i = 0;
    for (; i + kLine <= count; i += kLine) {
        __builtin_prefetch(plane + i + kAhead, 1);
        if (next)
            __builtin_prefetch(next + i);
        for (ptrdiff_t j = i; j < i + kLine; ++j)
            plane[j] = table[plane[j]];
    }
    for (; i < count; ++i)
        plane[i] = table[plane[i]];
}

void fetchAhead(const MixSpan &block)
{
    for (ptrdiff_t i = 0; i < block.count; i += kLine) {
        __builtin_prefetch(block.red + i + kAhead, 1);
        __builtin_prefetch(block.green + i + kAhead, 1);
        __builtin_prefetch(block.blue + i + kAhead, 1);
        __builtin_prefetch(block.mask + i + 2 * kAhead);
    }
}

/// Hue and saturation of a block, and the largest channel of each pixel.
struct ValueBlock {
    double hue[ResultBlock::kSize], saturation[ResultBlock::kSize];
    uint16_t most[ResultBlock::kSize];
};

void splitValues(const MixSpan &block, ValueBlock *__restrict__ parts)
{
    ResultBlock wide;
    inlined::widen(block, &wide);
    for (ptrdiff_t i = 0; i < block.count; ++i) {
        const Hsv hsv = inlined::rgbToHsv({wide.red[i], wide.green[i], wide.blue[i]});
        parts->hue[i] = hsv.hue;
        parts->saturation[i] = hsv.saturation;
    }
    for (ptrdiff_t i = 0; i < block.count; ++i) {
        const uint16_t most = block.red[i] > block.green[i] ? block.red[i] : block.green[i];
        parts->most[i] = most > block.blue[i] ? most : block.blue[i];
    }
}

void joinValues(const ValueBlock &parts, ptrdiff_t count, ResultBlock *__restrict__ results)
{
    double most[ResultBlock::kSize];
    inlined::widen(parts.most, most, count);
    for (ptrdiff_t i = 0; i < count; ++i) {
        const double value = most[i] * 100.0 / kFull;
        const Rgb rgb = inlined::hsvToRgb({parts.hue[i], parts.saturation[i], value});
        results->red[i] = rgb.red;
        results->green[i] = rgb.green;
        results->blue[i] = rgb.blue;
    }
}

void lookUpBlocks(const MixSpan &span, const LookupTables &tables, const BlendPass &pass,
                  bool plain)
{
    const bool keeps = pass.keepsUnselected();
    inlined::overAllBlocks(
        span, [&](const MixSpan &block, inlined::Weight weight) KESTRANE_INLINE_LAMBDA {
            if (keeps && weight == inlined::Weight::None)
                return;
            if (plain) {
                fetchAhead(block);
                double weights[ResultBlock::kSize];
                weightsOf(block, pass, weights);
                lookUpSoftly(tables.red, block.red, weights, block.count, pass.reversed);
                lookUpSoftly(tables.green, block.green, weights, block.count, pass.reversed);
                lookUpSoftly(tables.blue, block.blue, weights, block.count, pass.reversed);
                return;
            }
            ResultBlock results;
            results.wholeNumbers = true;
            lookUp(tables.red, block.red, results.red, block.count);
            lookUp(tables.green, block.green, results.green, block.count);
            lookUp(tables.blue, block.blue, results.blue, block.count);
            KERNEL_NAMESPACE::blendBlock(block, results, pass);
        });
}
} // namespace

namespace KERNEL_NAMESPACE
{
void blendBlock(const MixSpan &block, const ResultBlock &results, const BlendPass &pass)
{
    if (pass.mode == kBlendDissolve || pass.mode == kBlendSoftDissolve) {
        blendInOrder(block, results, pass);
        return;
    }
    if (!pass.skipsUnseen || allSeen(block)) {
        mixByMode(block, results, pass);
        return;
    }
    const KeptSamples kept(block);
    mixByMode(block, results, pass);
    kept.restore();
}

void lookupSpan(const MixSpan &span, const LookupTables &tables, const BlendPass &pass)
{
    constexpr ptrdiff_t chunk = 4 * inlined::kBlock;
    const bool plain = pass.mode == kBlendMatte && !pass.skipsUnseen && !pass.throughAlpha;
    for (ptrdiff_t at = 0; at < span.count; at += chunk) {
        const MixSpan part = span.part(at, span.count - at < chunk ? span.count - at : chunk);
        // The mix of squares at full weight is the root of the new sample's square. One table
        // after the other over a long run: each then stays near the processor.
        if (plain && inlined::weightOf(part.mask, part.count) == inlined::Weight::Full) {
            replace(tables.red, part.red, part.count, part.mask + part.count);
            replace(tables.green, part.green, part.count);
            replace(tables.blue, part.blue, part.count);
        } else {
            lookUpBlocks(part, tables, pass, plain);
        }
    }
}

void lookupValueSpan(const MixSpan &span, const uint16_t *table, const BlendPass &pass)
{
    inlined::blendSpan(span, pass,
                       [table](const MixSpan &block, ResultBlock *results) KESTRANE_INLINE_LAMBDA {
                           ValueBlock parts;
                           splitValues(block, &parts);
                           replace(table, parts.most, block.count);
                           joinValues(parts, block.count, results);
                       });
}
} // namespace KERNEL_NAMESPACE
