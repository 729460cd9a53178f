// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/pipeline/linearmix_kernels.h"

class colorblending;

/// How results of an operator go into the planes: the Blend Mode of one Apply, and what else
/// stays the same for all of its samples. Make one with blendPass().
struct BlendPass {
    int mode = 0;
    bool reversed = false;     ///< blend(result, old, 1 - m) instead of blend(old, result, m)
    bool skipsUnseen = false;  ///< samples without alpha or mask stay as they are
    bool throughAlpha = false; ///< the weight is alpha / 65535 x m instead of m
    double colour[3] = {};     ///< what modes 9 and 10 take instead of the new sample
    colorblending *blending = nullptr;

    /// Whether samples of mask 0 come out as they were whatever the result is.
    [[gnu::always_inline]] bool keepsUnselected() const
    {
        constexpr int matte = 0, divide = 6, dissolve = 7;
        return skipsUnseen || mode == matte || mode == dissolve || (!reversed && mode != divide);
    }
};

/// Results for one block of samples, before they are mixed in.
struct ResultBlock {
    static constexpr int kSize = 256;
    double red[kSize], green[kSize], blue[kSize];
    bool wholeNumbers = false; ///< set where all of them are: some modes then are faster
};

/// Mixes results into at most ResultBlock::kSize samples by the mode of the pass.
DECLARE_KERNEL(void, blendBlock,
               (const MixSpan &block, const ResultBlock &results, const BlendPass &pass))

/// The three look-up tables of 65536 entries, indexed by the old sample of each channel.
struct LookupTables {
    const uint16_t *red, *green, *blue;
};
DECLARE_KERNEL(void, lookupSpan,
               (const MixSpan &span, const LookupTables &tables, const BlendPass &pass))
/// One table for the value of each pixel, indexed by its largest channel and giving the new
/// value on the scale of 65535.
DECLARE_KERNEL(void, lookupValueSpan,
               (const MixSpan &span, const uint16_t *table, const BlendPass &pass))

/// What blendBlock does in the modes that draw random numbers, sample by sample in order.
void blendInOrder(const MixSpan &block, const ResultBlock &results, const BlendPass &pass);
