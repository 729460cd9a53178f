// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/filter/yrbconvert_kernels.h"

#include "core/colour_inline.h"

namespace
{
/// convert(a, b, c) gives the three new samples of a pixel as doubles within their range.
template <class Convert>
KESTRANE_ALWAYS_INLINE void convertSamples(const MixSpan &span, const Convert &convert)
{
    uint16_t *__restrict__ first = span.red;
    uint16_t *__restrict__ second = span.green;
    uint16_t *__restrict__ third = span.blue;
    for (ptrdiff_t i = 0; i < span.count; ++i) {
        const auto [a, b, c] =
            convert(double(int(first[i])), double(int(second[i])), double(int(third[i])));
        first[i] = uint16_t(int(a));
        second[i] = uint16_t(int(b));
        third[i] = uint16_t(int(c));
    }
}
} // namespace

namespace KERNEL_NAMESPACE
{
void toYrbSpan(const MixSpan &span)
{
    convertSamples(span, [](double red, double green, double blue) KESTRANE_INLINE_LAMBDA {
        return inlined::rgbToYrb({red, green, blue});
    });
}

void fromYrbSpan(const MixSpan &span)
{
    convertSamples(span, [](double y, double r, double b) KESTRANE_INLINE_LAMBDA {
        return inlined::yrbToRgb({y, r, b});
    });
}
} // namespace KERNEL_NAMESPACE
