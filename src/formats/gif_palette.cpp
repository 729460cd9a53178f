// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/gif_palette.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <utility>

namespace
{
constexpr size_t kMostCells = 65536;
constexpr int kSlotBits = 17; // twice as many buckets as cells keep searches short
constexpr int kPartBits = 5;
constexpr int kPartShift = 8 - kPartBits;
constexpr int kPartSide = 1 << kPartShift;
/// Rounds of moving each palette colour to the mean of what it is nearest to.
constexpr int kRefinements = 3;

using Channels = std::array<double, 3>;

/// The mean of a cell and its weight.
struct Point {
    Channels at;
    double weight;
};

/// A group of points that get one palette entry.
struct Group {
    size_t first, end;
    int axis;     ///< the channel that spreads most
    double error; ///< sum of squared distances from the mean
};

Group groupOf(const std::vector<Point> &points, size_t first, size_t end)
{
    double weight = 0;
    Channels sum = {}, squares = {};
    for (size_t i = first; i < end; ++i) {
        weight += points[i].weight;
        for (size_t c = 0; c < 3; ++c) {
            sum[c] += points[i].weight * points[i].at[c];
            squares[c] += points[i].weight * points[i].at[c] * points[i].at[c];
        }
    }
    Group group{first, end, 0, 0};
    double most = -1;
    for (size_t c = 0; c < 3; ++c) {
        const double spread = std::max(0.0, squares[c] - sum[c] * sum[c] / weight);
        group.error += spread;
        if (spread > most) {
            most = spread;
            group.axis = int(c);
        }
    }
    return group;
}

/// Sorts the group along its axis and returns where to cut it in two parts, neither empty,
/// so that the squared error along the axis falls most.
size_t bestCut(std::vector<Point> &points, const Group &group)
{
    const auto axis = size_t(group.axis);
    const auto begin = points.begin();
    std::sort(begin + ptrdiff_t(group.first), begin + ptrdiff_t(group.end),
              [axis](const Point &a, const Point &b) { return a.at[axis] < b.at[axis]; });
    double weight = 0, sum = 0;
    for (size_t i = group.first; i < group.end; ++i) {
        weight += points[i].weight;
        sum += points[i].weight * points[i].at[axis];
    }
    size_t cut = group.first + 1;
    double best = -1, lowWeight = 0, lowSum = 0;
    for (size_t i = group.first; i + 1 < group.end; ++i) {
        lowWeight += points[i].weight;
        lowSum += points[i].weight * points[i].at[axis];
        const double highSum = sum - lowSum;
        const double gain = lowSum * lowSum / lowWeight + highSum * highSum / (weight - lowWeight);
        if (gain > best) {
            best = gain;
            cut = i + 1;
        }
    }
    return cut;
}

PaletteColor rounded(const Channels &mean)
{
    const auto byte = [](double v) { return uint8_t(std::clamp(std::lround(v), 0L, 255L)); };
    return {byte(mean[0]), byte(mean[1]), byte(mean[2])};
}

/// Means of the points that share a number below `count`; `old` where there are none.
std::vector<PaletteColor> meansOf(const std::vector<Point> &points,
                                  const std::vector<uint8_t> &numbers,
                                  std::vector<PaletteColor> old)
{
    std::vector<Channels> sums(old.size());
    std::vector<double> weights(old.size());
    for (size_t i = 0; i < points.size(); ++i) {
        weights[numbers[i]] += points[i].weight;
        for (size_t c = 0; c < 3; ++c)
            sums[numbers[i]][c] += points[i].weight * points[i].at[c];
    }
    for (size_t n = 0; n < old.size(); ++n)
        if (weights[n] > 0)
            old[n] = rounded(
                {sums[n][0] / weights[n], sums[n][1] / weights[n], sums[n][2] / weights[n]});
    return old;
}

/// Cuts the worst group until there are enough; the means of the groups.
std::vector<PaletteColor> cutIntoGroups(std::vector<Point> &points, size_t most)
{
    std::vector<Group> groups = {groupOf(points, 0, points.size())};
    while (groups.size() < most) {
        const auto worst =
            std::max_element(groups.begin(), groups.end(), [](const Group &a, const Group &b) {
                return a.end - a.first < 2 || (b.end - b.first >= 2 && a.error < b.error);
            });
        if (worst->end - worst->first < 2)
            break;
        const Group whole = *worst;
        const size_t cut = bestCut(points, whole);
        *worst = groupOf(points, whole.first, cut);
        groups.push_back(groupOf(points, cut, whole.end));
    }
    std::vector<uint8_t> numbers(points.size());
    for (size_t n = 0; n < groups.size(); ++n)
        std::fill(numbers.begin() + ptrdiff_t(groups[n].first),
                  numbers.begin() + ptrdiff_t(groups[n].end), uint8_t(n));
    return meansOf(points, numbers, std::vector<PaletteColor>(groups.size()));
}

std::vector<PaletteColor> refined(const std::vector<Point> &points,
                                  std::vector<PaletteColor> palette)
{
    std::vector<uint8_t> numbers(points.size());
    NearestColor nearest(palette);
    for (size_t i = 0; i < points.size(); ++i) {
        const PaletteColor near = rounded(points[i].at);
        numbers[i] = uint8_t(nearest.find(near.red, near.green, near.blue));
    }
    return meansOf(points, numbers, std::move(palette));
}

int squared(int value)
{
    return value * value;
}
} // namespace

