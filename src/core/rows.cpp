// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/rows.h"

#include <QThread>
#include <QThreadPool>
#include <cstring>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <memory>

namespace
{
/// Below this many samples waking another thread costs more than it saves.
constexpr int64_t kSamplesWorthSharing = 1 << 15;
/// A few bands per thread even out rows that cost unequally.
constexpr int kBandsPerThread = 4;

std::atomic<int> threadSetting{0};

int threadCount()
{
    const int setting = threadSetting.load(std::memory_order_relaxed);
    return setting > 0 ? setting : std::max(1, QThread::idealThreadCount());
}

/// Shared with helpers that may start only after the caller is gone: these find no band
/// left and never touch the body.
struct Job {
    const std::function<void(int, int)> *body;
    int rows, bands;
    std::atomic<int> next{0}, done{0};

    void work()
    {
        for (int band = next.fetch_add(1); band < bands; band = next.fetch_add(1)) {
            (*body)(int(int64_t(rows) * band / bands), int(int64_t(rows) * (band + 1) / bands));
            if (done.fetch_add(1) + 1 == bands)
                done.notify_all();
        }
    }

    void waitUntilDone()
    {
        for (int seen = done.load(); seen != bands; seen = done.load())
            done.wait(seen);
    }
};
} // namespace

void parallelRows(int rows, int samplesPerRow, const std::function<void(int, int)> &body)
{
    if (rows <= 0)
        return;
    const int threads = std::min(threadCount(), rows);
    if (threads == 1 || int64_t(rows) * samplesPerRow < kSamplesWorthSharing) {
        body(0, rows);
        return;
    }
    const auto job = std::make_shared<Job>();
    job->body = &body;
    job->rows = rows;
    job->bands = std::min(rows, threads * kBandsPerThread);
    // The caller takes bands too, and helpers only start on idle threads: the wait at
    // the end is for bands that are running, so a caller within the pool cannot block it.
    for (int i = 1; i < threads; ++i)
        if (!QThreadPool::globalInstance()->tryStart([job] { job->work(); }))
            break;
    job->work();
    job->waitUntilDone();
}

void setRowThreads(int count)
{
    threadSetting.store(std::max(count, 0), std::memory_order_relaxed);
}

void copyPlane(const uint16_t *from, uint16_t *to, int width, int height)
{
    parallelRows(height, width, [=](int first, int end) {
        const int64_t start = int64_t(first) * width;
        std::memcpy(to + start, from + start, size_t(end - first) * size_t(width) * sizeof *from);
    });
}
