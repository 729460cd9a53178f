// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

/// One message of the language.
struct ScriptReport {
    enum class Kind { Plain, Error, Warning };
    Kind kind = Kind::Plain;
    QString rich;       ///< marked up, with the step before it: what the debug window appends
    QString plain;      ///< the message alone, without mark-up
    int statement = -1; ///< index among all statements of the run, presets first
    bool inPresets = false;
    int line = 0; ///< of the script or the presets, from 1; 0 if it is not known
};

/// Where the messages of the language go.
class ScriptLog
{
public:
    virtual ~ScriptLog() = default;
    virtual void scriptReport(const ScriptReport &report) = 0;
    /// A word of a statement that nothing took: mistyped, most likely. `nearest` is the known
    /// word most like it, empty if none is. At most once for each word of a statement.
    virtual void scriptHint(int statement, int line, const QString &word, const QString &nearest)
    {
        (void)statement;
        (void)line;
        (void)word;
        (void)nearest;
    }
};

/// What runs the statements of a user function.
class ScriptDispatcher
{
public:
    virtual ~ScriptDispatcher() = default;
    /// One statement, split at blanks. `statementIndex` is the caller's own counter, which
    /// control flow may set. With `testFlag` -1 the statement is not run; *errorText tells
    /// its usage.
    virtual bool dispatchLine(int *statementIndex, const QStringList &tokens, QString *errorText,
                              int testFlag) = 0;
    /// False once the run is to stop.
    virtual bool keepRunning() const = 0;
    /// False while nobody is to be asked, as in a preview: dialogs answer with their presets.
    virtual bool mayAsk() const { return true; }
};
