// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <cstdlib>

/// Steps along the longer axis of a line, with what the shorter one adds. The error is
/// accumulated in whole numbers; a start outside of the plane is jumped over at once,
/// so coordinates from a script cannot make a line take minutes.
struct LineSteps {
    /// `tie` is 1 where a sample half-way between two rows stays on the first one, else 0.
    LineSteps(int major1, int major2, int minor1, int minor2, unsigned tie = 0)
        : length(distance(major1, major2)), rise(distance(minor1, minor2)), major(major1),
          minor(minor1), majorStep(major2 < major1 ? -1 : 1), minorStep(minor2 < minor1 ? -1 : 1),
          remaining(length), error(length > tie ? (length - tie) / 2 : 0)
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
