// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

class image;

/// Channel filters kept beside the image for the operators that name them. Each works
/// from a tracked copy of what it changes; false if memory is short, an argument is null
/// or a threshold or key is out of range.

struct Convolution33 {
    double cells[9]; ///< row by row
    double divisor = 1.0;
    double bias = 0.0;
    bool absolute = false;
};

/// 3 x 3 convolution of one plane of `owner`; at the border the centre sample's own row
/// or column stands in for what is missing. The nine products are summed row by row from
/// the top left, then divided, then the bias is added, then the sign is dropped if
/// `absolute` asks for it; limited to 0 to 65535 and truncated. A divisor of exactly zero
/// counts as 0.0001.
bool convolveChannel(const image *owner, uint16_t *plane, const Convolution33 &matrix);

/// By what the neighbours of a sample are compared: 0.3 R + 0.59 G + 0.11 B, one channel,
/// or the saturation or value of the HSV model. The order is that of the operators' modes.
enum class NeighbourKey { Luma, Red, Green, Blue, Saturation, Value };

/// Red, green and blue of each pixel become those of the pixel of its 3 x 3 neighbourhood
/// with the least key; alpha stays. Among equal keys the own column wins over the left
/// and that over the right one, and the own row over the upper and that over the lower.
bool minimumFilter(image *target, NeighbourKey key);
/// The same with the greatest key.
bool maximumFilter(image *target, NeighbourKey key);

/// Replaces isolated samples of a plane, those that differ from all their neighbours by
/// more than `threshold` (0 to 65535), by the neighbours' average, truncated. At the
/// border only the neighbours that exist count; a plane of one sample stays. All samples
/// are judged by their state before the call.
bool ripChannel(const image *owner, uint16_t *plane, int threshold);
/// The same for samples that stand alone within their row: the neighbours are the left
/// and the right one.
bool ripChannelRow(const image *owner, uint16_t *plane, int threshold);
/// The same for pairs of samples side by side, both replaced by the average of the up to
/// ten samples around them. Where pairs overlap, the left one goes first.
bool ripChannelDouble(const image *owner, uint16_t *plane, int threshold);
