// SPDX-License-Identifier: GPL-3.0-or-later
// Writes the seed corpus of every fuzz target: fuzz_seeds FOLDER makes FOLDER/<target>/.
#include "entries.h"
#include "samplefiles.h"

#include "core/workspace.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <cstdio>

namespace
{
bool write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return QDir().mkpath(path.section(QLatin1Char('/'), 0, -2)) &&
           file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

/// The byte before a "dispatch" input that gives its file this extension.
char dispatchByte(const QByteArray &extension)
{
    const auto &list = dispatchExtensions();
    for (size_t i = 0; i < list.size(); ++i)
        if (extension == list[i])
            return char(i);
    return 0;
}

QByteArray readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Writes one text as the next seed of a target.
bool writeSeed(const QString &folder, const char *target, const QByteArray &text)
{
    static int number = 0;
    return write(QStringLiteral("%1/%2/seed-%3").arg(folder, QLatin1String(target)).arg(++number),
                 text);
}

/// What a person types in the manual's sessions: each session as a script, each statement as
/// an expression and as a text.
bool writeManualSeeds(const QString &folder)
{
    const QByteArray manual = readAll(QStringLiteral(KESTRANE_SOURCE_DIR "/docs/language.md"));
    QByteArray session;
    bool written = !manual.isEmpty();
    for (const QByteArray &line : manual.split('\n')) {
        if (line == "```") {
            written = written && (session.isEmpty() || writeSeed(folder, "scriptrun", session));
            session.clear();
        }
        if (!line.startsWith("> "))
            continue;
        const QByteArray typed =
            line.startsWith("> .") ? line.mid(line.indexOf(' ', 2) + 1) : line.mid(2);
        if (!line.startsWith("> ."))
            session += typed + '\n';
        written = written && writeSeed(folder, "exparser", typed) &&
                  writeSeed(folder, "scripttext", typed.mid(typed.indexOf('~') + 1));
    }
    return written;
}

bool writeScriptSeeds(const QString &folder)
{
    const QDir scripts(QStringLiteral(KESTRANE_SOURCE_DIR "/samples/scripts"));
    bool written = writeManualSeeds(folder);
    for (const QString &name : scripts.entryList(QDir::Files))
        written = written && writeSeed(folder, "scriptrun", readAll(scripts.filePath(name)));
    return written;
}
} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: fuzz_seeds FOLDER\n");
        return 2;
    }
    Workspace space;
    const QString folder = QFile::decodeName(argv[1]);
    int number = 0;
    for (const SampleFile &seed : sampleFiles()) {
        const QString name = QStringLiteral("/seed-%1").arg(++number);
        const QByteArray named = dispatchByte(seed.extension) + seed.bytes;
        if (!write(folder + '/' + seed.target + name, seed.bytes) ||
            !write(folder + QStringLiteral("/dispatch") + name, named)) {
            std::fprintf(stderr, "fuzz_seeds: cannot write below %s\n", argv[1]);
            return 1;
        }
    }
    if (!writeScriptSeeds(folder)) {
        std::fprintf(stderr, "fuzz_seeds: the seeds of the script targets were not written\n");
        return 1;
    }
    return 0;
}
