// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/blendcurve.h"

#include "core/cpu.h"
#include "core/memory.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace
{
struct Curve {
    int mode;
    double amplitude, floorValue;
    int factor;
};

void use(RecordingWorkspace &space, const Curve &curve)
{
    space.curveMode = curve.mode;
    space.curveAmplitude = curve.amplitude;
    space.curveFloor = curve.floorValue;
    space.curveFactor = curve.factor;
}

double limited(double v)
{
    return std::min(1.0, std::max(0.0, v));
}

/// One factor, from the meaning of the curves: a triangle, a half sine, a hill.
double longhand(const Curve &curve, int left, int top, int boxWidth, int boxHeight, int x, int y)
{
    const double a = curve.amplitude * factorValue(curve.factor), f = curve.floorValue;
    const auto map = [&](double v) { return limited(v * a * (1 - f) + f); };
    const auto triangle = [&](int i, int length) {
        const int half = length / 2;
        return map(double(i < half ? i : 2 * half - 1 - i) / half);
    };
    const auto sine = [&](int i, int length) { return map(std::sin(i * M_PI / length)); };
    switch (curve.mode) {
    case 0:
        return triangle(x, boxWidth) * triangle(y, boxHeight);
    case 1:
        return limited(f + (1 - f) * a);
    case 3:
        return sine(x, boxWidth) * sine(y, boxHeight);
    default: {
        const double dx = left + x - (left + boxWidth / 2), dy = top + y - (top + boxHeight / 2);
        return map(1 - std::sqrt(dx * dx + dy * dy) / std::max(boxWidth / 2, boxHeight / 2));
    }
    }
}

void select(image &img, int left, int top, int right, int bottom)
{
    img.fillGmask(0);
    for (int y = top; y <= bottom; ++y)
        for (int x = left; x <= right; ++x)
            img.gmask[y * img.width + x] = uint16_t(65535 - (x * 31 + y * 7) % 5000);
}
} // namespace

class BlendCurveLevels : public testing::TestWithParam<KernelLevel>
{
};
INSTANTIATE_TEST_SUITE_P(Levels, BlendCurveLevels,
                         testing::Values(KernelLevel::Baseline, KernelLevel::Avx2,
                                         KernelLevel::Avx512));

TEST_P(BlendCurveLevels, EveryCurveMatchesItsLonghandFormInsideAndAtTheEdges)
{
    RecordingWorkspace space;
    limitKernels(GetParam());
    const Curve curves[] = {{0, 1, 0, 0}, {0, 0.7, 0.2, 1}, {1, 0.5, 0, 0}, {1, 0.5, 0.1, 0},
                            {2, 1, 0, 0}, {2, 2.0, 0.1, 2}, {3, 1, 0, 0},   {3, 0.5, 0.3, 3},
                            {0, 1, 1, 0}, {3, 0, 0, 7},     {2, 0, 0.25, 0}};
    const int boxes[][4] = {{0, 0, 40, 22}, {5, 3, 30, 20}, {40, 22, 40, 22}, {0, 7, 40, 7}};
    for (const Curve &curve : curves)
        for (const auto &box : boxes) {
            use(space, curve);
            auto img = plainImage(41, 23, 0, 0, 0);
            select(*img, box[0], box[1], box[2], box[3]);
            const std::vector<uint16_t> before(img->gmask, img->gmask + img->sampleCount());
            dmask factors;
            ASSERT_TRUE(factors.createmask(img.get()));
            ASSERT_EQ(factors.width, box[2] - box[0] + 2);
            diffuseMask(img.get());
            for (int y = 0; y < img->height; ++y)
                for (int x = 0; x < img->width; ++x) {
                    const int i = y * img->width + x;
                    if (before[size_t(i)] == 0) {
                        ASSERT_EQ(img->gmask[i], 0);
                        continue;
                    }
                    const int bx = x - box[0], by = y - box[1];
                    const double factor = factors.mask[by * factors.width + bx];
                    ASSERT_NEAR(factor,
                                longhand(curve, box[0], box[1], factors.boxWidth, factors.boxHeight,
                                         bx, by),
                                1e-9)
                        << "mode " << curve.mode << " at " << x << ", " << y;
                    ASSERT_EQ(img->gmask[i], uint16_t(before[size_t(i)] * factor));
                }
        }
    limitKernels(KernelLevel::Avx512);
}

