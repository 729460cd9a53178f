// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/cpu.h"
#include "core/image.h"
#include "core/scale.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace
{
/// The stated arithmetic, longhand, with every neighbour clamped.
uint16_t slowBilinear(const image &from, const uint16_t *plane, int x, int y, const image &to)
{
    const double sx = x * (double(from.width) / double(to.width));
    const double sy = y * (double(from.height) / double(to.height));
    const int x0 = int(std::floor(sx)), y0 = int(std::floor(sy));
    const int x1 = std::min(x0 + 1, from.width - 1), y1 = std::min(y0 + 1, from.height - 1);
    const double fx = sx - x0, fy = sy - y0;
    const double a = plane[y0 * from.width + x0], b = plane[y0 * from.width + x1];
    const double c = plane[y1 * from.width + x0], d = plane[y1 * from.width + x1];
    const double upper = a + (b - a) * fx;
    const double lower = c + (d - c) * fx;
    return uint16_t(upper + (lower - upper) * fy);
}

uint16_t slowNearest(const image &from, const uint16_t *plane, int x, int y, const image &to)
{
    const int sx = int(x * (double(from.width) / double(to.width)));
    const int sy = int(y * (double(from.height) / double(to.height)));
    return plane[sy * from.width + sx];
}

int randomSide(std::mt19937 &random)
{
    return random() % 4 == 0 ? 1 + int(random() % 3) : 1 + int(random() % 150);
}
} // namespace

TEST(Scale, EqualsTheSlowFormulasAtEveryKernelLevel)
{
    RecordingWorkspace ws;
    for (int level = 0; level <= int(supportedKernels()); ++level) {
        limitKernels(KernelLevel(level));
        std::mt19937 random(31);
        for (int round = 0; round < 40; ++round) {
            const ImagePtr from = randomImage(randomSide(random), randomSide(random), random());
            const ImagePtr to = plainImage(randomSide(random), randomSide(random), 0, 0, 0);
            const ImagePtr near = plainImage(to->width, to->height, 0, 0, 0);
            ASSERT_TRUE(scaleBilinear(from.get(), to.get(), false));
            ASSERT_TRUE(scaleNearest(from.get(), near.get(), false));
            for (int64_t i = 0; i < to->sampleCount(); ++i)
                for (int p = 0; p < 4; ++p) {
                    const int x = int(i % to->width), y = int(i / to->width);
                    const uint16_t *plane = from->colorPlanes()[p];
                    ASSERT_EQ(near->colorPlanes()[p][i], slowNearest(*from, plane, x, y, *to));
                    ASSERT_EQ(to->colorPlanes()[p][i], slowBilinear(*from, plane, x, y, *to))
                        << level << ' ' << round;
                }
        }
    }
    limitKernels(KernelLevel::Avx512);
}

TEST(Scale, SameSizeIsTheIdentityAndFlatStaysFlat)
{
    RecordingWorkspace ws;
    const ImagePtr from = randomImage(131, 67, 9), white = plainImage(77, 31, 65535, 1, 32767);
    for (const auto scale : {scaleBilinear, scaleNearest}) {
        const ImagePtr same = plainImage(131, 67, 0, 0, 0), other = plainImage(53, 91, 0, 0, 0);
        EXPECT_TRUE(scale(from.get(), same.get(), false));
        EXPECT_TRUE(sameColors(*from, *same));
        EXPECT_TRUE(scale(white.get(), other.get(), false));
        EXPECT_TRUE(sameColors(*other, *plainImage(53, 91, 65535, 1, 32767)));
        EXPECT_FALSE(scale(nullptr, same.get(), false));
        EXPECT_FALSE(scale(same.get(), nullptr, true));
    }
}

