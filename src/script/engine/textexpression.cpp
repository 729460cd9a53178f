// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/textexpression.h"

bool tokenizeText(const exParser &, const QString &, const QStringList &, QStringList *,
                  QList<int> *)
{
    return false;
}

QString evaluateText(exParser &, const QString &)
{
    return {};
}

bool fetchText(const exParser &, const QString &, QString *)
{
    return false;
}

bool textOperand(const exParser &, const QString &, QString *)
{
    return false;
}

bool callTextFunction(exParser &, const QString &, QString *)
{
    return false;
}

QString unquoted(const QString &text)
{
    return text;
}

QString namedParameter(const exParser &, const QString &word)
{
    return word;
}
