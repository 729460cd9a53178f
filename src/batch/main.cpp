// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/batch.h"

#include <QFile>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QTextCodec>

#include <clocale>
#include <iostream>

#include <langinfo.h>
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

/// Under the C locale, as scheduled jobs have it, Qt would turn every other character
/// of a file name into "?".
void chooseFileNames()
{
    std::setlocale(LC_CTYPE, "");
    if (QByteArray(nl_langinfo(CODESET)) == "ANSI_X3.4-1968")
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
}
} // namespace

int main(int argc, char **argv)
{
    std::ios::sync_with_stdio(false);
    choosePlatform();
    chooseFileNames();
    // Diagnostics, Qt's among them, are no messages; QT_LOGGING_RULES brings them back.
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false\n*.warning=false"));
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments += QFile::decodeName(argv[i]);
    // Qt sees the program's name alone: the options are ours.
    int count = argc < 1 ? 0 : 1;
    const QGuiApplication app(count, argv);
    const Streams streams{std::cin, std::cout, std::cerr, isatty(STDIN_FILENO) == 1,
                          isatty(STDERR_FILENO) == 1};
    return runTool(arguments, streams);
}
