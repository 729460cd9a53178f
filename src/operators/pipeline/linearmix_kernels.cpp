// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/pipeline/linearmix_kernels.h"

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

/// The mix as it is defined. Both inputs lie within 0 to 65535 and the weights add up to
/// 1, give or take a rounding, so the truncated value always fits a sample.
template <class Rule>
void mixSamples(const Rule &rule, const MixSpan &span, ptrdiff_t count)
{
    uint16_t *__restrict__ red = span.red;
    uint16_t *__restrict__ green = span.green;
    uint16_t *__restrict__ blue = span.blue;
    const uint16_t *__restrict__ mask = span.mask;
    const auto mix = [&rule](uint16_t c, double m) {
        const double old = double(int(c));
        return uint16_t(int(old * (1.0 - m) + rule.result(old) * m));
    };
    for (ptrdiff_t i = 0; i < count; ++i) {
        const double m = double(int(mask[i])) / kFull;
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

enum class Weight { None, Full, Soft };

Weight weightOf(const uint16_t *mask, ptrdiff_t count)
{
    uint16_t any = 0;
    uint16_t all = 65535;
    for (ptrdiff_t i = 0; i < count; ++i) {
        any |= mask[i];
        all &= mask[i];
    }
    return any == 0 ? Weight::None : all == 65535 ? Weight::Full : Weight::Soft;
}

/// One block. Under a mask of 0 the mix is c * 1 + result * 0, and under 65535, where the
/// division gives exactly 1, it is c * 0 + result * 1: with finite results these are c and
/// the result themselves, so keeping and storing give the same bits as mixing.
template <class Rule>
void mixBlock(const Rule &rule, const MixSpan &span, ptrdiff_t count)
{
    switch (weightOf(span.mask, count)) {
    case Weight::None:
        return;
    case Weight::Full:
        storeSamples(rule, span.red, count);
        storeSamples(rule, span.green, count);
        storeSamples(rule, span.blue, count);
        return;
    case Weight::Soft:
        mixSamples(rule, span, count);
    }
}

template <class Rule>
void mixSpan(const Rule &rule, MixSpan span)
{
    // Long enough for full vectors, short enough to find the runs of a real selection.
    constexpr ptrdiff_t kBlock = 256;
    while (span.count > 0) {
        const ptrdiff_t count = span.count < kBlock ? span.count : kBlock;
        mixBlock(rule, span, count);
        span = {span.red + count, span.green + count, span.blue + count, span.mask + count,
                span.count - count};
    }
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
