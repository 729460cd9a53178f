// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/scripttext.h"

#include "batch/options.h"

#include <QFile>
#include <QFileInfo>
#include <QTextCodec>

#include <memory>

namespace
{
/// A larger file is no script that a person wrote.
constexpr qint64 kLargestScript = qint64(64) << 20;

QString unreadable(const QString &path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return QStringLiteral("no such file");
    if (info.isDir())
        return QStringLiteral("is a folder");
    return QStringLiteral("may not be read");
}

bool readFile(const QString &path, QString *text, QString *reason)
{
    QFile file(path);
    if (QFileInfo(path).isDir() || !file.open(QIODevice::ReadOnly)) {
        *reason = unreadable(path);
        return false;
    }
    // One byte more than allowed, since a pipe does not tell its size.
    const QByteArray bytes = file.read(kLargestScript + 1);
    if (file.error() != QFileDevice::NoError) {
        *reason = file.errorString();
        return false;
    }
    if (bytes.size() > kLargestScript) {
        *reason = QStringLiteral("is larger than %1 MiB").arg(kLargestScript >> 20);
        return false;
    }
    QTextCodec::ConverterState state; // which passes over a byte order mark
    *text = QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    if (state.invalidChars > 0 || state.remainingChars > 0) {
        *reason = QStringLiteral("is not UTF-8 text");
        return false;
    }
    text->replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    return true;
}
} // namespace

QString ScriptText::place(int line) const
{
    return line > fileLines && fileLines > 0
               ? QStringLiteral("line %1 of --execute").arg(line - fileLines)
               : QStringLiteral("line %1").arg(line);
}

bool readScript(const Options &options, ScriptText *script, QString *error)
{
    if (!options.script.isEmpty()) {
        QString reason;
        if (!readFile(options.script, &script->text, &reason)) {
            *error = options.script + QStringLiteral(": ") + reason;
            return false;
        }
        if (!script->text.endsWith(QLatin1Char('\n')))
            script->text += QLatin1Char('\n');
        script->fileLines = int(script->text.count(QLatin1Char('\n')));
    }
    script->text += options.execute.join(QLatin1Char('\n'));
    script->isGiven = !options.script.isEmpty() || !options.execute.isEmpty();
    return true;
}
