// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/blendcurve_kernels.h"

namespace KERNEL_NAMESPACE
{
void hillRow(const HillRow &row, int count, double *out)
{
    const HillRow hill = row; // a copy, which a store to `out` cannot change
    const double dy = hill.dy;
    for (int i = 0; i < count; ++i) {
        const double dx = hill.dx + i;
        out[i] = hill.map(1.0 - __builtin_sqrt(dx * dx + dy * dy) / hill.radius);
    }
}

void shapeWords(uint16_t *words, const double *factor, int count)
{
    for (int i = 0; i < count; ++i)
        words[i] = uint16_t(int(double(int(words[i])) * factor[i]));
}
} // namespace KERNEL_NAMESPACE
