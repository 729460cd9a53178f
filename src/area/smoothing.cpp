// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/smoothing.h"

#include "area/mask.h"
#include "area/smoothing_kernels.h"
#include "core/image.h"
#include "core/rows.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace
{
constexpr double kPi = 3.14159265358979323846;
constexpr size_t kSpareTaps = 10;
constexpr int kBlock = 64;
constexpr int kMostTaps = 2 * kMostSmoothingRadius + 1;
constexpr int kMostBlocks = kMaxImageSide / kBlock + 1;

/// A fixed weight that gives int(sample * weight) for every 16-bit sample. The weights that
/// give the same products lie between two fractions with denominators up to 65535, so they
/// are more than 2 to the -32 apart and one of them is a fixed weight. Only the rounding of a
/// product up to a whole number could spoil that; it does for none of the radii.
bool fixWeight(double weight, uint32_t *fixedWeight)
{
    uint64_t low = 0, high = UINT32_MAX;
    uint64_t guess = uint64_t(weight * 4294967296.0);
    while (guess >= low && guess <= high) {
        const int sample = KERNEL_DISPATCH(firstMisweighed, weight, uint32_t(guess));
        if (sample == 65536) {
            *fixedWeight = uint32_t(guess);
            return true;
        }
        const uint64_t wanted = uint64_t(sample * weight), base = uint64_t(sample);
        if (guess * base >> 32 < wanted) {
            low = ((wanted << 32) + base - 1) / base;
            guess = low;
        } else {
            high = (((wanted + 1) << 32) - 1) / base;
            guess = high;
        }
    }
    return false;
}

/// The taps of one direction as the kernels want them. `reach` is the distance of the last
/// one that can add to a sum; the weights of those beyond it count all the same.
class Line
{
public:
    Line(const SmoothingKernel &kernel, ptrdiff_t step) : smoothing(kernel)
    {
        reach = kernel.radius;
        while (int(65535 * kernel.taps[kernel.radius + reach]) == 0)
            --reach;
        for (int i = -reach; i <= reach; ++i)
            taps[i + reach] = {i * step, 0};
    }

    bool fixWeights()
    {
        for (int i = 0; i <= reach; ++i) {
            uint32_t weight;
            if (!fixWeight(smoothing.taps[smoothing.radius + i], &weight))
                return false;
            taps[reach + i].weight = taps[reach - i].weight = weight;
        }
        return true;
    }

    /// The same taps for the other direction.
    Line turned(ptrdiff_t step) const
    {
        Line other = *this;
        for (int i = -reach; i <= reach; ++i)
            other.taps[i + reach].offset = i * step;
        return other;
    }

    /// Whether no tap falls off the ends of a line of `length` words at `at`.
    bool inner(int at, int length) const
    {
        return at >= smoothing.radius && at < length - smoothing.radius;
    }

    /// The sum of the weights within the line, in order.
    double weightAt(int at, int length) const
    {
        const int radius = smoothing.radius;
        const int first = -std::min(radius, at), last = std::min(radius, length - 1 - at);
        double sum = 0.0;
        for (int i = first; i <= last; ++i)
            sum += smoothing.taps[radius + i];
        return sum;
    }

    /// Weighs `count` words from `source` on, all of which stand at place `at` of a line
    /// of `length` or, with `at` as the first, have all their taps in it.
    void weigh(const uint16_t *source, int at, int length, int count, uint16_t *sums) const
    {
        const int first = -std::min(reach, at), last = std::min(reach, length - 1 - at);
        KERNEL_DISPATCH(weighWords, source, &taps[reach + first], last - first + 1, count, sums);
    }

    int radius() const { return smoothing.radius; }
    double wholeWeight() const { return weightAt(radius(), 2 * radius() + 1); }

    int reach;

private:
    const SmoothingKernel &smoothing;
    FixedTap taps[kMostTaps];
};

bool allEqual(const uint16_t *words, int count)
{
    return std::memcmp(words, words + 1, size_t(count - 1) * sizeof(uint16_t)) == 0;
}

/// One smoothing of a plane: across into a scratch plane, then down and back.
class Smoother
{
public:
    Smoother(const Line &taps, int planeWidth, int planeHeight, double share)
        : across(taps), down(taps.turned(planeWidth)), width(planeWidth), height(planeHeight),
          amount(share), wholeWeight(taps.wholeWeight()), snap(snapRule())
    {
        const int radius = taps.radius();
        firstInner = std::min(radius, width);
        endInner = std::max(width - radius, firstInner);
        for (int x = 0; x < firstInner; ++x)
            outerWeights[x] = across.weightAt(x, width);
        for (int x = endInner; x < width; ++x)
            outerWeights[firstInner + x - endInner] = across.weightAt(x, width);
    }

    void acrossRow(const uint16_t *words, uint16_t *out) const
    {
        for (int x = 0; x < firstInner; ++x)
            outerWord(words, x, outerWeights[x], out);
        int flatWord = 0;
        uint16_t flatResult = 0;
        for (int x = firstInner; x < endInner; x += kBlock) {
            const int count = std::min(kBlock, endInner - x);
            if (!allEqual(words + x - across.reach, count + 2 * across.reach)) {
                innerWords(words, x, count, out + x);
                continue;
            }
            if (words[x] != flatWord) {
                flatWord = words[x];
                innerWords(words, x, 1, &flatResult);
            }
            std::fill_n(out + x, count, flatResult);
        }
        for (int x = endInner; x < width; ++x)
            outerWord(words, x, outerWeights[firstInner + x - endInner], out);
    }

    /// Rows `first` to `end` - 1 of the plane.
    void downRows(const uint16_t *scratch, int first, int end, uint16_t *plane) const
    {
        FlatBlocks flat(scratch, width, std::max(first - down.reach, 0));
        for (int y = first; y < end; ++y) {
            flat.enterRows(std::min(y + down.reach, height - 1));
            const int rowsNeeded = down.inner(y, height) ? 2 * down.reach + 1 : height + 1;
            downRow(scratch, y, flat, rowsNeeded, plane + size_t(y) * size_t(width));
        }
    }

private:
    /// For each block of columns, how many rows up to the last one that entered hold one
    /// and the same word in it.
    class FlatBlocks
    {
    public:
        FlatBlocks(const uint16_t *plane, int planeWidth, int firstRow)
            : words(plane), width(planeWidth), next(firstRow)
        {
        }
        void enterRows(int last)
        {
            for (; next <= last; ++next) {
                const uint16_t *row = words + size_t(next) * size_t(width);
                for (int block = 0, x = 0; x < width; ++block, x += kBlock) {
                    int &run = rows[block];
                    if (!allEqual(row + x, std::min(kBlock, width - x)))
                        run = 0;
                    else
                        run = run > 0 && row[x] == (row - width)[x] ? run + 1 : 1;
                }
            }
        }
        int run(int block) const { return rows[block]; }

    private:
        const uint16_t *words;
        int width, next;
        int rows[kMostBlocks] = {};
    };

    void outerWord(const uint16_t *words, int x, double weight, uint16_t *out) const
    {
        uint16_t sum;
        across.weigh(words + x, x, width, 1, &sum);
        out[x] = uint16_t(int(sum / weight));
    }

    /// The whole weight is 1 but for a few of its last bits: above 1, however little, it
    /// takes a sum below its whole number, and otherwise leaves it at or just above that.
    void innerWords(const uint16_t *words, int x, int count, uint16_t *out) const
    {
        across.weigh(words + x, x, width, count, out);
        if (wholeWeight > 1.0)
            for (int i = 0; i < count; ++i)
                out[i] = uint16_t(out[i] - (out[i] != 0));
    }

    void downRow(const uint16_t *scratch, int y, const FlatBlocks &flat, int rowsNeeded,
                 uint16_t *words) const
    {
        const SmoothMix mix = {down.weightAt(y, height), amount};
        const uint16_t *from = scratch + size_t(y) * size_t(width);
        int lastSource = -1, lastOld = -1; // of the flat block before, and what became of it
        uint16_t flatResult = 0;
        for (int block = 0, x = 0; x < width; ++block, x += kBlock) {
            const int count = std::min(kBlock, width - x);
            if (flat.run(block) < rowsNeeded || !allEqual(words + x, count)) {
                mixBlock(mix, from + x, y, count, words + x);
                continue;
            }
            if (from[x] != lastSource || words[x] != lastOld) {
                lastSource = from[x];
                lastOld = words[x];
                flatResult = words[x];
                mixBlock(mix, from + x, y, 1, &flatResult);
            }
            if (flatResult != lastOld)
                std::fill_n(words + x, count, flatResult);
        }
    }

    void mixBlock(const SmoothMix &mix, const uint16_t *from, int y, int count,
                  uint16_t *words) const
    {
        uint16_t sums[kBlock];
        down.weigh(from, y, height, count, sums);
        if (mix.amount == 1.0 && mix.divisor == wholeWeight)
            KERNEL_DISPATCH(snapWords, snap, sums, count, words);
        else
            KERNEL_DISPATCH(mixWords, mix, sums, count, words);
    }

    /// What a sum comes to without the old word, see innerWords, by its words at the limits.
    SmoothSnap snapRule() const
    {
        const SmoothMix mix = {wholeWeight, 1.0};
        const uint16_t sums[] = {8, 65527};
        uint16_t words[] = {0, 0};
        KERNEL_DISPATCH(mixWords, mix, sums, 2, words);
        return {uint16_t(words[0] ? 8 : 9), uint16_t(words[1] == 65535 ? 65527 : 65528),
                uint16_t(wholeWeight > 1.0)};
    }

    Line across, down;
    int width, height, firstInner, endInner;
    double amount, wholeWeight;
    SmoothSnap snap;
    double outerWeights[2 * kMostSmoothingRadius] = {};
};
} // namespace

