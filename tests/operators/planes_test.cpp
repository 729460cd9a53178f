// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/base/operatortable.h"
#include "operators/base/opwrapper.h"

#include "core/colour.h"
#include "core/cpu.h"
#include "core/memory.h"
#include "operators/pipeline/colorblending.h"
#include "operators/table/allops.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <numeric>
#include <vector>

// Operators that move, key or convert whole planes, each against a slow version of it.

namespace
{
using Slow = std::function<void(image &, colorblending &)>;
using Pixel = std::array<double, 3>;

Pixel pixelOf(const image &img, int64_t i)
{
    return {double(img.red[i]), double(img.green[i]), double(img.blue[i])};
}

/// The sum of squares by which alpha is mixed.
uint16_t squared(double old, double result, double m)
{
    return uint16_t(std::sqrt((1 - m) * old * old + m * result * result));
}

void blendPixel(image &img, colorblending &mixer, int64_t i, const Pixel &to, double m)
{
    img.red[i] = uint16_t(mixer.blend(img.red[i], to[0], m));
    img.green[i] = uint16_t(mixer.blend(img.green[i], to[1], m));
    img.blue[i] = uint16_t(mixer.blend(img.blue[i], to[2], m));
}

Slow moved(int red, int green, int blue)
{
    return [=](image &img, colorblending &mixer) {
        for (int64_t i = 0; i < img.sampleCount(); ++i) {
            const bool through = workspace()->maskWithTargetAlpha;
            if (img.gmask[i] == 0 || (through && img.alpha[i] == 0))
                continue;
            const Pixel old = pixelOf(img, i);
            const double m = img.gmask[i] / 65535.0;
            blendPixel(img, mixer, i, {old[size_t(red)], old[size_t(green)], old[size_t(blue)]},
                       through ? img.alpha[i] / 65535.0 * m : m);
        }
    };
}

Slow shifted(int channel, int shift)
{
    return [=](image &img, colorblending &) {
        uint16_t *plane = img.colorPlanes()[size_t(channel)];
        for (int y = 0; y < img.height; ++y) {
            uint16_t *row = plane + int64_t(y) * img.width;
            const std::vector<uint16_t> old(row, row + img.width);
            for (int x = 0; x < img.width; ++x) {
                const int from = ((x - shift) % img.width + img.width) % img.width;
                const double m = img.maskAt(x, y) / 65535.0;
                row[x] = uint16_t(old[size_t(x)] * (1 - m) + old[size_t(from)] * m);
            }
        }
    };
}

void toYrb(image &img, colorblending &)
{
    for (int64_t i = 0; i < img.sampleCount(); ++i) {
        const Pixel old = pixelOf(img, i);
        const Yrb yrb = rgbToYrb({old[0], old[1], old[2]});
        img.red[i] = uint16_t(yrb.y), img.green[i] = uint16_t(yrb.r), img.blue[i] = uint16_t(yrb.b);
    }
}

void toRgb(image &img, colorblending &)
{
    for (int64_t i = 0; i < img.sampleCount(); ++i) {
        const Pixel old = pixelOf(img, i);
        const Rgb rgb = yrbToRgb({old[0], old[1], old[2]});
        img.red[i] = uint16_t(rgb.red), img.green[i] = uint16_t(rgb.green);
        img.blue[i] = uint16_t(rgb.blue);
    }
}

Slow alphaBy(const std::function<double(Pixel, double)> &rule)
{
    return [rule](image &img, colorblending &) {
        for (int64_t i = 0; i < img.sampleCount(); ++i)
            img.alpha[i] =
                squared(img.alpha[i], rule(pixelOf(img, i), img.alpha[i]), img.gmask[i] / 65535.0);
    };
}

void greyOfAlpha(image &img, colorblending &mixer)
{
    for (int64_t i = 0; i < img.sampleCount(); ++i) {
        const double a = img.alpha[i];
        blendPixel(img, mixer, i, {a, a, a}, img.gmask[i] / 65535.0);
    }
}

Slow softened(double passes)
{
    return [passes](image &img, colorblending &) {
        std::vector<uint16_t> plane(img.alpha, img.alpha + img.sampleCount());
        for (double left = passes; left > 0; left -= 1) {
            const double w = std::min(left, 1.0) / 4;
            const std::vector<uint16_t> old = plane;
            for (int64_t i = 0; i < img.sampleCount(); ++i) {
                double sum = 0;
                for (int k = 0; k < 9; ++k) {
                    const auto line = [w](int place) { return place == 1 ? 1 - 2 * w : w; };
                    const int x = std::clamp(int(i % img.width) + k % 3 - 1, 0, img.width - 1);
                    const int y = std::clamp(int(i / img.width) + k / 3 - 1, 0, img.height - 1);
                    sum += old[size_t(y) * size_t(img.width) + size_t(x)] *
                           (line(k / 3) * line(k % 3));
                }
                plane[size_t(i)] = uint16_t(sum + 0.5);
            }
        }
        for (int64_t i = 0; i < img.sampleCount(); ++i)
            img.alpha[i] = squared(img.alpha[i], plane[size_t(i)], img.gmask[i] / 65535.0);
    };
}

int valueOf(const Pixel &pixel)
{
    return int(rgbToHsv({pixel[0], pixel[1], pixel[2]}).value * 65535.0 / 100.0);
}

void equalised(image &img, colorblending &mixer)
{
    std::vector<int64_t> upTo(65536);
    for (int64_t i = 0; i < img.sampleCount(); ++i)
        if (img.gmask[i] && img.alpha[i])
            ++upTo[size_t(valueOf(pixelOf(img, i)))];
    std::partial_sum(upTo.begin(), upTo.end(), upTo.begin());
    const auto least = std::find_if(upTo.begin(), upTo.end(), [](int64_t n) { return n > 0; });
    if (least == upTo.end() || *least == upTo.back())
        return;
    const double span = double(upTo.back() - *least);
    for (int64_t i = 0; i < img.sampleCount(); ++i) {
        const Pixel old = pixelOf(img, i);
        Hsv hsv = rgbToHsv({old[0], old[1], old[2]});
        const int64_t place = upTo[size_t(valueOf(old))] - *least;
        hsv.value = (place <= 0 ? 0 : int(double(place) / span * 65535.0 + 0.5)) * 100.0 / 65535.0;
        const Rgb to = hsvToRgb(hsv);
        const double m = img.gmask[i] / 65535.0;
        img.red[i] = uint16_t(mixer.blend(to.red, old[0], 1 - m));
        img.green[i] = uint16_t(mixer.blend(to.green, old[1], 1 - m));
        img.blue[i] = uint16_t(mixer.blend(to.blue, old[2], 1 - m));
    }
}

void keyed(image &img, colorblending &)
{
    for (int64_t i = 0; i < img.sampleCount(); ++i) {
        const int pair = ((img.red[i] >> 8) << 8) + (img.green[i] >> 8);
        const uint8_t byte = workspace()->colorSpace[pair * 32 + (img.blue[i] >> 11)];
        if (img.gmask[i] && (byte >> ((img.blue[i] >> 8) & 3) & 1))
            img.alpha[i] = 0;
    }
}

class Planes : public testing::Test
{
protected:
    Planes() { addAllOperators(&table); }
    ~Planes() override { limitKernels(KernelLevel::Avx512); }

