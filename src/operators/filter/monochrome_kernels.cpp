// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/filter/monochrome_kernels.h"

#include "operators/pipeline/linearmix_inline.h"

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

void mixPlane(uint16_t *__restrict__ plane, const uint16_t *__restrict__ greys,
              const uint16_t *__restrict__ mask, ptrdiff_t count)
{
    for (ptrdiff_t i = 0; i < count; ++i) {
        const double m = inlined::shareOfFull(double(int(mask[i])));
        plane[i] = inlined::mixedLinearly(plane[i], double(int(greys[i])), m);
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
            uint16_t *const planes[] = {block.red, block.green, block.blue};
            for (uint16_t *plane : planes) {
                // Under a full mask the mix is old * 0 + grey * 1.
                if (weight == inlined::Weight::Full)
                    __builtin_memcpy(plane, greys, size_t(block.count) * sizeof(uint16_t));
                else
                    mixPlane(plane, greys, block.mask, block.count);
            }
        });
}
} // namespace KERNEL_NAMESPACE
