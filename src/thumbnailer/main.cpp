// SPDX-License-Identifier: GPL-3.0-or-later
#include "thumbnailer/thumbnail.h"

#include "core/commandline.h"

#include <QCoreApplication>
#include <QFile>
#include <QStringList>
#include <QUrl>

#include <cstdio>
#include <optional>

namespace
{
constexpr const char *kUsage = "usage: kestrane-thumbnailer [-s SIZE] INPUT OUTPUT.png\n"
                               "SIZE is the longer side of the thumbnail, 1 to 4096, by default "
                               "128. INPUT is a path or a file: address.\n";

struct Options {
    int side = kDefaultThumbnailSide;
    QString input, output;
};

QString pathOf(const QString &argument)
{
    return argument.startsWith(QLatin1String("file:")) ? QUrl(argument).toLocalFile() : argument;
}

/// What was asked for; nothing if it is not clear.
std::optional<Options> parse(QStringList arguments)
{
    Options options;
    if (arguments.value(0) == QLatin1String("-s")) {
        bool number = false;
        options.side = arguments.value(1).toInt(&number);
        if (!number || options.side < 1 || options.side > kMaxThumbnailSide)
            return std::nullopt;
        arguments = arguments.mid(2);
    }
    if (arguments.size() != 2 || arguments[0].isEmpty() || arguments[1].isEmpty() ||
        arguments[0].startsWith(QLatin1Char('-')))
        return std::nullopt;
    options.input = pathOf(arguments[0]);
    options.output = pathOf(arguments[1]);
    return options;
}
} // namespace

int main(int argc, char **argv)
{
    const QStringList arguments = commandLineArguments(argc, argv);
    // Qt sees the program's name alone: the options are ours.
    int count = argc < 1 ? 0 : 1;
    const QCoreApplication app(count, argv);
    if (arguments == QStringList(QStringLiteral("--help"))) {
        std::fputs(kUsage, stdout);
        return 0;
    }
    const std::optional<Options> options = parse(arguments);
    if (!options) {
        std::fputs(kUsage, stderr);
        return 1;
    }
    QString error;
    if (writeThumbnail(options->input, options->output, options->side, &error))
        return 0;
    std::fprintf(stderr, "kestrane-thumbnailer: %s: %s\n",
                 QFile::encodeName(options->input).constData(), error.toLocal8Bit().constData());
    return 1;
}
