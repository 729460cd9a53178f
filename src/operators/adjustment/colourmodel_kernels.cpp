// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/adjustment/colourmodel_kernels.h"

#include "core/colour_inline.h"
#include "operators/pipeline/blendspan_inline.h"

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

void tintSpan(const MixSpan &span, const BlendPass &pass, const Tint &given)
{
    // A copy: for all the compiler knows, the results might be written over the original.
    const Tint tint = given;
    const double rest = 1.0 - tint.mix;
    inlined::blendPixels(span, pass, [&tint, rest](Rgb old) KESTRANE_INLINE_LAMBDA {
        Hsv hsv = inlined::rgbToHsv(old);
        hsv.hue = tint.hue;
        hsv.saturation = tint.setsSaturation ? tint.saturation : hsv.saturation;
        const Rgb tinted = inlined::hsvToRgb(hsv);
        return Rgb{tinted.red * tint.mix + old.red * rest,
                   tinted.green * tint.mix + old.green * rest,
                   tinted.blue * tint.mix + old.blue * rest};
    });
}
} // namespace KERNEL_NAMESPACE
