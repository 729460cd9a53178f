// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/recordingworkspace.h"

RecordingWorkspace::~RecordingWorkspace()
{
    while (!images.isEmpty()) {
        image *tree = images.takeFirst();
        destroyTree(&tree);
    }
}

void RecordingWorkspace::refreshViews(image *)
{
    ++refreshes;
}

void RecordingWorkspace::statusText(const QString &text)
{
    statusTexts << text;
}

void RecordingWorkspace::messageBox(const QString &title, const QString &text)
{
    boxes << (title.isEmpty() ? text : title + QLatin1String(": ") + text);
}

int RecordingWorkspace::question(const QString &, const QString &text, const QStringList &,
                                 int goingOnAnswer, int)
{
    questions << text;
    return answer < 0 ? goingOnAnswer : answer;
}

bool RecordingWorkspace::askQuality(int *, bool)
{
    return acceptQuality;
}

void RecordingWorkspace::showImage(image *img, const FileRecord &)
{
    images << img;
}
