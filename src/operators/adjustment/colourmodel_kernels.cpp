// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/adjustment/colourmodel_kernels.h"

#include "core/colour_inline.h"
#include "operators/pipeline/blendspan_inline.h"

namespace
{
/// `hues` holds the same hue over and over: of a hue that stays the same the compiler would
/// make branches, and no vectors of those.
template <bool setsSaturation>
void tintBlock(const MixSpan &block, const Tint &tint, const double *__restrict__ hues,
               ResultBlock *results)
{
    inlined::widen(block, results);
    const double saturation = tint.saturation;
    const double mix = tint.mix;
    const double rest = 1.0 - mix;
    for (ptrdiff_t i = 0; i < block.count; ++i) {
        const Rgb old{results->red[i], results->green[i], results->blue[i]};
        const Hsv own = inlined::rgbToHsv(old);
        const Rgb tinted =
            inlined::hsvToRgb({hues[i], setsSaturation ? saturation : own.saturation, own.value});
        results->red[i] = tinted.red * mix + old.red * rest;
        results->green[i] = tinted.green * mix + old.green * rest;
        results->blue[i] = tinted.blue * mix + old.blue * rest;
    }
}
} // namespace

namespace KERNEL_NAMESPACE
{
void saturateSpan(const MixSpan &span, const BlendPass &pass, double factor)
{
    inlined::blendPixels(span, pass, [factor](Rgb old) KESTRANE_INLINE_LAMBDA {
        Hsl hsl = inlined::rgbToHsl(old);
        hsl.saturation = lesser(hsl.saturation * factor, 100.0);
        return inlined::hslToRgb(hsl);
    });
}

void turnHueSpan(const MixSpan &span, const BlendPass &pass, double shift)
{
    inlined::blendPixels(span, pass, [shift](Rgb old) KESTRANE_INLINE_LAMBDA {
        Hsl hsl = inlined::rgbToHsl(old);
        const double turned = hsl.hue + shift;
        hsl.hue = turned > 360.0 ? turned - 360.0 : turned < 0.0 ? turned + 360.0 : turned;
        return inlined::hslToRgb(hsl);
    });
}

void tintSpan(const MixSpan &span, const BlendPass &pass, const Tint &tint)
{
    double hues[ResultBlock::kSize];
    for (double &hue : hues)
        hue = tint.hue;
    inlined::blendSpan(span, pass,
                       [&](const MixSpan &block, ResultBlock *results) KESTRANE_INLINE_LAMBDA {
                           if (tint.setsSaturation)
                               tintBlock<true>(block, tint, hues, results);
                           else
                               tintBlock<false>(block, tint, hues, results);
                       });
}
} // namespace KERNEL_NAMESPACE
