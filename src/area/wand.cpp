// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/wand.h"

#include "area/polygon.h"
#include "area/wand_kernels.h"
#include "core/image.h"
#include "core/memory.h"
#include "core/rows.h"
#include "core/workspace.h"

#include <QCoreApplication>

#include <algorithm>

namespace
{
constexpr int kCellBits = 64;

/// A four-way fill over one bit for each sample, a cell of 64 of a row at a time. A bit is
/// claimed when it is found, and a cell stands on the stack at most once: the stack has room
/// for each cell, which is at most as much as one pair for each sample.
class CellFill
{
public:
    CellFill(int imageWidth, int imageHeight)
        : height(imageHeight), across((imageWidth + kCellBits - 1) / kCellBits),
          cells(size_t(across) * size_t(height)), open(cells, "wand colour bits"),
          claimed(cells, "wand fill bits"), waiting(cells, "wand waiting cells"),
          stack(2 * cells, "wand m4fill heap")
    {
    }
    bool usable() const { return open && claimed && waiting && stack; }

    /// Bits of the samples that may be taken, and of those that were.
    uint64_t *openRow(int y) const { return &open[size_t(y) * size_t(across)]; }
    const uint64_t *claimedRow(int y) const { return &claimed[size_t(y) * size_t(across)]; }

    void run(int x, int y)
    {
        claim(x / kCellBits, y, uint64_t(1) << x % kCellBits);
        while (used > 0) {
            const int cell = stack[--used], row = stack[--used];
            spread(cell, row);
        }
    }

private:
    void claim(int cell, int y, uint64_t bits)
    {
        if (cell < 0 || cell >= across || y < 0 || y >= height)
            return;
        const size_t at = size_t(y) * size_t(across) + size_t(cell);
        bits &= open[at] & ~claimed[at];
        if (!bits)
            return;
        claimed[at] |= bits;
        if (waiting[at])
            return;
        waiting[at] = 1;
        stack[used++] = uint16_t(y);
        stack[used++] = uint16_t(cell);
    }

    void spread(int cell, int y)
    {
        const size_t at = size_t(y) * size_t(across) + size_t(cell);
        waiting[at] = 0;
        const uint64_t bits = claimed[at] = alongRuns(claimed[at], open[at]);
        claim(cell, y + 1, bits);
        claim(cell, y - 1, bits);
        claim(cell + 1, y, bits >> (kCellBits - 1));
        claim(cell - 1, y, bits << (kCellBits - 1));
    }

    /// All bits of those runs of `runs` that hold one of `seeds`.
    static uint64_t alongRuns(uint64_t seeds, uint64_t runs)
    {
        // Upward the carry of a sum runs to the end of each run.
        uint64_t found = seeds | (runs & ~(runs + seeds));
        for (int step = 1; step < kCellBits; step *= 2) {
            found |= runs & found >> step;
            runs &= runs >> step;
        }
        return found;
    }

    int height, across;
    size_t cells;
    size_t used = 0;
    TrackedBuffer<uint64_t> open, claimed;
    TrackedBuffer<uint8_t> waiting;
    TrackedBuffer<uint16_t> stack;
};

/// The colours that are no further than `distance` from that of the sample at (x, y).
ColourRange rangeAround(const image &img, int64_t at, double distance, bool skipTransparent)
{
    ColourRange range{{img.red, img.green, img.blue, img.alpha}, {}, {}, skipTransparent};
    for (int c = 0; c < 3; ++c) {
        const double middle = range.plane[c][at];
        range.low[c] = uint16_t(std::max(middle - distance, 0.0));
        range.span[c] = uint16_t(uint16_t(std::min(middle + distance, kWhite)) - range.low[c]);
    }
    return range;
}

ColourRange rowOf(const ColourRange &range, int y, int width)
{
    ColourRange row = range;
    for (const uint16_t *&plane : row.plane)
        plane += int64_t(y) * width;
    return row;
}

void pickEverywhere(const ColourRange &range, int width, int height, uint16_t *mask)
{
    parallelRows(height, width, [&](int first, int end) {
        for (int y = first; y < end; ++y)
            KERNEL_DISPATCH(matchWords, rowOf(range, y, width), width, mask + int64_t(y) * width);
    });
}

bool pickConnected(const ColourRange &range, int width, int height, int x, int y, uint16_t *mask)
{
    CellFill fill(width, height);
    if (!fill.usable())
        return false;
    parallelRows(height, width, [&](int first, int end) {
        for (int row = first; row < end; ++row)
            KERNEL_DISPATCH(matchBits, rowOf(range, row, width), width, fill.openRow(row));
    });
    fill.run(x, y);
    parallelRows(height, width, [&](int first, int end) {
        for (int row = first; row < end; ++row)
            KERNEL_DISPATCH(spreadBits, fill.claimedRow(row), width, mask + int64_t(row) * width);
    });
    return true;
}
} // namespace

bool wandMask(const image &img, int x, int y, int tolerance, bool globally, bool skipTransparent,
              uint16_t *mask)
{
    if (!mask || !img.valid() || x < 0 || y < 0 || x >= img.width || y >= img.height)
        return false;
    tolerance = std::clamp(tolerance, 0, 100);
    const int64_t at = int64_t(y) * img.width + x;
    // Tolerance 1 is the exact colour where the region is connected; 0 is it anywhere.
    const bool connected = tolerance != 0 && !globally;
    const double share = connected ? (tolerance - 1) / 99.0 : tolerance / 100.0;
    const ColourRange range = rangeAround(img, at, share * kWhite, skipTransparent);
    if (skipTransparent && img.alpha[at] == 0) {
        std::fill_n(mask, img.sampleCount(), uint16_t(0));
        return true;
    }
    if (connected)
        return pickConnected(range, img.width, img.height, x, y, mask);
    pickEverywhere(range, img.width, img.height, mask);
    return true;
}

bool wandSelect(image *img, int x, int y, int tolerance)
{
    const Workspace *space = workspace();
    if (!img || !img->gmask || !space ||
        !wandMask(*img, x, y, tolerance, space->globalPick, space->maskWithTargetAlpha, img->gmask))
        return false;
    followSelectionCenter(img);
    return true;
}

QString wandStatus(int tolerance, bool globally)
{
    if (tolerance == 0 || globally)
        return QCoreApplication::translate("area", "Magic Wand: <b>global pick</b>");
    return QCoreApplication::translate("area", "Magic Wand: %1").arg(tolerance);
}
