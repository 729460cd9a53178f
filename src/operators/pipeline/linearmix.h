// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/image.h"

#include <cstdint>

/// The plain mix of an operator's result into a sample at mask weight `m`, 0 to 1: some
/// operators use it in place of the Blend Mode. The caller truncates.
inline double mixLinear(double c, double result, double m)
{
    return c * (1.0 - m) + result * m;
}

/// Red, green and blue become min(k * sample, 65535), mixed in by the mask.
/// `k` is limited to 0 to 1000, so that no product leaves the whole numbers.
void mixScaled(image *target, double k);

/// Red, green and blue become 65535 - sample, mixed in by the mask.
void mixComplement(image *target);
