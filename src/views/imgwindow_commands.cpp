// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/areatools.h"
#include "core/image.h"
#include "core/undo.h"
#include "core/workspace.h"
#include "script/run/macrorecorder.h"
#include "views/clipboardacts.h"
#include "views/commitselection.h"
#include "views/imgwindow.h"
#include "views/viewhost.h"
#include "views/windowacts.h"

#include <QCoreApplication>
#include <QDebug>
#include <QInputDialog>
#include <QPointer>

#include <algorithm>
#include <array>
#include <utility>

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
    void (MacroRecorder::*record)(const image &);
};
const History kBack = {
    &image::undoList,
    undo,
    groupUndo,
    kCommandUndo,
    QT_TRANSLATE_NOOP("imgWindow", "Can't undo from master without<br>assigned target"),
    &MacroRecorder::undone};
const History kForth = {
    &image::redoList,
    redo,
    groupRedo,
    kCommandRedo,
    QT_TRANSLATE_NOOP("imgWindow", "Can't redo from master without<br>assigned target"),
    &MacroRecorder::redone};

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

void stepped(image *img, const History &way)
{
    if (MacroRecorder *recorder = viewHost() ? viewHost()->recorder() : nullptr)
        (recorder->*way.record)(*img);
    historyChanged(img);
}

