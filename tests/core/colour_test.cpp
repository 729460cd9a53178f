// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/colour.h"

#include <gtest/gtest.h>

#include <algorithm>
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

/// The model as it is stated, with its branches: what the selections must equal bit for bit.
Hsv slowHsv(Rgb c)
{
    const double most = std::max({c.red, c.green, c.blue});
    const double least = std::min({c.red, c.green, c.blue});
    if (most == 0)
        return {0, 0, 0};
    const auto share = [least](double a, double b) {
        const double divisor = a + b - 2 * least;
        return (a - least) * 120 / (divisor == 0 ? 1.0 : divisor);
    };
    const double hue = c.blue == least  ? share(c.green, c.red)
                       : c.red == least ? share(c.blue, c.green) + 120
                                        : share(c.red, c.blue) + 240;
    return {hue, (most - least) * 100 / most, most * 100 / 65535};
}

Rgb slowRgb(Hsv c)
{
    const double h = c.hue, m = (100 - c.saturation) * c.value / 100, d = c.value - m;
    const auto scaled = [](double x) { return std::clamp(x * 65535 / 100, 0.0, 65535.0); };
    const double top = scaled(c.value), bottom = scaled(m);
    if (h <= 60)
        return {top, scaled(m + d * h / (120 - h)), bottom};
    if (h <= 120)
        return {scaled(m + (120 - h) * d / h), top, bottom};
    if (h <= 180)
        return {bottom, top, scaled(m + (h - 120) * d / (240 - h))};
    if (h <= 240)
        return {bottom, scaled(m + (240 - h) * d / (h - 120)), top};
    if (h <= 300)
        return {scaled(m + (h - 240) * d / (360 - h)), bottom, top};
    return {top, bottom, scaled(m + (360 - h) * d / (h - 240))};
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
        const Hsv wanted = slowHsv(colour), turned = {double(i % 361), hsv.saturation, hsv.value};
        EXPECT_EQ(hsv.hue, wanted.hue);
        EXPECT_EQ(hsv.saturation, wanted.saturation);
        EXPECT_EQ(hsv.value, wanted.value);
        for (const Hsv &one : {hsv, turned})
            expectNear(hsvToRgb(one), slowRgb(one), 0);
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
