// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/image.h"
#include "operators/pipeline/linearmix_kernels.h"

#include <functional>

/// Red, green and blue become min(k * sample, 65535), mixed in by the mask.
/// `k` is limited to 0 to 1000, so that no product leaves the whole numbers.
void mixScaled(image *target, double k);

/// Red, green and blue become 65535 - sample, mixed in by the mask.
void mixComplement(image *target);

/// Calls a kernel for spans that together hold every pixel of the image, on all cores.
/// Nothing for an image without planes.
void overSpans(image *target, const std::function<void(const MixSpan &)> &kernel);
