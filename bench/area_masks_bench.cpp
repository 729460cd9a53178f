// SPDX-License-Identifier: GPL-3.0-or-later
#include "yardstick.h"

#include "area/maskops.h"
#include "area/smoothing.h"
#include "area/wand.h"
#include "core/workspace.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace
{
constexpr int64_t kSamples = int64_t(kBenchWidth) * kBenchHeight;
constexpr int kBlue = 30000; // of the region; the rest has none

/// A round object, rather larger than the picture is high, in the mask or in the picture.
bool inObject(int x, int y)
{
    return std::hypot(x - 3000, y - 2000) < 2200;
}

/// Smooths a mask, flat or of noise, and compares a few samples with the plain sums.
BenchCase smoothing(bool soft, double amount = 1.0)
{
    std::shared_ptr<image> picture = benchImage(1);
    auto before = std::make_shared<std::vector<uint16_t>>(kSamples);
    for (int64_t i = 0; i < kSamples; ++i) {
        const bool in = inObject(int(i % kBenchWidth), int(i / kBenchWidth));
        (*before)[size_t(i)] = soft ? picture->gmask[i] : in ? 65535 : 0;
    }
    const auto run = [picture, amount] { smoothSelection(picture.get(), 8, amount); };
    const auto reset = [picture, before] {
        std::copy(before->begin(), before->end(), picture->gmask);
    };
    const auto check = [=] {
        reset();
        run();
        double away = 0;
        for (int y = 100; y < 3900; y += 211)
            for (int x = 100; x < 5900; x += 173) {
                double sum = 0, weights = 0;
                for (int j = -8; j <= 8; ++j)
                    for (int i = -8; i <= 8; ++i) {
                        const double weight = std::exp(-(i * i + j * j) / 8.0);
                        sum += weight * (*before)[size_t((y + j) * kBenchWidth + x + i)];
                        weights += weight;
                    }
                const double old = (*before)[size_t(y * kBenchWidth + x)];
                const double wanted = sum / weights * amount + old * (1 - amount);
                away = std::max(away, std::abs(wanted - picture->maskAt(x, y)));
            }
        return away < 2 * 17 + 8; // a word is lost with each tap, up to 8 where it snaps
    };
    return {run, reset, check};
}

/// A region of four fifths of the picture, all in one piece: a few straight bars with
/// bridges, or what noise leaves.
BenchCase wand(bool noisy, bool globally)
{
    std::shared_ptr<image> picture = benchImage(1);
    for (int64_t i = 0; i < kSamples; ++i) {
        const int x = int(i % kBenchWidth), y = int(i / kBenchWidth);
        const bool in = noisy ? uint32_t(i * 2246822519U) % 5 != 0 : y % 500 >= 110 || x % 600 < 40;
        picture->red[i] = picture->green[i] = uint16_t(20000 + i % 50);
        picture->blue[i] = in ? kBlue : 0;
    }
    picture->blue[0] = kBlue;
    const auto run = [picture, globally] {
        wandMask(*picture, 3, 300, 10, globally, true, picture->gmask);
    };
    const auto check = [picture, run, noisy] {
        run();
        const auto taken = std::count(picture->gmask, picture->gmask + kSamples, 65535);
        return taken > kSamples * (noisy ? 75 : 79) / 100 && taken < kSamples * 82 / 100;
    };
    return {run, [] {}, check};
}

BenchCase growing()
{
    std::shared_ptr<image> picture = benchImage(0);
    const auto reset = [picture] {
        for (int64_t i = 0; i < kSamples; ++i)
            picture->gmask[i] =
                inObject(int(i % kBenchWidth), int(i / kBenchWidth)) ? 65535 : uint16_t(i % 7);
    };
    const auto run = [picture] { growSelection(picture.get(), 20); };
    const auto check = [=] {
        reset();
        run();
        return picture->maskAt(3000 + 2219, 2000) == 65535 && picture->maskAt(5300, 2000) == 6;
    };
    return {run, reset, check};
}
} // namespace

void registerAreaMaskBenchmarks()
{
    registerRatio("smooth/soft", 4.0, [] { return smoothing(true); });
    registerRatio("smooth/soft_by_half", 4.0, [] { return smoothing(true, 0.5); });
    registerRatio("smooth/flat", 4.0, [] { return smoothing(false); });
    registerRatio("wand/bars", 6.0, [] { return wand(false, false); });
    registerRatio("wand/noise", 6.0, [] { return wand(true, false); });
    registerRatio("wand/global", 6.0, [] { return wand(false, true); });
    registerRatio("grow/20", 100.0, [] { return growing(); });
}
