// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/myapplication.h"

#include "core/memory.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFileOpenEvent>
#include <QUrl>

PendingOpen pendingOpen;

void noteFileOpen(const QEvent *event)
{
    if (!event || event->type() != QEvent::FileOpen)
        return;
    pendingOpen.name = static_cast<const QFileOpenEvent *>(event)->file();
    pendingOpen.pending = true;
}

bool takePendingOpen(QString *name)
{
    if (!pendingOpen.pending)
        return false;
    pendingOpen.pending = false;
    *name = pendingOpen.name;
    if (auto *app = qobject_cast<MyApplication *>(QCoreApplication::instance()))
        app->deliverNextFile();
    return true;
}

void reportMemoryIfTriggered()
{
    QFile trigger(QDir::homePath() + QStringLiteral("/kstdebugtrigger.txt"));
    if (!trigger.open(QIODevice::ReadOnly))
        return;
    trigger.close();
    const QStringList lines = memReport(true).split(QLatin1Char('\n'));
    for (const QString &line : lines)
        qDebug().noquote() << line;
}

MyApplication::MyApplication(int &argc, char **argv) : QApplication(argc, argv) {}

MyApplication::~MyApplication()
{
    reportMemoryIfTriggered();
}

bool MyApplication::filesOfArguments(const QStringList &arguments, QStringList *files,
                                     QString *unknown)
{
    bool optionsOver = false;
    for (int i = 1; i < arguments.size(); ++i) {
        const QString &argument = arguments.at(i);
        if (!optionsOver && argument == QLatin1String("--")) {
            optionsOver = true;
        } else if (!optionsOver && argument.size() > 1 && argument.startsWith(QLatin1Char('-'))) {
            *unknown = argument;
            return false;
        } else if (!argument.isEmpty()) {
            const bool isUrl = argument.startsWith(QLatin1String("file:"));
            const QString path = isUrl ? QUrl(argument).toLocalFile() : argument;
            files->append(QFileInfo(path).absoluteFilePath());
        }
    }
    return true;
}

void MyApplication::deliverFiles(const QStringList &files)
{
    waitingFiles += files;
    deliverNextFile();
}

void MyApplication::deliverNextFile()
{
    if (pendingOpen.pending || waitingFiles.isEmpty())
        return;
    QFileOpenEvent open(waitingFiles.takeFirst());
    QCoreApplication::sendEvent(this, &open);
}

bool MyApplication::event(QEvent *event)
{
    noteFileOpen(event);
    return QApplication::event(event);
}