bool SmoothingKernel::twoGet(int newRadius)
{
    upfree(&taps);
    radius = 0;
    if (newRadius < 1 || newRadius > kMostSmoothingRadius)
        return false;
    const size_t count = 2 * size_t(newRadius) + 1;
    if (!ucalloc(&taps, count + kSpareTaps, sizeof(double), "twoGet() ray"))
        return false;
    radius = newRadius;
    double sum = 0.0;
    for (int i = -radius; i <= radius; ++i)
        sum += taps[radius + i] = std::exp(-double(i * i) / radius) / (radius * kPi);
    for (size_t i = 0; i < count; ++i)
        taps[i] /= sum;
    return true;
}

bool antialiasMask(const SmoothingKernel &kernel, const image &img, double amount, uint16_t *plane)
{
    if (!kernel.taps || !plane || !img.valid())
        return false;
    const int width = img.width, height = img.height;
    Line taps(kernel, 1);
    if (!taps.fixWeights())
        return false;
    auto *scratch = static_cast<uint16_t *>(
        umalloc(size_t(img.sampleCount()) * sizeof(uint16_t), "aa-channel"));
    if (!scratch)
        return false;
    const Smoother smoother(taps, width, height, amount);
    parallelRows(height, width * kernel.radius, [&](int first, int end) {
        for (int y = first; y < end; ++y)
            smoother.acrossRow(plane + size_t(y) * size_t(width),
                               scratch + size_t(y) * size_t(width));
    });
    parallelRows(height, width * kernel.radius,
                 [&](int first, int end) { smoother.downRows(scratch, first, end, plane); });
    upfree(&scratch);
    return true;
}

