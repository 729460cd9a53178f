// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/filter/monochrome_kernels.h"

#include "operators/pipeline/linearmix_inline.h"

#include <initializer_list>

namespace
{
/// Writes at most inlined::kBlock greys.
void greysOf(const MixSpan &block, const GreyWeights &weights, uint16_t *__restrict__ greys)
{
    const uint16_t *__restrict__ red = block.red;
    const uint16_t *__restrict__ green = block.green;
    const uint16_t *__restrict__ blue = block.blue;
    const double wr = weights.red, wg = weights.green, wb = weights.blue;
    const double sum = wr + wg + wb;
    for (ptrdiff_t i = 0; i < block.count; ++i) {
        const double weighted =
            wr * double(int(red[i])) + wg * double(int(green[i])) + wb * double(int(blue[i]));
        const int grey = int(weighted / sum + 0.5);
        greys[i] = uint16_t(grey < 65535 ? grey : 65535);
    }
}

void mixGreys(const MixSpan &block, const uint16_t *__restrict__ greys)
{
    uint16_t *__restrict__ red = block.red;
    uint16_t *__restrict__ green = block.green;
    uint16_t *__restrict__ blue = block.blue;
    const uint16_t *__restrict__ mask = block.mask;
    for (ptrdiff_t i = 0; i < block.count; ++i) {
        const double m = inlined::shareOfFull(double(int(mask[i])));
        const double grey = double(int(greys[i]));
        red[i] = inlined::mixedLinearly(red[i], grey, m);
        green[i] = inlined::mixedLinearly(green[i], grey, m);
        blue[i] = inlined::mixedLinearly(blue[i], grey, m);
    }
}
} // namespace

namespace KERNEL_NAMESPACE
{
void greySpan(const MixSpan &span, const GreyWeights &weights)
{
    inlined::overBlocks(
        span, [&](const MixSpan &block, inlined::Weight weight) KESTRANE_INLINE_LAMBDA {
            uint16_t greys[inlined::kBlock];
            greysOf(block, weights, greys);
            if (weight != inlined::Weight::Full) {
                mixGreys(block, greys);
                return;
            }
            // Under a full mask the mix is old * 0 + grey * 1.
            for (uint16_t *plane : {block.red, block.green, block.blue})
                __builtin_memcpy(plane, greys, size_t(block.count) * sizeof(uint16_t));
        });
}
} // namespace KERNEL_NAMESPACE
