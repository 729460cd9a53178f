// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// One statement of a script and where it stands.
struct ScriptStatement {
    QString text;       ///< with "::" made a literal colon
    int line = 1;       ///< of the text that was split, from 1
    bool isCode = true; ///< neither empty nor a comment
};

/// Splits script text at newlines and colons, dropping empty pieces; "::" is a literal colon.
/// Lines may end as on any system.
QList<ScriptStatement> splitStatements(const QString &text);
/// A statement split at blanks, without empty pieces.
QStringList statementTokens(const QString &statement);
