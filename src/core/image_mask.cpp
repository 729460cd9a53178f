// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/image.h"

#include "core/floodfill.h"
#include "core/rows.h"

#include <algorithm>
#include <mutex>

namespace
{
constexpr int kBlock = 64; ///< samples that are tested at once

/// Whether one of a whole block matches.
template <class Match>
bool anyOfBlock(const uint16_t *samples, Match matches)
{
    unsigned found = 0;
    for (int i = 0; i < kBlock; ++i)
        found |= unsigned(matches(samples[i]));
    return found != 0;
}

/// The first sample of a row that matches, `width` if none does.
template <class Match>
int firstMatch(const uint16_t *row, int width, Match matches)
{
    int x = 0;
    while (x + kBlock <= width && !anyOfBlock(row + x, matches))
        x += kBlock;
    return int(std::find_if(row + x, row + width, matches) - row);
}

/// The last sample from `from` on that matches; `from` if there is none after it.
template <class Match>
int lastMatch(const uint16_t *row, int from, int width, Match matches)
{
    int end = width;
    while (end - kBlock > from && !anyOfBlock(row + end - kBlock, matches))
        end -= kBlock;
    while (end - 1 > from && !matches(row[end - 1]))
        --end;
    return std::max(end - 1, from);
}

/// The rectangle of the samples that `matches` accepts. Each row is searched from both ends,
/// from the right only outside of what earlier rows of its band have claimed.
template <class Match>
Bounds boundsWhere(const uint16_t *plane, int width, int height, Match matches)
{
    Bounds all = {width, height, 0, 0, 0, 0};
    std::mutex joining;
    parallelRows(plane ? height : 0, width, [&](int firstRow, int endRow) {
        Bounds found = {width, height, 0, 0, 0, 0};
        for (int y = firstRow; y < endRow; ++y) {
            const uint16_t *row = plane + int64_t(y) * width;
            const int first = firstMatch(row, width, matches);
            if (first == width)
                continue;
            found.left = std::min(found.left, first);
            found.right = lastMatch(row, std::max(first, found.right), width, matches);
            found.top = std::min(found.top, y);
            found.bottom = y;
        }
        const std::lock_guard<std::mutex> lock(joining);
        all.left = std::min(all.left, found.left);
        all.top = std::min(all.top, found.top);
        all.right = std::max(all.right, found.right);
        all.bottom = std::max(all.bottom, found.bottom);
    });
    all.width = all.right - all.left + 1;
    all.height = all.bottom - all.top + 1;
    return all;
}
} // namespace

void image::fillGmask(uint16_t value)
{
    if (!gmask)
        return;
    parallelRows(height, width, [&](int first, int end) {
        std::fill(gmask + int64_t(first) * width, gmask + int64_t(end) * width, value);
    });
}

void image::saveMask()
{
    if (!gmask || !mask3)
        return;
    copyPlane(gmask, mask3, width, height);
    maskBackupValid = true;
}

void image::restoreMask()
{
    if (gmask && mask3 && maskBackupValid)
        copyPlane(mask3, gmask, width, height);
}

void image::invertMask()
{
    if (!gmask)
        return;
    parallelRows(height, width, [this](int first, int end) {
        for (int64_t i = int64_t(first) * width; i < int64_t(end) * width; ++i)
            gmask[i] = uint16_t(~gmask[i]);
    });
}

bool image::anyMaskSet() const
{
    const auto selected = [](uint16_t sample) { return sample != 0; };
    return gmask && firstMatch(gmask, int(sampleCount()), selected) < sampleCount();
}

uint16_t image::maskAt(int x, int y) const
{
    const bool inside = gmask && x >= 0 && y >= 0 && x < width && y < height;
    return inside ? gmask[int64_t(y) * width + x] : uint16_t(0);
}

Bounds image::alphaBoundsAbove(int threshold) const
{
    const int limit = threshold * 257;
    return boundsWhere(alpha, width, height, [limit](uint16_t sample) { return sample >= limit; });
}

Bounds image::alphaBoundsBelow(int threshold) const
{
    const int limit = threshold * 257;
    return boundsWhere(alpha, width, height, [limit](uint16_t sample) { return sample <= limit; });
}

Bounds image::maskBounds(int *centerX, int *centerY) const
{
    const Bounds found =
        boundsWhere(gmask, width, height, [](uint16_t sample) { return sample != 0; });
    if (centerX)
        *centerX = found.left + found.width / 2;
    if (centerY)
        *centerY = found.top + found.height / 2;
    return found;
}

bool image::m4fill(int x, int y, uint16_t boundary, uint16_t replacement)
{
    if (!gmask || x < 0 || y < 0 || x >= width || y >= height)
        return false;
    FloodStack stack(width, height);
    return floodFill(gmask, width, height, x, y, boundary, replacement, &stack);
}
