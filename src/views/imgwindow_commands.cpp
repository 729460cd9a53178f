// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/image.h"
#include "core/undo.h"
#include "core/workspace.h"
#include "views/clipboardacts.h"
#include "views/imgwindow.h"
#include "views/viewhost.h"
#include "views/windowacts.h"

#include <QCoreApplication>
#include <QDebug>
#include <QInputDialog>
#include <QPointer>

#include <algorithm>

namespace
{
constexpr int kMostPan = 1 << 28;

/// The two directions of history, and what differs between them.
struct History {
    QList<image *> image::*list;
    void (*step)(image *);
    GroupResult (*groupStep)(image *);
    int command;
    const char *noTarget;
};
const History kBack = {
    &image::undoList, undo, groupUndo, kCommandUndo,
    QT_TRANSLATE_NOOP("imgWindow", "Can't undo from master without<br>assigned target")};
const History kForth = {
    &image::redoList, redo, groupRedo, kCommandRedo,
    QT_TRANSLATE_NOOP("imgWindow", "Can't redo from master without<br>assigned target")};

/// A master's target, or null if there is none that is still an image.
image *targetOf(const image *master)
{
    image *target = master->target;
    const bool live = target && (master->layers.contains(target) || workspace()->ownsImage(target));
    return live && target->valid() ? target : nullptr;
}

void historyChanged(image *img)
{
    ViewHost *host = viewHost();
    if (host)
        host->refreshOperatorSource();
    img->markMasterForRebuild();
    workspace()->refreshViews(img);
    workspace()->undoStateChanged(img);
    if (host)
        host->updateMenus();
}

void stepGroup(image *img, const History &way)
{
    const GroupResult result = way.groupStep(img);
    if (!result.done) {
        workspace()->messageBox(QString(), result.refusal);
        return;
    }
    historyChanged(img);
}

void stepHistory(image *img, const History &way)
{
    if (img->kind == 1) {
        image *target = targetOf(img);
        imgWindow *other = target && viewHost() ? viewHost()->findWindow(target) : nullptr;
        if (other)
            other->command(way.command);
        else if (target && target->kind != 1)
            stepHistory(target, way);
        else
            workspace()->messageBox(QString(),
                                    QCoreApplication::translate("imgWindow", way.noTarget));
        return;
    }
    const QList<image *> &list = img->*way.list;
    if (list.isEmpty())
        return;
    if (list.constLast()->groupFlag) {
        stepGroup(img, way);
        return;
    }
    way.step(img);
    historyChanged(img);
}

/// The dialog may be open when the window or the image goes.
void askName(imgWindow *window)
{
    const QPointer<imgWindow> standing(window);
    bool accepted = false;
    const QString name = QInputDialog::getText(
        window, QCoreApplication::translate("imgWindow", "Rename: %1").arg(window->img->name),
        QCoreApplication::translate("imgWindow", "Name"), QLineEdit::Normal, window->img->name,
        &accepted);
    if (accepted && standing && standing->validImage())
        renameImage(standing->img, name);
}
} // namespace

void imgWindow::command(int number)
{
    const bool group = number == kCommandGroupUndo || number == kCommandGroupRedo;
    if (!validImage() && !(group && !img)) {
        qDebug() << "invalid image:" << number;
        return;
    }
    const QPointF centre =
        img ? windowToImage(clientCentre().x(), clientCentre().y()) : QPointF(0, 0);
    if (ViewHost *host = viewHost())
        host->commandRunning(true, centre);
    if (number >= 1 && number <= kCommandLast)
        runCommand(number);
    // A command may have closed this window: nothing of it is read any more.
    if (ViewHost *host = viewHost())
        host->commandRunning(false, centre);
}

void imgWindow::runCommand(int number)
{
    if (panCommand(number) || viewCommand(number) || actCommand(number))
        return;
    ViewHost *host = viewHost();
    if (!host)
        return;
    if (number >= kCommandRecentFirst && number <= kCommandRecentLast) {
        host->openRecentFile(number - kCommandRecentFirst + 1);
        return;
    }
    switch (number) {
    case kCommandClose:
        close();
        break;
    case kCommandAnotherView:
        host->openView(img);
        break;
    case kCommandSave:
        host->saveImage(this);
        break;
    case kCommandSaveAs:
        host->showSaveDialog(this, false);
        break;
    case kCommandApply:
        host->operate();
        break;
    case kCommandLoadDialog:
        host->showLoadDialog();
        break;
    case kCommandNewDialog:
        host->showNewImageDialog();
        break;
    case kCommandFrameMargins:
        host->recordFrameMargins(this);
        break;
    default:
        host->hostCommand(this, number);
        break;
    }
}

