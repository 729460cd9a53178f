// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/image.h"

#include "core/memory.h"
#include "core/rows.h"
#include "core/undo.h"
#include "core/workspace.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace
{
/// Side of the blocks that are turned within registers.
constexpr int kBlock = 8;
/// Side of the tiles of blocks: what they read and write stays in the first cache.
constexpr int kTile = 64;

typedef uint16_t Eight __attribute__((vector_size(16)));

Eight lowHalves(Eight a, Eight b)
{
    return __builtin_shufflevector(a, b, 0, 8, 1, 9, 2, 10, 3, 11);
}

Eight highHalves(Eight a, Eight b)
{
    return __builtin_shufflevector(a, b, 4, 12, 5, 13, 6, 14, 7, 15);
}

/// One plane of `width` x `height`, and where its turned rows go.
struct Turn {
    const uint16_t *from;
    uint16_t *to;
    int width, height;

    const uint16_t *source(int x, int y) const { return from + int64_t(y) * width + x; }
    uint16_t *target(int x, int y) const { return to + int64_t(x) * height + (height - 1 - y); }

    /// Eight rows of eight, taken from the bottom up, become columns: interleaving rows
    /// i and i + 4 three times over is the transposition.
    void block(int x, int y) const
    {
        Eight rows[kBlock], mixed[kBlock];
        for (int i = 0; i < kBlock; ++i)
            std::memcpy(&rows[i], source(x, y + kBlock - 1 - i), sizeof(Eight));
        for (int pass = 0; pass < 3; ++pass) {
            for (int i = 0; i < kBlock / 2; ++i) {
                mixed[2 * i] = lowHalves(rows[i], rows[i + kBlock / 2]);
                mixed[2 * i + 1] = highHalves(rows[i], rows[i + kBlock / 2]);
            }
            std::copy(mixed, mixed + kBlock, rows);
        }
        for (int i = 0; i < kBlock; ++i)
            std::memcpy(target(x + i, y + kBlock - 1), &rows[i], sizeof(Eight));
    }
    void samples(int x0, int y0, int x1, int y1) const
    {
        for (int x = x0; x < x1; ++x)
            for (int y = y0; y < y1; ++y)
                *target(x, y) = *source(x, y);
    }
    void tile(int x0, int y0, int x1, int y1) const
    {
        const int xBlocks = x0 + (x1 - x0) / kBlock * kBlock;
        const int yBlocks = y0 + (y1 - y0) / kBlock * kBlock;
        for (int x = x0; x < xBlocks; x += kBlock)
            for (int y = y0; y < yBlocks; y += kBlock)
                block(x, y);
        samples(x0, yBlocks, xBlocks, y1);
        samples(xBlocks, y0, x1, y1);
    }
    void columns(int first, int end) const
    {
        for (int x = first; x < end; x += kTile)
            for (int y = 0; y < height; y += kTile)
                tile(x, y, std::min(x + kTile, end), std::min(y + kTile, height));
    }
};
} // namespace

bool image::quarterTurn()
{
    if (!valid())
        return false;
    const TrackedBuffer<uint16_t> buffer(size_t(sampleCount()), "quarterTurn buff");
    if (!buffer)
        return false;
    if (Workspace *space = workspace())
        space->clearAreaSelection(this);
    clearRedoList(this);
    saveUndo(this, true);
    for (uint16_t *plane : workPlanes()) {
        uint16_t *work = buffer.get();
        parallelRows(height, width, [=, this](int first, int end) {
            std::copy(plane + int64_t(first) * width, plane + int64_t(end) * width,
                      work + int64_t(first) * width);
        });
        const Turn turn = {work, plane, width, height};
        parallelRows(width, height, [&turn](int first, int end) { turn.columns(first, end); });
    }
    std::swap(width, height);
    return true;
}
