// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/workspace.h"

class Messages;

/// A workspace without a person: what would be shown is printed, and questions are
/// answered by going on, because the command is the user's word.
class BatchWorkspace : public Workspace
{
public:
    explicit BatchWorkspace(Messages *sink) : messages(sink) {}

    void statusText(const QString &text) override;
    void messageBox(const QString &title, const QString &text) override;
    int question(const QString &title, const QString &text, const QStringList &buttons,
                 int goingOnAnswer, int defaultAnswer) override;
    bool askQuality(int *quality, bool forPng) override;

private:
    Messages *messages;
};
