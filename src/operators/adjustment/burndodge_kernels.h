// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/pipeline/blendspan_kernels.h"

/// Every sample less `depth`, down to 0, mixed in by the mode of the pass.
DECLARE_KERNEL(void, burnSpan, (const MixSpan &span, const BlendPass &pass, int depth))

/// Every sample but 0 plus `height`, up to 65535, mixed in linearly. This is
/// old + height * old / max(1, old): the product is exact in doubles, and so is its quotient.
DECLARE_KERNEL(void, dodgeSpan, (const MixSpan &span, int height))
