// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/mask.h"

#include "area/rescale_inline.h"
#include "core/image.h"
#include "core/memory.h"
#include "core/rows.h"

#include <limits>
#include <utility>

Mask::~Mask()
{
    free();
}

void Mask::free()
{
    upfree(&mask);
    width = height = size = 0;
}

bool Mask::init(int newWidth, int newHeight)
{
    free();
    if (newWidth <= 0 || newHeight <= 0 || newWidth > std::numeric_limits<int>::max() / newHeight)
        return false;
    const size_t words = size_t(newWidth) * size_t(newHeight);
    mask = static_cast<uint16_t *>(umalloc(words * sizeof(uint16_t), "Mask init() mask"));
    if (!mask)
        return false;
    width = newWidth;
    height = newHeight;
    size = width * height;
    return true;
}

bool Mask::copyFrom(const image &source)
{
    if (!source.gmask)
        return false;
    if (empty() || width != source.width || height != source.height) {
        Mask fresh;
        if (!fresh.init(source.width, source.height))
            return false;
        std::swap(mask, fresh.mask);
        width = fresh.width;
        height = fresh.height;
        size = fresh.size;
    }
    copyPlane(source.gmask, mask, width, height);
    return true;
}

void Mask::rescale(const Mask *source, Mask *target)
{
    if (source && target && !source->empty() && !target->empty() && source != target)
        rescalePlane(source->mask, source->width, source->height, target->mask, target->width,
                     target->height);
}
