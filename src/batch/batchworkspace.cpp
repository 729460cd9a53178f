// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/batchworkspace.h"

#include "batch/messages.h"

void BatchWorkspace::statusText(const QString &text)
{
    messages->notice(text);
}

void BatchWorkspace::messageBox(const QString &title, const QString &text)
{
    messages->notice(text.isEmpty() ? title : text);
}

int BatchWorkspace::question(const QString &title, const QString &text, const QStringList &buttons,
                             int goingOnAnswer, int)
{
    const QString asked = text.isEmpty() ? title : text;
    messages->notice(asked + QLatin1Char(' ') + buttons.value(goingOnAnswer));
    return goingOnAnswer;
}

bool BatchWorkspace::askQuality(int *, bool)
{
    return true;
}
