// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/pipeline/blendspan.h"
#include "operators/pipeline/colorblending.h"
#include "operators/pipeline/linearmix.h"
#include "operators/pipeline/lookup.h"
#include "operators/pipeline/random15.h"

#include "core/colour.h"
#include "core/cpu.h"
#include "core/memory.h"
#include "operators/base/operatortable.h"
#include "operators/filter/exposure.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <random>

namespace
{
constexpr double kTop = 65535.0;

/// The plain modes, computed apart: each mixes the square of its result, which may stand
/// for a negative sum too, with that of the old sample.
double blended(int mode, double a, double b, double t)
{
    if (mode == kBlendDivide && b < 1)
        return kTop;
    const double grey = b - 32768, share = b / kTop;
    const double results[] = {b,         a + b,    grey + a, a - grey, std::max(a - b, 0.0),
                              share * a, a / share};
    const double s = std::min(results[mode], kTop);
    return std::sqrt(t * s * s + (1 - t) * a * a);
}

using Rule = std::function<Rgb(Rgb)>;

void longhand(image &img, const Rule &rule)
{
    for (int64_t i = 0; i < img.sampleCount(); ++i) {
        const double m = img.gmask[i] / 65535.0;
        const Rgb out = rule({double(img.red[i]), double(img.green[i]), double(img.blue[i])});
        img.red[i] = uint16_t(img.red[i] * (1 - m) + out.red * m);
        img.green[i] = uint16_t(img.green[i] * (1 - m) + out.green * m);
        img.blue[i] = uint16_t(img.blue[i] * (1 - m) + out.blue * m);
    }
}

/// Every sample by blend() itself, in order.
void blendLonghand(image &img, bool reversed, bool skips, bool throughAlpha, const Rule &rule)
{
    colorblending mixer;
    for (int64_t i = 0; i < img.sampleCount(); ++i) {
        if (skips && (img.alpha[i] == 0 || img.gmask[i] == 0))
            continue;
        double m = img.gmask[i] / 65535.0;
        if (throughAlpha)
            m = img.alpha[i] / 65535.0 * m;
        const Rgb out = rule({double(img.red[i]), double(img.green[i]), double(img.blue[i])});
        const auto mixed = [&](uint16_t old, double result) {
            return uint16_t(reversed ? mixer.blend(result, old, 1.0 - m)
                                     : mixer.blend(old, result, m));
        };
        img.red[i] = mixed(img.red[i], out.red);
        img.green[i] = mixed(img.green[i], out.green);
        img.blue[i] = mixed(img.blue[i], out.blue);
    }
}

/// 0: random words; 1: runs of 0 and 65535 of random length; 2: full; 3: empty; 4: full
/// but for one word, which a block's short cut must not swallow.
void paintMask(image &img, int kind, uint32_t seed)
{
    std::mt19937 generator(seed);
    if (kind > 0)
        img.fillGmask(kind == 3 ? 0 : 65535);
    if (kind == 4)
        img.gmask[generator() % uint32_t(img.sampleCount())] = 65534;
    for (int64_t i = 0; kind == 1 && i < img.sampleCount();) {
        const uint16_t word = generator() % 3 == 0 ? 0 : generator() % 2 ? 65535 : 300;
        for (int64_t n = generator() % 700; n >= 0 && i < img.sampleCount(); --n)
            img.gmask[i++] = word;
    }
}

void compareEverywhere(const std::function<void(image *)> &fast, const Rule &rule)
{
    const int sizes[][2] = {{1, 1}, {3, 5}, {257, 3}, {1000, 9}};
    for (KernelLevel level : {KernelLevel::Baseline, KernelLevel::Avx2, KernelLevel::Avx512}) {
        limitKernels(level);
        for (const auto &size : sizes)
            for (int kind = 0; kind <= 4; ++kind) {
                const uint32_t seed = uint32_t(kind * 100 + size[0]);
                auto one = randomImage(size[0], size[1], seed);
                auto other = randomImage(size[0], size[1], seed);
                paintMask(*one, kind, seed);
                paintMask(*other, kind, seed);
                fast(one.get());
                longhand(*other, rule);
                EXPECT_TRUE(samePlanes(*one, *other))
                    << "level " << int(level) << " width " << size[0] << " mask " << kind;
            }
    }
    limitKernels(KernelLevel::Avx512);
}
} // namespace

TEST(ColorBlending, PlainModesFollowTheirFormulas)
{
    RecordingWorkspace space;
    colorblending mixer;
    for (int mode = kBlendMatte; mode <= kBlendDivide; ++mode) {
        space.blendMode = mode;
        for (double a : {0, 1, 32767, 32768, 40000, 65535})
            for (double b : {0, 1, 2, 32767, 32768, 40000, 65534, 65535})
                for (double t : {0.0, 1 / kTop, 0.25, 32768 / kTop, 0.9, 1.0})
                    EXPECT_NEAR(mixer.blend(a, b, t), blended(mode, a, b, t), 1e-6)
                        << mode << ": " << a << ' ' << b << ' ' << t;
    }
    EXPECT_EQ(mixer.channel, 0);
    mixer.blendMode = 11; // the object's field is the workspace's word
    EXPECT_EQ(space.blendMode, 11);
    EXPECT_EQ(mixer.blend(123, 65535, 1), 123);
}

