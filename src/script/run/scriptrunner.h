// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "script/engine/genstack.h"
#include "script/engine/scripthost.h"
#include "script/run/prepared.h"
#include "script/run/runsettings.h"
#include "script/run/statements.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

class OperatorTable;
class OpWrapper;
class exParser;
class image;
struct Variable;

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
    Stopped,     ///< by the person, or because the image was closed
    NoMemory,
    Refused ///< another run is going on: nothing was done
};

/// Runs statements of the language against one image: the dispatcher, control flow, verbs.
/// One object serves the Script operator and the console; its state is that of one run.
///
/// A run makes no undo record; whoever starts it does, before. It lets the person in about
/// every 50 ms through Workspace::progress and cancelRequested. On a small image of the
/// preview it says nothing, asks nothing, waits for nothing and ends after some 150 ms.
class ScriptRunner : public ScriptDispatcher
{
public:
    /// Both are borrowed and outlive the runner; `table` may be null.
    ScriptRunner(exParser *parser, OperatorTable *table);
    ~ScriptRunner() override;

    /// A whole run: sets up, runs presets and script, cleans up. Messages go to the parser's
    /// log; how the run ended is told by a message box unless the image is internal. Without
    /// an image, operators and verbs that need one fail.
    ScriptEnd run(image *target, const QString &presets, const QString &script);

    /// The pieces of a run, for the console: begin sets the state and the variables of a run,
    /// runLine runs the statements of one text in that state, end cleans up. `answer` hears of
    /// each statement that is no comment as soon as it is done; statements that fail are told
    /// to it alone, not reported. A `while` cannot jump back over a line: it closes its loop.
    void begin(image *target, const QString &presets = QString());
    ScriptEnd runLine(const QString &text,
                      const std::function<void(const StatementResult &)> &answer);
    void end();
    /// The images of the run changed: the variables that tell of them follow.
    void retarget(image *target);

    bool dispatchLine(int *statementIndex, const QStringList &tokens, QString *errorText,
                      int testFlag) override;
    bool keepRunning() const override { return running; }
    bool mayAsk() const override { return !internal; }
    /// Makes the run end after the current statement.
    void stop();
    bool isRunning() const { return depth > 0; }
    /// Whether a `pause` is waiting.
    bool isPausing() const { return pausing; }
    /// Statements of the last run that failed.
    int failedStatements() const { return failures; }
    /// How the last run ended; keepRunning() stays false after one that did not get through.
    ScriptEnd lastEnd() const { return ended; }

    // --- Verbs: false if a parameter is wrong; called through the table of verbs.cpp ------
    bool mixVerb(const QStringList &tokens);
    bool pauseVerb(const QStringList &tokens);
    bool rectVerb(const QStringList &tokens);
    bool rellipseVerb(const QStringList &tokens);
    bool ellipseVerb(const QStringList &tokens);
    bool entireVerb(const QStringList &tokens);
    bool wandVerb(const QStringList &tokens);
    bool textVerb(const QStringList &tokens);
    bool vloadVerb(const QStringList &tokens);
    bool areaVerb(const QStringList &tokens);
    bool selectionVerb(const QStringList &tokens);
    bool useVerb(const QStringList &tokens);
    bool shapeVerb(const QStringList &tokens);
    bool performVerb(const QStringList &tokens);

private:
    using Clock = std::chrono::steady_clock;
    using Answer = std::function<void(const StatementResult &)>;

    struct CodeLine {
        ScriptStatement source;
        bool inPresets = false;
        std::unique_ptr<PreparedStatement> prepared; ///< made when it is first run
    };
    using CodeLines = std::vector<CodeLine>;

    /// Marks the image and the parser as belonging to this runner while statements run.
    class Activity;

    // Runs: scriptrunner.cpp
    bool setUp(image *newTarget);
    void cleanUp();
    void resetCounters();
    static void appendLines(CodeLines *lines, const QString &text, bool presets);
    void runLines(CodeLines *lines, const Answer &answer);
    bool runStatement(CodeLine *line, int *index, StatementResult *result);
    void reportFailure(const QString &statement, const QString &errorText);
    void tellEnd(double limit);

    // What happens between statements: runtime.cpp
    void countDispatch();
    void breathe();
    void followEvents();
    void followImages();
    void markChanged(bool samples);
    void showChanges();
    void endProgress();

    // One statement: dispatch.cpp
    bool execute(PreparedStatement *statement, int *index, StatementResult *result);
    bool usageOnly(const PreparedStatement &statement, QString *errorText) const;
    bool callOperator(const PreparedStatement &statement, QString *errorText);
    bool refusesOperator(const OpWrapper &op) const;
    bool callVerb(const PreparedStatement &statement, QString *errorText);
    void assignText(const PreparedStatement &statement);
    void assignNumber(PreparedStatement *statement);
    Variable *assignPlain(PreparedStatement *statement);
    bool evaluateAlone(PreparedStatement *statement, StatementResult *result);
    bool rightIsText(PreparedStatement *statement) const;
    Variable *numberRecord(const char *name, Variable **record, uint64_t *generation);
    void hint(PreparedStatement *statement);

    // Control flow: controlflow.cpp
    void openLoop(PreparedStatement *statement, int index);
    void closeLoop(PreparedStatement *statement, int *index);
    void openIf(PreparedStatement *statement);
    void elseBranch();
    void closeIf();
    bool decide(PreparedStatement *statement);

    // Verbs: verbs.cpp, textverb.cpp, vload.cpp, recordverbs.cpp
    bool select(bool done, const char *verb);
    bool selectFigure(const QStringList &tokens, bool replaces, bool adds);
    bool readBox(const QStringList &tokens, int *box) const;
    void takeOrigin(image *picture, bool owned);
    void dropOldOrigin();

    exParser *parser;
    OperatorTable *table;
    image *target = nullptr;
    bool targetIsListed = false; ///< the workspace knows the target: it can be seen to go
    bool internal = false;       ///< a small image of the preview

    genStack<LoopRecord> loops;
    genStack<bool> ifs;
    int ifDepth = 0, ifActive = 0;
    bool executing = true, elseValue = false, currentCondition = true;
    int64_t nextLoopId = 1;

    bool running = true;
    bool begun = false; ///< between begin and end
    bool pausing = false;
    int depth = 0; ///< runs and lines under way, at most one
    ScriptEnd ended = ScriptEnd::Done;
    int64_t stepsDone = 0;
    int dispatchCount = 0;
    int failures = 0;
    int firstIndex = 0;                ///< of the statements that a `while` can jump to
    int endIndex = 0;                  ///< behind the last one
    const int *currentIndex = nullptr; ///< of the run itself, not of a user function

    bool samplesChanged = false; ///< since the views were last refreshed
    Clock::time_point started, lastBreath;
    bool progressShown = false;

    /// Statements of user functions by their text.
    QHash<QString, std::shared_ptr<PreparedStatement>> bodies;
    Variable *voidRecord = nullptr, *answerRecord = nullptr;
    uint64_t voidGeneration = 0, answerGeneration = 0;
    RunSettings settings;          ///< those that the run has changed
    image *loadedOrigin = nullptr; ///< owned: an origin image that `vload` read
};
