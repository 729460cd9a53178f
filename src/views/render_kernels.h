// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/cpu.h"

#include <cstdint>

/// One repaint, ready for the row kernels. Only the columns `firstColumn` to `endColumn`
/// and rows with a row number of 0 or more show the image; the rest is surround. Of each
/// row the pixels `left` to `right` are written.
struct RenderJob {
    const uint16_t *red, *green, *blue, *alpha;
    int imageWidth;
    const int32_t *columns; ///< image column of each output column that shows the image
    const int32_t *rows;    ///< image row of each output row, -1 outside of the image
    int firstColumn, endColumn;
    int left, right;
    int outWidth;
    uint32_t *out; ///< outWidth pixels a row, 0xffRRGGBB
    uint32_t surround;
    const uint16_t *backdrop[2]; ///< 16-bit grey behind transparency, by checker row phase
    int cell;                    ///< side of a checker square in output pixels
    int rowPhase;                ///< row of the checker that output row 0 shows, not negative
    bool yrb;                    ///< the planes hold the YRB encoding
};

DECLARE_KERNEL(void, renderRows, (const RenderJob &job, int first, int end))
