// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/compose_kernels.h"

#include <cstdint>
#include <vector>

class image;

/// A layer, or the image of a closed group, as it stands in a destination.
struct PlacedLayer {
    const image *img = nullptr;
    int64_t left = 0, top = 0; ///< of its first sample, in samples of the destination
    bool yrb = false;          ///< its planes hold the YRB encoding
    /// Where samples do not come from their own place: turned about the centre of rotation
    /// by an angle of this cosine and negated sine, then shifted by a fraction.
    bool moved = false;
    double cosine = 1, sine = 0;
};

/// One thing that happens to a destination. Steps work on each row alone, so that a row
/// goes through all of them while it is in the processor's cache.
struct ComposeStep {
    enum class Kind { Blend, Average, Median, ClearOutside } kind = Kind::Blend;
    PlacedLayer layer;
    std::vector<PlacedLayer> sources; ///< what is averaged, or sorted for the median
    SpanFunctions blend;
    int mode = 0;
    double opacity = 1, factor = 1, tolerance = 0;
};

/// Runs the steps on all rows, in parallel. With `clearFirst` the four planes start from
/// zero, whatever stands in them.
void runSteps(const std::vector<ComposeStep> &steps, image *destination, bool clearFirst);

/// Moves the samples of the destination by the displacements of a warp layer; `before` is
/// a copy of the destination's colour planes and alpha.
void warpRows(const PlacedLayer &field, const image &before, image *destination);
