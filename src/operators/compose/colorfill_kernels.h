// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/colour.h"
#include "operators/pipeline/blendspan_kernels.h"

/// Mixes one colour into the samples of some mask. Unless the pass weighs by alpha, the mask
/// word is added to alpha too, up to 65535.
DECLARE_KERNEL(void, fillSpan, (const MixSpan &span, const BlendPass &pass, const Rgb &colour))
