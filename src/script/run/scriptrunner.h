// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "script/engine/genstack.h"
#include "script/engine/scripthost.h"
#include "script/run/statements.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>

class OperatorTable;
class exParser;
class image;

/// An open loop.
struct LoopRecord {
    int64_t iteration = 0;
    int64_t limit = 0; ///< 0: none
    int64_t loopId = 0;
    int64_t statement = -1; ///< index of its `loop`
};

/// What became of one statement.
struct StatementResult {
    bool ok = true;
    bool isExpression = false; ///< a bare expression that was evaluated
    double value = 0;          ///< of a bare expression
    QString errorText;         ///< where ok is false
    int line = 0;
};

/// Why a run ended.
enum class ScriptEnd {
    Done,
    LimitPassed, ///< more operations than m_maxops allows
    LimitBad,    ///< m_maxops is no number
    Stopped,     ///< by the person
    NoMemory
};

/// Runs statements of the language against one image: the dispatcher, control flow, verbs.
/// One object serves the Script operator and the console; its state is that of one run.
class ScriptRunner : public ScriptDispatcher
{
public:
    /// Both are borrowed and outlive the runner.
    ScriptRunner(exParser *parser, OperatorTable *table);
    ~ScriptRunner() override;

    /// A whole run: sets up, runs presets and script, cleans up. Messages go to the parser's
    /// log; how the run ended is told by a message box unless the image is internal.
    ScriptEnd run(image *target, const QString &presets, const QString &script);

    /// The pieces of a run, for the console: begin sets the state and the variables of a run,
    /// runLine runs the statements of one text in that state, end cleans up. `answer` hears of
    /// each statement as soon as it is done. A `while` cannot jump back over a line.
    void begin(image *target, const QString &presets = QString());
    ScriptEnd runLine(const QString &text,
                      const std::function<void(const StatementResult &)> &answer);
    void end();
    /// The images of the run changed: the variables that tell of them follow.
    void retarget(image *target);

    bool dispatchLine(int *statementIndex, const QStringList &tokens, QString *errorText,
                      int testFlag) override;
    bool keepRunning() const override { return running; }
    /// Makes the run end after the current statement.
    void stop() { running = false; }
    bool isRunning() const { return depth > 0; }

private:
    exParser *parser;
    OperatorTable *table;
    genStack<LoopRecord> loops;
    genStack<bool> ifs;
    bool running = true;
    int depth = 0;
};
