// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/image.h"

#include "core/floodfill.h"
#include "core/rows.h"

#include <algorithm>

namespace
{
/// The rectangle of the samples that `matches` accepts. Each row is searched from both
/// ends and only outside of what earlier rows have claimed.
template <class Match>
Bounds boundsWhere(const uint16_t *plane, int width, int height, Match matches)
{
    Bounds found = {width, height, 0, 0, 0, 0};
    for (int y = 0; plane && y < height; ++y) {
        const uint16_t *row = plane + int64_t(y) * width;
        const int first = int(std::find_if(row, row + width, matches) - row);
        if (first == width)
            continue;
        int last = width - 1;
        while (last > found.right && !matches(row[last]))
            --last;
        found.left = std::min(found.left, first);
        found.right = std::max(found.right, std::max(first, last));
        found.top = std::min(found.top, y);
        found.bottom = y;
    }
    found.width = found.right - found.left + 1;
    found.height = found.bottom - found.top + 1;
    return found;
}

void copyPlane(const uint16_t *from, uint16_t *to, int width, int height)
{
    parallelRows(height, width, [=](int first, int end) {
        std::copy(from + int64_t(first) * width, from + int64_t(end) * width,
                  to + int64_t(first) * width);
    });
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
    return gmask &&
           std::any_of(gmask, gmask + sampleCount(), [](uint16_t sample) { return sample != 0; });
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
