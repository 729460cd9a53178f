// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/workspace.h"
#include "operators/base/operatortable.h"
#include "operators/base/opwrapper.h"
#include "operators/dialog/operators.h"
#include "operators/table/allops.h"
#include "views/imgwindow.h"
#include "views/viewhost.h"
#include "yardstick.h"

#include <QCoreApplication>
#include <QSlider>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <vector>

namespace
{
constexpr int kRounds = 25;
constexpr double kLimitMs = 8;

struct Kind {
    const char *name;
    bool thumbnail, x2;
};
constexpr Kind kKinds[] = {
    {"preview_thumb", true, false}, {"preview_1x", false, false}, {"preview_2x", false, true}};

/// The real dialog over a picture of the benchmark size.
struct Desk {
    ViewHost host;
    OperatorTable table;
    std::unique_ptr<image> picture = benchImage(1);
    std::unique_ptr<imgWindow> window;
    std::unique_ptr<Operators> dialog;

    Desk()
    {
        addAllOperators(&table);
        workspace()->images << picture.get();
        window = std::make_unique<imgWindow>(picture.get());
        host.windows = {window.get()};
        host.currentWindow = window.get();
        dialog = std::make_unique<Operators>(&table);
        dialog->show();
    }
    ~Desk()
    {
        dialog.reset();
        host.windows.clear();
        host.currentWindow = nullptr;
        window.reset();
        workspace()->images.removeAll(picture.get());
    }
    void settle()
    {
        while (dialog->previewPending())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        QCoreApplication::processEvents();
    }
    /// Milliseconds from the move of a slider (for an operator without one: of the crop) until
    /// the dialog has been painted.
    double refresh(int round)
    {
        const auto start = std::chrono::steady_clock::now();
        if (auto *slider = dialog->findChild<QSlider *>(QStringLiteral("slider0")))
            slider->setValue(slider->minimum() +
                             (slider->maximum() - slider->minimum()) * (round + 1) / kRounds);
        else
            dialog->prod(round % 2 ? 1 : -1, 0);
        settle();
        const auto end = std::chrono::steady_clock::now();
        return std::chrono::duration<double, std::milli>(end - start).count();
    }
};

double median(std::vector<double> times)
{
    std::nth_element(times.begin(), times.begin() + kRounds / 2, times.end());
    return times[kRounds / 2];
}

/// All operators in one run, since they share the dialog and the picture.
void measurePreviews(benchmark::State &state, const Kind &kind)
{
    Desk desk;
    workspace()->thumbnail = kind.thumbnail;
    workspace()->opsX2Preview = kind.x2;
    double slowest = 0;
    QString name;
    for (auto _ : state) {
        for (const OpWrapper *op : desk.table.operators()) {
            if (!op->self)
                continue;
            desk.dialog->selectOperator(op->id);
            desk.settle();
            std::vector<double> times;
            for (int round = 0; round < kRounds; ++round)
                times.push_back(desk.refresh(round));
            const double time = median(std::move(times));
            state.counters[op->scriptName.toStdString() + "_ms"] = time;
            if (time > slowest) {
                slowest = time;
                name = op->scriptName;
            }
        }
        state.SetIterationTime(slowest / 1000);
    }
    state.SetLabel((slowest <= kLimitMs ? "within, slowest is " : "OVER: ") + name.toStdString());
}
} // namespace

/// The time of each benchmark is that of its slowest operator; the limit is 8 ms.
void registerPreviewBenchmarks()
{
    for (const Kind &kind : kKinds)
        benchmark::RegisterBenchmark(
            kind.name, [&kind](benchmark::State &state) { measurePreviews(state, kind); })
            ->UseManualTime()
            ->Iterations(1)
            ->Unit(benchmark::kMillisecond);
}
