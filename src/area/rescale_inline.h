// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/rows.h"

#include <algorithm>
#include <cstddef>

/// Bilinear scale of one plane into another, both of at least one word. Positions are found
/// by repeated addition, rows and columns alike; each band of rows repeats the additions
/// before its first row, so that the bands do not show.
template <class Word>
void rescalePlane(const Word *source, int sourceWidth, int sourceHeight, Word *target,
                  int targetWidth, int targetHeight)
{
    const double stepX = double(sourceWidth) / targetWidth;
    const double stepY = double(sourceHeight) / targetHeight;
    parallelRows(targetHeight, targetWidth, [=](int first, int end) {
        double sy = 0.0;
        for (int y = 0; y < first; ++y)
            sy += stepY;
        for (int y = first; y < end; ++y, sy += stepY) {
            const int top = std::min(int(sy), sourceHeight - 1);
            const Word *upper = source + size_t(top) * size_t(sourceWidth);
            const Word *lower = top < sourceHeight - 1 ? upper + sourceWidth : upper;
            const double fy = sy - top;
            Word *out = target + size_t(y) * size_t(targetWidth);
            double sx = 0.0;
            for (int x = 0; x < targetWidth; ++x, sx += stepX) {
                const int left = std::min(int(sx), sourceWidth - 1);
                const int right = left < sourceWidth - 1 ? left + 1 : left;
                const double fx = sx - left;
                out[x] = Word(upper[left] * ((1 - fx) * (1 - fy)) + upper[right] * (fx * (1 - fy)) +
                              lower[left] * ((1 - fx) * fy) + lower[right] * (fx * fy));
            }
        }
    });
}