    int call(const QString &line, image *target)
    {
        QStringList args = line.split(QLatin1Char(' '));
        OpWrapper *op = table.byScriptName(args.takeFirst());
        return op ? op->scriptCall(args.size(), &args, target, &usage) : -2;
    }

    /// Random words, stripes of none, some and full that blocks and rows begin within, full,
    /// or none.
    static ImagePtr picture(int width, int height, int mask)
    {
        ImagePtr img = randomImage(width, height, uint32_t(width + mask));
        for (int64_t i = 0; mask > 0 && i < img->sampleCount(); ++i)
            img->gmask[i] = mask == 2   ? 65535
                            : mask == 3 ? 0
                                        : i / 290 % 3 * 32767 + i / 290 % 3 / 2;
        return img;
    }

    void compare(const char *line, const Slow &slow, int lastBlendMode)
    {
        for (KernelLevel level : {KernelLevel::Baseline, KernelLevel::Avx2, KernelLevel::Avx512})
            for (int width : {1, 3, 331})
                for (int mask = 0; mask < 4; ++mask)
                    for (int mode = 0; mode <= lastBlendMode; ++mode) {
                        limitKernels(level);
                        space.blendMode = mode;
                        const ImagePtr fast = picture(width, 5, mask),
                                       plain = picture(width, 5, mask);
                        {
                            colorblending seeded;
                            ASSERT_EQ(call(line, fast.get()), 1) << line;
                        }
                        colorblending seeded;
                        slow(*plain, seeded);
                        ASSERT_TRUE(samePlanes(*fast, *plain))
                            << line << ": level " << int(level) << " width " << width << " mask "
                            << mask << " mode " << mode;
                    }
    }

