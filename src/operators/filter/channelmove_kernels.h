// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/pipeline/blendspan_kernels.h"

/// For red, green and blue: the channel (0 to 2) that each takes its samples from.
struct ChannelOrder {
    int red, green, blue;
};

/// Blends the reordered channels in by the mode of the pass.
DECLARE_KERNEL(void, moveChannelsSpan,
               (const MixSpan &span, const ChannelOrder &order, const BlendPass &pass))