TEST(ColorBlending, DissolveDrawsOncePerPixelAndRepeats)
{
    RecordingWorkspace space;
    for (int mode : {int(kBlendDissolve), int(kBlendSoftDissolve)}) {
        space.blendMode = mode;
        std::srand(1);
        const double firstDraw = ((std::rand() >> 16) & 32767) / 32767.0;
        colorblending mixer; // starts the sequence anew
        int taken = 0;
        const double t = 32768 / kTop;
        for (int pixel = 0; pixel < 4000; ++pixel) {
            // A pixel under a weight beyond the limits must not shift the three.
            EXPECT_EQ(mixer.blend(10, 20, 511 / kTop), 10);
            EXPECT_EQ(mixer.channel, 0);
            if (mode == kBlendDissolve) {
                ASSERT_EQ(mixer.blend(10, 20, 65024 / kTop), 20);
            }
            const double first = mixer.blend(100, 300, t);
            if (pixel == 0) {
                EXPECT_EQ(mixer.dissolveValue, firstDraw);
            }
            EXPECT_EQ(mixer.blend(100, 300, t), first);
            EXPECT_EQ(mixer.blend(100, 300, t), first);
            const double mixed = mode == kBlendDissolve ? 300 : blended(0, 100, 300, t);
            EXPECT_EQ(first, first == 100 ? 100 : mixed);
            taken += first != 100;
        }
        EXPECT_NEAR(taken, 2000, 150);
    }
}

TEST(ColorBlending, ForegroundAndBackgroundTakeEachChannelsComponent)
{
    RecordingWorkspace space;
    space.foreRed = 1000, space.foreGreen = 2000, space.foreBlue = 3000;
    space.backRed = 60000, space.backGreen = 50000, space.backBlue = 40000;
    colorblending mixer;
    const double colours[2][3] = {{1000, 2000, 3000}, {60000, 50000, 40000}};
    for (int i = 0; i < 12; ++i) { // two pixels of each mode in turn
        const int back = i / 3 % 2;
        space.blendMode = back ? kBlendBackground : kBlendForeground;
        EXPECT_NEAR(mixer.blend(500, 7, 0.75), blended(0, 500, colours[back][i % 3], 0.75), 1e-6);
    }
}

namespace
{
/// Lifts dark samples, drops bright ones, and hits 0, below 1 and white: what Divide and the
/// greys treat specially.
uint16_t bent(int c)
{
    return uint16_t(c < 300 ? 0 : c > 65000 ? 65535 : c * 3 % 65536);
}

void fillTables(Workspace &space)
{
    for (int i = 0; i < 65536; ++i) {
        space.colorMapRed[i] = bent(i);
        space.colorMapGreen[i] = uint16_t(65535 - i);
        space.colorMapBlue[i] = uint16_t(i / 2);
    }
}

ImagePtr maskedImage(int width, int height, int maskKind, uint32_t seed)
{
    auto img = randomImage(width, height, seed);
    std::mt19937 generator(seed);
    for (int64_t i = 0; i < img->sampleCount(); ++i)
        if (const auto pick = generator() % 16; pick < 6) {
            constexpr uint16_t special[] = {0, 1, 32768, 65535, 299, 65534};
            img->red[i] = special[pick];
            img->green[i] = special[(pick + seed) % 6];
            img->blue[i] = pick % 2 ? img->red[i] : special[5 - pick];
            img->alpha[i] = pick % 3 ? 65535 : 0;
        }
    paintMask(*img, maskKind, seed);
    return img;
}

using Way = std::function<void(image *)>;

/// Both ways on the same picture, each with the generator at its start.
void expectSame(const Way &fast, const Way &slow, int mode)
{
    for (KernelLevel level : {KernelLevel::Baseline, KernelLevel::Avx2, KernelLevel::Avx512})
        for (int kind = 0; kind <= 4; ++kind) {
            limitKernels(level);
            const auto one = maskedImage(331, 5, kind, uint32_t(kind + 10 * mode));
            const auto other = maskedImage(331, 5, kind, uint32_t(kind + 10 * mode));
            {
                colorblending mixer;
                fast(one.get());
            }
            slow(other.get());
            EXPECT_TRUE(samePlanes(*one, *other))
                << "mode " << mode << " level " << int(level) << " mask " << kind;
        }
    limitKernels(KernelLevel::Avx512);
}
} // namespace

