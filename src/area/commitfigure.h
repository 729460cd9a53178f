// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "area/areastate.h"

#include <functional>

class image;

/// A finished figure of an area tool, in samples of the image that takes it. The points of a
/// polygon, a pencil stroke or a curve are those of the shared list, closed as the tool does it.
struct ToolFigure {
    int tool = 0;
    bool constrained = false; ///< a square or a circle
    /// Corners of a rectangle; of an ellipse the middle and a place as far away as the radii
    /// reach; of the wand the sample that was clicked, in `first`.
    AreaPoint first = {0, 0}, last = {0, 0};
    AreaPoint shapeShift = {0, 0}; ///< from the P-Shape's place to this image's
    /// Makes the wand's mask from one that is at hand; empty: wandSelect does.
    std::function<bool()> wand;

    /// Whether there is nothing that could be selected, which leaves everything as it is.
    bool empty() const;
    /// Whether its points are those of the shared list.
    bool drawsList() const;
};

/// What became of a figure.
struct FigureResult {
    bool made = false; ///< false: the selection is as it was
    bool nothingToOutline = false;
    bool shortOfMemory = false; ///< for smoothing or outline, which are then left out
};

/// Makes the figure the selection: produced, smoothed and outlined as the settings say for its
/// tool, and remembered as the last selection. Joining it with the one before is the caller's.
FigureResult commitFigure(image *img, const ToolFigure &figure);
