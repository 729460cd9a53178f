// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/run/statements.h"

QList<ScriptStatement> splitStatements(const QString &)
{
    return {};
}

QStringList statementTokens(const QString &)
{
    return {};
}

int countPresetStatements(const QString &)
{
    return 0;
}
