// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/run/scriptrunner.h"

#include "core/image.h"
#include "core/undo.h"
#include "core/workspace.h"
#include "operators/base/operatortable.h"
#include "script/engine/exparser.h"
#include "script/run/scriptdefaults.h"

#include <QCoreApplication>

#include <algorithm>
#include <limits>
#include <utility>

namespace
{
constexpr int kNesting = 1024; ///< of loops and of ifs

QString translated(const char *text)
{
    return QCoreApplication::translate("ScriptRunner", text);
}
} // namespace

/// While statements run, the image is in use, so that no window of it closes, and the parser
/// asks this runner for what user functions and conditions need.
class ScriptRunner::Activity
{
public:
    explicit Activity(ScriptRunner *owner)
        : runner(owner), oldDispatcher(std::exchange(owner->parser->dispatcher, owner)),
          oldLog(owner->parser->log)
    {
        ++runner->depth;
        if (runner->internal)
            runner->parser->log = nullptr; // a preview comes by itself: nobody asked for it
        if (runner->target)
            wasInUse = std::exchange(runner->target->inUse, true);
        runner->started = runner->lastBreath = Clock::now();
    }
    ~Activity()
    {
        runner->endProgress();
        if (runner->target)
            runner->target->inUse = wasInUse;
        runner->parser->log = oldLog;
        runner->parser->dispatcher = oldDispatcher;
        runner->parser->releaseSpares(); // what user functions made their evaluations take
        --runner->depth;
    }
    Activity(const Activity &) = delete;
    Activity &operator=(const Activity &) = delete;

private:
    ScriptRunner *runner;
    ScriptDispatcher *oldDispatcher;
    ScriptLog *oldLog;
    bool wasInUse = false;
};

ScriptRunner::ScriptRunner(exParser *language, OperatorTable *operators)
    : parser(language), table(operators), loops(kNesting), ifs(kNesting)
{
}

ScriptRunner::~ScriptRunner()
{
    destroyTree(&loadedOrigin);
}

// --- Whole runs -------------------------------------------------------------------------

ScriptEnd ScriptRunner::run(image *newTarget, const QString &presets, const QString &script)
{
    if (isRunning() || begun)
        return ScriptEnd::Refused;
    double limit = 0;
    if (setUp(newTarget)) {
        const Activity activity(this);
        CodeLines lines;
        appendLines(&lines, presets, true);
        parser->presetStatements = int(lines.size());
        appendLines(&lines, script, false);
        firstIndex = 0;
        runLines(&lines, nullptr);
        limit = parser->numberOr(QStringLiteral("m_maxops"), 0);
        showChanges();
        if (target && !internal && workspace())
            workspace()->undoStateChanged(target);
    }
    const bool tells = !internal;
    cleanUp();
    if (tells)
        tellEnd(limit);
    return ended;
}

/// False, with the reason in `ended`, if memory is short.
bool ScriptRunner::setUp(image *newTarget)
{
    dropOldOrigin();
    target = Workspace::validImage(newTarget) ? newTarget : nullptr;
    internal = table && table->isInternal(target);
    targetIsListed = workspace() && workspace()->ownsImage(target);
    resetCounters();
    ended = ScriptEnd::Done;
    failures = 0;
    samplesChanged = false;
    loops.clear();
    ifs.clear();
    ifDepth = ifActive = 0;
    executing = currentCondition = true;
    elseValue = false;
    firstIndex = endIndex = 0;
    nextLoopId = 1;
    parser->userNumbers.clear();
    parser->userStrings.clear();
    parser->arrays.clear();
    parser->images = {};
    if (target && !internal && !target->undoList.isEmpty())
        parser->images.source = target->undoList.last();
    followImages();
    parser->clearVariables(); // a first run begins as all later ones do
    setScriptDefaults(parser);
    setImageVariables(parser, target, parser->images.origin);
    parser->testFlag = 0;
    parser->statement = parser->presetStatements = parser->line = 0;
    // The stacks drop what they have no memory for.
    ifs.push(true);
    loops.push({});
    if (!parser->ready() || ifs.count() == 0 || loops.count() == 0) {
        ended = ScriptEnd::NoMemory;
        running = false;
    }
    ifs.clear();
    loops.clear();
    return running;
}

void ScriptRunner::cleanUp()
{
    settings.restore(table);
    bodies.clear();
    parser->clearVariables();
    parser->arrays.clear();
    parser->userNumbers.clear();
    parser->userNumbers.shrink_to_fit();
    parser->userStrings.clear();
    parser->dparms.clear();
    parser->tparms.clear();
    setScriptDefaults(parser);
    parser->images = {};
    parser->statement = parser->presetStatements = parser->line = 0;
    target = nullptr;
    internal = false;
    dropOldOrigin();
}

