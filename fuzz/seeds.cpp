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
    return 0;
}
