// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/colour.h"

#include "core/fixture.h"

#include <cmath>

namespace
{
/// The three numbers of a colour in whichever model.
template <class Model>
std::array<double, 3> parts(const Model &colour)
{
    const auto &[first, second, third] = colour;
    return {first, second, third};
}

template <class Model>
void expectNear(const Model &got, const Model &wanted, double within)
{
    for (size_t i = 0; i < 3; ++i)
        EXPECT_NEAR(parts(got)[i], parts(wanted)[i], within) << "part " << i;
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
} // namespace

TEST(Colour, KnownColours)
{
    const struct {
        const char *fault;
        Rgb rgb;
        Hsv hsv;
        Hsl hsl;
    } cases[] = {
        {"grey has no denominator", {6553.5, 6553.5, 6553.5}, {0, 0, 10}, {0, 0, 10}},
        {"green ties on red and blue", {0, 65535, 0}, {120, 100, 100}, {120, 100, 50}},
        {"magenta", {65535, 0, 65535}, {300, 100, 100}, {300, 100, 50}},
        // Orange is a third of the way by this program's sectors, a half by the usual ones.
        {"orange", {65535, 32767.5, 0}, {40, 100, 100}, {40, 100, 50}},
        {"pale, above the turn", {65535, 49151.25, 49151.25}, {0, 25, 100}, {0, 100, 87.5}},
    };
    for (const auto &one : cases) {
        SCOPED_TRACE(one.fault);
        expectNear(rgbToHsv(one.rgb), one.hsv, 1e-9);
        expectNear(rgbToHsl(one.rgb), one.hsl, 1e-9);
    }
    constexpr double middle = 32767.5;
    const Yrb white = {65535, (0.3 - 1) * middle + middle, (0.11 - 1) * middle + middle};
    expectNear(rgbToYrb({65535, 65535, 65535}), white, 1e-9);
    const Rgb beyond = yrbToRgb({65535, 65535, 65535});
    EXPECT_EQ(std::pair(beyond.red, beyond.green), std::pair(65535.0, 0.0));
    EXPECT_EQ(clampSampleValue(std::nan("")), 0.0) << "so that it can be stored";
}

TEST(Colour, RoundTripsAndRanges)
{
    const RecordingWorkspace ws;
    const ImagePtr img = randomImage(200, 100, 17);
    for (int i = 0; i < 200 * 100 && !testing::Test::HasFailure(); ++i) {
        const Rgb colour = {double(img->red[i]), double(img->green[i]), double(img->blue[i])};
        SCOPED_TRACE(testing::PrintToString(parts(colour)));
        const Hsv hsv = rgbToHsv(colour), turned = {double(i % 361), hsv.saturation, hsv.value};
        EXPECT_EQ(parts(hsv), parts(slowHsv(colour)));
        for (const Hsv &one : {hsv, turned})
            EXPECT_EQ(parts(hsvToRgb(one)), parts(slowRgb(one)));
        const Hsl hsl = rgbToHsl(colour);
        EXPECT_TRUE(hsl.hue >= 0 && hsl.hue <= 360 && hsl.saturation >= 0 && hsl.lightness <= 100);
        for (const Rgb &back : {hsvToRgb(hsv), hslToRgb(hsl), yrbToRgb(rgbToYrb(colour))})
            expectNear(back, colour, 1e-6);
    }
}
