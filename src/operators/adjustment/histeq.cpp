// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/adjustment/histeq.h"

#include "core/colour.h"
#include "core/memory.h"
#include "core/rows.h"
#include "core/workspace.h"
#include "operators/pipeline/lookup.h"

#include <algorithm>

namespace
{
constexpr int kLevels = 65536;
constexpr int kBands = 4; ///< of rows, each with counts of its own

/// Counts the selected pixels of some alpha by their largest channel.
void countRows(const image &img, ptrdiff_t first, ptrdiff_t end, uint64_t *counts)
{
    for (ptrdiff_t i = first * img.width; i < end * img.width; ++i)
        if (img.gmask[i] != 0 && img.alpha[i] != 0)
            ++counts[std::max({img.red[i], img.green[i], img.blue[i]})];
}

/// The counts of all bands by the entry of the value's table that a largest channel reads.
void countValues(const image &img, uint64_t *counts, uint64_t *byValue)
{
    const int height = img.height;
    parallelRows(kBands, height / kBands * img.width, [&](int first, int end) {
        for (int band = first; band < end; ++band)
            countRows(img, ptrdiff_t(height) * band / kBands,
                      ptrdiff_t(height) * (band + 1) / kBands, counts + ptrdiff_t(band) * kLevels);
    });
    for (int most = 0; most < kLevels; ++most) {
        const double value = rgbToHsv({double(most), double(most), double(most)}).value;
        uint64_t &sum = byValue[clampSample(int64_t(value * kWhite / 100.0))];
        for (int band = 0; band < kBands; ++band)
            sum += counts[ptrdiff_t(band) * kLevels + most];
    }
}

/// The share of pixels above the darkest that lie at or below each value, on the scale of
/// 65535: the darkest value goes to black and the lightest to white. False if there are not two
/// values to part.
bool equalise(const uint64_t *counts, uint16_t *map)
{
    uint64_t total = 0, darkest = 0;
    for (int i = 0; i < kLevels; ++i) {
        darkest = total == 0 ? counts[i] : darkest;
        total += counts[i];
    }
    if (total == darkest)
        return false;
    const double span = double(total - darkest);
    uint64_t below = 0;
    for (int i = 0; i < kLevels; ++i) {
        below += counts[i];
        map[i] = below <= darkest ? 0 : lutEntry(double(below - darkest) / span * kWhite + 0.5);
    }
    return true;
}
} // namespace

HistEq::HistEq(OperatorTable *table) : DeclaredOp(table)
{
    hotkeyKey = QStringLiteral("HistEqHotkey");
}

void HistEq::apply(image *target, image *)
{
    if (!target || !target->valid() || !workspace() || !workspace()->colorMapGreen)
        return;
    // One more than the bands, for their sum.
    const TrackedBuffer<uint64_t> counts(size_t(kBands + 1) * kLevels, "64-bit histo array");
    const TrackedBuffer<uint16_t> map(kLevels, "histo luma map");
    if (!counts || !map)
        return;
    uint64_t *byValue = counts.get() + ptrdiff_t(kBands) * kLevels;
    countValues(*target, counts.get(), byValue);
    if (!equalise(byValue, map.get()))
        return;
    std::copy_n(map.get(), kLevels, workspace()->colorMapGreen);
    applyLumaLut(target);
}
