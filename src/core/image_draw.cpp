// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/bilinear_inline.h"
#include "core/colour.h"
#include "core/image.h"
#include "core/linesteps.h"
#include "core/rows.h"

#include <atomic>
#include <cstdlib>

namespace
{
/// Sum of the vertical differences of one plane, in steps of the high byte.
int64_t planeActivity(const uint16_t *plane, int width, int height, int threshold)
{
    std::atomic<int64_t> total{0};
    parallelRows(height - 1, width, [&](int first, int end) {
        int64_t sum = 0;
        for (int64_t i = int64_t(first) * width; i < int64_t(end) * width; ++i) {
            const int step = std::abs(int(plane[i]) - int(plane[i + width])) >> 8;
            sum += step < threshold ? 0 : step;
        }
        total += sum;
    });
    return total;
}
} // namespace

Rgba image::sampleAt(double x, double y) const
{
    if (!valid() || !(x >= 0.0 && y >= 0.0 && x < width && y < height))
        return {0.0, 0.0, 0.0, 0.0};
    const int left = int(x), top = int(y);
    const double fx = x - left, fy = y - top;
    const int64_t at = int64_t(top) * width + left;
    const int right = left < width - 1 ? 1 : 0;
    const int below = top < height - 1 ? width : 0;
    const auto mixed = [&](const uint16_t *plane) {
        return clampSampleValue(bilinearMix(plane[at], plane[at + right], plane[at + below],
                                            plane[at + below + right], fx, fy));
    };
    return {mixed(red), mixed(green), mixed(blue), mixed(alpha)};
}

void image::line(uint16_t *plane, int x1, int y1, int x2, int y2, uint16_t value) const
{
    if (!plane || !valid())
        return;
    const bool steep = LineSteps::distance(y1, y2) > LineSteps::distance(x1, x2);
    const int majorSize = steep ? height : width, minorSize = steep ? width : height;
    LineSteps at = steep ? LineSteps(y1, y2, x1, x2) : LineSteps(x1, x2, y1, y2);
    if (!at.enter(majorSize))
        return;
    do {
        if (at.major < 0 || at.major >= majorSize)
            return; // the major coordinate only moves on, away from the plane
        if (at.minor >= 0 && at.minor < minorSize)
            plane[steep ? at.major * width + at.minor : at.minor * width + at.major] = value;
    } while (at.next());
}

void image::line(uint16_t *plane, int x1, int y1, int x2, int y2) const
{
    line(plane, x1, y1, x2, y2, 65535);
}

double image::verticalActivity(int threshold, bool allChannels) const
{
    if (!valid() || height < 2)
        return 0.0;
    double sum = double(planeActivity(green, width, height, threshold));
    if (allChannels) {
        sum += double(planeActivity(red, width, height, threshold));
        sum += double(planeActivity(blue, width, height, threshold));
    }
    const double activity = sum / (double(width) * 765.0 * double(height - 1));
    return allChannels ? activity : activity * 3.0;
}
