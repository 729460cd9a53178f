// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/workspace.h"

#include <QStringList>

/// A workspace that records what was said and answers questions as told.
class RecordingWorkspace : public Workspace
{
public:
    RecordingWorkspace() = default;
    ~RecordingWorkspace() override;

    void refreshViews(image *img) override;
    void statusText(const QString &text) override;
    void messageBox(const QString &title, const QString &text) override;
    int question(const QString &title, const QString &text, const QStringList &buttons,
                 int goingOnAnswer, int defaultAnswer) override;
    bool askQuality(int *quality, bool forPng) override;
    void brushCleared() override { ++brushClears; }
    void originCleared() override { ++originClears; }
    void showImage(image *img, const FileRecord &record) override;

    QStringList statusTexts, boxes, questions;
    int answer = -1; ///< to every question; -1 takes the going-on answer
    bool acceptQuality = true;
    int refreshes = 0, brushClears = 0, originClears = 0;
};
