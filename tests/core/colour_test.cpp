// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/colour.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace
{
struct ModelCase {
    const char *fault;
    Rgb rgb;
    Hsv hsv;
    Hsl hsl;
};
class ColourModel : public testing::TestWithParam<ModelCase>
{
};

const uint16_t kCorners[] = {0, 1, 32767, 32768, 65535};

Rgb randomColour(std::mt19937 &random)
{
    const auto sample = [&] {
        const uint32_t r = random();
        return double(r % 3 == 0 ? kCorners[(r >> 8) % 5] : r >> 16);
    };
    Rgb colour = {sample(), sample(), sample()};
    if (random() % 4 == 0)
        colour.green = colour.red;
    if (random() % 4 == 0)
        colour.blue = colour.green;
    return colour;
}

void expectNear(Rgb got, Rgb wanted, double within)
{
    EXPECT_NEAR(got.red, wanted.red, within);
    EXPECT_NEAR(got.green, wanted.green, within);
    EXPECT_NEAR(got.blue, wanted.blue, within);
}
} // namespace

TEST_P(ColourModel, KnownColours)
{
    const ModelCase &one = GetParam();
    const Hsv hsv = rgbToHsv(one.rgb);
    EXPECT_NEAR(hsv.hue, one.hsv.hue, 1e-9);
    EXPECT_NEAR(hsv.saturation, one.hsv.saturation, 1e-9);
    EXPECT_NEAR(hsv.value, one.hsv.value, 1e-9);
    const Hsl hsl = rgbToHsl(one.rgb);
    EXPECT_NEAR(hsl.hue, one.hsl.hue, 1e-9);
    EXPECT_NEAR(hsl.saturation, one.hsl.saturation, 1e-9);
    EXPECT_NEAR(hsl.lightness, one.hsl.lightness, 1e-9);
}

INSTANTIATE_TEST_SUITE_P(
    Colours, ColourModel,
    testing::Values(
        ModelCase{"Black", {0, 0, 0}, {0, 0, 0}, {0, 0, 0}},
        ModelCase{"GreyHasNoDenominator", {6553.5, 6553.5, 6553.5}, {0, 0, 10}, {0, 0, 10}},
        ModelCase{"Red", {65535, 0, 0}, {0, 100, 100}, {0, 100, 50}},
        ModelCase{"Yellow", {65535, 65535, 0}, {60, 100, 100}, {60, 100, 50}},
        ModelCase{"GreenTiesOnRedAndBlue", {0, 65535, 0}, {120, 100, 100}, {120, 100, 50}},
        ModelCase{"Blue", {0, 0, 65535}, {240, 100, 100}, {240, 100, 50}},
        ModelCase{"Magenta", {65535, 0, 65535}, {300, 100, 100}, {300, 100, 50}},
        // A third of the way by this program's sectors, a half by the usual ones.
        ModelCase{"Orange", {65535, 32767.5, 0}, {40, 100, 100}, {30, 100, 50}},
        ModelCase{"PaleAboveTheTurn", {65535, 49151.25, 49151.25}, {0, 25, 100}, {0, 100, 87.5}}),
    [](const auto &each) { return each.param.fault; });

TEST(ColourModels, RoundTripsAndRanges)
{
    std::mt19937 random(17);
    for (int i = 0; i < 20000; ++i) {
        const Rgb colour = randomColour(random);
        SCOPED_TRACE(testing::Message() << colour.red << ' ' << colour.green << ' ' << colour.blue);
        const Hsv hsv = rgbToHsv(colour);
        EXPECT_TRUE(hsv.hue >= 0 && hsv.hue <= 360 && hsv.saturation >= 0 && hsv.saturation <= 100);
        expectNear(hsvToRgb(hsv), colour, 1e-6);
        const Hsl hsl = rgbToHsl(colour);
        EXPECT_TRUE(hsl.hue >= 0 && hsl.hue <= 360 && hsl.saturation >= 0 && hsl.lightness <= 100);
        expectNear(hslToRgb(hsl), colour, 1e-6);
        expectNear(yrbToRgb(rgbToYrb(colour)), colour, 1e-6);
        if (HasFailure())
            return;
    }
}

TEST(ColourModels, YrbConstantsAndLimits)
{
    const Yrb white = rgbToYrb({65535, 65535, 65535});
    EXPECT_NEAR(white.y, 65535, 1e-9);
    EXPECT_NEAR(white.r, (0.3 - 1) * 0.5 * 65535 + 32767.5, 1e-9);
    EXPECT_NEAR(white.b, (0.11 - 1) * 0.5 * 65535 + 32767.5, 1e-9);
    const Rgb beyond = yrbToRgb({65535, 65535, 65535});
    EXPECT_EQ(beyond.red, 65535);
    EXPECT_EQ(beyond.green, 0);
    EXPECT_EQ(clampSampleValue(std::nan("")), 0.0) << "so that it can be stored";
}