TEST(Scale, KeepAspectFitsAndCentres)
{
    RecordingWorkspace ws;
    struct {
        const char *fault;
        int width, height, targetWidth, targetHeight, left, top, fittedWidth, fittedHeight;
    } const cases[] = {
        {"target wider", 10, 20, 31, 20, 10, 0, 10, 20},
        {"target taller", 20, 10, 20, 31, 0, 10, 20, 10},
        {"equal", 20, 10, 40, 20, 0, 0, 40, 20},
        {"never narrower than one", 1, 900, 50, 50, 24, 0, 1, 50},
    };
    for (const auto &one : cases)
        for (const auto scale : {scaleBilinear, scaleNearest}) {
            const ImagePtr from = plainImage(one.width, one.height, 7, 8, 9);
            const ImagePtr to = plainImage(one.targetWidth, one.targetHeight, 0, 0, 0);
            EXPECT_TRUE(scale(from.get(), to.get(), true));
            const Bounds box = to->alphaBoundsAbove(255);
            EXPECT_EQ(box.left, one.left) << one.fault;
            EXPECT_EQ(box.top, one.top) << one.fault;
            EXPECT_EQ(box.width, one.fittedWidth) << one.fault;
            EXPECT_EQ(box.height, one.fittedHeight) << one.fault;
            EXPECT_EQ(to->red[0], box.left + box.top > 0 ? 65535 : 7) << one.fault;
        }
}

TEST(Scale, ReduceReadsTheRowsThatItStates)
{
    RecordingWorkspace ws;
    std::mt19937 random(6);
    for (int round = 0; round < 40; ++round) {
        const ImagePtr from = randomImage(randomSide(random), randomSide(random), random());
        const int w = from->width, h = from->height;
        const int tw = randomSide(random), th = randomSide(random);
        const ImagePtr to(reduce(from.get(), tw, th));
        ASSERT_TRUE(to);
        EXPECT_EQ(to->name, QLatin1String("random: reduceBy2"));
        for (int y = 0; y < th; ++y)
            for (int x = 0; x < tw; ++x) {
                const int sx = x * w / tw, sy = y * h / th, i = sy * w + sx;
                int sum = from->red[i] + from->red[i + w]; // the spare rows are zero
                sum += sx == w - 1 ? 0 : from->red[i + 1];
                sum += sy == h - 1 ? 0 : from->red[i + w + 1];
                ASSERT_EQ(to->red[y * tw + x], sum >> 2) << round;
            }
    }
    EXPECT_EQ(reduce(nullptr, 3, 3), nullptr);
    EXPECT_EQ(reduce(plainImage(2, 2, 0, 0, 0).get(), 0, 3), nullptr);
}

TEST(Scale, ReduceAfterATurnStaysInsideOfThePlanes)
{
    RecordingWorkspace ws;
    const ImagePtr img = plainImage(2, 100, 400, 0, 0);
    ASSERT_TRUE(img->quarterTurn()); // its spare rows are now shorter than one row
    const ImagePtr to(reduce(img.get(), 50, 1));
    ASSERT_TRUE(to);
    EXPECT_EQ(to->red[10], 400);
    const ImagePtr bottom(reduce(img.get(), 50, 2));
    ASSERT_TRUE(bottom);
    EXPECT_EQ(bottom->red[60], 200) << "half of it is spare";
}

TEST(Scale, HalvesAndSmartReduce)
{
    RecordingWorkspace ws;
    const ImagePtr from = randomImage(120, 84, 3);
    const ImagePtr half(reduceBy2(from.get()));
    ASSERT_TRUE(half);
    EXPECT_EQ(half->alpha[61],
              (from->alpha[242] + from->alpha[243] + from->alpha[362] + from->alpha[363]) >> 2);
    EXPECT_EQ(reduceBy2(plainImage(3, 4, 0, 0, 0).get()), nullptr);
    EXPECT_EQ(reduceBy2(plainImage(4, 3, 0, 0, 0).get()), nullptr);

    const ImagePtr smart = plainImage(12, 9, 0, 0, 0), byHand = plainImage(12, 9, 0, 0, 0);
    ASSERT_TRUE(smartReduce(from.get(), smart.get()));
    // 120 x 84, halved to 60 x 42, to 30 x 21; the next would be odd, and 21 exceeds 18.
    const ImagePtr quarter(reduceBy2(half.get())), odd = plainImage(15, 10, 0, 0, 0);
    ASSERT_TRUE(scaleBilinear(quarter.get(), odd.get(), false));
    ASSERT_TRUE(scaleBilinear(odd.get(), byHand.get(), false));
    EXPECT_TRUE(sameColors(*smart, *byHand));

    const ImagePtr big = plainImage(100, 40, 0, 0, 0), direct = plainImage(100, 40, 0, 0, 0);
    ASSERT_TRUE(smartReduce(from.get(), big.get()));
    ASSERT_TRUE(scaleBilinear(from.get(), direct.get(), false));
    EXPECT_TRUE(sameColors(*big, *direct)) << "less than twice the target";
}