ColorHistogram::ColorHistogram() : buckets(size_t(1) << kSlotBits) {}

ColorHistogram::Cell &ColorHistogram::slotOf(uint32_t key)
{
    size_t at = (key * 2654435761U) >> (32 - kSlotBits); // Fibonacci hashing
    while (buckets[at].count != 0 && buckets[at].key != key)
        at = (at + 1) & (buckets.size() - 1);
    return buckets[at];
}

void ColorHistogram::add(uint32_t rgb, uint64_t times)
{
    Cell *cell = &slotOf(rgb & mask);
    while (cell->count == 0 && used == kMostCells) {
        coarsen();
        cell = &slotOf(rgb & mask);
    }
    used += cell->count == 0;
    cell->key = rgb & mask;
    cell->count += times;
    cell->sums[0] += times * (rgb >> 16 & 0xFF);
    cell->sums[1] += times * (rgb >> 8 & 0xFF);
    cell->sums[2] += times * (rgb & 0xFF);
}

/// Drops the lowest bit that keys still have in each channel.
void ColorHistogram::coarsen()
{
    mask &= mask << 1 & 0xFEFEFE;
    std::vector<Cell> old(buckets.size());
    old.swap(buckets);
    used = 0;
    for (const Cell &from : old)
        if (from.count != 0) {
            Cell &to = slotOf(from.key & mask);
            used += to.count == 0;
            to.key = from.key & mask;
            to.count += from.count;
            for (size_t c = 0; c < 3; ++c)
                to.sums[c] += from.sums[c];
        }
}

std::vector<ColorHistogram::Cell> ColorHistogram::cells() const
{
    std::vector<Cell> found;
    found.reserve(used);
    std::copy_if(buckets.begin(), buckets.end(), std::back_inserter(found),
                 [](const Cell &cell) { return cell.count != 0; });
    std::sort(found.begin(), found.end(),
              [](const Cell &a, const Cell &b) { return a.key < b.key; });
    return found;
}

std::vector<PaletteColor> reduceColors(const ColorHistogram &histogram, int most)
{
    std::vector<Point> points;
    points.reserve(histogram.size());
    for (const ColorHistogram::Cell &cell : histogram.cells()) {
        const auto count = double(cell.count);
        points.push_back({{double(cell.sums[0]) / count, double(cell.sums[1]) / count,
                           double(cell.sums[2]) / count},
                          count});
    }
    if (points.size() <= size_t(most)) {
        std::vector<PaletteColor> all;
        for (const Point &point : points)
            all.push_back(rounded(point.at));
        return all;
    }
    std::vector<PaletteColor> palette = cutIntoGroups(points, size_t(most));
    for (int round = 0; round < kRefinements; ++round)
        palette = refined(points, std::move(palette));
    return palette;
}

NearestColor::NearestColor(std::vector<PaletteColor> palette)
    : colors(std::move(palette)), parts(size_t(1) << (3 * kPartBits))
{
}

/// An entry can be nearest to some colour of a part only if its least distance from the
/// part is no more than the least of all entries' greatest distances.
void NearestColor::look(Part *part, const std::array<int, 3> &corner)
{
    std::array<int, 256> least = {};
    int bound = INT_MAX;
    for (size_t i = 0; i < colors.size(); ++i) {
        const std::array<int, 3> color = {colors[i].red, colors[i].green, colors[i].blue};
        int greatest = 0;
        for (size_t c = 0; c < 3; ++c) {
            const int low = corner[c] - color[c], high = color[c] - (corner[c] + kPartSide - 1);
            least[i] += squared(std::max({low, high, 0}));
            greatest += squared(std::max(-low, -high));
        }
        bound = std::min(bound, greatest);
    }
    part->first = uint32_t(candidates.size());
    for (size_t i = 0; i < colors.size(); ++i)
        if (least[i] <= bound)
            candidates.push_back(uint8_t(i));
    part->count = uint32_t(candidates.size()) - part->first;
}

int NearestColor::find(int red, int green, int blue)
{
    const int r = red >> kPartShift, g = green >> kPartShift, b = blue >> kPartShift;
    Part &part = parts[size_t((r << kPartBits | g) << kPartBits | b)];
    if (part.count == 0)
        look(&part, {r << kPartShift, g << kPartShift, b << kPartShift});
    int best = 0, distance = INT_MAX;
    for (uint32_t i = part.first; i < part.first + part.count; ++i) {
        const PaletteColor &color = colors[candidates[i]];
        const int d =
            squared(color.red - red) + squared(color.green - green) + squared(color.blue - blue);
        if (d < distance) {
            distance = d;
            best = candidates[i];
        }
    }
    return best;
}
