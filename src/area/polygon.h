// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "area/areastate.h"

#include <cstdint>

class image;

/// Words of a mask without an owner; word (x, y) is words[y * width + x].
struct MaskPlane {
    uint16_t *words;
    int width, height;
};

/// Bresenham's line from (x0, y0) to (x1, y1), both ends included; words outside of the
/// plane are skipped.
void lineMask(uint16_t *buffer, int x0, int y0, int x1, int y1, int width, int height,
              uint16_t value);

/// Draws the figure into a plane of zeros and floods what lies outside of it, so that 65535
/// stands on the line and inside. Settings openFigure and filledFigure hold. False, with the
/// plane as it was, if memory is short.
bool fillPolygon(const MaskPlane &target, const AreaPoint *pts, int count);

/// Rasterises a figure into an image's selection; `pts` null means the shared list, `count` 0
/// its pointCount. With `clear` the selection becomes the figure, else each sample the
/// larger of both. Fewer than 3 points do nothing. The figure becomes the remembered shape
/// unless the active tool is the P-Shape, the centre of an image is set while the operator
/// is Center Selection, and the shared list's count moves into lastPointCount. False, with
/// the selection as it was, if memory is short. Without an image it logs "bailing: no laa".
bool polySelect(image *img, const AreaPoint *pts, int count, bool clear);

/// Sets an image's centre to the middle of its selection if the current operator is Center
/// Selection.
void followSelectionCenter(image *img);
