// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/keyfile.h"

#include <QCoreApplication>
#include <QSet>

namespace
{
constexpr const char *kMagic = "Kestrane keys ";
constexpr const char *kNoKey = "none";
constexpr int kShownOfLine = 60;
constexpr int kMostProblems = 200;

QString translated(const char *text)
{
    return QCoreApplication::translate("KeyFile", text);
}

/// Reads a text of key bindings line by line.
class KeyReader
{
public:
    bool read(const QByteArray &bytes);

    KeyTable table; ///< starts empty
    QStringList problems;

private:
    bool readHead(const QString &line);
    void readBinding(const QString &line);
    void bind(int number, const QString &keyText);
    void complain(const QString &what);
    void completeByDefaults();

    int lineNumber = 1;
    QSet<int> named;
};

void KeyReader::complain(const QString &what)
{
    if (problems.size() < kMostProblems)
        problems << translated("Line %1: %2").arg(lineNumber).arg(what);
    else if (problems.size() == kMostProblems)
        problems << translated("There are more lines like these.");
}

/// The name of the format and a version from 1 on.
bool KeyReader::readHead(const QString &line)
{
    bool isNumber = false;
    const int version = line.mid(int(qstrlen(kMagic))).toInt(&isNumber);
    if (!line.startsWith(QLatin1String(kMagic)) || !isNumber || version < 1)
        return false;
    if (version > KeyTable::kVersion)
        complain(translated("a newer version of this program wrote this table; what this version "
                            "does not know is left out"));
    return true;
}

QString shortened(const QString &text)
{
    return text.size() <= kShownOfLine ? text : text.left(kShownOfLine) + QChar(0x2026);
}

/// The key that a text names in plain form, 0 if it names none or several.
int keyNamed(const QString &text)
{
    const QKeySequence sequence = QKeySequence::fromString(text, QKeySequence::PortableText);
    const int key = sequence.count() == 1 ? KeyTable::plainKey(sequence[0]) : 0;
    return KeyTable::isBindable(key) ? key : 0;
}

/// What stands before a remark. A "#" that follows no blank, or comes first, is a key.
QString withoutRemark(const QString &text)
{
    for (int i = 1; i < text.size(); ++i)
        if (text.at(i) == QLatin1Char('#') && text.at(i - 1).isSpace())
            return text.left(i).trimmed();
    return text.trimmed();
}

void KeyReader::bind(int number, const QString &keyText)
{
    const int key = keyNamed(keyText);
    if (key == 0) {
        complain(translated("\"%1\" is no key").arg(shortened(keyText)));
        return;
    }
    const int holder = table.commandAt(key);
    if (holder != 0)
        complain(translated("%1 is taken already by \"%2\"")
                     .arg(shortened(keyText), windowCommand(holder)->title()));
    else
        table.bind(key, number);
}

void KeyReader::readBinding(const QString &line)
{
    const QString text = line.trimmed();
    if (text.isEmpty() || text.startsWith(QLatin1Char('#')))
        return;
    int end = 0;
    while (end < text.size() && !text.at(end).isSpace())
        ++end;
    bool isNumber = false;
    const int number = text.left(end).toInt(&isNumber);
    if (!isNumber) {
        complain(translated("\"%1\" does not begin with a command's number").arg(shortened(text)));
        return;
    }
    if (!windowCommand(number)) {
        complain(translated("there is no command %1").arg(number));
        return;
    }
    named.insert(number);
    const QString keyText = withoutRemark(text.mid(end).trimmed());
    if (keyText != QLatin1String(kNoKey))
        bind(number, keyText);
}

void KeyReader::completeByDefaults()
{
    const KeyTable defaults = KeyTable::defaults();
    for (const KeyTable::Binding &binding : defaults.bindings())
        if (!named.contains(binding.command) && table.commandAt(binding.key) == 0)
            table.bind(binding.key, binding.command);
}

bool KeyReader::read(const QByteArray &bytes)
{
    if (bytes.size() > kMostKeyTextBytes) {
        problems << translated("This file is too long for a key table.");
        return false;
    }
    const QString text = QString::fromUtf8(bytes);
    const QVector<QStringRef> lines = text.splitRef(QLatin1Char('\n'));
    if (!readHead(lines.constFirst().trimmed().toString())) {
        problems << translated("This is no key table: it does not begin with \"%1\".")
                        .arg(QLatin1String(kMagic) + QString::number(KeyTable::kVersion));
        return false;
    }
    for (lineNumber = 2; lineNumber <= lines.size(); ++lineNumber)
        readBinding(lines.at(lineNumber - 1).toString());
    completeByDefaults();
    return true;
}
} // namespace

QByteArray keysToText(const KeyTable &table)
{
    QString text = QLatin1String(kMagic) + QString::number(KeyTable::kVersion) + QLatin1Char('\n');
    for (const WindowCommand &command : windowCommands()) {
        QStringList keys;
        for (const int key : table.keysOf(command.number))
            keys << QKeySequence(key).toString(QKeySequence::PortableText);
        if (keys.isEmpty())
            keys << QLatin1String(kNoKey);
        for (const QString &key : keys)
            text += QStringLiteral("%1 %2  # %3\n")
                        .arg(QString::number(command.number), key, command.title());
    }
    return text.toUtf8();
}

bool keysFromText(const QByteArray &text, KeyTable *into, QStringList *problems)
{
    KeyReader reader;
    const bool isTable = reader.read(text);
    if (isTable)
        *into = reader.table;
    if (problems)
        *problems = reader.problems;
    return isTable;
}