void stepGroup(image *img, const History &way)
{
    const GroupResult result = way.groupStep(img);
    if (!result.done) {
        workspace()->messageBox(QString(), result.refusal);
        return;
    }
    stepped(img, way);
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
    stepped(img, way);
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

/// Takes Magnify for one use; a second time gives the tool before back at once.
void magnifyOnce(ViewHost *host)
{
    const int before = std::exchange(host->toolBefore, -1);
    const int now = workspace()->toolSelect;
    host->chooseTool(before >= 0 ? before : int(kToolMagnify));
    if (before < 0)
        host->toolBefore = now; // choosing a tool forgets it
}

using RatioSlot = void (imgWindow::*)();
/// From kCommandRatioFirst on.
constexpr std::array<RatioSlot, 13> kRatioSlots = {
    &imgWindow::ona10to1triggered, &imgWindow::ona9to1triggered, &imgWindow::ona8to1triggered,
    &imgWindow::ona7to1triggered,  &imgWindow::ona6to1triggered, &imgWindow::ona5to1triggered,
    &imgWindow::ona4to1triggered,  &imgWindow::ona3to1triggered, &imgWindow::ona2to1triggered,
    &imgWindow::ona1to1triggered,  &imgWindow::ona1to2triggered, &imgWindow::ona1to3triggered,
    &imgWindow::ona1to4triggered};
static_assert(kRatioSlots.size() == kCommandRatioLast - kCommandRatioFirst + 1);
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
    if (panCommand(number) || viewCommand(number) || overlayCommand(number))
        return;
    settleJobs(); // before anything changes the image that they read
    ViewHost *host = viewHost();
    if (actCommand(number) || areaCommand(number) || !host)
        return;
    if (number >= kCommandRecentFirst && number <= kCommandRecentLast) {
        host->openRecentFile(number - kCommandRecentFirst + 1);
        return;
    }
    switch (number) {
    case kCommandClose:
        close();
        break;
    case kCommandAntialias:
        workspace()->statusText(host->toggleToolAntialias());
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
    viewPanned();
}

/// By nine tenths of what is seen, so that the eye finds its place again.
void imgWindow::page(int dx, int dy)
{
    constexpr double share = 0.9;
    const QPointF seen = scaleToImage(width() * share, height() * share);
    pan(dx * std::max(1, int(std::min(seen.x(), double(kMostPan)))),
        dy * std::max(1, int(std::min(seen.y(), double(kMostPan)))));
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
    case kCommandPageUp:
        page(0, -1);
        return true;
    case kCommandPageDown:
        page(0, 1);
        return true;
    case kCommandPageLeft:
        page(-1, 0);
        return true;
    case kCommandPageRight:
        page(1, 0);
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

void imgWindow::zoomToPreset(bool closer)
{
    const auto after = std::upper_bound(presetZooms.begin(), presetZooms.end(), zoomIndex);
    const auto from =
        std::lower_bound(presetZooms.begin(), presetZooms.end(), indexFurtherOut() + 1);
    if (closer && after != presetZooms.end())
        zoomTo(*after, clientCentre());
    else if (!closer && from != presetZooms.begin())
        zoomTo(*(from - 1), clientCentre());
}

/// Pictures of one size, seen alike, are easily compared.
void imgWindow::copyViewToOthers()
{
    int others = 0;
    for (imgWindow *window : viewHost() ? viewHost()->windows : QList<imgWindow *>()) {
        if (window == this || !window->validImage() || window->img->width != img->width ||
            window->img->height != img->height)
            continue;
        window->zoomIndex = zoomIndex;
        window->zoom = zoom;
        window->panX = window->savedPanX = panX;
        window->panY = window->savedPanY = panY;
        window->viewMoved();
        ++others;
    }
    workspace()->statusText(others == 0 ? tr("No other view shows an image of this size")
                                        : tr("Views that follow: %1").arg(others));
}

bool imgWindow::viewCommand(int number)
{
    if (number >= kCommandRatioFirst && number <= kCommandRatioLast) {
        (this->*kRatioSlots[size_t(number - kCommandRatioFirst)])();
        return true;
    }
    switch (number) {
    case kCommandCentre:
        panX = img->width / 2;
        panY = img->height / 2;
        viewPanned();
        return true;
    case kCommandZoomOne:
        zoomIndex = unityIndex;
        zoom = zooms ? zooms[zoomIndex] : 1.0F;
        viewMoved();
        return true;
    case kCommandHome:
        panX = panY = 0;
        viewPanned();
        return true;
    case kCommandPresetIn:
    case kCommandPresetOut:
        zoomToPreset(number == kCommandPresetIn);
        return true;
    case kCommandFullScreen:
        toggleFullScreen();
        return true;
    case kCommandSameView:
        copyViewToOthers();
        return true;
    case kCommandShowAtOne:
        showAt(1.0);
        return true;
    case kCommandZoomIn:
        zoomTo(zoomIndex + 1, clientCentre());
        return true;
    case kCommandZoomOut:
        zoomTo(indexFurtherOut(), clientCentre());
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

/// What lies over, and behind, the pictures of all windows.
bool imgWindow::overlayCommand(int number)
{
    static constexpr struct {
        int command;
        bool Workspace::*setting;
        const char *on, *off;
    } toggles[] = {
        {kCommandGrid, &Workspace::gridState, QT_TR_NOOP("The pixel grid is shown"),
         QT_TR_NOOP("The pixel grid is hidden")},
        {kCommandGridColor, &Workspace::gridColorToggle, QT_TR_NOOP("Grids are light"),
         QT_TR_NOOP("Grids are dark")},
        {kCommandRulers, &Workspace::showRulers, QT_TR_NOOP("Rulers are shown"),
         QT_TR_NOOP("Rulers are hidden")},
        {kCommandSnapGrid, &Workspace::snapGridShown, QT_TR_NOOP("The snap grid is shown"),
         QT_TR_NOOP("The snap grid is hidden")},
        {kCommandSnapToGrid, &Workspace::snapToGrid, QT_TR_NOOP("Positions snap to the grid"),
         QT_TR_NOOP("Positions do not snap to the grid")},
        {kCommandSnapToGuides, &Workspace::snapToGuides, QT_TR_NOOP("Positions snap to guides"),
         QT_TR_NOOP("Positions do not snap to guides")},
        {kCommandGuides, &Workspace::guidesShown, QT_TR_NOOP("Guides are shown"),
         QT_TR_NOOP("Guides are hidden")},
        {kCommandNotationsShown, &Workspace::showNotations, QT_TR_NOOP("Notations are shown"),
         QT_TR_NOOP("Notations are hidden")},
        {kCommandChecker, &Workspace::checkerOn, QT_TR_NOOP("A checker stands behind transparency"),
         QT_TR_NOOP("Plain grey stands behind transparency")}};
    if (number == kCommandClearGuides) {
        clearGuides();
        return true;
    }
    for (const auto &toggle : toggles) {
        if (toggle.command != number)
            continue;
        bool &setting = workspace()->*toggle.setting;
        setting = !setting;
        ongridchangetriggered();
        for (imgWindow *window : viewHost() ? viewHost()->windows : QList<imgWindow *>()) {
            window->ongridchangetriggered();
            if (number == kCommandChecker)
                window->viewMoved();
        }
        workspace()->statusText(tr(setting ? toggle.on : toggle.off));
        if (viewHost())
            viewHost()->updateMenus();
        return true;
    }
    return false;
}

/// What concerns the gestures of the area tools.
bool imgWindow::areaCommand(int number)
{
    ViewHost *host = viewHost();
    if (!host)
        return false;
    switch (number) {
    case kCommandMaskJob:
        if (!gesture.rerunWand())
            workspace()->statusText(tr("Click in this image with the wand first"));
        return true;
    case kCommandMagnifyOnce:
        magnifyOnce(host);
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
        selectWhole(selectionTaker(this)->img, number == kCommandSelectEntire);
        return true;
    case kCommandInvertMask:
        invertSelection(selectionTaker(this)->img);
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
        turnImage(img, 6);
        return true;
    case kCommandQuarterTurnLeft:
        turnImage(img, 8);
        return true;
    case kCommandHalfTurn:
        turnImage(img, 3);
        return true;
    case kCommandFlipHorizontal:
        turnImage(img, 2);
        return true;
    case kCommandFlipVertical:
        turnImage(img, 4);
        return true;
    case kCommandTurnUpright:
        turnImageUpright(img);
        return true;
    case kCommandDevelop:
        developImage(img);
        return true;
    case kCommandRevert:
        if (revertImage(img))
            historyChanged(img);
        return true;
    default:
        return false;
    }
}
