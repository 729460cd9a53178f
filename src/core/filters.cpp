// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/filters.h"

#include "core/colour_inline.h"
#include "core/image.h"
#include "core/memory.h"
#include "core/rows.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace
{
/// A copy of one plane as it was before the filter. Test it: memory may be short.
class PlaneCopy
{
public:
    PlaneCopy(const image &owner, const uint16_t *plane, const char *label)
        : width(owner.width), height(owner.height), samples(size_t(owner.sampleCount()), label)
    {
        if (!samples)
            return;
        uint16_t *to = samples.get();
        parallelRows(height, width, [this, plane, to](int first, int end) {
            std::copy(plane + int64_t(first) * width, plane + int64_t(end) * width,
                      to + int64_t(first) * width);
        });
    }
    explicit operator bool() const { return bool(samples); }
    const uint16_t *row(int y) const { return samples.get() + int64_t(y) * width; }
    /// The row itself inside of the plane, else the nearest one.
    const uint16_t *nearestRow(int y) const { return row(std::clamp(y, 0, height - 1)); }

    const int width, height;

private:
    TrackedBuffer<uint16_t> samples;
};

/// Runs `work(y, output row)` for every row of a plane.
template <class Work>
void eachRow(const PlaneCopy &back, uint16_t *plane, Work work)
{
    parallelRows(back.height, back.width, [&](int first, int end) {
        for (int y = first; y < end; ++y)
            work(y, plane + int64_t(y) * back.width);
    });
}

uint16_t convolved(const uint16_t *const rows[3], int left, int x, int right,
                   const Convolution33 &matrix, double divisor)
{
    double sum = 0.0;
    for (int r = 0; r < 3; ++r) {
        sum += matrix.cells[3 * r] * rows[r][left];
        sum += matrix.cells[3 * r + 1] * rows[r][x];
        sum += matrix.cells[3 * r + 2] * rows[r][right];
    }
    sum = sum / divisor + matrix.bias;
    return uint16_t(clampSampleValue(matrix.absolute ? std::fabs(sum) : sum));
}

double keyOf(NeighbourKey key, Rgb c)
{
    switch (key) {
    case NeighbourKey::Luma:
        return 0.3 * c.red + 0.59 * c.green + 0.11 * c.blue;
    case NeighbourKey::Red:
        return c.red;
    case NeighbourKey::Green:
        return c.green;
    case NeighbourKey::Blue:
        return c.blue;
    case NeighbourKey::Saturation:
        return inlined::rgbToHsv(c).saturation;
    case NeighbourKey::Value:
        break;
    }
    return greater(greater(c.red, c.green), c.blue);
}

/// The best pixel of a column of three: its key and the row that it stands in.
struct Candidate {
    double key;
    int row; ///< 0 above, 1 own, 2 below
};

/// One row of a minimum or maximum filter. The best of each column of three is found
/// once and serves the three pixels whose neighbourhoods it belongs to.
template <class Better>
class NeighbourRow
{
public:
    NeighbourRow(const PlaneCopy *const planes[3], int y, NeighbourKey byKey)
        : key(byKey), width(planes[0]->width)
    {
        for (int c = 0; c < 3; ++c)
            for (int r = 0; r < 3; ++r)
                rows[c][r] = planes[c]->nearestRow(y + r - 1);
    }
    void store(uint16_t *const out[3]) const
    {
        Candidate left = {}, centre = column(0), right = {};
        for (int x = 0; x < width; ++x) {
            Candidate best = centre;
            int from = x;
            if (x > 0 && Better()(left.key, best.key)) {
                best = left;
                from = x - 1;
            }
            if (x < width - 1) {
                right = column(x + 1);
                if (Better()(right.key, best.key)) {
                    best = right;
                    from = x + 1;
                }
            }
            for (int c = 0; c < 3; ++c)
                out[c][x] = rows[c][best.row][from];
            left = centre;
            centre = right;
        }
    }

private:
    Candidate column(int x) const
    {
        Candidate best = {keyAt(1, x), 1};
        for (const int r : {0, 2}) {
            const double other = keyAt(r, x);
            if (Better()(other, best.key))
                best = {other, r};
        }
        return best;
    }
    double keyAt(int r, int x) const
    {
        return keyOf(key, {double(rows[0][r][x]), double(rows[1][r][x]), double(rows[2][r][x])});
    }

    const uint16_t *rows[3][3]; ///< by channel, then above, own, below
    NeighbourKey key;
    int width;
};

template <class Better>
bool neighbourFilter(image *target, NeighbourKey key, const char *const labels[3])
{
    if (!target || !target->valid() || key < NeighbourKey::Luma || key > NeighbourKey::Value)
        return false;
    const PlaneCopy r(*target, target->red, labels[0]);
    const PlaneCopy g(*target, target->green, labels[1]);
    const PlaneCopy b(*target, target->blue, labels[2]);
    if (!r || !g || !b)
        return false;
    const PlaneCopy *const planes[3] = {&r, &g, &b};
    parallelRows(target->height, target->width * 3, [&](int first, int end) {
        for (int y = first; y < end; ++y) {
            const int64_t at = int64_t(y) * target->width;
            uint16_t *const out[3] = {target->red + at, target->green + at, target->blue + at};
            NeighbourRow<Better>(planes, y, key).store(out);
        }
    });
    return true;
}

struct Less {
    bool operator()(double a, double b) const { return a < b; }
};
struct More {
    bool operator()(double a, double b) const { return a > b; }
};

/// The samples around a run of one or two, as far as they lie inside of the plane.
struct Surroundings {
    uint16_t samples[10];
    int count = 0;

    /// Rows y - reach to y + reach, columns from one before to one after the run.
    Surroundings(const PlaneCopy &back, int x, int y, int run, int reach)
    {
        for (int row = std::max(0, y - reach); row <= std::min(back.height - 1, y + reach); ++row)
            for (int at = std::max(0, x - 1); at <= std::min(back.width - 1, x + run); ++at)
                if (row != y || at < x || at >= x + run)
                    samples[count++] = back.row(row)[at];
    }
    /// Whether a sample differs from all of them; never with nothing to compare with.
    bool isolate(uint16_t sample, int threshold) const
    {
        return count > 0 && std::all_of(samples, samples + count, [=](uint16_t other) {
                   return std::abs(int(sample) - int(other)) > threshold;
               });
    }
    uint16_t average() const
    {
        int sum = 0;
        for (int i = 0; i < count; ++i)
            sum += samples[i];
        return uint16_t(sum / count);
    }
};

/// Replaces isolated runs of `run` samples; `reach` 0 compares within the row alone.
bool rip(const image *owner, uint16_t *plane, int threshold, int run, int reach, const char *label)
{
    if (!owner || !owner->valid() || !plane || threshold < 0 || threshold > 65535)
        return false;
    const PlaneCopy back(*owner, plane, label);
    if (!back)
        return false;
    eachRow(back, plane, [&](int y, uint16_t *out) {
        const uint16_t *in = back.row(y);
        for (int x = 0; x + run <= back.width; ++x) {
            if (x > 0 && std::abs(int(in[x]) - int(in[x - 1])) <= threshold)
                continue; // true of nearly every sample, and cheap to see
            const Surroundings around(back, x, y, run, reach);
            const bool alone = std::all_of(in + x, in + x + run, [&](uint16_t sample) {
                return around.isolate(sample, threshold);
            });
            if (!alone)
                continue;
            std::fill(out + x, out + x + run, around.average());
            x += run - 1;
        }
    });
    return true;
}
} // namespace

