// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/scriptmessages.h"

#include "batch/messages.h"
#include "batch/scripttext.h"

void ScriptMessages::scriptReport(const ScriptReport &report)
{
    QString place;
    if (report.line > 0)
        place = report.inPresets ? QStringLiteral("line %1 of the presets: ").arg(report.line)
                                 : script.place(report.line) + QStringLiteral(": ");
    if (report.kind == ScriptReport::Kind::Warning) {
        messages->warning(place + report.plain);
        return;
    }
    sawError = true;
    messages->error(place + report.plain);
}

void ScriptMessages::scriptHint(int, int line, const QString &word, const QString &nearest)
{
    const QString place = line > 0 ? script.place(line) + QStringLiteral(": ") : QString();
    messages->warning(place + unknownWord(word, nearest));
}

QString unknownWord(const QString &word, const QString &nearest)
{
    const QString told = QStringLiteral("unknown word \"") + word + QLatin1Char('"');
    return nearest.isEmpty()
               ? told
               : told + QStringLiteral(", did you mean \"") + nearest + QStringLiteral("\"?");
}
