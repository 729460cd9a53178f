// SPDX-License-Identifier: GPL-3.0-or-later
#include "yardstick.h"

#include "core/workspace.h"
#include "operators/base/operatortable.h"
#include "operators/pipeline/colorblending.h"
#include "operators/table/allops.h"
#include "script/engine/exparser.h"
#include "script/run/scriptrunner.h"

#include <cmath>

namespace
{
const QString kExpression = QStringLiteral("hypo(3,4)*2+sin(0.5)");
const double kValue = 10 + std::sin(0.5);
constexpr int kPixelSide = 300;

/// How often, 100,000 times if the environment does not say otherwise.
int evaluations()
{
    bool ok = false;
    const int asked = qEnvironmentVariableIntValue("KESTRANE_BENCH_EVALUATIONS", &ok);
    return ok && asked > 0 ? asked : 100000;
}

/// A parser with everything that a run of a script asks for.
struct ScriptBench {
    ScriptBench() : runner(&parser, &table)
    {
        addAllOperators(&table);
        table.blending = &blending;
        parser.blending = &blending;
    }

    OperatorTable table;
    colorblending blending;
    exParser parser;
    ScriptRunner runner;
};

/// The text is split and evaluated anew each time.
BenchCase evaluate()
{
    const auto bench = std::make_shared<ScriptBench>();
    const auto last = std::make_shared<double>(0);
    const auto run = [bench, last] {
        bool ok = false;
        for (int i = evaluations(); i > 0; --i)
            *last = bench->parser.evaluate(kExpression, &ok);
    };
    return {run, nullptr, [run, last] {
                run();
                return *last == kValue;
            }};
}

BenchCase statements()
{
    const auto bench = std::make_shared<ScriptBench>();
    const std::shared_ptr<image> picture = std::make_shared<image>();
    if (!picture->allocate(1, 1, QStringLiteral("target")))
        return {};
    const QString script =
        QStringLiteral("m_maxops=1e9\nloop(%1)\ny=%2\nwhile()\nwritep(0,0,y,0,0)")
            .arg(evaluations())
            .arg(kExpression);
    const auto run = [=] { bench->runner.run(picture.get(), QString(), script); };
    return {run, nullptr, [=] {
                picture->fillGmask(65535);
                run();
                return picture->red[0] == uint16_t(kValue);
            }};
}

/// Reads, calculates and writes each sample of a picture of 0.09 megapixels.
BenchCase pixels()
{
    const auto bench = std::make_shared<ScriptBench>();
    const std::shared_ptr<image> picture = std::make_shared<image>();
    if (!picture->allocate(kPixelSide, kPixelSide, QStringLiteral("target")))
        return {};
    const QString script = QStringLiteral("m_maxops=1e9\ny=0\nloop(m_height)\nx=0\nloop(m_width)\n"
                                          "v=readch(x,y,0)*0.5+(readch(x,y,2)*0.25)\n"
                                          "writep(x,y,v,v,v)\nx=x+1\nwhile()\ny=y+1\nwhile()");
    const auto run = [=] { bench->runner.run(picture.get(), QString(), script); };
    const auto reset = [=] {
        picture->fill(40000, 0, 20000, 65535);
        picture->fillGmask(65535);
    };
    return {run, reset, [=] {
                reset();
                run();
                return picture->green[0] == 25000 &&
                       picture->green[picture->sampleCount() - 1] == 25000;
            }};
}
} // namespace

// bench/compare-script holds the same work against other languages. Here the limits are what
// these took where they were first measured, in plane copies.
void registerScriptBenchmarks()
{
    registerRatio("script/evaluate", 36, evaluate);
    registerRatio("script/statements", 33, statements);
    registerRatio("script/pixels", 68, pixels);
}
