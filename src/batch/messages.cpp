// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/messages.h"

#include <QRegularExpression>

#include <ostream>
#include <utility>

namespace
{
constexpr int kProgressWidth = 72;

/// The character of an entity's name, or the entity itself where it is none that our
/// messages use.
QString decoded(const QString &entity)
{
    static const std::pair<const char *, QChar> kNames[] = {{"&lt;", QLatin1Char('<')},
                                                            {"&gt;", QLatin1Char('>')},
                                                            {"&amp;", QLatin1Char('&')},
                                                            {"&quot;", QLatin1Char('"')},
                                                            {"&nbsp;", QLatin1Char(' ')}};
    for (const auto &[name, character] : kNames)
        if (entity == QLatin1String(name))
            return QString(character);
    return entity;
}
} // namespace

QString plainLine(const QString &text)
{
    static const QRegularExpression lineBreak(QStringLiteral("<br */?>|</?p>"));
    // A "<" that no letter follows is no tag: "a < b" is plain text.
    static const QRegularExpression tag(QStringLiteral("</?[a-zA-Z][^<>]*>"));
    static const QRegularExpression entity(QStringLiteral("&[a-z]+;"));
    QString bare = text;
    bare.replace(lineBreak, QStringLiteral(" ")).remove(tag);
    QString result;
    int done = 0;
    QRegularExpressionMatchIterator matches = entity.globalMatch(bare);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        result += bare.mid(done, match.capturedStart() - done) + decoded(match.captured());
        done = match.capturedEnd();
    }
    return singleLine((result + bare.mid(done)).simplified());
}

QString singleLine(const QString &text)
{
    QString line;
    line.reserve(text.size());
    for (const QChar c : text) {
        const bool isBreak = c == QLatin1Char('\n') || c == QLatin1Char('\t') ||
                             c == QChar::LineSeparator || c == QChar::ParagraphSeparator;
        if (isBreak)
            line += QLatin1Char(' ');
        else if (c.category() != QChar::Other_Control)
            line += c;
    }
    return line;
}

void writeLine(std::ostream &out, const QString &line)
{
    const QByteArray bytes = line.toUtf8();
    out.write(bytes.constData(), bytes.size());
    out.put('\n');
    out.flush();
}

Messages::Messages(std::ostream &out, bool onTerminal) : stream(out), terminal(onTerminal) {}

Messages::~Messages()
{
    showProgress({});
}

void Messages::error(const QString &text)
{
    say("error: ", text);
}

void Messages::warning(const QString &text)
{
    say("warning: ", text);
}

void Messages::notice(const QString &text)
{
    lastNotice = plainLine(text);
    if (!lastNotice.isEmpty())
        say("notice: ", lastNotice);
}

void Messages::say(const char *kind, const QString &text)
{
    showProgress({});
    writeLine(stream, QLatin1String(kind) + singleLine(text));
}

void Messages::showProgress(const QString &text)
{
    if (!terminal)
        return;
    if (progressShown)
        stream << "\r\033[K";
    stream << singleLine(text).left(kProgressWidth).toStdString() << std::flush;
    progressShown = !text.isEmpty();
}

QString Messages::takeNotice()
{
    return std::exchange(lastNotice, QString());
}
