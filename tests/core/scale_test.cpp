// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/cpu.h"
#include "core/fixture.h"
#include "core/scale.h"

using Scale = WithWorkspace;

namespace
{
/// The stated arithmetic, longhand, with every neighbour clamped.
uint16_t slowBilinear(const image &from, const uint16_t *plane, double sx, double sy)
{
    const int x0 = int(sx), x1 = std::min(x0 + 1, from.width - 1);
    const int y0 = int(sy), y1 = std::min(y0 + 1, from.height - 1);
    const double fx = sx - x0, fy = sy - y0;
    const double a = plane[y0 * from.width + x0], b = plane[y0 * from.width + x1];
    const double c = plane[y1 * from.width + x0], d = plane[y1 * from.width + x1];
    const double upper = a + (b - a) * fx;
    const double lower = c + (d - c) * fx;
    return uint16_t(upper + (lower - upper) * fy);
}

int randomSide(std::mt19937 &random)
{
    return 1 + int(random() % (random() % 4 == 0 ? 3 : 150));
}

ImagePtr randomSized(std::mt19937 &random)
{
    return randomImage(randomSide(random), randomSide(random), 7);
}
} // namespace

TEST_F(Scale, EqualsTheSlowFormulasAtEveryKernelLevel)
{
    for (int level = 0; level <= int(supportedKernels()); ++level) {
        limitKernels(KernelLevel(level));
        ASSERT_EQ(int(kernelLevel()), level);
        std::mt19937 random(31);
        for (int round = 0; round < 40; ++round) {
            const ImagePtr from = randomSized(random), to = randomSized(random);
            const ImagePtr near = plainImage(to->width, to->height, 0, 0, 0);
            ASSERT_TRUE(scaleBilinear(from.get(), to.get(), false));
            ASSERT_TRUE(scaleNearest(from.get(), near.get(), false));
            for (int i = 0; i < to->sampleCount(); ++i)
                for (size_t p = 0; p < 4; ++p) {
                    const double x = i % to->width * (double(from->width) / double(to->width));
                    const double y = i / to->width * (double(from->height) / double(to->height));
                    const uint16_t *plane = from->colorPlanes()[p];
                    ASSERT_EQ(near->colorPlanes()[p][i], plane[int(y) * from->width + int(x)]);
                    ASSERT_EQ(to->colorPlanes()[p][i], slowBilinear(*from, plane, x, y)) << level;
                }
        }
    }
    limitKernels(KernelLevel::Avx512);
}

TEST_F(Scale, KeepAspectFitsAndCentres)
{
    const struct {
        const char *fault;
        int width, height, targetWidth, targetHeight;
        std::array<int, 4> box; ///< left, top, width and height of what is shown
    } cases[] = {
        {"target wider", 10, 20, 31, 20, {10, 0, 10, 20}},
        {"target taller", 20, 10, 20, 31, {0, 10, 20, 10}},
        {"equal", 20, 10, 40, 20, {0, 0, 40, 20}},
        {"never narrower than one", 1, 900, 50, 50, {24, 0, 1, 50}},
    };
    for (const auto &one : cases)
        for (const auto scale : {scaleBilinear, scaleNearest}) {
            const ImagePtr from = plainImage(one.width, one.height, 7, 8, 9);
            const ImagePtr to = plainImage(one.targetWidth, one.targetHeight, 0, 0, 0);
            EXPECT_TRUE(scale(from.get(), to.get(), true));
            const Bounds b = to->alphaBoundsAbove(255);
            EXPECT_EQ((std::array{b.left, b.top, b.width, b.height}), one.box) << one.fault;
            EXPECT_EQ(to->red[0], b.left + b.top > 0 ? 65535 : 7) << one.fault;
            EXPECT_FALSE(scale(nullptr, to.get(), false) || scale(to.get(), nullptr, true));
        }
}

TEST_F(Scale, ReduceReadsTheRowsThatItStates)
{
    std::mt19937 random(6);
    for (int round = 0; round < 40; ++round) {
        const ImagePtr from = randomSized(random);
        const int w = from->width, h = from->height;
        const int tw = randomSide(random), th = randomSide(random);
        const ImagePtr to(reduce(from.get(), tw, th));
        EXPECT_EQ(to->name, QLatin1String("random: reduceBy2"));
        for (int i = 0; i < tw * th; ++i) {
            const int sx = i % tw * w / tw, sy = i / tw * h / th, at = sy * w + sx;
            int sum = from->red[at] + from->red[at + w]; // the spare rows are zero
            sum += sx == w - 1 ? 0 : from->red[at + 1];
            sum += sy == h - 1 ? 0 : from->red[at + w + 1];
            ASSERT_EQ(to->red[i], sum >> 2) << round;
        }
    }
    EXPECT_EQ(reduce(nullptr, 3, 3), nullptr);
    EXPECT_EQ(reduce(plainImage(2, 2, 0, 0, 0).get(), 0, 3), nullptr);

    const ImagePtr turned = plainImage(2, 100, 400, 0, 0);
    ASSERT_TRUE(turned->quarterTurn()); // its spare rows are now shorter than one row
    EXPECT_EQ(ImagePtr(reduce(turned.get(), 50, 1))->red[10], 400);
    EXPECT_EQ(ImagePtr(reduce(turned.get(), 50, 2))->red[60], 200) << "half of it is spare";
}

TEST_F(Scale, HalvesAndSmartReduce)
{
    const ImagePtr from = randomImage(120, 84, 3), half(reduceBy2(from.get()));
    EXPECT_EQ(half->alpha[61],
              (from->alpha[242] + from->alpha[243] + from->alpha[362] + from->alpha[363]) >> 2);
    for (const int wide : {3, 4})
        EXPECT_EQ(reduceBy2(plainImage(wide, 7 - wide, 0, 0, 0).get()), nullptr);

    const ImagePtr smart = plainImage(12, 9, 0, 0, 0), byHand = plainImage(12, 9, 0, 0, 0);
    ASSERT_TRUE(smartReduce(from.get(), smart.get()));
    // 120 x 84, halved to 60 x 42, to 30 x 21; the next would be odd, and 21 exceeds 18.
    const ImagePtr quarter(reduceBy2(half.get())), odd = plainImage(15, 10, 0, 0, 0);
    EXPECT_TRUE(scaleBilinear(quarter.get(), odd.get(), false) &&
                scaleBilinear(odd.get(), byHand.get(), false));
    EXPECT_TRUE(sameColors(*smart, *byHand));

    const ImagePtr big = plainImage(100, 40, 0, 0, 0), direct = plainImage(100, 40, 0, 0, 0);
    EXPECT_TRUE(smartReduce(from.get(), big.get()) &&
                scaleBilinear(from.get(), direct.get(), false));
    EXPECT_TRUE(sameColors(*big, *direct)) << "less than twice the target";

    const ImagePtr twice = plainImage(30, 20, 0, 0, 0), once = plainImage(30, 20, 0, 0, 0);
    EXPECT_TRUE(smartReduce(from.get(), twice.get()) &&
                scaleBilinear(half.get(), once.get(), false));
    EXPECT_TRUE(sameColors(*twice, *once)) << "halving stops at exactly twice the target";
}
