// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/maskops.h"

#include "area/mask.h"
#include "core/colour_inline.h"
#include "core/image.h"
#include "core/memory.h"
#include "core/rows.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace
{
constexpr int kMostRadius = 500;
constexpr int kChunk = 512;
constexpr int kYrbMode = 1;

bool usable(const image *img)
{
    return img && img->valid() && img->gmask;
}

/// Rounded, so that a grey sample keeps its value.
uint16_t lumaOf(Rgb rgb)
{
    return uint16_t(clampSampleValue(inlined::rgbToYrb(rgb).y + 0.5));
}

void writeLuma(const image &from, uint16_t *words)
{
    const bool coded = from.imageMode == kYrbMode;
    parallelRows(from.height, from.width * 4, [&](int first, int end) {
        const int64_t last = int64_t(end) * from.width;
        for (int64_t i = int64_t(first) * from.width; i < last; ++i) {
            const double a = from.red[i], b = from.green[i], c = from.blue[i];
            words[i] = lumaOf(coded ? inlined::yrbToRgb({a, b, c}) : Rgb{a, b, c});
        }
    });
}

/// The greatest words of a row's windows of any width, by those of widths that are powers
/// of two: two of these that overlap make up a window.
class RowWindows
{
public:
    /// Takes the words of columns `first` - `margin` to `first` + `count` + `margin` - 1 of a
    /// row of a plane, each with the bits of `flip` inverted; words outside are `outside`.
    /// False if nothing but 0 is among them.
    bool load(const uint16_t *row, int width, int first, int count, int margin, uint16_t flip)
    {
        length = count + 2 * margin;
        uint16_t any = 0;
        for (int i = 0; i < length; ++i) {
            const int x = first - margin + i;
            levels[0][size_t(i)] = uint16_t((x >= 0 && x < width ? row[x] : 0) ^ flip);
            any |= levels[0][size_t(i)];
        }
        if (!any)
            return false;
        for (size_t level = 1; 1 << level <= 2 * margin + 1; ++level) {
            const int half = 1 << (level - 1);
            const uint16_t *from = levels[level - 1].data();
            for (int i = 0; i + 2 * half <= length; ++i)
                levels[level][size_t(i)] = std::max(from[i], from[i + half]);
        }
        return true;
    }

    /// Raises `count` words to the greatest one no further than `reach` columns away.
    void raise(int reach, int margin, int count, uint16_t *words) const
    {
        int level = 0;
        while (2 << level <= 2 * reach + 1)
            ++level;
        const uint16_t *left = levels[size_t(level)].data() + margin - reach;
        const uint16_t *right = left + (2 * reach + 1) - (1 << level);
        for (int i = 0; i < count; ++i)
            words[i] = std::max(words[i], std::max(left[i], right[i]));
    }

private:
    static constexpr size_t kLevels = 10; // 1 to 512, the last one below 2 * kMostRadius + 1
    std::array<std::array<uint16_t, kChunk + 2 * kMostRadius>, kLevels> levels;
    int length = 0;
};

/// Half the width of a disc's rows, by their distance from its centre.
struct Disc {
    explicit Disc(int discRadius) : radius(discRadius)
    {
        int x = radius;
        for (int y = 0; y <= radius; ++y) {
            while (x * x + y * y > radius * radius)
                --x;
            reach[size_t(y)] = x;
        }
    }
    int radius;
    std::array<int, kMostRadius + 1> reach;
};

/// Greatest words within the disc, for a band of rows of `out`, a chunk of columns at a time
/// so that the rows that a row of the source reaches stay in the cache.
void raiseBand(const image &img, const Disc &disc, uint16_t flip, int first, int end, uint16_t *out)
{
    const int width = img.width, radius = disc.radius;
    RowWindows windows;
    for (int x = 0; x < width; x += kChunk) {
        const int count = std::min(kChunk, width - x);
        for (int y = first; y < end; ++y)
            std::fill_n(out + int64_t(y) * width + x, count, uint16_t(0));
        for (int y = first - radius; y < end + radius; ++y) {
            const bool inside = y >= 0 && y < img.height;
            const uint16_t *row = img.gmask + (inside ? int64_t(y) * width : 0);
            if (!windows.load(row, inside ? width : 0, x, count, radius, flip))
                continue;
            const int last = std::min(y + radius, end - 1);
            for (int to = std::max(y - radius, first); to <= last; ++to)
                windows.raise(disc.reach[size_t(std::abs(to - y))], radius, count,
                              out + int64_t(to) * width + x);
        }
    }
}

/// Grows the selection, or with all bits of `flip` set what is not selected.
bool spread(image *img, int radius, uint16_t flip)
{
    if (!usable(img) || radius < 1 || radius > kMostRadius)
        return false;
    const size_t bytes = size_t(img->sampleCount()) * sizeof(uint16_t);
    auto *scratch = static_cast<uint16_t *>(umalloc(bytes, "grown mask"));
    if (!scratch)
        return false;
    const Disc disc(radius);
    parallelRows(img->height, img->width * radius,
                 [&](int first, int end) { raiseBand(*img, disc, flip, first, end, scratch); });
    copyPlane(scratch, img->gmask, img->width, img->height);
    upfree(&scratch);
    if (flip)
        img->invertMask();
    return true;
}
} // namespace

void combineMasks(uint16_t *mask, const uint16_t *old, int width, int height, bool add)
{
    if (!mask || !old)
        return;
    parallelRows(height, width, [=](int first, int end) {
        const int64_t last = int64_t(end) * width;
        for (int64_t i = int64_t(first) * width; i < last; ++i)
            mask[i] =
                uint16_t(add ? std::min(mask[i] + old[i], 65535) : std::max(old[i] - mask[i], 0));
    });
}

bool selectFromAlpha(image *img)
{
    if (!usable(img))
        return false;
    copyPlane(img->alpha, img->gmask, img->width, img->height);
    return true;
}

bool selectFromLuma(image *img)
{
    if (!usable(img))
        return false;
    writeLuma(*img, img->gmask);
    return true;
}

bool growSelection(image *img, int radius)
{
    return spread(img, radius, 0);
}

bool shrinkSelection(image *img, int radius)
{
    return spread(img, radius, 65535);
}

bool selectFromPicture(image *img, const image &picture)
{
    if (!usable(img) || !picture.valid())
        return false;
    if (img->width == picture.width && img->height == picture.height) {
        writeLuma(picture, img->gmask);
        return true;
    }
    Mask luma, scaled;
    if (!luma.init(picture.width, picture.height) || !scaled.init(img->width, img->height))
        return false;
    writeLuma(picture, luma.mask);
    Mask::rescale(&luma, &scaled);
    copyPlane(scaled.mask, img->gmask, img->width, img->height);
    return true;
}
