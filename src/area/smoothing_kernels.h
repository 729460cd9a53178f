// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/cpu.h"

#include <cstddef>
#include <cstdint>

/// One tap of a smoothing: where its word lies from the one to smooth, and its weight as a
/// fraction of 2 to the 32.
struct FixedTap {
    ptrdiff_t offset;
    uint32_t weight;
};

/// How a smoothed word joins the old one.
struct SmoothMix {
    double divisor, amount;
};

/// The same where the old word has no share: sums from `firstFull` on become 65535, those
/// below `firstKept` 0, and from the others `less` is taken.
struct SmoothSnap {
    uint16_t firstKept, firstFull, less;
};

/// Sums the whole parts of the weighted words for `count` words in a row.
DECLARE_KERNEL(void, weighWords,
               (const uint16_t *source, const FixedTap *taps, int tapCount, int count,
                uint16_t *sums))
/// Writes sum / divisor x amount + (1 - amount) x old over the old words, with what is nearly
/// 65535 or 0 snapped to it; what is no number becomes 0.
DECLARE_KERNEL(void, mixWords,
               (const SmoothMix &mix, const uint16_t *sums, int count, uint16_t *words))
DECLARE_KERNEL(void, snapWords,
               (const SmoothSnap &snap, const uint16_t *sums, int count, uint16_t *words))
/// The first sample for which sample * weight, truncated, is not what the fixed weight
/// gives; 65536 if there is none.
DECLARE_KERNEL(int, firstMisweighed, (double weight, uint32_t fixedWeight))
