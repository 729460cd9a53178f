// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/pipeline/colourset.h"

#include "core/image.h"
#include "core/rows.h"

#include <algorithm>
#include <atomic>
#include <bit>

int64_t colourSetSize()
{
    const uint8_t *set = workspace() ? workspace()->colorSpace : nullptr;
    int64_t count = 0;
    for (size_t i = 0; set && i < Workspace::kColorSpaceBytes; ++i)
        count += std::popcount(set[i]);
    return count;
}

bool changeColourSet(const image *selected, ColourSetChange change)
{
    Workspace *space = workspace();
    if (!space || !space->ensureColorSpace())
        return false;
    uint8_t *set = space->colorSpace;
    std::copy_n(set, Workspace::kColorSpaceBytes, space->colorSpaceBackup);
    if (change == ColourSetChange::Replace)
        std::fill_n(set, Workspace::kColorSpaceBytes, uint8_t(0));
    if (!selected)
        return true;
    const image &img = *selected;
    const bool remove = change == ColourSetChange::Remove;
    parallelRows(img.height, img.width, [&img, set, remove](int first, int end) {
        const int64_t last = int64_t(end) * img.width;
        for (int64_t i = int64_t(first) * img.width; i < last; ++i) {
            if (img.gmask[i] == 0 || img.alpha[i] == 0)
                continue;
            const auto [byte, bit] = colourSetPlace(img.red[i], img.green[i], img.blue[i]);
            // Bands of rows share bytes. Most colours of a picture come again and again, so
            // it is looked at first.
            const std::atomic_ref<uint8_t> entry(set[byte]);
            const bool isIn = (entry.load(std::memory_order_relaxed) & bit) != 0;
            if (remove && isIn)
                entry.fetch_and(uint8_t(~bit), std::memory_order_relaxed);
            else if (!remove && !isIn)
                entry.fetch_or(bit, std::memory_order_relaxed);
        }
    });
    return true;
}
