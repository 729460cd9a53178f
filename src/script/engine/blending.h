// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/colour.h"
#include "operators/pipeline/colorblending.h"

#include <cmath>

/// Mixes by the blend mode, or as the first of the modes where nobody has one: `over` goes into
/// `under` by the share `t`.
inline double blendSample(colorblending *blending, double under, double over, double t)
{
    if (blending)
        return blending->blend(under, over, t);
    return std::sqrt((1.0 - t) * under * under + t * over * over);
}

/// Whether a mode counts channels or draws numbers: its pixels have to come in order, and on one
/// thread.
inline bool blendsInOrder(const colorblending *blending)
{
    return blending && blending->blendMode > kBlendDivide;
}

/// The same of a whole pixel. It begins with the first channel whatever was mixed before: a
/// lone sample would else leave the colours of all later pixels exchanged.
inline Rgb blendPixel(colorblending *blending, const Rgb &under, const Rgb &over, double t)
{
    if (blendsInOrder(blending))
        blending->channel = 0;
    Rgb mixed;
    mixed.red = blendSample(blending, under.red, over.red, t);
    mixed.green = blendSample(blending, under.green, over.green, t);
    mixed.blue = blendSample(blending, under.blue, over.blue, t);
    return mixed;
}
