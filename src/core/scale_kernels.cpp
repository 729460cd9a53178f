// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/scale_kernels.h"

#include "core/bilinear_inline.h"

namespace
{
/// Columns whose samples are gathered before any is mixed: the gather stays scalar, and
/// the arithmetic on the gathered arrays becomes vector code.
constexpr int kBlock = 128;

struct Gathered {
    int32_t a[kBlock], b[kBlock], c[kBlock], d[kBlock];
};

void mixBlock(const Gathered &in, const double *share, double rowShare, int count, uint16_t *out)
{
    for (int i = 0; i < count; ++i)
        out[i] =
            uint16_t(int32_t(bilinearMix(in.a[i], in.b[i], in.c[i], in.d[i], share[i], rowShare)));
}
} // namespace

namespace KERNEL_NAMESPACE
{
void bilinearRow(const uint16_t *upper, const uint16_t *lower, const ScaleColumns &columns,
                 double share, uint16_t *out)
{
    Gathered samples;
    for (int start = 0; start < columns.count; start += kBlock) {
        const int count = columns.count - start < kBlock ? columns.count - start : kBlock;
        const int32_t *left = columns.left + start;
        const int32_t *right = columns.right + start;
        for (int i = 0; i < count; ++i) {
            samples.a[i] = upper[left[i]];
            samples.b[i] = upper[right[i]];
            samples.c[i] = lower[left[i]];
            samples.d[i] = lower[right[i]];
        }
        mixBlock(samples, columns.share + start, share, count, out + start);
    }
}
} // namespace KERNEL_NAMESPACE
