// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/cpu.h"

#include <cstddef>
#include <cstdint>

/// A run of samples in the planes that change, with their alpha and mask words.
struct MixSpan {
    uint16_t *red, *green, *blue;
    const uint16_t *mask;
    ptrdiff_t count;
    uint16_t *alpha;

    /// The part of it from sample `at` on.
    [[gnu::always_inline]] MixSpan part(ptrdiff_t at, ptrdiff_t length) const
    {
        return {red + at, green + at, blue + at, mask + at, length, alpha + at};
    }
};

DECLARE_KERNEL(void, scaleSpan, (const MixSpan &span, double k))
DECLARE_KERNEL(void, complementSpan, (const MixSpan &span))
