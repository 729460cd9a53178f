// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/colour.h"
#include "operators/pipeline/blendspan_kernels.h"

/// The saturation of each pixel, as hue, saturation and lightness have it, times `factor`, up
/// to 100.
DECLARE_KERNEL(void, saturateSpan, (const MixSpan &span, const BlendPass &pass, double factor))

/// The hue of each pixel plus `shift` degrees, which are within one turn.
DECLARE_KERNEL(void, turnHueSpan, (const MixSpan &span, const BlendPass &pass, double shift))

/// What Colorize gives to each pixel.
struct Tint {
    double hue, saturation;
    bool setsSaturation; ///< else each pixel keeps its own
    double mix;          ///< share of the result, 0 to 1; the rest is the old sample
};
DECLARE_KERNEL(void, tintSpan, (const MixSpan &span, const BlendPass &pass, const Tint &tint))
