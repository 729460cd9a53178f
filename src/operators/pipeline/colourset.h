// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/workspace.h"

#include <cstddef>
#include <cstdint>

/// Where a colour stands in the set of colours (Workspace::colorSpace) that Sample gathers
/// and Key to Colorspace takes.
struct ColourSetPlace {
    size_t byte;
    uint8_t bit; ///< the bit itself, not its number
};

/// The place of a colour of 16-bit samples. Of red and green the top eight bits count. Of blue
/// the top five choose the byte and the lowest two of its top eight the bit, so only four of a
/// byte's bits are ever used, and two blues that differ in the bit between share one.
inline ColourSetPlace colourSetPlace(uint16_t red, uint16_t green, uint16_t blue)
{
    static_assert((size_t((255 << 8) + 255) * 32 + 31) < Workspace::kColorSpaceBytes);
    const size_t pair = size_t(((red >> 8) << 8) + (green >> 8));
    return {pair * 32 + (blue >> 11), uint8_t(1 << ((blue >> 8) & 3))};
}

/// How many entries of the set are taken; 0 without one.
int64_t colourSetSize();

enum class ColourSetChange { Replace, Add, Remove };
/// Changes the set by the colours of the selected samples of an image that are not fully
/// transparent; without an image there are none, so Replace empties it. The set as it was goes
/// to the backup. False, with nothing changed, if memory is short.
bool changeColourSet(const image *selected, ColourSetChange change);
