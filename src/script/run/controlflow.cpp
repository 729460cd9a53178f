// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/run/scriptrunner.h"

#include "script/engine/exparser.h"

#include <cmath>

namespace
{
/// The whole part of a number, within what a counter can count to.
int64_t wholePart(double value)
{
    constexpr double most = 9e18;
    return int64_t(std::fmax(-most, std::fmin(most, value)));
}
} // namespace

void ScriptRunner::openLoop(PreparedStatement *statement, int index)
{
    LoopRecord record;
    record.loopId = nextLoopId++;
    record.statement = index;
    if (!statement->right.isEmpty()) {
        bool ok = false;
        const double count = parser->evaluate(&statement->program, &ok);
        hint(statement);
        record.limit = ok && count >= 0 ? wholePart(count) : 1;
    }
    loops.push(record);
}

void ScriptRunner::closeLoop(PreparedStatement *statement, int *index)
{
    if (loops.count() == 0)
        return;
    bool again = loops.peek().limit != 0;
    if (!statement->right.isEmpty()) {
        bool ok = false;
        const double value = parser->evaluate(&statement->program, &ok);
        hint(statement);
        again = ok && wholePart(value) != 0;
    }
    // A condition that runs a function with loops of its own may have emptied the stack.
    LoopRecord record = loops.pop();
    if (!again || record.statement < 0)
        return;
    ++record.iteration;
    if (record.limit != 0 && record.iteration >= record.limit)
        return;
    if (index == currentIndex && record.statement < firstIndex)
        return; // its line was answered
    loops.push(record);
    *index = int(record.statement);
}

/// An `if` decides only where its surroundings run; the others are counted, so that their
/// `else` and `endif` are known.
void ScriptRunner::openIf(PreparedStatement *statement)
{
    if (ifActive == ifDepth && executing) {
        const bool result = decide(statement);
        ifs.push(currentCondition);
        ++ifActive;
        currentCondition = executing = result;
        elseValue = !result;
    }
    ++ifDepth;
}

void ScriptRunner::elseBranch()
{
    if (ifActive == ifDepth)
        executing = elseValue;
}

void ScriptRunner::closeIf()
{
    if (ifActive == ifDepth) {
        // Outside of any `if` statements run.
        currentCondition = executing = ifs.count() == 0 || ifs.pop();
        elseValue = !executing;
        if (ifActive > 0)
            --ifActive;
    }
    if (ifDepth > 0)
        --ifDepth;
}

bool ScriptRunner::decide(PreparedStatement *statement)
{
    const QString &inner = statement->right;
    if (inner.compare(QLatin1String("void"), Qt::CaseInsensitive) == 0)
        return false;
    if (const Variable *text = parser->variables.text(inner))
        return text->text.startsWith(QLatin1Char('t'), Qt::CaseInsensitive);
    if (isQuotedText(inner))
        return inner == QLatin1String("\"t\"");
    bool ok = false;
    const double value = parser->evaluate(&statement->program, &ok);
    hint(statement);
    return ok && value != 0;
}