TEST(BlendCurve, TinyLengthsGiveFiniteFactors)
{
    for (int mode = 0; mode <= 3; ++mode)
        for (double amplitude : {0.0, 0.5, 1.0, 100.0, -1.0, 1e308})
            for (double floorValue : {0.0, 0.25, 1.0})
                for (int length = 0; length <= 3; ++length) {
                    std::vector<double> out(4, -7.0);
                    buildCurve(out.data(), length, mode, amplitude, floorValue);
                    for (int i = 0; i < 4; ++i)
                        if (i < length)
                            EXPECT_TRUE(out[size_t(i)] >= 0 && out[size_t(i)] <= 1)
                                << mode << ' ' << length << ' ' << amplitude;
                        else
                            EXPECT_EQ(out[size_t(i)], -7.0);
                }
    double odd[5] = {};
    buildCurve(odd, 5, 0, 1.0, 0.0);
    const double triangle[] = {0, 0.5, 0.5, 0, 0}; // the descent goes on below 0, limited
    EXPECT_TRUE(std::equal(odd, odd + 5, triangle));
}

TEST(BlendCurve, WhatNeedsNoCurveLeavesTheMaskAndTheMemoryAlone)
{
    RecordingWorkspace space;
    struct {
        const char *what;
        Curve curve;
        bool empty;
    } const cases[] = {{"flat at full height", {1, 1.0, 0, 0}, false},
                       {"flat above full height", {1, 2.0, 0, 0}, false},
                       {"flat on a full floor", {1, 0.1, 1.0, 0}, false},
                       {"a mode that does not exist", {4, 0.5, 0, 0}, false},
                       {"an empty mask", {0, 0.5, 0, 0}, true}};
    for (const auto &one : cases) {
        use(space, one.curve);
        auto img = randomImage(20, 10, 5);
        if (one.empty)
            img->fillGmask(0);
        const std::vector<uint16_t> before(img->gmask, img->gmask + img->sampleCount());
        const int64_t peak = memRecord.peakBlocks = memRecord.currentBlocks;
        dmask factors;
        EXPECT_FALSE(factors.createmask(img.get())) << one.what;
        diffuseMask(img.get());
        EXPECT_EQ(memRecord.peakBlocks, peak) << one.what;
        EXPECT_TRUE(std::equal(before.begin(), before.end(), img->gmask)) << one.what;
    }
    EXPECT_FALSE(dmask().createmask(nullptr));
    diffuseMask(nullptr);
}

TEST(BlendCurve, AFactorCountsButNotInTheShortCut)
{
    RecordingWorkspace space;
    use(space, {1, 0.5, 0, 1}); // times 2: every factor 1, yet built
    auto img = plainImage(4, 4, 0, 0, 0);
    img->fillGmask(65535);
    dmask factors;
    EXPECT_TRUE(factors.createmask(img.get()));
    diffuseMask(img.get());
    EXPECT_EQ(img->gmask[5], 65535);
    EXPECT_EQ(factorValue(7), 100.0);
    EXPECT_EQ(factorValue(8), 1.0);
    EXPECT_EQ(factorValue(-1), 1.0);
}

TEST(BlendCurve, WithoutMemoryTheMaskStaysAndNothingLeaks)
{
    RecordingWorkspace space;
    use(space, {0, 1, 0, 0});
    auto img = plainImage(9, 9, 0, 0, 0);
    img->fillGmask(65535);
    const int64_t blocks = memRecord.currentBlocks;
    for (int n = 1; n <= 3; ++n) {
        memFailAt(n);
        EXPECT_FALSE(dmask().createmask(img.get())) << n;
    }
    for (int n = 1; n <= 2; ++n) {
        memFailAt(n);
        diffuseMask(img.get());
        EXPECT_EQ(img->gmask[40], 65535);
    }
    memFailAt(0);
    EXPECT_EQ(memRecord.currentBlocks, blocks);
}
