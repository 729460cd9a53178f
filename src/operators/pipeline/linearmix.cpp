// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/pipeline/linearmix.h"

#include "core/rows.h"

#include <algorithm>

void overSpans(image *target, const std::function<void(const MixSpan &)> &kernel)
{
    if (!target || !target->valid())
        return;
    // Rows have no padding, so a band of them is one span.
    parallelRows(target->height, target->width, [&](int first, int end) {
        const ptrdiff_t start = ptrdiff_t(first) * target->width;
        kernel(MixSpan{target->red + start, target->green + start, target->blue + start,
                       target->gmask + start, ptrdiff_t(end - first) * target->width,
                       target->alpha + start});
    });
}

void mixScaled(image *target, double k)
{
    const double factor = !(k > 0.0) ? 0.0 : std::min(k, 1000.0);
    overSpans(target, [factor](const MixSpan &span) { KERNEL_DISPATCH(scaleSpan, span, factor); });
}

void mixComplement(image *target)
{
    overSpans(target, [](const MixSpan &span) { KERNEL_DISPATCH(complementSpan, span); });
}
