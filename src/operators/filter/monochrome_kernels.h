// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/pipeline/linearmix_kernels.h"

/// Weights of the channels in a grey; not all 0.
struct GreyWeights {
    double red, green, blue;
};

/// Each pixel becomes the grey of its weighted mean, rounded with halves upwards and mixed in
/// linearly.
DECLARE_KERNEL(void, greySpan, (const MixSpan &span, const GreyWeights &weights))
