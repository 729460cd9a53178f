// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "script/engine/scripthost.h"

class Messages;
class exParser;
struct ScriptText;

/// What a script reports, as messages of the tool that name the line.
class ScriptMessages : public ScriptLog
{
public:
    ScriptMessages(const ScriptText &text, const exParser &language, Messages *sink)
        : script(text), parser(language), messages(sink)
    {
    }

    void scriptReport(const ScriptReport &report) override;
    void scriptHint(int statement, int line, const QString &word, const QString &nearest) override;
    /// Whether there was an error.
    bool failed() const { return sawError; }

private:
    QString place(int line, bool inPresets) const;

    const ScriptText &script;
    const exParser &parser;
    Messages *messages;
    bool sawError = false;
};

/// What to tell of a word that nothing takes; `nearest` may be empty.
QString unknownWord(const QString &word, const QString &nearest);