    RecordingWorkspace space;
    OperatorTable table;
    QString usage;
};

constexpr int kNoModes = 1; ///< Add means nothing to them
constexpr int kAllModes = kBlendBackground;
} // namespace

TEST_F(Planes, EachOperatorIsItsLonghandAtEveryLevelAndMode)
{
    space.foreGreen = 12345;
    ASSERT_TRUE(space.ensureColorSpace());
    for (size_t i = 0; i < Workspace::kColorSpaceBytes; ++i)
        space.colorSpace[i] = uint8_t(i * 2654435761U >> 24);
    const auto sum = [](double r, double g, double b) {
        return alphaBy(
            [=](Pixel p, double) { return std::floor(r * p[0] + g * p[1] + b * p[2] + .5); });
    };
    const auto steeper = [](double slope) {
        return alphaBy([slope](Pixel, double a) {
            return std::floor(std::clamp((a - 32767.5) * slope + 32767.5, 0.0, 65535.0) + .5);
        });
    };
    const struct {
        const char *line;
        Slow slow;
        int lastMode;
    } cases[] = {
        {"channelmove 0", moved(1, 0, 2), kAllModes},
        {"channelmove 1", moved(0, 2, 1), kAllModes},
        {"channelmove 2", moved(2, 1, 0), kAllModes},
        {"channelmove 3", moved(2, 0, 1), kAllModes},
        {"channelmove 4", moved(1, 2, 0), kAllModes},
        {"rgbshift 1 0 1", shifted(0, 1), kNoModes},
        {"rgbshift 200 1 0", shifted(1, -200), kNoModes},
        {"rgbshift 7 2 1", shifted(2, 7), kNoModes},
        {"yrbconvert 0", toYrb, kNoModes},
        {"yrbconvert 1", toRgb, kNoModes},
        {"keyop", keyed, kNoModes},
        {"histeq", equalised, kAllModes},
        {"alphamod 77 0", alphaBy([](Pixel, double) { return 77 * 257.0; }), kNoModes},
        {"alphamod 0 1", alphaBy([](Pixel, double a) { return 65535 - a; }), kNoModes},
        {"alphamod 0 2", greyOfAlpha, kAllModes},
        {"alphamod 0 3",
         alphaBy([](Pixel p, double) { return std::floor((p[0] + p[1] + p[2]) / 3 + .5); }),
         kNoModes},
        {"alphamod 0 4", sum(0.3, 0.59, 0.11), kNoModes},
        {"alphamod 0 5", sum(1, 0, 0), kNoModes},
        {"alphamod 0 6", sum(0, 1, 0), kNoModes},
        {"alphamod 0 7", sum(0, 0, 1), kNoModes},
        {"alphamod 0 8", steeper(1), kNoModes},
        {"alphamod 100 8", steeper(255 / 155.0), kNoModes},
        {"alphamod 255 8", alphaBy([](Pixel, double a) { return a < 32768 ? 0 : 65535.0; }),
         kNoModes},
        {"alphamod 0 9", softened(0), kNoModes},
        {"alphamod 56 9", softened(3.5), kNoModes},
    };
    for (const auto &one : cases)
        compare(one.line, one.slow, one.lastMode);
    space.maskWithTargetAlpha = true; // to which only one of them listens
    compare("channelmove 3", moved(2, 0, 1), kAllModes);
    compare("alphamod 0 2", greyOfAlpha, kNoModes);
}

