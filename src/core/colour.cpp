// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/colour.h"

#include "core/colour_inline.h"

Hsv rgbToHsv(Rgb rgb)
{
    return inlined::rgbToHsv(rgb);
}

Rgb hsvToRgb(Hsv hsv)
{
    return inlined::hsvToRgb(hsv);
}

Hsl rgbToHsl(Rgb rgb)
{
    return inlined::rgbToHsl(rgb);
}

Rgb hslToRgb(Hsl hsl)
{
    return inlined::hslToRgb(hsl);
}

Yrb rgbToYrb(Rgb rgb)
{
    return inlined::rgbToYrb(rgb);
}

Rgb yrbToRgb(Yrb yrb)
{
    return inlined::yrbToRgb(yrb);
}
