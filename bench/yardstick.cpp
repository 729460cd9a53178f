// SPDX-License-Identifier: GPL-3.0-or-later
#include "yardstick.h"

#include "core/rows.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <vector>

namespace
{
constexpr int kRounds = 9;

double seconds(const std::function<void()> &work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> values)
{
    std::nth_element(values.begin(), values.begin() + long(values.size() / 2), values.end());
    return values[values.size() / 2];
}

/// The source and target of the yardstick, made once and touched before any timing.
std::function<void()> planeCopy()
{
    static std::unique_ptr<image> from = benchImage(1);
    static std::unique_ptr<image> to = benchImage(1);
    return [] { copyFivePlanes(*from, *to); };
}

double timed(BenchCase &one)
{
    if (one.reset)
        one.reset();
    return seconds(one.run);
}

void measure(benchmark::State &state, double limit, BenchCase mine, BenchCase peer)
{
    if (mine.check && !mine.check()) {
        state.SkipWithError("the output is wrong");
        return;
    }
    std::vector<double> own, other;
    timed(mine);
    timed(peer);
    for (auto _ : state) {
        for (int i = 0; i < kRounds; ++i) {
            other.push_back(timed(peer));
            own.push_back(timed(mine));
        }
        state.SetIterationTime(median(own));
    }
    state.counters["peer_ms"] = median(other) * 1000;
    state.counters["ratio"] = median(own) / median(other);
    state.counters["limit"] = limit;
    state.SetLabel(median(own) / median(other) <= limit ? "within" : "OVER");
}
} // namespace

void registerRatio(const char *name, double limit, std::function<BenchCase()> make)
{
    registerAgainst(name, limit, std::move(make), [] {
        return BenchCase{planeCopy(), nullptr, nullptr};
    });
}

void registerAgainst(const char *name, double limit, std::function<BenchCase()> make,
                     std::function<BenchCase()> peer)
{
    benchmark::RegisterBenchmark(
        name,
        [limit, make, peer](benchmark::State &state) { measure(state, limit, make(), peer()); })
        ->UseManualTime()
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
}

std::unique_ptr<image> benchImage(int mask)
{
    auto img = std::make_unique<image>();
    if (!img->allocate(kBenchWidth, kBenchHeight, QStringLiteral("bench")))
        std::abort();
    parallelRows(img->height, img->width, [&](int first, int end) {
        for (int y = first; y < end; ++y)
            for (int x = 0; x < img->width; ++x) {
                const int64_t i = int64_t(y) * img->width + x;
                const uint32_t noise = uint32_t(i) * 2654435761U;
                img->red[i] = uint16_t(noise >> 16);
                img->green[i] = uint16_t(x * 10);
                img->blue[i] = uint16_t(noise >> 8);
                img->alpha[i] = 65535;
                img->gmask[i] = mask == 2 ? 65535 : mask == 1 ? uint16_t(noise >> 12) : 0;
            }
    });
    return img;
}

void copyFivePlanes(const image &from, image &to)
{
    const auto source = from.workPlanes();
    const auto target = to.workPlanes();
    parallelRows(from.height, from.width * 5, [&](int first, int end) {
        const size_t start = size_t(first) * from.width;
        const size_t bytes = size_t(end - first) * from.width * sizeof(uint16_t);
        for (int p = 0; p < 5; ++p)
            std::memcpy(target[p] + start, source[p] + start, bytes);
    });
}
