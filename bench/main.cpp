// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/workspace.h"

#include <QApplication>

#include <benchmark/benchmark.h>

void registerCoreBenchmarks();
void registerComposeBenchmarks();
void registerNativeBenchmarks();
void registerOperatorBenchmarks();
void registerViewBenchmarks();
void registerFormatBenchmarks();
void registerAreaMaskBenchmarks();
void registerAreaFigureBenchmarks();
void registerScriptBenchmarks();
void registerPreviewBenchmarks();

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    Workspace space;
    benchmark::Initialize(&argc, argv);
    registerCoreBenchmarks();
    registerComposeBenchmarks();
    registerOperatorBenchmarks();
    registerViewBenchmarks();
    registerFormatBenchmarks();
    registerAreaMaskBenchmarks();
    registerAreaFigureBenchmarks();
    registerNativeBenchmarks();
    registerScriptBenchmarks();
    registerPreviewBenchmarks();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
