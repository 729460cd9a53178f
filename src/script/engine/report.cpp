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

/// What a message is, and how long the word that says so. One message spells its word out.
ScriptReport::Kind kindOf(const QString &text, int *length)
{
    constexpr struct {
        const char *word;
        ScriptReport::Kind kind;
    } words[] = {{"e:", ScriptReport::Kind::Error},
                 {"w:", ScriptReport::Kind::Warning},
                 {"error:", ScriptReport::Kind::Error}};
    for (const auto &[word, kind] : words)
        if (text.startsWith(QLatin1String(word))) {
            *length = int(qstrlen(word));
            return kind;
        }
    *length = 0;
    return ScriptReport::Kind::Plain;
}

/// The message without its mark-up: pairs of codes and tags go, other capitals are letters.
QString plainText(QString plain)
{
    static const QRegularExpression pairs(QStringLiteral("([IBROGC])(.*?)E\\1"));
    static const QRegularExpression tags(QStringLiteral("</?font[^>]*>"));
    plain.replace(tags, QString());
    return plain.replace(pairs, QStringLiteral("\\2")).trimmed();
}
} // namespace

void exParser::report(const QString &text)
{
    if (!debug || !log)
        return;
    ScriptReport message;
    int wordLength = 0;
    message.kind = kindOf(text, &wordLength);
    message.statement = statement;
    message.inPresets = statement < presetStatements;
    message.line = line;
    const QString step =
        message.inPresets
            ? QStringLiteral("BPresetEB step %1: ").arg(statement)
            : QStringLiteral("BScriptEB step %1: ").arg(statement - presetStatements + 1);
    message.rich = markedUp(step + text);
    message.plain = plainText(text.mid(wordLength));
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
