// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/filter/rgbrotate_kernels.h"

namespace
{
constexpr double kFull = 65535.0;
} // namespace

namespace KERNEL_NAMESPACE
{
void mixShifted(const uint16_t *__restrict__ old, const uint16_t *__restrict__ shifted,
                const uint16_t *__restrict__ mask, uint16_t *__restrict__ out, ptrdiff_t count)
{
    for (ptrdiff_t i = 0; i < count; ++i) {
        const double m = double(int(mask[i])) / kFull;
        out[i] = uint16_t(int(double(int(old[i])) * (1.0 - m) + double(int(shifted[i])) * m));
    }
}
} // namespace KERNEL_NAMESPACE
