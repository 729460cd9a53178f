// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/cpu.h"

#include <cstddef>
#include <cstdint>

/// A run of samples in the three planes that change, and their mask words.
struct MixSpan {
    uint16_t *red, *green, *blue;
    const uint16_t *mask;
    ptrdiff_t count;
};

DECLARE_KERNEL(void, scaleSpan, (const MixSpan &span, double k))
DECLARE_KERNEL(void, complementSpan, (const MixSpan &span))
