// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRect>

#include <array>
#include <cstdint>

class image;

/// What can be joined of two readings: the extremes and sums of samples, and their number.
struct SampleSums {
    int64_t count = 0;
    std::array<int32_t, 3> least = {65535, 65535, 65535}; ///< red, green, blue, as all here
    std::array<int32_t, 3> most = {0, 0, 0};
    std::array<int64_t, 3> sum = {0, 0, 0};

    void join(const SampleSums &other);
    /// Minima, maxima and averages in the order of Workspace::sampleStatistics. False, with
    /// nothing written, if there is no sample.
    bool write(int32_t out[9]) const;
};

/// Sums over the samples whose mask is above `maskAbove` and, but for `unseenToo`, whose alpha
/// is not 0.
SampleSums sumSelected(const image &img, uint16_t maskAbove, bool unseenToo = false);
/// Sums over the samples in a rectangle whose alpha is not 0, whatever the mask. Parts outside
/// of the image are left out.
SampleSums sumRectangle(const image &img, const QRect &samples);

/// Minima of red, green, blue, then maxima, then averages of the samples whose mask is above
/// `maskAbove` and whose alpha is not 0. False, with nothing written, if there are none.
bool gatherStatistics(const image &img, uint16_t maskAbove, int32_t out[9]);
/// The same of a rectangle, whatever the mask.
bool gatherStatistics(const image &img, const QRect &samples, int32_t out[9]);
