// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/mainwindow.h"
#include "app/myapplication.h"

#include <cstdio>
#include <cstring>

namespace
{
constexpr char kHelp[] =
    "Usage: kestrane [OPTION]... [FILE]...\n"
    "Edit images; each FILE is opened in a window of its own.\n"
    "\n"
    "  -h, --help       show this help and exit\n"
    "  -v, --version    show the version and exit\n"
    "  --               what follows is a file, even if it starts with -\n"
    "\n"
    "The options of Qt programs, such as -style and -platform, are taken too.\n";

/// Answers --help and --version, which must work where there is no display.
bool answeredWithoutDisplay(int argc, char **argv)
{
    const auto is = [](const char *argument, const char *brief, const char *full) {
        return std::strcmp(argument, brief) == 0 || std::strcmp(argument, full) == 0;
    };
    for (int i = 1; i < argc && std::strcmp(argv[i], "--") != 0; ++i) {
        if (is(argv[i], "-h", "--help")) {
            std::fputs(kHelp, stdout);
            return true;
        }
        if (is(argv[i], "-v", "--version")) {
            std::fputs("kestrane " KESTRANE_VERSION "\n", stdout);
            return true;
        }
    }
    return false;
}
} // namespace

int main(int argc, char **argv)
{
    if (answeredWithoutDisplay(argc, argv))
        return 0;

    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(
        Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);

    MyApplication application(argc, argv);
    QGuiApplication::setDesktopFileName(QStringLiteral("kestrane"));
    QCoreApplication::setApplicationVersion(QStringLiteral(KESTRANE_VERSION));
    QStringList files;
    QString unknown;
    if (!MyApplication::filesOfArguments(QCoreApplication::arguments(), &files, &unknown)) {
        std::fprintf(stderr, "kestrane: unknown option %s (see kestrane --help)\n",
                     qPrintable(unknown));
        return 2;
    }
    int result = 0;
    {
        MainWindow window;
        window.show();
        application.deliverFiles(files);
        result = QApplication::exec();
    }
    reportMemoryIfTriggered();
    return result;
}
