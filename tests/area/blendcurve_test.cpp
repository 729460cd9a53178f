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

/// One factor, from the meaning of the curves: a triangle, a half sine, a hill.
double longhand(const Curve &curve, const dmask &box, int i)
{
    const int x = i % box.width, y = i / box.width;
    const double a = curve.amplitude * factorValue(curve.factor), f = curve.floorValue;
    const int halfX = box.boxWidth / 2, halfY = box.boxHeight / 2;
    const auto map = [&](double v) { return std::clamp(v * a * (1 - f) + f, 0.0, 1.0); };
    const auto triangle = [&](int j, int h) { return map(std::min(j, 2 * h - 1 - j) / double(h)); };
    const auto sine = [&](int j, int length) { return map(std::sin(j * M_PI / length)); };
    if (curve.mode == 0)
        return triangle(x, halfX) * triangle(y, halfY);
    if (curve.mode == 1)
        return map(1);
    if (curve.mode == 3)
        return sine(x, box.boxWidth) * sine(y, box.boxHeight);
    return map(1 - std::hypot(x - halfX, y - halfY) / std::max(halfX, halfY));
}

/// Selects the box (left, top, right, bottom) with uneven words and shapes it.
void compareWithLonghand(RecordingWorkspace &space, const Curve &curve, const int (&box)[4])
{
    use(space, curve);
    auto img = plainImage(41, 23, 0, 0, 0);
    img->fillGmask(0);
    for (int y = box[1]; y <= box[3]; ++y)
        for (int x = box[0]; x <= box[2]; ++x)
            img->gmask[y * 41 + x] = uint16_t(65535 - (x * 31 + y * 7) % 5000);
    const std::vector<uint16_t> before(img->gmask, img->gmask + img->sampleCount());
    dmask factors;
    ASSERT_TRUE(factors.createmask(img.get()));
    ASSERT_EQ(factors.width, box[2] - box[0] + 2);
    diffuseMask(img.get());
    for (int i = 0; i < factors.size; ++i)
        ASSERT_NEAR(factors.mask[i], longhand(curve, factors, i), 1e-9) << curve.mode << ": " << i;
    for (size_t i = 0; i < before.size(); ++i) {
        const int at = (int(i) / 41 - box[1]) * factors.width + int(i) % 41 - box[0];
        ASSERT_EQ(img->gmask[i], before[i] ? uint16_t(before[i] * factors.mask[at]) : 0);
    }
}
} // namespace

TEST(BlendCurve, EveryCurveMatchesItsLonghandFormInsideAndAtTheEdges)
{
    RecordingWorkspace space;
    // {1, 0.5, 0, 1}: the factor makes it a full height, yet it is built.
    const Curve curves[] = {{0, 1, 0, 0},   {0, 0.7, 0.2, 1}, {1, 0.5, 0.1, 0}, {1, 0.5, 0, 1},
                            {2, 2, 0.1, 2}, {2, 0, 0.25, 0},  {3, 1, 0, 0},     {3, 0.5, 0.3, 3}};
    const int boxes[][4] = {{0, 0, 40, 22}, {5, 3, 30, 20}, {40, 22, 40, 22}, {0, 7, 40, 7}};
    for (KernelLevel level : {KernelLevel::Baseline, KernelLevel::Avx2, KernelLevel::Avx512})
        for (const Curve &curve : curves)
            for (const auto &box : boxes) {
                limitKernels(level);
                compareWithLonghand(space, curve, box);
            }
    EXPECT_EQ(factorValue(-1) + factorValue(8), 2.0);
}

TEST(BlendCurve, TinyLengthsGiveFactorsWithinZeroAndOne)
{
    for (int length = 0; length <= 3; ++length)
        for (int mode = 0; mode <= 3; ++mode)
            for (double amplitude : {0.0, 0.5, 1.0, 100.0, -1.0, 1e308})
                for (double floorValue : {0.0, 0.25, 1.0}) {
                    double out[] = {-7, -7, -7, -7};
                    buildCurve(out, length, mode, amplitude, floorValue);
                    for (int i = 0; i < length; ++i)
                        EXPECT_TRUE(out[i] >= 0 && out[i] <= 1) << mode << ' ' << amplitude;
                    EXPECT_EQ(out[length], -7);
                }
}

TEST(BlendCurve, WithoutACurveOrItsMemoryTheMaskStays)
{
    RecordingWorkspace space;
    auto img = plainImage(20, 10, 0, 0, 0);
    const Curve curves[] = {{1, 2.0, 0, 0}, {1, 0.1, 1.0, 0}, {4, 0.5, 0, 0}, {0, 0.5, 0, 0}};
    for (const Curve &curve : curves) {
        const uint16_t mask = curve.mode == 0 ? 0 : 65535; // a curve, but nothing to shape
        use(space, curve);
        img->fillGmask(mask);
        const int64_t peak = memRecord.peakBlocks = memRecord.currentBlocks;
        EXPECT_FALSE(dmask().createmask(img.get())) << curve.mode;
        diffuseMask(img.get());
        EXPECT_EQ(memRecord.peakBlocks, peak) << curve.mode;
        EXPECT_EQ(std::count(img->gmask, img->gmask + 200, mask), 200) << curve.mode;
    }
    diffuseMask(nullptr);
    use(space, {0, 1, 0, 0});
    img->fillGmask(65535);
    const int64_t blocks = memRecord.currentBlocks;
    for (int n = 1; n <= 3; ++n) {
        memFailAt(n);
        EXPECT_FALSE(dmask().createmask(img.get())) << n;
    }
    memFailAt(2);
    diffuseMask(img.get());
    memFailAt(0);
    EXPECT_EQ(img->gmask[40], 65535);
    EXPECT_EQ(memRecord.currentBlocks, blocks);
}
