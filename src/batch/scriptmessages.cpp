// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/scriptmessages.h"

#include "batch/messages.h"
#include "batch/scripttext.h"
#include "script/engine/exparser.h"

void ScriptMessages::scriptReport(const ScriptReport &report)
{
    const QString text = place(report.line, report.inPresets) + report.plain;
    if (report.kind == ScriptReport::Kind::Warning) {
        messages->warning(text);
        return;
    }
    sawError = true;
    messages->error(text);
}

void ScriptMessages::scriptHint(int statement, int line, const QString &word,
                                const QString &nearest)
{
    messages->warning(place(line, statement < parser.presetStatements) +
                      unknownWord(word, nearest));
}

QString ScriptMessages::place(int line, bool inPresets) const
{
    if (line <= 0)
        return {};
    return (inPresets ? QStringLiteral("line %1 of the presets").arg(line) : script.place(line)) +
           QStringLiteral(": ");
}

QString unknownWord(const QString &word, const QString &nearest)
{
    const QString told = QStringLiteral("unknown word \"") + word + QLatin1Char('"');
    return nearest.isEmpty()
               ? told
               : told + QStringLiteral(", did you mean \"") + nearest + QStringLiteral("\"?");
}
