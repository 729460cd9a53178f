// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/rows.h"

#include <QSemaphore>
#include <QThreadPool>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <vector>

namespace
{
constexpr int kWide = 1 << 16; ///< samples a row, so that any number of rows is shared

bool visitsEachOnce(int rows, int samplesPerRow)
{
    std::vector<int> visits(size_t(std::max(rows, 0)));
    parallelRows(rows, samplesPerRow, [&](int first, int end) {
        for (int y = first; y < end; ++y)
            ++visits.at(size_t(y));
    });
    return std::count(visits.begin(), visits.end(), 1) == ptrdiff_t(visits.size());
}
} // namespace

TEST(Rows, EveryRowOnce)
{
    for (const int threads : {0, 1, 2, 7}) {
        setRowThreads(threads);
        for (const int rows : {-1, 0, 1, 2, 3, 7, 8, 9, 1000, 32767})
            for (const int samples : {0, 1, kWide})
                EXPECT_TRUE(visitsEachOnce(rows, samples)) << threads << ' ' << rows;
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
            good += visitsEachOnce(100, kWide);
            finished.release();
        });
    finished.acquire(callers);
    EXPECT_EQ(good, callers);
}
