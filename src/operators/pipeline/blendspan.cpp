// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/pipeline/blendspan.h"

#include "core/workspace.h"
#include "operators/pipeline/colorblending.h"
#include "operators/pipeline/linearmix.h"

namespace
{
bool drawsNumbers(int mode)
{
    return mode == kBlendDissolve || mode == kBlendSoftDissolve;
}

uint16_t blended(colorblending *blending, uint16_t old, double result, double m, bool reversed)
{
    return uint16_t(reversed ? blending->blend(result, old, 1.0 - m)
                             : blending->blend(old, result, m));
}
} // namespace

BlendPass blendPass(BlendOrder order, bool skipsUnseen)
{
    BlendPass pass;
    pass.reversed = order == BlendOrder::ResultFirst;
    pass.skipsUnseen = skipsUnseen;
    pass.blending = colorblending::current();
    const Workspace *space = workspace();
    if (!space)
        return pass;
    pass.mode = space->blendMode;
    const bool fore = pass.mode == kBlendForeground;
    pass.colour[0] = fore ? space->foreRed : space->backRed;
    pass.colour[1] = fore ? space->foreGreen : space->backGreen;
    pass.colour[2] = fore ? space->foreBlue : space->backBlue;
    if (drawsNumbers(pass.mode) && !pass.blending)
        pass.mode = kBlendMatte; // nobody draws
    return pass;
}

void overBlendSpans(image *target, const BlendPass &pass,
                    const std::function<void(const MixSpan &)> &kernel)
{
    if (!drawsNumbers(pass.mode)) {
        overSpans(target, kernel);
        return;
    }
    if (!target || !target->valid())
        return;
    pass.blending->channel = 0; // a lone sample before must not part the colours of a pixel
    kernel(MixSpan{target->red, target->green, target->blue, target->gmask,
                   ptrdiff_t(target->sampleCount()), target->alpha});
}

void blendInOrder(const MixSpan &block, const ResultBlock &results, const BlendPass &pass)
{
    for (ptrdiff_t i = 0; i < block.count; ++i) {
        if (pass.skipsUnseen && (block.alpha[i] == 0 || block.mask[i] == 0))
            continue;
        double m = block.mask[i] / kWhite;
        if (pass.throughAlpha)
            m = block.alpha[i] / kWhite * m;
        colorblending *mixer = pass.blending;
        block.red[i] = blended(mixer, block.red[i], results.red[i], m, pass.reversed);
        block.green[i] = blended(mixer, block.green[i], results.green[i], m, pass.reversed);
        block.blue[i] = blended(mixer, block.blue[i], results.blue[i], m, pass.reversed);
    }
}