void imgWindow::pan(int dx, int dy)
{
    panX = std::clamp(panX + dx, -kMostPan, kMostPan);
    panY = std::clamp(panY + dy, -kMostPan, kMostPan);
    savedPanX = std::clamp(savedPanX + dx, -kMostPan, kMostPan);
    savedPanY = std::clamp(savedPanY + dy, -kMostPan, kMostPan);
    viewMoved();
}

bool imgWindow::panCommand(int number)
{
    constexpr int far = 10;
    switch (number) {
    case kCommandUp10:
        pan(0, -far);
        return true;
    case kCommandUp:
        pan(0, -1);
        return true;
    case kCommandDown10:
        pan(0, far);
        return true;
    case kCommandDown:
        pan(0, 1);
        return true;
    case kCommandLeft10:
        pan(-far, 0);
        return true;
    case kCommandLeft:
        pan(-1, 0);
        return true;
    case kCommandRight10:
        pan(far, 0);
        return true;
    case kCommandRight:
        pan(1, 0);
        return true;
    default:
        return false;
    }
}

void imgWindow::fitView()
{
    zoomIndex = unityIndex;
    zoom = zooms ? zooms[zoomIndex] : 1.0F;
    panX = panY = 0;
    viewMoved();
}

bool imgWindow::viewCommand(int number)
{
    switch (number) {
    case kCommandCentre:
        panX = img->width / 2;
        panY = img->height / 2;
        viewMoved();
        return true;
    case kCommandZoomOne:
        zoomIndex = unityIndex;
        zoom = zooms ? zooms[zoomIndex] : 1.0F;
        viewMoved();
        return true;
    case kCommandHome:
        panX = panY = 0;
        viewMoved();
        return true;
    case kCommandGridColor:
    case kCommandGrid: {
        bool &setting =
            number == kCommandGrid ? workspace()->gridState : workspace()->gridColorToggle;
        setting = !setting;
        ongridchangetriggered();
        for (imgWindow *window : viewHost() ? viewHost()->windows : QList<imgWindow *>())
            window->ongridchangetriggered();
        return true;
    }
    case kCommandShowAtOne:
        showAt(1.0);
        return true;
    case kCommandZoomIn:
        zoomTo(zoomIndex + 1, clientCentre());
        return true;
    case kCommandZoomOut:
        zoomTo(zoomIndex - 1, clientCentre());
        return true;
    case kCommandFitView:
        fitView();
        return true;
    case kCommandFitWindow:
        fit(true);
        return true;
    case kCommandFillScreen:
        fillScreen();
        return true;
    default:
        return false;
    }
}

bool imgWindow::actCommand(int number)
{
    switch (number) {
    case kCommandUndo:
        stepHistory(img, kBack);
        return true;
    case kCommandRedo:
        stepHistory(img, kForth);
        return true;
    case kCommandGroupUndo:
        stepGroup(img, kBack);
        return true;
    case kCommandGroupRedo:
        stepGroup(img, kForth);
        return true;
    case kCommandSelectEntire:
    case kCommandSelectNone:
        selectWhole(img, number == kCommandSelectEntire);
        return true;
    case kCommandInvertMask:
        invertSelection(img);
        return true;
    case kCommandCopy:
        copyToClipboard(img);
        return true;
    case kCommandCut:
        cutToClipboard(img);
        return true;
    case kCommandPaste:
        pasteInto(img, windowToSample(clientCentre().x(), clientCentre().y()));
        return true;
    case kCommandPasteAsNew:
        pasteAsNew();
        return true;
    case kCommandPasteAsLayer:
        pasteAsLayer(img);
        return true;
    case kCommandClone:
        cloneImage(img);
        return true;
    case kCommandCloneScaled:
        cloneImage(img, size());
        return true;
    case kCommandRestoreCrop:
        restoreCrop(img);
        return true;
    case kCommandMakeLayered:
        showAsLayered(img);
        return true;
    case kCommandRename:
        askName(this);
        return true;
    case kCommandQuarterTurn:
        turnImage(img);
        return true;
    case kCommandRevert:
        if (revertImage(img))
            historyChanged(img);
        return true;
    default:
        return false;
    }
}
