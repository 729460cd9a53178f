// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/bilinear_inline.h"
#include "core/colour.h"
#include "core/image.h"
#include "core/rows.h"

#include <atomic>
#include <cstdlib>

namespace
{
/// Steps along the longer axis of a line, with what the shorter one adds. The error is
/// accumulated in whole numbers; a start outside of the plane is jumped over at once,
/// so coordinates from a script cannot make a line take minutes.
struct LineSteps {
    LineSteps(int major1, int major2, int minor1, int minor2)
        : length(distance(major1, major2)), rise(distance(minor1, minor2)), major(major1),
          minor(minor1), majorStep(major2 < major1 ? -1 : 1), minorStep(minor2 < minor1 ? -1 : 1),
          remaining(length), error(length / 2)
    {
    }
    static uint64_t distance(int64_t from, int64_t to) { return uint64_t(std::llabs(to - from)); }

    /// Goes to the first point whose major coordinate is inside of 0 to size - 1.
    bool enter(int size)
    {
        const int64_t ahead = majorStep > 0 ? -major : major - (size - 1);
        if (ahead > int64_t(remaining))
            return false;
        if (ahead > 0) {
            const uint64_t total = uint64_t(ahead) * rise + error;
            major += majorStep * ahead;
            minor += minorStep * int64_t(total / length);
            error = total % length;
            remaining -= uint64_t(ahead);
        }
        return true;
    }
    bool next()
    {
        if (remaining-- == 0)
            return false;
        major += majorStep;
        error += rise;
        if (error >= length) {
            error -= length;
            minor += minorStep;
        }
        return true;
    }

    uint64_t length, rise;
    int64_t major, minor;
    int majorStep, minorStep;
    uint64_t remaining, error;
};

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
