// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/pipeline/linearmix_kernels.h"

/// Multiplies the value of each pixel by `k`, up to 100, hue and saturation kept, and
/// mixes the result in linearly by the mask.
DECLARE_KERNEL(void, exposeValueSpan, (const MixSpan &span, double k))
