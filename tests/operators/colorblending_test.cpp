// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/pipeline/colorblending.h"

#include "core/memory.h"
#include "support/recordingworkspace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace
{
constexpr double kTop = 65535.0;

/// What a mode makes of a whole result, before it is mixed in; the square may stand for a
/// negative sum too.
double square(int mode, double a, double b)
{
    const auto capped = [](double s) { return s > kTop ? kTop * kTop : s * s; };
    switch (mode) {
    case kBlendAdd:
        return capped(a + b);
    case kBlendAddGrey:
        return capped((b - 32768) + a);
    case kBlendSubtractGrey:
        return capped(a - (b - 32768));
    case kBlendSubtract:
        return b > a ? 0 : (a - b) * (a - b);
    case kBlendMultiply:
        return (b / kTop * a) * (b / kTop * a);
    case kBlendDivide:
        return capped(a / (b / kTop));
    default:
        return b * b;
    }
}

double longhand(int mode, double a, double b, double t)
{
    if (mode == kBlendDivide && b < 1)
        return kTop;
    return std::sqrt(t * square(mode, a, b) + (1 - t) * a * a);
}

constexpr double kSamples[] = {0, 1, 2, 32767, 32768, 40000, 65534, 65535};
constexpr double kWeights[] = {0, 1 / kTop, 0.25, 32768 / kTop, 0.9, 1};
} // namespace

TEST(ColorBlending, PlainModesFollowTheirFormulas)
{
    RecordingWorkspace space;
    colorblending mixer;
    for (int mode = kBlendMatte; mode <= kBlendDivide; ++mode) {
        space.blendMode = mode;
        for (double a : kSamples)
            for (double b : kSamples)
                for (double t : kWeights)
                    EXPECT_NEAR(mixer.blend(a, b, t), longhand(mode, a, b, t), 1e-6)
                        << mode << ": " << a << ' ' << b << ' ' << t;
    }
    EXPECT_EQ(mixer.channel, 0);
    space.blendMode = kBlendMatte;
    EXPECT_NEAR(mixer.blend(0, 65535, 32768 / kTop), 46341, 0.5);
    space.blendMode = kBlendAddGrey;
    EXPECT_EQ(mixer.blend(0, 0, 1), 32768); // below black comes back as positive
    mixer.blendMode = 11;                   // the object's field is the workspace's word
    EXPECT_EQ(space.blendMode, 11);
    EXPECT_EQ(mixer.blend(123, 65535, 1), 123);
}

TEST(ColorBlending, DissolveKeepsThePixelsOfARunTogether)
{
    RecordingWorkspace space;
    for (int mode : {int(kBlendDissolve), int(kBlendSoftDissolve)}) {
        space.blendMode = mode;
        colorblending mixer;
        int taken = 0;
        const double t = 32768 / kTop;
        for (int pixel = 0; pixel < 4000; ++pixel) {
            // A pixel under a weight beyond the limits must not shift the three.
            EXPECT_EQ(mixer.blend(10, 20, 511 / kTop), 10);
            if (mode == kBlendDissolve) {
                EXPECT_EQ(mixer.blend(10, 20, 65024 / kTop), 20);
            }
            const bool first = mixer.blend(100, 300, t) != 100;
            EXPECT_EQ(mixer.channel, 1);
            for (int c = 1; c < 3; ++c) {
                const double out = mixer.blend(100, 300, t);
                EXPECT_EQ(out != 100, first);
                if (first) {
                    EXPECT_EQ(out, mode == kBlendDissolve ? 300 : longhand(0, 100, 300, t));
                }
            }
            EXPECT_EQ(mixer.channel, 0);
            taken += first;
        }
        EXPECT_NEAR(taken, 2000, 150);
    }
}

TEST(ColorBlending, DissolveRepeatsFromItsSeed)
{
    RecordingWorkspace space;
    space.blendMode = kBlendDissolve;
    std::srand(1);
    double expected[20];
    for (double &value : expected)
        value = ((std::rand() >> 16) & 32767) / 32767.0;
    colorblending mixer;
    for (double value : expected) {
        for (int c = 0; c < 3; ++c)
            mixer.blend(0, 1, 0.5);
        EXPECT_EQ(mixer.dissolveValue, value);
    }
}

TEST(ColorBlending, ForegroundAndBackgroundTakeEachChannelsComponent)
{
    RecordingWorkspace space;
    space.foreRed = 1000, space.foreGreen = 2000, space.foreBlue = 3000;
    space.backRed = 60000, space.backGreen = 50000, space.backBlue = 40000;
    colorblending mixer;
    const double fore[] = {1000, 2000, 3000}, back[] = {60000, 50000, 40000};
    for (int pixel = 0; pixel < 2; ++pixel)
        for (int mode : {int(kBlendForeground), int(kBlendBackground)}) {
            space.blendMode = mode;
            for (int c = 0; c < 3; ++c)
                EXPECT_NEAR(mixer.blend(500, 7, 0.75),
                            longhand(0, 500, mode == kBlendForeground ? fore[c] : back[c], 0.75),
                            1e-6);
        }
}

TEST(ColorBlending, TablesAreTrackedAndFreed)
{
    const int64_t blocks = memRecord.currentBlocks;
    {
        RecordingWorkspace space;
        const int64_t before = memRecord.currentBlocks;
        colorblending mixer;
        EXPECT_EQ(memRecord.currentBlocks, before + 5);
        EXPECT_TRUE(memReport(true).contains(QLatin1String("colorblending initcolors() iRoots8")));
    }
    EXPECT_EQ(memRecord.currentBlocks, blocks);
}
