// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/pipeline/linearmix.h"

#include "core/colour.h"
#include "core/cpu.h"
#include "core/rows.h"
#include "operators/base/operatortable.h"
#include "operators/filter/exposure.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>

namespace
{
using Rule = std::function<Rgb(Rgb)>;

uint16_t mixed(uint16_t c, double result, uint16_t mask)
{
    const double m = mask / 65535.0;
    return uint16_t(c * (1 - m) + result * m);
}

void longhand(image &img, const Rule &rule)
{
    for (int64_t i = 0; i < img.sampleCount(); ++i) {
        const Rgb out = rule({double(img.red[i]), double(img.green[i]), double(img.blue[i])});
        img.red[i] = mixed(img.red[i], out.red, img.gmask[i]);
        img.green[i] = mixed(img.green[i], out.green, img.gmask[i]);
        img.blue[i] = mixed(img.blue[i], out.blue, img.gmask[i]);
    }
}

/// 0: random words; 1: runs of 0 and 65535 of random length; 2: full; 3: empty; 4: full
/// but for one word, which a block's short cut must not swallow.
void paintMask(image &img, int kind, uint32_t seed)
{
    std::mt19937 generator(seed);
    if (kind == 0)
        return;
    img.fillGmask(kind == 3 ? 0 : 65535);
    if (kind == 4)
        img.gmask[generator() % uint32_t(img.sampleCount())] = 65534;
    if (kind != 1)
        return;
    for (int64_t i = 0; i < img.sampleCount();) {
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

TEST(LinearMix, ScaledIsTheLonghandMixAtEveryLevel)
{
    RecordingWorkspace space;
    for (int amount : {-100, -37, 0, 1, 25, 100}) {
        const double k = (amount + 100) / 100.0;
        const auto scale = [k](double c) { return std::min(k * c, 65535.0); };
        compareEverywhere([k](image *img) { mixScaled(img, k); },
                          [&](Rgb c) {
                              return Rgb{scale(c.red), scale(c.green), scale(c.blue)};
                          });
    }
}

TEST(LinearMix, ComplementIsTheLonghandMixAtEveryLevel)
{
    RecordingWorkspace space;
    compareEverywhere([](image *img) { mixComplement(img); },
                      [](Rgb c) {
                          return Rgb{65535 - c.red, 65535 - c.green, 65535 - c.blue};
                      });
}

TEST(LinearMix, LumaExposureScalesTheValueAlone)
{
    RecordingWorkspace space;
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
}

TEST(LinearMix, NothingToWorkOnIsNoHarm)
{
    RecordingWorkspace space;
    image empty;
    mixScaled(nullptr, 1);
    mixComplement(&empty);
}
