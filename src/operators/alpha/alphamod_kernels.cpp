// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/alpha/alphamod_kernels.h"

#include "operators/pipeline/blendspan_inline.h"

#include <initializer_list>

namespace
{
constexpr double kFull = 65535.0;

/// Rounded, so that a grey picture of value v gives an alpha of v.
KESTRANE_ALWAYS_INLINE double rounded(double value)
{
    return double(int(value + 0.5));
}

KESTRANE_ALWAYS_INLINE double hardened(double alpha, double slope)
{
    return rounded(clampSampleValue((alpha - kFull / 2.0) * slope + kFull / 2.0));
}

/// value(i) is what sample i of alpha becomes.
template <class Value>
KESTRANE_ALWAYS_INLINE void mixAlpha(const MixSpan &span, const Value &value)
{
    inlined::overBlocks(span,
                        [&value](const MixSpan &block, inlined::Weight) KESTRANE_INLINE_LAMBDA {
                            uint16_t *__restrict__ alpha = block.alpha;
                            const uint16_t *__restrict__ mask = block.mask;
                            for (ptrdiff_t i = 0; i < block.count; ++i) {
                                const double old = double(int(alpha[i]));
                                const double result = value(block, i, old);
                                const double m = double(int(mask[i])) / kFull;
                                const double square = (1.0 - m) * old * old + m * result * result;
                                alpha[i] = uint16_t(int(__builtin_sqrt(square)));
                            }
                        });
}

template <uint16_t *MixSpan::*plane>
KESTRANE_ALWAYS_INLINE double sampleOf(const MixSpan &block, ptrdiff_t i)
{
    return double(int((block.*plane)[i]));
}
} // namespace

namespace KERNEL_NAMESPACE
{
void mixAlphaSpan(const MixSpan &span, AlphaRule rule, int amount)
{
    const auto red = [](const MixSpan &block, ptrdiff_t i, double)
                         KESTRANE_INLINE_LAMBDA { return sampleOf<&MixSpan::red>(block, i); };
    const auto green = [](const MixSpan &block, ptrdiff_t i, double)
                           KESTRANE_INLINE_LAMBDA { return sampleOf<&MixSpan::green>(block, i); };
    const auto blue = [](const MixSpan &block, ptrdiff_t i, double)
                          KESTRANE_INLINE_LAMBDA { return sampleOf<&MixSpan::blue>(block, i); };
    const auto sum = [&](double r, double g, double b) KESTRANE_INLINE_LAMBDA {
        return [=](const MixSpan &block, ptrdiff_t i, double old) KESTRANE_INLINE_LAMBDA {
            return rounded(r * red(block, i, old) + g * green(block, i, old) +
                           b * blue(block, i, old));
        };
    };
    switch (rule) {
    case AlphaRule::Set: {
        const double level = double(amount * 257);
        return mixAlpha(span, [level](const MixSpan &, ptrdiff_t, double)
                                  KESTRANE_INLINE_LAMBDA { return level; });
    }
    case AlphaRule::Invert:
        return mixAlpha(span, [](const MixSpan &, ptrdiff_t, double old)
                                  KESTRANE_INLINE_LAMBDA { return kFull - old; });
    case AlphaRule::Average:
        return mixAlpha(span, [&](const MixSpan &block, ptrdiff_t i,
                                  double old) KESTRANE_INLINE_LAMBDA {
            return rounded((red(block, i, old) + green(block, i, old) + blue(block, i, old)) / 3.0);
        });
    case AlphaRule::Luma:
        return mixAlpha(span, sum(0.3, 0.59, 0.11));
    case AlphaRule::FromRed:
        return mixAlpha(span, red);
    case AlphaRule::FromGreen:
        return mixAlpha(span, green);
    case AlphaRule::FromBlue:
        return mixAlpha(span, blue);
    case AlphaRule::Harden: {
        // At the top the slope is steep enough to part the two middle samples.
        const double slope = amount < 255 ? 255.0 / (255.0 - amount) : 65536.0;
        return mixAlpha(span, [slope](const MixSpan &, ptrdiff_t, double old)
                                  KESTRANE_INLINE_LAMBDA { return hardened(old, slope); });
    }
    }
}

void alphaToRgbSpan(const MixSpan &span, const BlendPass &pass)
{
    inlined::blendSpan(span, pass,
                       [](const MixSpan &block, ResultBlock *results) KESTRANE_INLINE_LAMBDA {
                           results->wholeNumbers = true;
                           for (double *plane : {results->red, results->green, results->blue})
                               inlined::widen(block.alpha, plane, block.count);
                       });
}
} // namespace KERNEL_NAMESPACE
