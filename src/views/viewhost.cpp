// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/viewhost.h"

#include "core/image.h"
#include "core/workspace.h"
#include "views/imgwindow.h"

#include <QCoreApplication>
#include <QDebug>

namespace
{
ViewHost *theHost = nullptr;
} // namespace

ViewHost *viewHost()
{
    return theHost;
}

ViewHost::ViewHost()
{
    theHost = this;
}

ViewHost::~ViewHost()
{
    if (theHost == this)
        theHost = nullptr;
}

imgWindow *ViewHost::validCurrent() const
{
    if (windows.isEmpty() || !isWindow(currentWindow))
        return nullptr;
    return currentWindow->validImage() ? currentWindow : nullptr;
}

imgWindow *ViewHost::findWindow(const image *img) const
{
    for (imgWindow *window : windows) {
        if (!window || !window->valid())
            qDebug() << "Bad window in findWindow(image *im) !!!";
        else if (img && window->img == img)
            return window;
    }
    return nullptr;
}

QList<imgWindow *> ViewHost::windowsOf(const image *img) const
{
    QList<imgWindow *> found;
    for (imgWindow *window : windows)
        if (window && window->valid() && img && window->img == img)
            found << window;
    return found;
}

void ViewHost::armDropper(bool armed)
{
    dropperArmed = armed;
    for (imgWindow *window : windows)
        if (window && window->valid())
            window->dropper.armingChanged();
    updateMenus();
}

void ViewHost::splitOutdated()
{
    for (imgWindow *window : windows)
        if (window && window->valid())
            window->splitOutdated();
}

OperatorTable *ViewHost::operatorTable()
{
    return nullptr;
}

MacroRecorder *ViewHost::recorder()
{
    return nullptr;
}

void ViewHost::makeCurrent(imgWindow *window)
{
    const bool other = currentWindow != window;
    currentWindow = window;
    if (other)
        splitOutdated();
}

void ViewHost::commandRunning(bool, QPointF) {}
void ViewHost::showLoadDialog() {}
void ViewHost::showNewImageDialog() {}
void ViewHost::saveImage(imgWindow *) {}
void ViewHost::showSaveDialog(imgWindow *, bool) {}
void ViewHost::openRecentFile(int) {}

bool ViewHost::hostCommand(imgWindow *, int)
{
    return false;
}

void ViewHost::openUrls(const QList<QUrl> &) {}

QString ViewHost::askFile(QWidget *, const QString &, const QString &, bool)
{
    return QString();
}

void ViewHost::updateMenus() {}
void ViewHost::refreshOperatorSource() {}
void ViewHost::operate() {}

QString ViewHost::toggleToolAntialias()
{
    return QCoreApplication::translate("ViewHost", "%1 has no antialias switch")
        .arg(QCoreApplication::translate("ViewHost", "Entire"));
}

void ViewHost::chooseTool(int tool)
{
    workspace()->toolSelect = tool;
}

bool ViewHost::askNumericRectangle(imgWindow *)
{
    return false;
}

void ViewHost::shapeChanged() {}

bool ViewHost::globalKey(QKeyEvent *)
{
    return false;
}

void ViewHost::pointerOver(imgWindow *, int, int) {}
void ViewHost::dropperPicked(image *, const QRect &) {}
void ViewHost::dropperEnded(bool) {}
void ViewHost::openView(image *) {}
void ViewHost::notationsChanged(image *, int) {}
void ViewHost::editNotation(imgWindow *, int) {}
void ViewHost::windowClosed(imgWindow *) {}
void ViewHost::recordFrameMargins(imgWindow *) {}
void ViewHost::rememberPlace(imgWindow *) {}
void ViewHost::closeHelpers() {}
