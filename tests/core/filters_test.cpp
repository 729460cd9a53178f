// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/colour.h"
#include "core/filters.h"
#include "core/image.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace
{
int nearest(int value, int size)
{
    return std::clamp(value, 0, size - 1);
}

double slowKey(const image &img, int64_t i, NeighbourKey key)
{
    const Rgb c = {double(img.red[i]), double(img.green[i]), double(img.blue[i])};
    const double keys[] = {0.3 * c.red + 0.59 * c.green + 0.11 * c.blue,
                           c.red,
                           c.green,
                           c.blue,
                           rgbToHsv(c).saturation,
                           rgbToHsv(c).value};
    return keys[int(key)];
}

/// The place of the winner, all nine looked at in the order that ties are settled in.
int64_t slowWinner(const image &img, int x, int y, NeighbourKey key, bool least)
{
    int64_t winner = int64_t(y) * img.width + x;
    for (const int dx : {0, -1, 1})
        for (const int dy : {0, -1, 1}) {
            if (x + dx < 0 || x + dx >= img.width || y + dy < 0 || y + dy >= img.height)
                continue;
            const int64_t at = int64_t(y + dy) * img.width + x + dx;
            const double mine = slowKey(img, at, key), best = slowKey(img, winner, key);
            if (least ? mine < best : mine > best)
                winner = at;
        }
    return winner;
}
} // namespace

TEST(Filters, ConvolutionEqualsTheLonghandSum)
{
    RecordingWorkspace ws;
    const Convolution33 matrices[] = {
        {{0, 0, 0, 0, 1, 0, 0, 0, 0}},
        {{1, 2, 1, 2, 4, 2, 1, 2, 1}, 16},
        {{-1, -1, -1, -1, 8, -1, -1, -1, 0.5}, 2, 100, true},
        {{1, 0, 0, 0, 0, 0, 0, 0, -1}, 1, -5000},
        {{1, 1, 1, 1, 1, 1, 1, 1, 1}, 0}, // no division by zero
    };
    const int sizes[][2] = {{1, 1}, {1, 7}, {40, 31}};
    for (const auto &size : sizes)
        for (const Convolution33 &m : matrices) {
            const ImagePtr from = randomImage(size[0], size[1], 13);
            const ImagePtr img = randomImage(size[0], size[1], 13);
            ASSERT_TRUE(convolveChannel(img.get(), img->green, m));
            for (int y = 0; y < size[1]; ++y)
                for (int x = 0; x < size[0]; ++x) {
                    double sum = 0;
                    for (int k = 0; k < 9; ++k)
                        sum += m.cells[k] * from->green[nearest(y + k / 3 - 1, size[1]) * size[0] +
                                                        nearest(x + k % 3 - 1, size[0])];
                    sum = sum / (m.divisor == 0 ? 0.0001 : m.divisor) + m.bias;
                    sum = std::clamp(m.absolute ? std::fabs(sum) : sum, 0.0, 65535.0);
                    ASSERT_EQ(img->green[y * size[0] + x], uint16_t(sum));
                }
            std::copy(from->green, from->green + from->sampleCount(), img->green);
            EXPECT_TRUE(samePlanes(*from, *img)) << "no other plane";
        }
}

TEST(Filters, MinimumAndMaximumTakeTheWholePixel)
{
    RecordingWorkspace ws;
    for (const bool least : {true, false})
        for (int key = 0; key <= int(NeighbourKey::Value); ++key) {
            const ImagePtr from = randomImage(33, 20, 5), img = randomImage(33, 20, 5);
            const auto filter = least ? minimumFilter : maximumFilter;
            ASSERT_TRUE(filter(img.get(), NeighbourKey(key)));
            for (int y = 0; y < 20; ++y)
                for (int x = 0; x < 33; ++x) {
                    const int64_t i = y * 33 + x;
                    const int64_t winner = slowWinner(*from, x, y, NeighbourKey(key), least);
                    ASSERT_EQ(img->red[i], from->red[winner]) << key;
                    ASSERT_EQ(img->green[i], from->green[winner]) << key;
                    ASSERT_EQ(img->blue[i], from->blue[winner]) << key;
                    ASSERT_EQ(img->alpha[i], from->alpha[i]) << key;
                }
        }
    EXPECT_FALSE(minimumFilter(nullptr, NeighbourKey::Luma));
    EXPECT_FALSE(maximumFilter(randomImage(2, 2, 1).get(), NeighbourKey(6)));
}

namespace
{
using Rip = bool (*)(const image *, uint16_t *, int);
struct RipCase {
    const char *fault;
    Rip rip;
    std::vector<uint16_t> before, after; ///< 5 columns
};
class RipFilter : public testing::TestWithParam<RipCase>
{
};
} // namespace

TEST_P(RipFilter, ReplacesOnlyWhatStandsAlone)
{
    RecordingWorkspace ws;
    const RipCase &one = GetParam();
    const ImagePtr img = plainImage(5, int(one.before.size() / 5), 0, 0, 0);
    std::copy(one.before.begin(), one.before.end(), img->red);
    EXPECT_TRUE(one.rip(img.get(), img->red, 100));
    EXPECT_EQ(std::vector<uint16_t>(img->red, img->red + img->sampleCount()), one.after);
    EXPECT_FALSE(one.rip(nullptr, img->red, 100));
    EXPECT_FALSE(one.rip(img.get(), img->red, -1));
}

INSTANTIATE_TEST_SUITE_P(
    Planes, RipFilter,
    testing::Values(
        RipCase{"OneAlone",
                ripChannel,
                {0, 0, 8, 0, 0, 0, 0, 900, 0, 0, 0, 0, 0, 0, 0},
                {0, 0, 8, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0}},
        RipCase{"ThresholdItselfIsNotPassed", ripChannel, {0, 0, 100, 0, 0}, {0, 0, 100, 0, 0}},
        RipCase{"TwoAreNotAlone",
                ripChannel,
                {0, 900, 900, 0, 0, 0, 0, 0, 0, 0},
                {0, 900, 900, 0, 0, 0, 0, 0, 0, 0}},
        RipCase{"CornerHasThreeNeighbours",
                ripChannel,
                {900, 30, 30, 30, 30, 60, 30, 30, 30, 30},
                {40, 30, 30, 30, 30, 60, 30, 30, 30, 30}},
        RipCase{"RowIgnoresTheRowsAround",
                ripChannelRow,
                {9, 9, 900, 9, 9, 10, 10, 900, 30, 30},
                {9, 9, 9, 9, 9, 10, 10, 20, 30, 30}},
        RipCase{"PairGoes",
                ripChannelDouble,
                {7, 7, 7, 7, 7, 7, 900, 800, 7, 7, 7, 7, 7, 7, 7},
                {7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7}},
        RipCase{"ThreeAreNoPair", ripChannelDouble, {7, 900, 900, 900, 7}, {7, 900, 900, 900, 7}}),
    [](const auto &each) { return each.param.fault; });

TEST(Filters, ASingleSampleHasNoNeighbours)
{
    RecordingWorkspace ws;
    for (const Rip rip : {ripChannel, ripChannelRow, ripChannelDouble}) {
        const ImagePtr dot = plainImage(1, 1, 500, 0, 0);
        EXPECT_TRUE(rip(dot.get(), dot->red, 0));
        EXPECT_EQ(dot->red[0], 500);
    }
}
