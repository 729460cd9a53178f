// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <iosfwd>

/// One line of plain text: mark-up taken out, entities decoded, runs of blanks and line
/// breaks made one blank, control characters dropped.
QString plainLine(const QString &text);
/// As it stands, but on one line and without control characters.
QString singleLine(const QString &text);
/// Writes one line as UTF-8 and flushes it.
void writeLine(std::ostream &out, const QString &line);

/// The messages of a run, one a line, and a progress line that makes way for them.
class Messages
{
public:
    /// `terminal`: a progress line can be shown.
    Messages(std::ostream &stream, bool terminal);
    ~Messages();
    Messages(const Messages &) = delete;
    Messages &operator=(const Messages &) = delete;

    void error(const QString &text);
    void warning(const QString &text);
    void notice(const QString &text);
    /// Shows a progress line until the next one; an empty text takes it away.
    void showProgress(const QString &text);

    /// The last notice since takeNotice, and none from then on.
    QString takeNotice();

private:
    void say(const char *kind, const QString &text);

    std::ostream &stream;
    bool terminal;
    bool progressShown = false;
    QString lastNotice;
};
