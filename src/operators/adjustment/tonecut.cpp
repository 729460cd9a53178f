// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/adjustment/tonecut.h"

#include "core/workspace.h"
#include "operators/pipeline/lookup.h"
#include "operators/pipeline/samplestatistics.h"

#include <algorithm>

ToneRange toneRange(const image *target, bool gather, uint16_t maskAbove)
{
    int32_t values[9] = {};
    if (workspace())
        std::copy_n(workspace()->sampleStatistics, 9, values);
    if (gather && target)
        sumSelected(*target, maskAbove, maskAbove > 0).write(values);
    return {clampSample(*std::min_element(values, values + 3)),
            clampSample(*std::max_element(values + 3, values + 6))};
}

std::optional<int> toneCut(const ToneRange &range, int choice)
{
    switch (choice) {
    case kCutMinimum:
        return range.low;
    case kCutAverage:
        return (range.high - range.low) / 2 + range.low;
    case kCutMaximum:
        return range.high;
    default:
        return std::nullopt;
    }
}
