// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/pictures.h"
#include "support/recordingworkspace.h"
#include "views/imgwindow.h"
#include "views/viewhost.h"

#include <QCoreApplication>

/// A small main window: owns the images shown, and records what windows ask of it.
class TestHost : public RecordingWorkspace, public ViewHost
{
public:
    ~TestHost() override
    {
        shuttingDown = true;
        while (!windows.isEmpty())
            delete windows.constLast();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    image *keep(ImagePtr img)
    {
        images << img.get();
        giveSerial(img.get());
        return img.release();
    }
    imgWindow *show(image *img, QSize client = {})
    {
        auto *window = new imgWindow(img);
        windows << window;
        ++img->viewCount;
        window->fit(true);
        if (!client.isEmpty())
            window->resize(client);
        window->show();
        makeCurrent(window);
        return window;
    }

    void refreshViews(image *img) override
    {
        RecordingWorkspace::refreshViews(img);
        for (imgWindow *window : windowsOf(img))
            window->refresh();
    }
    void commandRunning(bool running, QPointF where) override
    {
        running ? ++started : ++ended;
        centre = where;
    }
    void pointerOver(imgWindow *, int x, int y) override { pointer = {x, y}; }
    bool globalKey(QKeyEvent *) override { return ++globalKeys > 0; }
    void openUrls(const QList<QUrl> &urls) override { dropped = urls; }
    void openRecentFile(int position) override { recent = position; }
    void operate() override { ++operated; }
    void refreshOperatorSource() override { ++sourceRefreshes; }
    void rememberPlace(imgWindow *) override { ++remembered; }

    int started = 0, ended = 0, globalKeys = 0, recent = 0, operated = 0, remembered = 0;
    int sourceRefreshes = 0;
    QPointF centre;
    QPoint pointer;
    QList<QUrl> dropped;
};
