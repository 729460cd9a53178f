// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/memory.h"

#include <cstddef>
#include <cstdint>

class image;

/// What became of a selection that was to become its outline.
enum class OutlineResult {
    Done,
    Nothing, ///< no sample qualified: the selection is as it was
    NoMemory ///< likewise
};

/// Turns the selection into an outline as the settings outlineExpand, outline8w, edgeOnly and
/// outlinethresh say: of the object that alpha shows within the selection, or of the
/// selection itself.
OutlineResult outlineSelect(image *img);

/// Places of samples in rows from the top, each row from the left.
struct BoundaryPoints {
    struct Point {
        uint16_t x, y;
    };
    Point *points = nullptr; ///< tracked; null if there are none
    size_t count = 0;

    BoundaryPoints() = default;
    ~BoundaryPoints() { upfree(&points); }
    BoundaryPoints(const BoundaryPoints &) = delete;
    BoundaryPoints &operator=(const BoundaryPoints &) = delete;
};

/// Finds the boundary of what is not 0 in a plane: the samples of which at least one of four
/// neighbours, or of all eight, is 0 or lies outside. False without memory.
bool traceBoundary(const uint16_t *plane, int width, int height, bool eightWay,
                   BoundaryPoints *found);
