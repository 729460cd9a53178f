// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/compose/colorfill_kernels.h"

#include "operators/pipeline/blendspan_inline.h"

namespace
{
/// Where nothing is selected, white stands for the colour: it is what Divide, the one mode in
/// which a result counts at no weight too, leaves a sample as it is by.
void fillResults(const uint16_t *__restrict__ mask, double colour, double *__restrict__ results,
                 ptrdiff_t count)
{
    for (ptrdiff_t i = 0; i < count; ++i)
        results[i] = mask[i] == 0 ? 65535.0 : colour;
}

void addMask(uint16_t *__restrict__ alpha, const uint16_t *__restrict__ mask, ptrdiff_t count)
{
    for (ptrdiff_t i = 0; i < count; ++i) {
        const auto room = uint16_t(65535 - mask[i]);
        alpha[i] = uint16_t((alpha[i] < room ? alpha[i] : room) + mask[i]);
    }
}
} // namespace

namespace KERNEL_NAMESPACE
{
void fillSpan(const MixSpan &span, const BlendPass &pass, const Rgb &colour)
{
    inlined::overBlocks(span, [&](const MixSpan &block, inlined::Weight) KESTRANE_INLINE_LAMBDA {
        ResultBlock results;
        results.wholeNumbers = true;
        fillResults(block.mask, colour.red, results.red, block.count);
        fillResults(block.mask, colour.green, results.green, block.count);
        fillResults(block.mask, colour.blue, results.blue, block.count);
        blendBlock(block, results, pass);
        if (!pass.throughAlpha)
            addMask(block.alpha, block.mask, block.count);
    });
}
} // namespace KERNEL_NAMESPACE
