// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

class image;

/// A saved area selection, which may outlive the size of the image that it was made on.
class Mask
{
public:
    Mask() = default;
    ~Mask();
    Mask(const Mask &) = delete;
    Mask &operator=(const Mask &) = delete;

    /// Frees an old array and makes room; false if memory is short or a size is not
    /// positive. The words are not cleared.
    bool init(int newWidth, int newHeight);
    void free();
    /// Takes an image's selection over; false, with this mask as it was, without memory.
    bool copyFrom(const image &source);
    /// Bilinear scale of one mask into another of any size, truncated to 16 bits; nothing
    /// if either is null or empty.
    static void rescale(const Mask *source, Mask *target);

    bool empty() const { return !mask; }

    uint16_t *mask = nullptr; ///< tracked
    int32_t width = 0, height = 0;
    int32_t size = 0; ///< width x height words
};
