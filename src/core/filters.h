// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

class image;

/// Channel filters kept beside the image for the operators that name them. Each works
/// from a tracked copy of what it changes; false if memory is short or an argument null.

struct Convolution33 {
    double cells[9]; ///< row by row
    double divisor = 1.0;
    double bias = 0.0;
    bool absolute = false;
};

/// 3 x 3 convolution of one plane of `owner`; at the border the centre sample's own row
/// or column stands in for what is missing. The result is limited to 0 to 65535.
bool convolveChannel(const image *owner, uint16_t *plane, const Convolution33 &matrix);

/// By what the neighbours of a sample are compared.
enum class NeighbourKey { Luma, Red, Green, Blue, Saturation, Value };

/// Each pixel becomes that one of its 3 x 3 neighbourhood with the least key.
bool minimumFilter(image *target, NeighbourKey key);
/// The same with the greatest key.
bool maximumFilter(image *target, NeighbourKey key);

/// Replaces isolated samples of a plane, those that differ from all eight neighbours
/// by more than `threshold` (0 to 65535), by the neighbours' average.
bool ripChannel(const image *owner, uint16_t *plane, int threshold);
/// The same for samples that stand alone within their row.
bool ripChannelRow(const image *owner, uint16_t *plane, int threshold);
/// The same for pairs of samples side by side.
bool ripChannelDouble(const image *owner, uint16_t *plane, int threshold);
