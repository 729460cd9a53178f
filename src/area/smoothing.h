// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/memory.h"

#include <cstdint>

class image;

constexpr int kMostSmoothingRadius = 200;

/// Taps of the smoothing: element i + radius weighs what lies i samples away; the sum is 1.
class SmoothingKernel
{
public:
    SmoothingKernel() = default;
    ~SmoothingKernel() { upfree(&taps); }
    SmoothingKernel(const SmoothingKernel &) = delete;
    SmoothingKernel &operator=(const SmoothingKernel &) = delete;

    /// exp(-(i * i) / radius) / (radius * pi), divided by the sum. False, and without taps, if
    /// memory is short or the radius is not 1 to kMostSmoothingRadius.
    bool twoGet(int newRadius);

    double *taps = nullptr; ///< 2 * radius + 1, tracked
    int radius = 0;
};

/// Smooths one plane of the image's size in place: across, down, and mixed by `amount` with
/// what was. Results above 65527 become 65535, below 8 become 0. False, with the plane as it
/// was, if memory is short or there is no kernel.
bool antialiasMask(const SmoothingKernel &kernel, const image &img, double amount, uint16_t *plane);

constexpr int kMostFeather = 60;

/// Softens the edge of the image's selection over about `distance` samples to either side, 1
/// to kMostFeather: as many smoothings as that takes, and what was full far within stays so.
/// False, with the selection as it was, if memory is short.
bool featherSelection(image *img, int distance);

/// Smooths the image's selection by radius and amount.
bool smoothSelection(image *img, int radius, double amount);
