// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/colour.h"
#include "core/filters.h"
#include "core/fixture.h"

#include <cmath>
#include <vector>

using Filters = WithWorkspace;

namespace
{
double slowKey(const image &img, int64_t i, NeighbourKey key)
{
    const Rgb c = {double(img.red[i]), double(img.green[i]), double(img.blue[i])};
    const Hsv hsv = rgbToHsv(c);
    const double luma = 0.3 * c.red + 0.59 * c.green + 0.11 * c.blue;
    const double keys[] = {luma, c.red, c.green, c.blue, hsv.saturation, hsv.value};
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

uint16_t slowConvolution(const image &from, int x, int y, const Convolution33 &m)
{
    double sum = 0;
    for (int k = 0; k < 9; ++k) {
        const int row = std::clamp(y + k / 3 - 1, 0, from.height - 1);
        sum += m.cells[k] *
               from.green[row * from.width + std::clamp(x + k % 3 - 1, 0, from.width - 1)];
    }
    sum = sum / (m.divisor == 0 ? 0.0001 : m.divisor) + m.bias;
    return uint16_t(std::clamp(m.absolute ? std::fabs(sum) : sum, 0.0, 65535.0));
}
} // namespace

TEST_F(Filters, ConvolutionEqualsTheLonghandSum)
{
    const Convolution33 matrices[] = {
        {{1, 2, 1, 2, 4, 2, 1, 2, 1}, 16},
        {{-1, -1, -1, -1, 8, -1, -1, -1, 0.5}, 2, 100, true},
        {{1, 0, 0, 0, 0, 0, 0, 0, -1}, 1, -5000},
        {{1, 1, 1, 1, 1, 1, 1, 1, 1}, 0}, // no division by zero
    };
    for (const auto &[width, height] : {std::pair{1, 1}, {1, 7}, {40, 31}})
        for (const Convolution33 &m : matrices) {
            const ImagePtr from = randomImage(width, height, 13);
            const ImagePtr img = randomImage(width, height, 13);
            ASSERT_TRUE(convolveChannel(img.get(), img->green, m));
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x)
                    ASSERT_EQ(img->green[y * width + x], slowConvolution(*from, x, y, m));
            std::copy(from->green, from->green + from->sampleCount(), img->green);
            EXPECT_TRUE(samePlanes(*from, *img)) << "no other plane";
        }
}

TEST_F(Filters, MinimumAndMaximumTakeTheWholePixel)
{
    for (const bool least : {true, false})
        for (int key = 0; key <= int(NeighbourKey::Value); ++key) {
            const ImagePtr from = randomImage(33, 20, 5), img = randomImage(33, 20, 5);
            const auto filter = least ? minimumFilter : maximumFilter;
            ASSERT_TRUE(filter(img.get(), NeighbourKey(key)));
            for (int i = 0; i < 33 * 20; ++i) {
                const int64_t winner = slowWinner(*from, i % 33, i / 33, NeighbourKey(key), least);
                for (size_t p = 0; p < 4; ++p) // alpha stays
                    ASSERT_EQ(img->colorPlanes()[p][i], from->colorPlanes()[p][p < 3 ? winner : i]);
            }
        }
    EXPECT_FALSE(maximumFilter(randomImage(2, 2, 1).get(), NeighbourKey(6)));
}

TEST_F(Filters, RipsReplaceOnlyWhatStandsAlone)
{
    const struct {
        const char *fault;
        bool (*rip)(const image *, uint16_t *, int);
        int width;
        std::vector<uint16_t> samples;
        std::vector<size_t> replaced;
        uint16_t by;
    } cases[] = {
        {"one alone", ripChannel, 3, {0, 8, 0, 0, 900, 0, 0, 0, 0}, {4}, 1},
        {"the threshold itself is not passed", ripChannel, 5, {0, 0, 100, 0, 0}, {}, 0},
        {"two are not alone", ripChannel, 4, {0, 900, 900, 0, 0, 0, 0, 0}, {}, 0},
        {"a corner has three", ripChannel, 3, {900, 30, 30, 30, 60, 30}, {0}, 40},
        {"rows around", ripChannelRow, 5, {20, 20, 900, 20, 20, 10, 10, 900, 30, 30}, {2, 7}, 20},
        {"a pair goes", ripChannelDouble, 4, {7, 7, 7, 7, 7, 900, 800, 7, 7, 7, 7, 7}, {5, 6}, 7},
        {"three are no pair", ripChannelDouble, 5, {7, 900, 900, 900, 7}, {}, 0},
        {"no neighbours", ripChannel, 1, {500}, {}, 0},
        {"no neighbours", ripChannelRow, 1, {500}, {}, 0},
        {"no neighbours", ripChannelDouble, 1, {500}, {}, 0},
    };
    for (const auto &one : cases) {
        SCOPED_TRACE(one.fault);
        const ImagePtr img = plainImage(one.width, int(one.samples.size()) / one.width, 0, 0, 0);
        std::copy(one.samples.begin(), one.samples.end(), img->red);
        EXPECT_TRUE(one.rip(img.get(), img->red, 100));
        std::vector<uint16_t> wanted = one.samples;
        for (const size_t place : one.replaced)
            wanted[place] = one.by;
        EXPECT_EQ(std::vector<uint16_t>(img->red, img->red + img->sampleCount()), wanted);
        EXPECT_FALSE(one.rip(nullptr, img->red, 100) || one.rip(img.get(), img->red, -1));
    }
}
