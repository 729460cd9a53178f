// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/debuglog.h"

#include <QApplication>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdio>

namespace
{
QStringList *lines = nullptr;

/// Keeps what the debug channel says, and turns a slot name that matches no signal,
/// which Qt only warns about at run time, into a failure.
void keepMessage(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    if (lines)
        lines->append(text);
    if (text.contains(QLatin1String("No matching signal")))
        ADD_FAILURE() << text.toStdString();
    if (type == QtFatalMsg)
        std::fprintf(stderr, "fatal: %s\n", qPrintable(text));
}
} // namespace

QStringList takeDebugLines()
{
    QStringList taken;
    if (lines)
        taken.swap(*lines);
    return taken;
}

int main(int argc, char **argv)
{
    // The user's home and settings are out of reach of every test.
    QTemporaryDir home;
    qputenv("HOME", home.path().toLocal8Bit());
    qputenv("XDG_CONFIG_HOME", home.path().toLocal8Bit() + "/config");
    qputenv("XDG_DATA_HOME", home.path().toLocal8Bit() + "/data");
    qputenv("XDG_STATE_HOME", home.path().toLocal8Bit() + "/state");
    if (!qEnvironmentVariableIsSet("KESTRANE_TEST_DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, home.path() + "/config");

    testing::InitGoogleTest(&argc, argv);
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication app(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QStringList kept;
    lines = &kept;
    qInstallMessageHandler(keepMessage);
    const int result = RUN_ALL_TESTS();
    qInstallMessageHandler(nullptr);
    lines = nullptr;
    return result;
}
