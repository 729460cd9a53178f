// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/image.h"
#include "operators/pipeline/blendspan_kernels.h"

#include <functional>

/// Which of the two operands of a blend the old sample is. The order is part of each
/// operator's result: only under Matte do the two agree.
enum class BlendOrder { OldFirst, ResultFirst };

/// The Blend Mode as the workspace has it now. `skipsUnseen`: samples of no alpha or no mask
/// are passed over.
BlendPass blendPass(BlendOrder order, bool skipsUnseen = false);

/// Calls a kernel for spans that together hold every pixel of the image: on all cores, or, in
/// the modes that draw random numbers, in order on this thread. Nothing for an image without
/// planes.
void overBlendSpans(image *target, const BlendPass &pass,
                    const std::function<void(const MixSpan &)> &kernel);
