// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/cpu.h"

#include <cstdint>

/// The colours that a wand takes: from `low` to `low` + `span` in each of red, green and
/// blue, with an alpha of `leastAlpha` up. Planes start at the first sample to test.
struct ColourRange {
    const uint16_t *plane[4];
    uint16_t low[3], span[3];
    uint16_t leastAlpha;
};

/// Writes 65535 for a sample within the range, else 0.
DECLARE_KERNEL(void, matchWords, (const ColourRange &range, int count, uint16_t *words))
/// The same as bits, 64 samples in each entry, the first one in bit 0; bits past `count` are 0.
DECLARE_KERNEL(void, matchBits, (const ColourRange &range, int count, uint64_t *bits))
/// Turns such bits into words of 65535 and 0.
DECLARE_KERNEL(void, spreadBits, (const uint64_t *bits, int count, uint16_t *words))