bool convolveChannel(const image *owner, uint16_t *plane, const Convolution33 &matrix)
{
    if (!owner || !owner->valid() || !plane)
        return false;
    const PlaneCopy back(*owner, plane, "convchan33 back");
    if (!back)
        return false;
    const double divisor = nonZero(matrix.divisor);
    eachRow(back, plane, [&](int y, uint16_t *out) {
        const uint16_t *const rows[3] = {back.nearestRow(y - 1), back.row(y),
                                         back.nearestRow(y + 1)};
        const int last = back.width - 1;
        for (int x = 0; x <= last; ++x)
            out[x] = convolved(rows, std::max(0, x - 1), x, std::min(last, x + 1), matrix, divisor);
    });
    return true;
}

bool minimumFilter(image *target, NeighbourKey key)
{
    static const char *const labels[3] = {"minchan backr", "minchan backg", "minchan backb"};
    return neighbourFilter<Less>(target, key, labels);
}

bool maximumFilter(image *target, NeighbourKey key)
{
    static const char *const labels[3] = {"maxchan backr", "maxchan backg", "maxchan backb"};
    return neighbourFilter<More>(target, key, labels);
}

bool ripChannel(const image *owner, uint16_t *plane, int threshold)
{
    return rip(owner, plane, threshold, 1, 1, "ripchan back");
}

bool ripChannelRow(const image *owner, uint16_t *plane, int threshold)
{
    return rip(owner, plane, threshold, 1, 0, "ripchan2 back");
}

bool ripChannelDouble(const image *owner, uint16_t *plane, int threshold)
{
    return rip(owner, plane, threshold, 2, 1, "ripdouble back");
}
