// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

class image;

/// Effects that make a new picture out of a layer's shape (its alpha) or its relief (its
/// luma). The result is an atomic image without a serial, of the layer's size grown by what
/// the effect needs (as far as an image can be large), with xOffset and yOffset set so that
/// it lies right beside the layer in the stack, with the layer mode that it is meant for,
/// and named after it with a tag. Numbers out of range are limited to it. Null if memory is
/// short. The caller owns the result.

struct ShadowSettings {
    int xShift = 12, yShift = 12; ///< samples, -2000 to 2000
    int radius = 12;              ///< how far the blur reaches out and in, 0 to 500 samples
    double strength = 0.7;        ///< 0 to 1: opacity of the darkest place
    uint16_t red = 0, green = 0, blue = 0;
};
/// "[shadow]", mode "Multiply", to lie below the layer: the blurred shape in one colour.
image *makeShadow(const image &layer, const ShadowSettings &settings);

struct GlowSettings {
    int radius = 24;       ///< how far the blur reaches out and in, 0 to 500 samples
    double strength = 0.8; ///< 0 to 1
    uint16_t red = 65535, green = 65535, blue = 40000;
};
/// "[glow]", mode "Multiply", to lie below the layer: as the shadow, unshifted.
image *makeGlow(const image &layer, const GlowSettings &settings);

struct ReliefSettings {
    double angle = 135.0;  ///< where the light comes from, degrees counter-clockwise from the right
    int depth = 4;         ///< samples from a place to each of the heights compared, 1 to 100
    double strength = 1.0; ///< 0 to 4
};
/// "[emboss]", mode "AddGrey", to lie above the layer: light and shade of its luma as a
/// height, around the middle grey 32768, with the layer's alpha.
///     n = 32768 + strength * (height away from the light - height towards it), limited
/// A neighbour counts by its alpha, so that colour hidden by transparency casts nothing.
image *makeEmboss(const image &layer, const ReliefSettings &settings);
/// "[punch]", mode "AddGrey", to lie above the layer: light and shade along the rim of its
/// shape, as if it were cut into what lies below. Its alpha is the shape spread by the
/// depth along the light, to where there is light or shade.
image *makePunch(const image &layer, const ReliefSettings &settings);