bool smoothSelection(image *img, int radius, double amount)
{
    SmoothingKernel kernel;
    return img && kernel.twoGet(radius) && antialiasMask(kernel, *img, amount, img->gmask);
}

namespace
{
/// What a plane that holds one word everywhere becomes, well away from its edges: a little
/// less, because each product is truncated.
int smoothedLevel(const SmoothingKernel &kernel, int word)
{
    for (int direction = 0; direction < 2; ++direction) {
        int sum = 0;
        double weight = 0.0;
        for (int i = 0; i <= 2 * kernel.radius; ++i) {
            sum += int(word * kernel.taps[i]);
            weight += kernel.taps[i];
        }
        word = int(sum / weight);
    }
    return word > 65527 ? 65535 : word;
}

/// Brings a level back to 65535 and all words with it.
void stretchMask(image *img, int level)
{
    parallelRows(img->height, img->width, [=](int first, int end) {
        for (int64_t i = int64_t(first) * img->width; i < int64_t(end) * img->width; ++i) {
            const int64_t word = (int64_t(img->gmask[i]) * 65535 + level / 2) / level;
            img->gmask[i] = uint16_t(std::min<int64_t>(word, 65535));
        }
    });
}
} // namespace

bool featherSelection(image *img, int distance)
{
    if (!img || !img->gmask || distance < 1 || distance > kMostFeather)
        return false;
    // The bell of radius r has a variance of r / 2, variances of smoothings add up, and an
    // edge is soft for two deviations to either side.
    const int sum = std::max(1, distance * distance / 2);
    const int passes = (sum + kMostSmoothingRadius - 1) / kMostSmoothingRadius;
    SmoothingKernel kernel;
    Mask before;
    if (!kernel.twoGet((sum + passes - 1) / passes) || !before.copyFrom(*img))
        return false;
    int level = 65535;
    for (int pass = 0; pass < passes; ++pass) {
        if (!antialiasMask(kernel, *img, 1.0, img->gmask)) {
            std::copy_n(before.mask, before.size, img->gmask);
            return false;
        }
        level = smoothedLevel(kernel, level);
    }
    stretchMask(img, level);
    return true;
}
