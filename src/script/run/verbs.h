// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

class ScriptRunner;
struct PreparedStatement;

/// A command of the language that is no operator.
struct ScriptVerb {
    const char *name;
    const char *usage;
    int fewest, most; ///< numbers of parameters that it takes
    bool needsImage;
    /// Acts; false if a parameter is wrong.
    bool (ScriptRunner::*act)(const QStringList &tokens);
    /// Scripts may have a variable of its name: without parameters it is that.
    bool yields = false;
};

/// Null for a word that is no verb.
const ScriptVerb *findVerb(const QString &word);
QStringList verbNames();
