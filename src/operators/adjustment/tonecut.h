// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/image.h"

#include <cstdint>
#include <optional>

/// Lowest and highest sample of the three channels.
struct ToneRange {
    int low, high;
};

/// The tone range of the statistics that Sample keeps. With `gather` those of the target are
/// taken instead, of its samples with a mask above `maskAbove` (above 0: whatever their alpha), and
/// what Sample keeps stays as it is; a target without such samples has no tones of its own, so the
/// kept ones count.
ToneRange toneRange(const image *target, bool gather, uint16_t maskAbove = 0);

/// How Floor and Ceiling choose their cut from a tone range.
enum ToneCut { kCutMinimum, kCutAverage, kCutMaximum };

/// 0 to 65535; nothing for an unknown choice.
std::optional<int> toneCut(const ToneRange &range, int choice);