TEST(LookUp, TablesAreBlendedSampleBySampleInEveryMode)
{
    RecordingWorkspace space;
    fillTables(space);
    space.foreRed = 1000, space.foreGreen = 33000, space.foreBlue = 65535;
    for (int mode = kBlendMatte; mode <= kBlendBackground + 1; ++mode) {
        space.blendMode = mode;
        expectSame(
            applyLut,
            [&](image *img) {
                blendLonghand(*img, true, false, false, [&](Rgb c) {
                    return Rgb{double(space.colorMapRed[int(c.red)]),
                               double(space.colorMapGreen[int(c.green)]),
                               double(space.colorMapBlue[int(c.blue)])};
                });
            },
            mode);
        expectSame(
            applyLumaLut,
            [&](image *img) {
                blendLonghand(*img, true, false, false, [&](Rgb c) {
                    Hsv hsv = rgbToHsv(c);
                    const int index = int(hsv.value * 65535.0 / 100.0);
                    hsv.value = space.colorMapGreen[index] * 100.0 / 65535.0;
                    return hsvToRgb(hsv);
                });
            },
            mode);
    }
}

TEST(BlendSpans, ResultsGoInByEveryModeOrderAndRule)
{
    RecordingWorkspace space;
    fillTables(space);
    space.backRed = 40000, space.backGreen = 2, space.backBlue = 30000;
    const Rule rule = [&](Rgb c) {
        return Rgb{double(bent(int(c.red))), 65535 - c.green, c.blue / 2};
    };
    // The kernel that looks channels up stands for all that blend, in the order asked for.
    const auto whole = [](BlendPass pass) {
        return [pass](image *img) {
            BlendPass fresh = pass;
            fresh.blending = colorblending::current();
            const LookupTables tables{workspace()->colorMapRed, workspace()->colorMapGreen,
                                      workspace()->colorMapBlue};
            overBlendSpans(img, fresh, [&](const MixSpan &span) {
                KERNEL_DISPATCH(lookupSpan, span, tables, fresh);
            });
        };
    };
    for (int i = 0; i < 65536; ++i)
        space.colorMapBlue[i] = uint16_t(i / 2);
    for (int mode = kBlendMatte; mode <= kBlendBackground + 1; ++mode)
        for (bool skips : {false, true})
            for (bool throughAlpha : {false, true}) {
                space.blendMode = mode;
                const colorblending keeper; // pass of a dissolve mode needs one
                BlendPass pass = blendPass(BlendOrder::OldFirst, skips);
                pass.throughAlpha = throughAlpha;
                const Rule truncated = [&](Rgb c) {
                    const Rgb out = rule(c);
                    return Rgb{out.red, out.green, std::floor(out.blue)};
                };
                expectSame(
                    whole(pass),
                    [&](image *img) { blendLonghand(*img, false, skips, throughAlpha, truncated); },
                    mode);
            }
}

TEST(LookUp, WithoutMemoryOrTablesNothingChanges)
{
    RecordingWorkspace space;
    fillTables(space);
    const auto img = maskedImage(40, 4, 2, 3), before = maskedImage(40, 4, 2, 3);
    memFailAt(1);
    applyLumaLut(img.get());
    memFailAt(0);
    EXPECT_TRUE(samePlanes(*img, *before));
    resetLut();
    EXPECT_EQ(space.colorMapRed[12345], 12345);
    applyLut(img.get());
    EXPECT_TRUE(samePlanes(*img, *before));
    EXPECT_EQ(clampSample(-1), 0);
    EXPECT_EQ(clampSample(int64_t(1) << 40), 65535);
    EXPECT_EQ(lutEntry(std::nan("")), 0);
    EXPECT_EQ(lutEntry(65535.9), 65535);
    EXPECT_EQ(lutEntry(-3.0), 0);
}

TEST(Random, AnAsideLeavesTheSequenceAlone)
{
    seedRandom15(7);
    const int first = random15(), second = random15();
    seedRandom15(7);
    EXPECT_EQ(random15(), first);
    int aside = 0;
    for (int round = 0; round < 2; ++round) {
        const RandomAside own;
        const int drawn = random15();
        EXPECT_TRUE(round == 0 || drawn == aside);
        aside = drawn;
    }
    EXPECT_EQ(random15(), second);
}

TEST(LinearMix, ScaleComplementAndLumaAreTheLonghandMixAtEveryLevel)
{
    RecordingWorkspace space;
    space.blendMode = 4; // means nothing to the linear mix
    for (int amount : {-100, -37, 0, 1, 25, 100}) {
        const double k = (amount + 100) / 100.0;
        const auto scale = [k](double c) { return std::min(k * c, 65535.0); };
        compareEverywhere([k](image *img) { mixScaled(img, k); },
                          [&](Rgb c) {
                              return Rgb{scale(c.red), scale(c.green), scale(c.blue)};
                          });
    }
    compareEverywhere(mixComplement, [](Rgb c) {
        return Rgb{65535 - c.red, 65535 - c.green, 65535 - c.blue};
    });
    OperatorTable table;
    Exposure exposure(&table);
    exposure.mode = Exposure::Luma;
    for (int amount : {-100, 30, 100}) {
        exposure.amount = amount;
        compareEverywhere([&](image *img) { exposure.apply(img, nullptr); },
                          [&](Rgb c) {
                              Hsv hsv = rgbToHsv(c);
                              hsv.value = std::min(hsv.value * ((amount + 100) / 100.0), 100.0);
                              return hsvToRgb(hsv);
                          });
    }
    image empty;
    mixScaled(nullptr, 1);
    mixComplement(&empty);
}
