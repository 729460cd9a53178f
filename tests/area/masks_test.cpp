// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/blendcurve.h"
#include "area/mask.h"
#include "area/maskops.h"
#include "area/outline.h"
#include "area/smoothing.h"
#include "area/wand.h"
#include "core/cpu.h"
#include "core/memory.h"
#include "core/rows.h"
#include "formats/maskpicture.h"
#include "formats/tagged.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"
#include "support/stack.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <vector>

namespace
{
using Words = std::vector<uint16_t>;

Words maskOf(const image &img)
{
    return Words(img.gmask, img.gmask + img.sampleCount());
}

/// Flat rectangles over each other, some with words that a smoothing takes near its limits,
/// some with noise, so that the short cuts meet their borders.
ImagePtr patches(int width, int height, uint32_t seed)
{
    ImagePtr img = randomImage(width, height, seed);
    std::mt19937 random(seed);
    const Words noise = maskOf(*img);
    for (int i = 0; i < 16; ++i) {
        const int left = random() % 3 ? int(random() % unsigned(width)) : 0;
        const int top = random() % 3 ? int(random() % unsigned(height)) : 0;
        const unsigned near = random() % 24;
        const unsigned flats[] = {0, 0, 65535, 65535, 65535 - near, 8 + near};
        const unsigned kind = random() % 7;
        for (int y = top; y < height; ++y)
            for (int x = left; x < width; ++x) {
                const int at = y * width + x;
                img->gmask[at] = kind < 6 ? uint16_t(flats[kind]) : noise[size_t(at)];
            }
    }
    // A step that not all columns have.
    for (int i = 0; width > 256 && i < width * height; ++i)
        if (i % width >= 150 || i / width >= height / 2)
            img->gmask[i] = 65535;
    return img;
}

std::vector<double> plainTaps(int radius)
{
    std::vector<double> taps;
    double sum = 0;
    for (int i = -radius; i <= radius; ++i) {
        taps.push_back(std::exp(-(i * i) / double(radius)) / (radius * M_PI));
        sum += taps.back();
    }
    for (double &tap : taps)
        tap /= sum;
    return taps;
}

/// acc / wsum for one place of a line that starts at `line`.
double plainSum(const uint16_t *line, int step, int length, int at, const std::vector<double> &taps)
{
    const int radius = int(taps.size()) / 2;
    int acc = 0;
    double wsum = 0;
    for (int i = -radius; i <= radius; ++i)
        if (at + i >= 0 && at + i < length) {
            acc += int(line[(at + i) * step] * taps[size_t(i + radius)]);
            wsum += taps[size_t(i + radius)];
        }
    return acc / wsum;
}

Words plainSmooth(const Words &words, int width, int height, int radius, double amount)
{
    const std::vector<double> taps = plainTaps(radius);
    Words across(words.size()), result(words.size());
    for (int i = 0; i < width * height; ++i)
        across[size_t(i)] =
            uint16_t(plainSum(&words[size_t(i / width * width)], 1, width, i % width, taps));
    for (int i = 0; i < width * height; ++i) {
        const double s = plainSum(&across[size_t(i % width)], width, height, i / width, taps);
        const double v = s * amount + (1 - amount) * words[size_t(i)];
        result[size_t(i)] = v > 65527 ? 65535 : v >= 8 ? uint16_t(v) : 0;
    }
    return result;
}

/// The greatest or smallest word in the disc around each sample.
Words plainSpread(const Words &words, int width, int height, int radius, bool grow)
{
    Words result(words.size());
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            int found = words[size_t(y * width + x)];
            for (int dy = -radius; dy <= radius; ++dy)
                for (int dx = -radius; dx <= radius; ++dx) {
                    const int px = x + dx, py = y + dy;
                    const bool inside = px >= 0 && py >= 0 && px < width && py < height;
                    const int word = inside ? words[size_t(py * width + px)] : 0;
                    if (dx * dx + dy * dy <= radius * radius)
                        found = grow ? std::max(found, word) : std::min(found, word);
                }
            result[size_t(y * width + x)] = uint16_t(found);
        }
    return result;
}

/// Runs an act with one allocation failing after another until it succeeds. Every failure
/// leaves the selection and all memory as they were.
void failEachAllocation(image *img, const char *name, const std::function<bool()> &act)
{
    const Words before = maskOf(*img);
    int failures = -1;
    for (bool done = false; !done; ++failures) {
        ASSERT_LT(failures, 20) << name;
        const int64_t blocks = memRecord.currentBlocks;
        memFailAt(failures + 2);
        done = act();
        memFailAt(0);
        ASSERT_EQ(memRecord.currentBlocks, blocks) << name;
        ASSERT_TRUE(done || maskOf(*img) == before) << name << ' ' << failures;
    }
    EXPECT_GT(failures, 0) << name;
    std::copy(before.begin(), before.end(), img->gmask);
}
} // namespace

