// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/pipeline/linearmix.h"

#include "core/rows.h"
#include "operators/pipeline/linearmix_kernels.h"

#include <algorithm>

namespace
{
/// Rows have no padding, so a band of them is one span.
template <class Kernel>
void overBands(image *target, const Kernel &kernel)
{
    if (!target || !target->valid())
        return;
    parallelRows(target->height, target->width, [&](int first, int end) {
        const ptrdiff_t start = ptrdiff_t(first) * target->width;
        kernel(MixSpan{target->red + start, target->green + start, target->blue + start,
                       target->gmask + start, ptrdiff_t(end - first) * target->width});
    });
}
} // namespace

void mixScaled(image *target, double k)
{
    const double factor = !(k > 0.0) ? 0.0 : std::min(k, 1000.0);
    overBands(target, [factor](const MixSpan &span) { KERNEL_DISPATCH(scaleSpan, span, factor); });
}

void mixComplement(image *target)
{
    overBands(target, [](const MixSpan &span) { KERNEL_DISPATCH(complementSpan, span); });
}
