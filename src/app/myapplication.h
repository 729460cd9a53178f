// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QApplication>
#include <QString>
#include <QStringList>

/// The one pending open request: a desktop may ask for a file before there is a window,
/// so the request waits here until the main window's timer takes it. A second request
/// before that replaces the first.
struct PendingOpen {
    QString name;
    bool pending = false;
};
extern PendingOpen pendingOpen;

/// Notes the file name of a file-open event; other events are left alone.
void noteFileOpen(const QEvent *event);

/// Takes the pending request, if there is one; the next file of the command line then
/// takes its place.
bool takePendingOpen(QString *name);

/// Writes the detailed memory report to the debug channel, line by line, if the trigger
/// file stands in the user's home folder.
void reportMemoryIfTriggered();

class MyApplication : public QApplication
{
    Q_OBJECT
public:
    MyApplication(int &argc, char **argv);
    ~MyApplication() override;

    /// The files among the arguments that QApplication left, as absolute paths. Returns
    /// false with the argument for an option that does not exist.
    static bool filesOfArguments(const QStringList &arguments, QStringList *files,
                                 QString *unknown);

    /// Delivers the files as file-open events, one each time the last one was taken.
    void deliverFiles(const QStringList &files);
    void deliverNextFile();

protected:
    bool event(QEvent *event) override;

private:
    QStringList waitingFiles;
};