TEST(Smoothing, EqualsThePlainSumsAtEveryLevelOnAnyNumberOfThreads)
{
    const double inf = std::numeric_limits<double>::infinity();
    const double amounts[] = {1, 0.5, 0, 1, 1.5, -3, 1, 10, inf, -inf, inf - inf, 1};
    const int sizes[][2] = {{1, 1}, {2, 37}, {40, 3}, {290, 61}, {131, 140}, {203, 90}};
    memSweep();
    const int64_t broken = memRecord.overruns + memRecord.underruns;
    for (int radius : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 70, 200})
        for (const auto &size : sizes) {
            const double amount = amounts[(radius + size[0]) % 12];
            const auto img = patches(size[0], size[1], uint32_t(radius * size[0]));
            const Words before = maskOf(*img);
            const Words wanted = plainSmooth(before, size[0], size[1], radius, amount);
            for (KernelLevel level :
                 {KernelLevel::Baseline, KernelLevel::Avx2, KernelLevel::Avx512})
                for (int threads : {1, 4}) {
                    limitKernels(level);
                    setRowThreads(threads);
                    std::copy(before.begin(), before.end(), img->gmask);
                    ASSERT_TRUE(smoothSelection(img.get(), radius, amount));
                    ASSERT_EQ(maskOf(*img), wanted) << radius << ' ' << size[0] << ' ' << amount;
                }
        }
    setRowThreads(0);
    memSweep();
    EXPECT_EQ(memRecord.overruns + memRecord.underruns, broken);
}

TEST(Smoothing, EveryRadiusUpToTheGreatestWorksAndNoOther)
{
    auto img = plainImage(9, 9, 0, 0, 0);
    for (int radius = 1; radius <= kMostSmoothingRadius; ++radius) {
        img->fillGmask(65535);
        ASSERT_TRUE(smoothSelection(img.get(), radius, 1.0)) << radius;
        ASSERT_GT(img->maskAt(4, 4), 65000);
    }
    for (int radius : {0, -1, kMostSmoothingRadius + 1})
        EXPECT_FALSE(smoothSelection(img.get(), radius, 1.0));
    SmoothingKernel kernel;
    ASSERT_TRUE(kernel.twoGet(1));
    EXPECT_NEAR(kernel.taps[0], std::exp(-1) / (1 + 2 * std::exp(-1)), 1e-15);
    EXPECT_EQ(memSize(kernel.taps), 13 * int64_t(sizeof(double)));
}

TEST(Smoothing, AFeatherIsAsWideAsAskedAndLeavesTheInsideFull)
{
    RecordingWorkspace ws;
    for (const int distance : {1, 5, 20, 60}) {
        const ImagePtr img = plainImage(300, 40, 0, 0, 0);
        for (int i = 0; i < 300 * 40; ++i)
            img->gmask[i] = i % 300 < 150 ? 65535 : 0;
        ASSERT_TRUE(featherSelection(img.get(), distance));
        EXPECT_EQ(img->gmask[2 * 300 + 10], 65535) << distance;
        EXPECT_NEAR((img->maskAt(149, 20) + img->maskAt(150, 20)) / 2.0, 32768, 900) << distance;
        EXPECT_GT(img->maskAt(149 + (distance + 1) / 2, 20), 2000) << distance;
        EXPECT_LT(img->maskAt(150 + distance + distance / 2, 20), 2000) << distance;
        EXPECT_EQ(img->maskAt(295, 20), 0) << distance;
    }
    EXPECT_FALSE(featherSelection(plainImage(9, 9, 0, 0, 0).get(), kMostFeather + 1));
}

TEST(Masks, GrowAndShrinkByARoundNeighbourhood)
{
    for (int radius : {1, 2, 3, 5, 8, 16})
        for (const auto &[width, height] : {std::pair(37, 20), std::pair(1, 9), std::pair(540, 70)})
            for (bool grow : {true, false}) {
                const auto img = patches(width, height, uint32_t(radius * width));
                const Words wanted = plainSpread(maskOf(*img), width, height, radius, grow);
                ASSERT_TRUE((grow ? growSelection : shrinkSelection)(img.get(), radius));
                ASSERT_EQ(maskOf(*img), wanted) << radius << ' ' << width << ' ' << grow;
            }
    auto img = plainImage(70, 30, 0, 0, 0);
    img->fillGmask(0);
    img->gmask[69] = 77;
    ASSERT_TRUE(growSelection(img.get(), 500));
    EXPECT_EQ(maskOf(*img), Words(2100, 77));
    EXPECT_FALSE(growSelection(img.get(), 501));
    EXPECT_FALSE(shrinkSelection(img.get(), 0));
}

