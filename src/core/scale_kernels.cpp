// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/scale_kernels.h"

#include "core/bilinear_inline.h"

#include <bit>

namespace
{
/// Two neighbouring samples, loaded at once from any sample's place.
typedef uint32_t SamplePair __attribute__((aligned(2), may_alias));

constexpr bool kLittle = std::endian::native == std::endian::little;

inline uint32_t pairAt(const uint16_t *sample)
{
    return *reinterpret_cast<const SamplePair *>(sample);
}

inline int32_t first(uint32_t pair)
{
    return int32_t(kLittle ? pair & 0xFFFF : pair >> 16);
}

inline int32_t second(uint32_t pair)
{
    return int32_t(kLittle ? pair >> 16 : pair & 0xFFFF);
}

/// Apart from the entry point because only parameters can promise the compiler that the
/// output overlaps nothing, without which it builds no vector code.
void mixRow(const uint16_t *upper, const uint16_t *lower, const int32_t *left, const double *shares,
            int count, double share, uint16_t *__restrict out)
{
    for (int x = 0; x < count; ++x) {
        const uint32_t u = pairAt(upper + left[x]), l = pairAt(lower + left[x]);
        out[x] = uint16_t(
            int32_t(bilinearMix(first(u), second(u), first(l), second(l), shares[x], share)));
    }
}
} // namespace

namespace KERNEL_NAMESPACE
{
void bilinearRow(const uint16_t *upper, const uint16_t *lower, const ScaleColumns &columns,
                 double share, uint16_t *out)
{
    mixRow(upper, lower, columns.left, columns.share, columns.count, share, out);
}
} // namespace KERNEL_NAMESPACE
