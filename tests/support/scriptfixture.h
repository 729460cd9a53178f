// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "area/areastate.h"
#include "operators/base/operatortable.h"
#include "operators/pipeline/colorblending.h"
#include "operators/table/allops.h"
#include "script/engine/exparser.h"
#include "script/run/script.h"
#include "script/run/scriptrunner.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <gtest/gtest.h>

#include <functional>

/// A workspace whose person does something whenever a run lets them in.
class AttendedWorkspace : public RecordingWorkspace
{
public:
    void progress(const QString &text, int64_t, int64_t) override
    {
        if (!text.isEmpty() && person)
            person();
    }
    bool cancelRequested() override { return cancelled; }
    std::function<void()> person;
    bool cancelled = false;
};

/// All that runs scripts, with one picture in the workspace and a log of what was said.
class ScriptTest : public testing::Test, public ScriptLog
{
protected:
    ScriptTest()
    {
        table.blending = parser.blending = &blending;
        addAllOperators(&table);
        parser.log = this;
        picture = randomImage(40, 30, 5).release();
        space.images << picture;
        script = static_cast<Script *>(table.byId(82));
        script->runner = &runner;
    }
    void scriptReport(const ScriptReport &report) override { reports << report.plain; }
    void scriptHint(int, int line, const QString &word, const QString &nearest) override
    {
        hints << QStringLiteral("%1 %2>%3").arg(line).arg(word, nearest);
    }
    ScriptEnd run(const QString &text) { return runner.run(picture, QString(), text); }
    /// The variable x after the statements of a text; -99 if there is none.
    double xAfter(const QString &text)
    {
        runner.begin(picture);
        runner.runLine(text, nullptr);
        const double x = parser.numberOr("x", -99);
        runner.end();
        return x;
    }

    AttendedWorkspace space;
    AreaState area; ///< whose point list the figures use
    colorblending blending;
    OperatorTable table;
    exParser parser;
    ScriptRunner runner{&parser, &table};
    Script *script = nullptr;
    image *picture = nullptr; ///< the workspace's
    QStringList reports, hints;
};
