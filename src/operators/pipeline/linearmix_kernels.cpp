// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/pipeline/linearmix_kernels.h"

#include "operators/pipeline/linearmix_inline.h"

namespace
{
constexpr double kFull = 65535.0;

struct Scaled {
    double k;
    /// The limit is a whole number, so it may as well be applied after the truncation,
    /// where the vector units pack and limit in one step.
    uint16_t store(uint16_t c) const
    {
        const int scaled = int(k * double(int(c)));
        return uint16_t(scaled < 65535 ? scaled : 65535);
    }
    double result(double c) const { return k * c < kFull ? k * c : kFull; }
};

struct Complement {
    uint16_t store(uint16_t c) const { return uint16_t(65535 - c); }
    double result(double c) const { return kFull - c; }
};

template <class Rule>
void mixSamples(const Rule &rule, const MixSpan &span)
{
    uint16_t *__restrict__ red = span.red;
    uint16_t *__restrict__ green = span.green;
    uint16_t *__restrict__ blue = span.blue;
    const uint16_t *__restrict__ mask = span.mask;
    const auto mix = [&rule](uint16_t c, double m) KESTRANE_INLINE_LAMBDA {
        return inlined::mixedLinearly(c, rule.result(double(int(c))), m);
    };
    for (ptrdiff_t i = 0; i < span.count; ++i) {
        const double m = inlined::shareOfFull(double(int(mask[i])));
        red[i] = mix(red[i], m);
        green[i] = mix(green[i], m);
        blue[i] = mix(blue[i], m);
    }
}

template <class Rule>
void storeSamples(const Rule &rule, uint16_t *__restrict__ plane, ptrdiff_t count)
{
    for (ptrdiff_t i = 0; i < count; ++i)
        plane[i] = rule.store(plane[i]);
}

/// Under a mask of 65535 the division gives exactly 1 and the mix is c * 0 + result * 1,
/// which is the result itself: storing it gives the same bits.
template <class Rule>
void mixSpan(const Rule &rule, const MixSpan &span)
{
    inlined::overBlocks(span, [&rule](const MixSpan &block, inlined::Weight weight)
                                  KESTRANE_INLINE_LAMBDA {
                                      if (weight == inlined::Weight::Soft) {
                                          mixSamples(rule, block);
                                          return;
                                      }
                                      storeSamples(rule, block.red, block.count);
                                      storeSamples(rule, block.green, block.count);
                                      storeSamples(rule, block.blue, block.count);
                                  });
}
} // namespace

namespace KERNEL_NAMESPACE
{
void scaleSpan(const MixSpan &span, double k)
{
    mixSpan(Scaled{k}, span);
}

void complementSpan(const MixSpan &span)
{
    mixSpan(Complement{}, span);
}
} // namespace KERNEL_NAMESPACE