TEST(Masks, AreScaledJoinedAndTakenFromAPictureAndBack)
{
    RecordingWorkspace space;
    Mask small, wide;
    ASSERT_TRUE(small.init(2, 1) && wide.init(4, 2));
    small.mask[0] = 0;
    small.mask[1] = 65535;
    Mask::rescale(&small, &wide);
    EXPECT_EQ(Words(wide.mask, wide.mask + 8),
              (Words{0, 32767, 65535, 65535, 0, 32767, 65535, 65535}));
    EXPECT_FALSE(small.init(65536, 65536));
    EXPECT_FALSE(small.init(0, 4));
    dmask one, two;
    ASSERT_TRUE(one.init(1, 2) && two.init(3, 4));
    one.mask[1] = 1;
    dmask::rescale(&one, &two);
    EXPECT_EQ(two.mask[4], 0.5);
    EXPECT_EQ(two.mask[11], 1.0);

    uint16_t fresh[] = {0, 40000, 65535}, old[] = {5, 40000, 1};
    combineMasks(fresh, old, 3, 1, false);
    EXPECT_EQ(Words(fresh, fresh + 3), (Words{5, 0, 0}));
    combineMasks(old, old, 3, 1, true);
    EXPECT_EQ(Words(old, old + 3), (Words{10, 65535, 2}));

    const QTemporaryDir folder;
    const auto img = randomImage(130, 260, 5);
    const Words mask = maskOf(*img);
    for (int bits : {8, 16}) {
        const QString path = folder.filePath(QStringLiteral("mask.png")); // over the old one
        QString error;
        ASSERT_TRUE(saveMaskPicture(*img, path, bits, &error)) << qPrintable(error);
        image *read = loadMaskPicture(path, &error);
        ASSERT_TRUE(read) << qPrintable(error);
        EXPECT_FALSE(space.png16);
        auto target = plainImage(130, 260, 0, 0, 0);
        ASSERT_TRUE(selectFromPicture(target.get(), *read));
        for (size_t i = 0; i < mask.size(); ++i)
            ASSERT_EQ(target->gmask[i], bits == 16 ? mask[i] : (mask[i] >> 8) * 257);
        auto half = plainImage(65, 130, 0, 0, 0);
        ASSERT_TRUE(selectFromPicture(half.get(), *read));
        EXPECT_EQ(half->gmask[66], target->gmask[2 * 130 + 2]);
        EXPECT_FALSE(saveMaskPicture(*img, path + QStringLiteral("/no/folder"), bits, &error));
        EXPECT_FALSE(error.isEmpty());
        destroyTree(&read);
    }
    QString error;
    EXPECT_FALSE(loadMaskPicture(folder.filePath(QStringLiteral("none.png")), &error));
    EXPECT_TRUE(error.contains(QStringLiteral("none.png")));
}

TEST(Masks, AStackIsLoadedAsItIsComposedAndLeavesNothing)
{
    RecordingWorkspace space;
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("stack.elx"));
    QString error;
    Stack stack;
    stack.add(0)->fill(30000, 30000, 30000, 65535);
    ASSERT_TRUE(writeMaster(stack.master, path, &error)) << qPrintable(error);
    const int64_t blocks = memRecord.currentBlocks;
    image *read = loadMaskPicture(path, &error);
    ASSERT_TRUE(read) << qPrintable(error);
    auto target = plainImage(4, 4, 0, 0, 0);
    ASSERT_TRUE(selectFromPicture(target.get(), *read));
    EXPECT_EQ(target->gmask[5], 30000);
    target.reset();
    delete read;
    EXPECT_EQ(memRecord.currentBlocks, blocks);
}

TEST(Masks, AlphaAndLumaBecomeTheSelection)
{
    const auto img = randomImage(61, 17, 9);
    ASSERT_TRUE(selectFromAlpha(img.get()));
    EXPECT_EQ(maskOf(*img), Words(img->alpha, img->alpha + 61 * 17));
    ASSERT_TRUE(selectFromLuma(img.get()));
    for (int i = 0; i < 61 * 17; ++i)
        ASSERT_NEAR(img->gmask[i], 0.3 * img->red[i] + 0.59 * img->green[i] + 0.11 * img->blue[i],
                    0.51);
    image empty;
    EXPECT_FALSE(selectFromAlpha(&empty) || selectFromLuma(nullptr) || growSelection(&empty, 3));
}

TEST(Masks, WithoutMemoryTheSelectionStays)
{
    RecordingWorkspace space;
    const auto img = patches(50, 40, 3);
    const auto other = randomImage(20, 20, 4);
    Mask saved;
    failEachAllocation(img.get(), "smooth", [&] { return smoothSelection(img.get(), 3, 1.0); });
    failEachAllocation(img.get(), "feather", [&] { return featherSelection(img.get(), 40); });
    failEachAllocation(img.get(), "wand", [&] { return wandSelect(img.get(), 5, 5, 30); });
    failEachAllocation(img.get(), "grow", [&] { return growSelection(img.get(), 3); });
    failEachAllocation(img.get(), "shrink", [&] { return shrinkSelection(img.get(), 3); });
    failEachAllocation(img.get(), "picture", [&] { return selectFromPicture(img.get(), *other); });
    for (bool expand : {true, false}) {
        space.outlineExpand = expand;
        failEachAllocation(img.get(), "outline",
                           [&] { return outlineSelect(img.get()) != OutlineResult::NoMemory; });
    }
    ASSERT_TRUE(saved.copyFrom(*img));
    memFailAt(1);
    EXPECT_FALSE(saved.copyFrom(*other));
    memFailAt(0);
    EXPECT_EQ(Words(saved.mask, saved.mask + saved.size), maskOf(*img));
}
