// SPDX-License-Identifier: GPL-3.0-or-later
#include "text/textselect.h"

#include "core/image.h"
#include "text/textimage.h"

#include <algorithm>
#include <memory>

namespace
{
/// The part of the glyphs that falls into the image: first column and row, and behind the
/// last. Computed in 64 bits, because the place may be anything.
struct Part {
    int64_t left, top, right, bottom;

    Part(const image &img, const image &glyphs, int64_t x, int64_t y)
        : left(std::max<int64_t>(0, -x)), top(std::max<int64_t>(0, -y)),
          right(std::min<int64_t>(glyphs.width, img.width - x)),
          bottom(std::min<int64_t>(glyphs.height, img.height - y))
    {
    }
};

bool hasInk(const uint16_t *first, const uint16_t *end)
{
    return std::any_of(first, end, [](uint16_t coverage) { return coverage != 0; });
}
} // namespace

int firstInkColumn(const image &glyphs)
{
    int64_t first = glyphs.width;
    for (int y = 0; y < glyphs.height; ++y) {
        const uint16_t *row = glyphs.alpha + int64_t(y) * glyphs.width;
        first = std::find_if(row, row + first, [](uint16_t a) { return a != 0; }) - row;
    }
    return first < glyphs.width ? int(first) : -1;
}

bool glyphsMeet(const image &img, const image &glyphs, int left, int top)
{
    const Part part(img, glyphs, left, top);
    for (int64_t y = part.top; y < part.bottom && part.left < part.right; ++y) {
        const uint16_t *row = glyphs.alpha + y * glyphs.width;
        if (hasInk(row + part.left, row + part.right))
            return true;
    }
    return false;
}

void selectGlyphs(image *img, const image &glyphs, int left, int top)
{
    img->fillGmask(0);
    const Part part(*img, glyphs, left, top);
    for (int64_t y = part.top; y < part.bottom && part.left < part.right; ++y) {
        const uint16_t *row = glyphs.alpha + y * glyphs.width;
        std::copy(row + part.left, row + part.right,
                  img->gmask + (y + top) * img->width + left + part.left);
    }
}

image *renderInk(const QString &text, const TextStyle &style, TextResult *reason)
{
    *reason = TextResult::Nothing;
    if (text.trimmed().isEmpty())
        return nullptr;
    if (measureText(text, style).width == 0) {
        *reason = TextResult::TooLarge;
        return nullptr;
    }
    std::unique_ptr<image> glyphs(renderText(text, style));
    if (!glyphs)
        *reason = TextResult::NoMemory;
    else if (firstInkColumn(*glyphs) < 0)
        glyphs.reset();
    return glyphs.release();
}

TextResult selectText(image *img, const QString &text, const TextStyle &style, int left, int top)
{
    TextResult reason = TextResult::Nothing;
    const std::unique_ptr<image> glyphs(renderInk(text, style, &reason));
    if (!glyphs)
        return reason;
    if (!glyphsMeet(*img, *glyphs, left, top))
        return TextResult::Outside;
    selectGlyphs(img, *glyphs, left, top);
    return TextResult::Done;
}
