// SPDX-License-Identifier: GPL-3.0-or-later
// How long one tick of the main window's timer takes with many pictures open. Prints the
// median and the longest of many ticks, in milliseconds; the limit is 1.
#include "app/mainwindow.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace
{
constexpr int kPictures = 100, kSide = 1000, kTicks = 400;
constexpr double kLimitMs = 1.0;
} // namespace

int main(int argc, char **argv)
{
    const QTemporaryDir home;
    for (const char *name : {"HOME", "XDG_CONFIG_HOME", "XDG_STATE_HOME"})
        qputenv(name, home.path().toUtf8());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    MainWindow main;
    main.show();
    for (int i = 0; i < kPictures; ++i) {
        auto *img = new image;
        if (!img->allocate(kSide, kSide, QStringLiteral("picture %1").arg(i)))
            return 1;
        main.showImage(img, FileRecord());
    }
    QElapsedTimer settle;
    for (settle.start(); settle.elapsed() < 3000;)
        QApplication::processEvents(QEventLoop::AllEvents, 20);

    std::vector<double> times;
    for (int i = 0; i < kTicks; ++i) {
        QElapsedTimer timer;
        timer.start();
        main.OnTimer();
        times.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    std::sort(times.begin(), times.end());
    const double median = times[times.size() / 2], longest = times.back();
    std::printf("OnTimer with %d pictures: median %.4f ms, longest %.4f ms (limit %.1f)\n",
                kPictures, median, longest, kLimitMs);
    return median < kLimitMs ? 0 : 1;
}
