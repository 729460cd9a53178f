// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/pipeline/blendspan_kernels.h"

/// What a sample of alpha becomes, before it is mixed in.
enum class AlphaRule {
    Set,     ///< amount x 257
    Invert,  ///< 65535 - alpha
    Average, ///< of the three channels, rounded
    Luma,    ///< 0.3 R + 0.59 G + 0.11 B, rounded
    FromRed,
    FromGreen,
    FromBlue,
    Harden ///< slope 255 / (255 - amount) about the middle; at 255 black or white, rounded
};

/// Mixes the new alpha in by the mask: the root of the weighted squares, truncated.
DECLARE_KERNEL(void, mixAlphaSpan, (const MixSpan &span, AlphaRule rule, int amount))

/// Mixes a grey picture of alpha into the channels by the mode of the pass.
DECLARE_KERNEL(void, alphaToRgbSpan, (const MixSpan &span, const BlendPass &pass))