TEST_F(Planes, EqualisedLevelsOfEightBitsStayApart)
{
    // Evenly held levels are equal already. A level read by its lower neighbour's entry would
    // fall by a whole step.
    const ImagePtr even = plainImage(256, 2, 0, 0, 0);
    even->fillGmask(65535);
    for (int i = 0; i < 512; ++i)
        even->red[i] = even->green[i] = even->blue[i] = uint16_t(i % 256 * 257);
    ASSERT_EQ(call("histeq", even.get()), 1);
    for (int i = 0; i < 512; ++i)
        ASSERT_NEAR(even->green[i], i % 256 * 257, 1);
    // One value alone, and nothing selected: there is nothing to part.
    for (const uint16_t mask : {uint16_t(65535), uint16_t(0)}) {
        const ImagePtr plain = plainImage(9, 9, 5, 600, 70), old = plainImage(9, 9, 5, 600, 70);
        plain->fillGmask(mask), old->fillGmask(mask);
        ASSERT_EQ(call("histeq", plain.get()), 1);
        EXPECT_TRUE(samePlanes(*plain, *old)) << mask;
    }
}

TEST_F(Planes, StateOfThePictureAndOfTheColourSet)
{
    const ImagePtr img = randomImage(20, 20, 1), old = randomImage(20, 20, 1);
    EXPECT_EQ(call("keyop", img.get()), 1); // no set was ever made
    EXPECT_TRUE(samePlanes(*img, *old));
    EXPECT_EQ(call("yrbconvert 0", img.get()), 1);
    EXPECT_EQ(img->imageMode, 1);
    EXPECT_EQ(call("yrbconvert 1", img.get()), 1);
    EXPECT_EQ(img->imageMode, 0);
    // There and back costs no more than what the narrow scale of blue rounds away.
    for (int64_t i = 0; i < img->sampleCount(); ++i) {
        ASSERT_NEAR(img->red[i], old->red[i], 20);
        ASSERT_NEAR(img->blue[i], old->blue[i], 40);
    }
}

TEST_F(Planes, BadLinesAndShortMemoryChangeNothing)
{
    for (const char *line :
         {"alphamod 256 0", "alphamod -1 0",     "alphamod 0 10",  "alphamod 1",
          "alphamod x 0",   "alphamod 1 2 3",    "channelmove 5",  "channelmove -1",
          "channelmove",    "channelmove 1e300", "rgbshift 0 0 0", "rgbshift 201 0 0",
          "rgbshift 5 3 0", "rgbshift 5 0 2",    "rgbshift 5 0",   "keyop 1",
          "histeq 0",       "yrbconvert 2",      "yrbconvert -1",  "yrbconvert"}) {
        const ImagePtr img = randomImage(9, 9, 2), old = randomImage(9, 9, 2);
        usage.clear();
        EXPECT_EQ(call(line, img.get()), 0) << line;
        EXPECT_TRUE(samePlanes(*img, *old)) << line;
        EXPECT_EQ(usage.section(' ', 0, 0), QString(line).section(' ', 0, 0));
    }
    for (const char *line : {"rgbshift 5 0 1", "histeq", "alphamod 40 9", "channelmove 3",
                             "alphamod 9 0", "yrbconvert 0", "keyop"})
        EXPECT_EQ(call(line, nullptr), 1) << line;
    const struct {
        const char *line;
        int allocations;
    } needy[] = {{"rgbshift 5 0 1", 2}, {"histeq", 3}, {"alphamod 40 9", 4}};
    for (const auto &one : needy)
        for (int n = 1; n <= one.allocations + 1; ++n) {
            const ImagePtr img = randomImage(40, 9, 2), old = randomImage(40, 9, 2);
            ASSERT_EQ(call(one.line, nullptr), 1); // reads the tokens, which takes memory too
            memFailAt(n);
            table.byScriptName(QString(one.line).section(' ', 0, 0))->apply(img.get(), nullptr);
            memFailAt(0);
            EXPECT_EQ(samePlanes(*img, *old), n <= one.allocations) << one.line << n;
        }
}
