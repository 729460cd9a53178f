// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/cpu.h"

#include <cstdint>

/// Where each output column of a bilinear scale reads: the left one of two neighbouring
/// columns, and the share of the right one. In the last column of a plane the share is 0,
/// but the sample after it is read all the same: the spare rows make that safe.
struct ScaleColumns {
    const int32_t *left;
    const double *share;
    int count;
};

/// One output row of one plane from two source rows; `share` is that of the lower row.
DECLARE_KERNEL(void, bilinearRow,
               (const uint16_t *upper, const uint16_t *lower, const ScaleColumns &columns,
                double share, uint16_t *out))
