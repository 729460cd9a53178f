// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/rows.h"

#include "core/cpu.h"

#include <QSemaphore>
#include <QThreadPool>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <vector>

namespace
{
constexpr int kWide = 1 << 16; ///< samples a row, so that any number of rows is shared

/// Whether every row of a call was visited exactly once.
bool coversOnce(int rows, int samplesPerRow)
{
    std::vector<int> visits(size_t(rows > 0 ? rows : 0), 0);
    std::atomic<bool> within{true};
    parallelRows(rows, samplesPerRow, [&](int first, int end) {
        if (first < 0 || end > rows || first >= end)
            within = false;
        for (int y = first; y < end; ++y)
            ++visits[size_t(y)];
    });
    return within && std::count(visits.begin(), visits.end(), 1) == ptrdiff_t(visits.size());
}

TEST(Rows, EveryRowOnce)
{
    for (const int threads : {0, 1, 2, 7}) {
        setRowThreads(threads);
        for (const int rows : {-1, 0, 1, 2, 3, 7, 8, 9, 1000, 32767})
            for (const int samples : {0, 1, kWide})
                EXPECT_TRUE(coversOnce(rows, samples)) << threads << ' ' << rows << ' ' << samples;
    }
    setRowThreads(0);
}

TEST(Rows, MayBeCalledFromAPoolWhoseThreadsAllDoSo)
{
    const int callers = QThreadPool::globalInstance()->maxThreadCount() * 3;
    QSemaphore finished;
    std::atomic<int> good{0};
    for (int i = 0; i < callers; ++i)
        QThreadPool::globalInstance()->start([&] {
            good += coversOnce(100, kWide);
            finished.release();
        });
    finished.acquire(callers);
    EXPECT_EQ(good, callers);
}

TEST(Kernels, CapOnlyLowersTheLevel)
{
    for (const KernelLevel cap : {KernelLevel::Baseline, KernelLevel::Avx2, KernelLevel::Avx512}) {
        limitKernels(cap);
        EXPECT_EQ(kernelLevel(), std::min(cap, supportedKernels()));
    }
}
} // namespace
