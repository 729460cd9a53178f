// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/exparser.h"

#include <QRegularExpression>

namespace
{
/// The codes of the mark-up, in the order in which they are replaced. They are bare capitals
/// and go over the whole message, names of the user included: there is no escape.
constexpr struct {
    const char *find, *replace;
} kMarkup[] = {
    {"w:", "Owarning:EO"},
    {"e:", "Rerror:ER"},
    {"EI", "</i>"},
    {"I", "<i>"},
    {"EB", "</b>"},
    {"B", "<b>"},
    {"ER", "</font>"},
    {"R", "<font color=\"#ff0000\">"},
    {"EO", "</font>"},
    {"O", "<font color=\"#cc6600\">"},
    {"EG", "</b></font></tt>"},
    {"G", "<tt><font color=\"#008800\"><b>"},
    {"EC", "</font>"},
    {"C", "<font color=\"#0000FF\">"},
};

QString markedUp(QString text)
{
    for (const auto &code : kMarkup)
        text.replace(QLatin1String(code.find), QLatin1String(code.replace));
    return text;
}

ScriptReport::Kind kindOf(const QString &text)
{
    if (text.startsWith(QLatin1String("e:")))
        return ScriptReport::Kind::Error;
    return text.startsWith(QLatin1String("w:")) ? ScriptReport::Kind::Warning
                                                : ScriptReport::Kind::Plain;
}

/// The message without its mark-up: pairs of codes and tags go, other capitals are letters.
QString plainText(const QString &text, ScriptReport::Kind kind)
{
    static const QRegularExpression pairs(QStringLiteral("([IBROGC])(.*?)E\\1"));
    static const QRegularExpression tags(QStringLiteral("</?font[^>]*>"));
    QString plain = kind == ScriptReport::Kind::Plain ? text : text.mid(2);
    plain.replace(tags, QString());
    return plain.replace(pairs, QStringLiteral("\\2")).trimmed();
}
} // namespace

void exParser::report(const QString &text)
{
    if (!debug || !log)
        return;
    ScriptReport message;
    message.kind = kindOf(text);
    message.statement = statement;
    message.inPresets = statement < presetStatements;
    message.line = line;
    const QString step =
        message.inPresets
            ? QStringLiteral("BPresetEB step %1: ").arg(statement)
            : QStringLiteral("BScriptEB step %1: ").arg(statement - presetStatements + 1);
    message.rich = markedUp(step + text);
    message.plain = plainText(text, message.kind);
    log->scriptReport(message);
}

double exParser::badParameters(int opCode, int tag)
{
    QString text = QStringLiteral("e: incorrect parameters for ") + usageOf(opCode);
    if (showParameterTags && tag != -1)
        text += QStringLiteral(" (tag %1)").arg(tag);
    report(text);
    return 0;
}
