// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

struct Options;

/// The script that the command line gives: the file of --script, then the texts of
/// --execute, each on lines of its own.
struct ScriptText {
    QString text;
    int fileLines = 0;    ///< lines that came from the file
    bool isGiven = false; ///< there is a script at all

    /// Names a line of the text as the user counts it: those of --execute by themselves.
    QString place(int line) const;
};

/// Reads what the options ask for. False with a reason that names the file.
bool readScript(const Options &options, ScriptText *script, QString *error);