void ScriptRunner::resetCounters()
{
    running = true;
    stepsDone = 0;
    dispatchCount = 0;
}

void ScriptRunner::stop()
{
    if (running)
        ended = ScriptEnd::Stopped;
    running = false;
}

/// What a person hears of the end. The image may be gone by the time it was read.
void ScriptRunner::tellEnd(double limit)
{
    if (!workspace())
        return;
    const QString title = translated("Script");
    switch (ended) {
    case ScriptEnd::LimitPassed:
        workspace()->messageBox(title, limitPassedMessage(limit));
        break;
    case ScriptEnd::LimitBad:
        workspace()->messageBox(title, limitBadMessage());
        break;
    case ScriptEnd::NoMemory:
        workspace()->messageBox(title, translated("Not enough memory to run the script."));
        break;
    case ScriptEnd::Stopped:
        workspace()->statusText(translated("Script stopped"));
        break;
    case ScriptEnd::Done:
    case ScriptEnd::Refused:
        break;
    }
}

// --- Lines ------------------------------------------------------------------------------

void ScriptRunner::appendLines(CodeLines *lines, const QString &text, bool presets)
{
    const QList<ScriptStatement> statements = splitStatements(text);
    lines->reserve(lines->size() + size_t(statements.size()));
    for (const ScriptStatement &statement : statements)
        lines->push_back({statement, presets, nullptr});
}

void ScriptRunner::runLines(CodeLines *lines, const Answer &answer)
{
    endIndex = firstIndex + int(lines->size());
    int index = firstIndex;
    currentIndex = &index;
    for (; running && index >= firstIndex && index < endIndex; ++index) {
        CodeLine &line = (*lines)[size_t(index - firstIndex)];
        ++stepsDone;
        if (!line.source.isCode)
            continue;
        parser->statement = index;
        parser->line = line.source.line;
        StatementResult result;
        result.line = line.source.line;
        result.ok = runStatement(&line, &index, &result);
        failures += result.ok ? 0 : 1;
        if (answer)
            answer(result);
        else if (!result.ok)
            reportFailure(line.source.text, result.errorText);
    }
    currentIndex = nullptr;
}

bool ScriptRunner::runStatement(CodeLine *line, int *index, StatementResult *result)
{
    if (!line->prepared) {
        line->prepared = std::make_unique<PreparedStatement>();
        prepareStatement(line->prepared.get(), statementTokens(line->source.text), table);
    }
    return execute(line->prepared.get(), index, result);
}

void ScriptRunner::reportFailure(const QString &statement, const QString &errorText)
{
    parser->report(QStringLiteral("<font color=\"#ff0000\">") + statement +
                   QStringLiteral("</font>"));
    parser->report(QStringLiteral("incorrect parameters for <font color=\"#000088\">") + errorText +
                   QStringLiteral("</font>"));
}

// --- The console ------------------------------------------------------------------------

void ScriptRunner::begin(image *newTarget, const QString &presets)
{
    if (isRunning() || begun)
        return;
    begun = setUp(newTarget);
    if (!begun)
        return;
    const Activity activity(this);
    CodeLines lines;
    appendLines(&lines, presets, true);
    parser->presetStatements = int(lines.size());
    runLines(&lines, nullptr);
    firstIndex = endIndex;
    showChanges();
}

ScriptEnd ScriptRunner::runLine(const QString &text, const Answer &answer)
{
    if (isRunning())
        return ScriptEnd::Refused;
    if (!begun)
        return ended == ScriptEnd::NoMemory ? ended : ScriptEnd::Refused;
    if (!running) // the run was ended; what comes next is the person's new wish
        resetCounters();
    ended = ScriptEnd::Done;
    {
        const Activity activity(this);
        CodeLines lines;
        appendLines(&lines, text, false);
        if (endIndex > std::numeric_limits<int>::max() - int(lines.size()))
            endIndex = 0;
        firstIndex = endIndex;
        const Answer silent = [](const StatementResult &) {};
        runLines(&lines, answer ? answer : silent);
        showChanges();
    }
    if (ended != ScriptEnd::Done && !internal)
        tellEnd(parser->numberOr(QStringLiteral("m_maxops"), 0));
    return ended;
}

void ScriptRunner::end()
{
    if (isRunning() || !begun)
        return;
    begun = false;
    cleanUp();
}

void ScriptRunner::retarget(image *newTarget)
{
    if (isRunning() || !begun)
        return;
    target = Workspace::validImage(newTarget) ? newTarget : nullptr;
    internal = table && table->isInternal(target);
    targetIsListed = workspace() && workspace()->ownsImage(target);
    parser->images = {};
    if (target && !target->undoList.isEmpty())
        parser->images.source = target->undoList.last();
    followImages();
    setImageVariables(parser, target, parser->images.origin);
}
