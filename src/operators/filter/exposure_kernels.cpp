// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/filter/exposure_kernels.h"

#include "core/colour_inline.h"
#include "operators/pipeline/spans_inline.h"

namespace
{
uint16_t mix(double old, double result, double m)
{
    return uint16_t(int(old * (1.0 - m) + result * m));
}

void exposeBlock(const MixSpan &span, double k)
{
    uint16_t *__restrict__ red = span.red;
    uint16_t *__restrict__ green = span.green;
    uint16_t *__restrict__ blue = span.blue;
    const uint16_t *__restrict__ mask = span.mask;
    for (ptrdiff_t i = 0; i < span.count; ++i) {
        const Rgb old{double(int(red[i])), double(int(green[i])), double(int(blue[i]))};
        Hsv hsv = inlined::rgbToHsv(old);
        hsv.value = lesser(hsv.value * k, 100.0);
        const Rgb exposed = inlined::hsvToRgb(hsv);
        const double m = inlined::shareOfFull(double(int(mask[i])));
        red[i] = mix(old.red, exposed.red, m);
        green[i] = mix(old.green, exposed.green, m);
        blue[i] = mix(old.blue, exposed.blue, m);
    }
}
} // namespace

namespace KERNEL_NAMESPACE
{
void exposeValueSpan(const MixSpan &span, double k)
{
    inlined::overBlocks(span, [k](const MixSpan &block, inlined::Weight)
                                  KESTRANE_INLINE_LAMBDA { exposeBlock(block, k); });
}
} // namespace KERNEL_NAMESPACE
