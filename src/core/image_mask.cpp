// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/image.h"

#include "core/memory.h"
#include "core/rows.h"

#include <algorithm>

namespace
{
/// Words that the fill keeps free at the top of its stack.
constexpr size_t kFillReserve = 32;

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

/// The stack of the four-way fill. A sample is replaced when it is pushed, so each one
/// is pushed at most once and width x height pairs are enough.
class FillStack
{
public:
    FillStack(int width, int height)
        : capacity(size_t(2) * size_t(width) * size_t(height) + 64), words(capacity, "m4fill heap")
    {
    }
    bool usable() const { return bool(words); }
    bool empty() const { return used == 0; }
    bool full() const { return used > capacity - kFillReserve; }
    void push(int x, int y)
    {
        words[used++] = uint16_t(y);
        words[used++] = uint16_t(x);
    }
    void pop(int *x, int *y)
    {
        *x = words[--used];
        *y = words[--used];
    }

private:
    size_t capacity;
    size_t used = 0;
    TrackedBuffer<uint16_t> words;
};
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
    FillStack stack(width, height);
    if (!stack.usable())
        return false;
    const auto claim = [&](int atX, int atY) {
        if (atX < 0 || atY < 0 || atX >= width || atY >= height)
            return;
        uint16_t &sample = gmask[int64_t(atY) * width + atX];
        if (sample == boundary || sample == replacement)
            return;
        sample = replacement;
        stack.push(atX, atY);
    };
    claim(x, y);
    while (!stack.empty()) {
        if (stack.full())
            return false;
        stack.pop(&x, &y);
        claim(x, y - 1);
        claim(x - 1, y);
        claim(x + 1, y);
        claim(x, y + 1);
    }
    return true;
}
