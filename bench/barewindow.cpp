// SPDX-License-Identifier: GPL-3.0-or-later
// The least that a Qt program with a main window does: what bench/compare-start measures
// the start of kestrane against.
#include <QApplication>
#include <QMainWindow>

int main(int argc, char **argv)
{
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    const QApplication application(argc, argv);
    QMainWindow window;
    window.setWindowTitle(QStringLiteral("Bare Window"));
    window.resize(800, 600);
    window.show();
    return QApplication::exec();
}
