// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <QTextDecoder>

#include <iosfwd>
#include <memory>

#include <termios.h>

/// Edits one line on a terminal: the keys that line editors have in common, and the
/// lines entered before. It is fed byte by byte and draws what it holds.
class LineEditor
{
public:
    enum class Step { More, Line, End };

    LineEditor(std::ostream &screen, const QString &prompt);

    /// Begins an empty line. `columns` is how wide the terminal is.
    void begin(int columns);
    /// Takes one byte of what the keyboard sent.
    Step feed(char byte);
    const QString &text() const { return line; }

private:
    void take(QChar key);
    void takeControl(char16_t key);
    void takeEscape(QChar key);
    void insert(QChar key);
    void erase(int from, int to);
    void browse(int step);
    void draw();
    Step finish();

    std::ostream &screen;
    QString prompt, line;
    QString escape;      ///< an unfinished escape sequence
    QStringList entered; ///< oldest first
    int cursor = 0;
    int chosen = 0; ///< place among the entered lines; their count for a fresh line
    int columns = 80;
    std::unique_ptr<QTextDecoder> decoder;
};

/// Hands the keys of a terminal over as they are pressed, for the length of a scope.
/// Where the file is no terminal nothing happens.
class RawTerminal
{
public:
    explicit RawTerminal(int file);
    ~RawTerminal();
    RawTerminal(const RawTerminal &) = delete;
    RawTerminal &operator=(const RawTerminal &) = delete;

    int columns() const;

private:
    int file;
    bool changed = false;
    termios before{};
};
