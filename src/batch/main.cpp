// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/batch.h"

#include "core/commandline.h"

#include <QGuiApplication>

#include <iostream>

#include <unistd.h>

namespace
{
/// The tool shows nothing, so it asks for no display even where there is one: a DISPLAY
/// that cannot be opened would end the program. What the user set comes first and falls
/// back to offscreen as well.
void choosePlatform()
{
    QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    platform += platform.isEmpty() ? "offscreen" : ";offscreen";
    qputenv("QT_QPA_PLATFORM", platform);
}
} // namespace

int main(int argc, char **argv)
{
    std::ios::sync_with_stdio(false);
    choosePlatform();
    const QStringList arguments = commandLineArguments(argc, argv);
    // Qt sees the program's name alone: the options are ours.
    int count = argc < 1 ? 0 : 1;
    const QGuiApplication app(count, argv);
    const Streams streams{std::cin, std::cout, std::cerr, isatty(STDIN_FILENO) == 1,
                          isatty(STDERR_FILENO) == 1};
    return runTool(arguments, streams);
}
