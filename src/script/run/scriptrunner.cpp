// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/run/scriptrunner.h"

ScriptRunner::ScriptRunner(exParser *language, OperatorTable *operators)
    : parser(language), table(operators), loops(1024), ifs(1024)
{
}

ScriptRunner::~ScriptRunner() = default;

ScriptEnd ScriptRunner::run(image *, const QString &, const QString &)
{
    return ScriptEnd::Done;
}

void ScriptRunner::begin(image *, const QString &) {}

ScriptEnd ScriptRunner::runLine(const QString &,
                                const std::function<void(const StatementResult &)> &)
{
    return ScriptEnd::Done;
}

void ScriptRunner::end() {}

void ScriptRunner::retarget(image *) {}

bool ScriptRunner::dispatchLine(int *, const QStringList &, QString *, int)
{
    return false;
}
