// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/image.h"
#include "core/workspace.h"
#include "views/imgwindow.h"
#include "views/viewhost.h"

#include <QCloseEvent>

#include <algorithm>

namespace
{
/// A window shows this image, or another part of the same stack.
bool stackIsShown(const image *part, const imgWindow *except)
{
    const image *root = part->master ? part->master : part;
    const auto shows = [root, except](const imgWindow *window) {
        const image *other = window->img;
        return window != except && other && (other == root || other->master == root);
    };
    const QList<imgWindow *> &all = viewHost()->windows;
    return std::any_of(all.begin(), all.end(), shows);
}
} // namespace

void imgWindow::reject()
{
    close();
}

bool imgWindow::lastView() const
{
    const ViewHost *host = viewHost();
    if (!host)
        return true;
    const QList<imgWindow *> views = host->windowsOf(img);
    return std::none_of(views.begin(), views.end(),
                        [this](const imgWindow *window) { return window != this; });
}

void imgWindow::closeEvent(QCloseEvent *event)
{
    ViewHost *host = viewHost();
    event->accept();
    finishJobs(true);
    if (!host || host->shuttingDown)
        return;
    if (!validImage()) {
        leaveList();
    } else if (host->closingAll) {
        closeInCloseAll();
    } else if (img->inUse) {
        event->ignore(); // an operator that lets events through is at work on it
    } else if (img->noPrompt) {
        if (!lastView())
            --img->viewCount;
        leaveList();
    } else if (!img->discard && !mayClose()) {
        event->ignore();
    } else if (!img->discard && !lastView()) {
        --img->viewCount;
        leaveList();
    } else {
        closeLastView();
    }
}

/// Asks before the last view of a changed image goes, if that is wanted.
bool imgWindow::mayClose()
{
    if (!img->hasUnsavedChanges() || !lastView() || !workspace()->imgClose)
        return true;
    const QString text =
        img->kind == 0
            ? tr("Last view on image<br><br>!<b>This image has been changed.</b><br>You are "
                 "about to close the last view on this image.<br><br><i>Are you sure you want "
                 "to do that?</i>")
            : tr("Last view on part of a layered image!<br><br><b>This layered image has been "
                 "changed.</b><br>You are about to close the last view on this component,<br>"
                 "which will close the layered image completely.<br><br><i>Are you sure you "
                 "want to do that?</i>");
    const QStringList buttons = {tr("Cancel and keep image open"),
                                 tr("Close and lose any changes")};
    return workspace()->question(tr("Important"), text, buttons, 1, 0) != 0;
}

void imgWindow::closeInCloseAll()
{
    ViewHost *host = viewHost();
    if (host->windows.size() == 1)
        host->rememberPlace(this);
    workspace()->assignOrigin(nullptr);
    host->closeHelpers();
    image *root = img->master ? img->master : img;
    if (stackIsShown(img, this)) {
        --img->viewCount;
        leaveList();
        return;
    }
    workspace()->images.removeAll(root);
    workspace()->forgetImage(root);
    img = nullptr;
    leaveList();
    destroyTree(&root);
}

void imgWindow::closeLastView()
{
    ViewHost *host = viewHost();
    if (img->kind != 0 && !img->discard) {
        // Taking the stack down deletes windows, this one among them, which may not be
        // done while its event is being handled: the timer does it.
        host->pendingDiscardImage = img;
        host->pendingDiscard = true;
        return;
    }
    image *gone = img;
    const bool shownElsewhere = !lastView();
    if (shownElsewhere) { // a discarded image: its last window deletes it
        --gone->viewCount;
        leaveList();
        return;
    }
    workspace()->images.removeAll(gone);
    workspace()->forgetImage(gone);
    img = nullptr;
    leaveList();
    delete gone;
}

/// Out of the host's list, with the window at the same place in it current if this one
/// was; the object itself goes when the event is over.
void imgWindow::leaveList()
{
    ViewHost *host = viewHost();
    const int place = host->windows.indexOf(this);
    const bool wasCurrent = host->currentWindow == this;
    host->windows.removeAll(this);
    if (wasCurrent)
        host->makeCurrent(
            host->windows.isEmpty()
                ? nullptr
                : host->windows.at(std::min(std::max(place, 0), int(host->windows.size()) - 1)));
    host->windowClosed(this);
    host->updateMenus();
    settle.stop();
    deleteLater();
}
