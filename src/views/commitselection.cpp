// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/commitselection.h"

#include "area/areastate.h"
#include "area/areatools.h"
#include "area/commitfigure.h"
#include "area/maskops.h"
#include "area/wand.h"
#include "core/image.h"
#include "core/workspace.h"
#include "script/run/macrorecorder.h"
#include "views/imgwindow.h"
#include "views/viewhost.h"
#include "views/windowacts.h"

#include <QCoreApplication>
#include <QPointer>

#include <iterator>
#include <optional>

namespace
{
QString translated(const char *text)
{
    return QCoreApplication::translate("imgWindow", text);
}

/// How the status line calls what each tool selects; null for what selects nothing.
constexpr const char *kToolNames[] = {QT_TRANSLATE_NOOP("imgWindow", "Rectangle"),
                                      QT_TRANSLATE_NOOP("imgWindow", "Numeric Rectangle"),
                                      QT_TRANSLATE_NOOP("imgWindow", "Ellipse"),
                                      QT_TRANSLATE_NOOP("imgWindow", "Entire"),
                                      nullptr, // Magnify
                                      QT_TRANSLATE_NOOP("imgWindow", "Polygon"),
                                      QT_TRANSLATE_NOOP("imgWindow", "Pencil"),
                                      nullptr, // no tool
                                      QT_TRANSLATE_NOOP("imgWindow", "Re-do"),
                                      QT_TRANSLATE_NOOP("imgWindow", "Magic Wand"),
                                      QT_TRANSLATE_NOOP("imgWindow", "Polyspline"),
                                      QT_TRANSLATE_NOOP("imgWindow", "P-Shape")};

AreaPoint pointIn(QPoint place)
{
    return {place.x(), place.y()};
}

/// A figure on its way into the selection of an image.
class Figure
{
public:
    Figure(imgWindow *drawnIn, imgWindow *takenBy, QPoint place, int drawnWith);
    /// Makes it the selection; false, with the selection as it was, if it could not be.
    bool select(bool dragged);
    bool outlineEmpty() const { return result.nothingToOutline; }
    bool lacksMemory() const { return result.shortOfMemory; }
    QString report() const;

private:
    bool joins() const;
    void record(MacroRecorder *recorder, int listed) const;

    imgWindow *window, *taker;
    image *img;
    QPoint offset; ///< of the image in the one that the figure was drawn in
    ToolFigure figure;
    FigureResult result;
};

Figure::Figure(imgWindow *drawnIn, imgWindow *takenBy, QPoint place, int drawnWith)
    : window(drawnIn), taker(takenBy), img(takenBy->img), offset(place)
{
    const Workspace &space = *workspace();
    const AreaGesture &gesture = window->gesture;
    // The producers make squares and circles by themselves.
    const bool constrain = gesture.constrain;
    QPoint start = sampleUnder(gesture.bandStart);
    QPoint end = sampleUnder(constrain ? gesture.bandEnd : gesture.shownEnd());
    figure.tool = drawnWith;
    figure.constrained = constrain && drawnWith != kToolNumericRectangle;
    if (drawnWith == kToolNumericRectangle) {
        start = {space.nrectX1, space.nrectY1};
        end = {space.nrectX2, space.nrectY2};
    } else if (drawnWith == kToolWand) {
        start = gesture.wandSample();
        figure.wand = [this]() { return window->gesture.produceWand(taker, offset); };
    }
    figure.first = pointIn(start - offset);
    figure.last = pointIn(end - offset);
    figure.shapeShift = pointIn(-offset);
}

/// In selectMode the operator is applied through the figure alone.
bool Figure::joins() const
{
    return !workspace()->selectMode && (window->addToMask || window->subtractFromMask);
}

bool Figure::select(bool dragged)
{
    AreaState *state = areaState();
    if (!state || !img->gmask || figure.empty())
        return false;
    if (!dragged)
        taker->beginMaskDrag();
    if (joins() && !taker->backSaved && !taker->saveBackMask()) {
        result.shortOfMemory = true;
        return false;
    }
    const bool recorded = taker->actRecorded; // by the drag, which has changed the selection
    MacroRecorder *recorder = viewHost() ? viewHost()->recorder() : nullptr;
    if (recorder)
        recorder->areaBegins(*img, joins(),
                             recorded && !img->undoList.isEmpty() ? img->undoList.last() : nullptr);
    std::optional<UndoRecord> undoRecord;
    if (!workspace()->selectMode && !recorded) // the operator makes its own
        undoRecord.emplace(img);
    if (figure.drawsList())
        for (int i = 0; i < state->pointCount; ++i)
            state->points[i] = {state->points[i].x - offset.x(), state->points[i].y - offset.y()};
    const int listed = state->pointCount;
    result = commitFigure(img, figure);
    if (!result.made)
        return false;
    if (undoRecord)
        undoRecord->keep();
    if (joins())
        combineMasks(img->gmask, taker->backCopy(), img->width, img->height, window->addToMask);
    if (recorder)
        record(recorder, listed);
    return true;
}

void Figure::record(MacroRecorder *recorder, int listed) const
{
    AreaJoin join = AreaJoin::Replace;
    if (joins())
        join = window->addToMask ? AreaJoin::Add : AreaJoin::Subtract;
    recorder->figureDone(*img, figure, join, listed);
}

QString Figure::report() const
{
    const QString name = translated(kToolNames[figure.tool]);
    if (result.shortOfMemory)
        return translated("%1: not enough memory for all of it").arg(name);
    const Bounds found = img->maskBounds();
    if (found.left > found.right || found.top > found.bottom)
        return translated("%1: nothing selected").arg(name);
    if (figure.tool == kToolWand)
        return wandStatus(workspace()->wandTolerance, workspace()->globalPick);
    return translated("%1: %2 x %3 selected at %4, %5")
        .arg(name)
        .arg(found.width)
        .arg(found.height)
        .arg(found.left)
        .arg(found.top);
}

void selectFigure(imgWindow *window, imgWindow *taker, QPoint offset, int tool, bool dragged)
{
    taker->finishJobs(true);
    Figure figure(window, taker, offset, tool);
    const bool made = figure.select(dragged);
    if (!made)
        workspace()->statusText(
            figure.lacksMemory()
                ? translated("Not enough memory: the selection is as it was")
                : translated("%1: nothing selected").arg(translated(kToolNames[tool])));
    else if (!workspace()->selectMode)
        workspace()->statusText(figure.report());
    selectionChanged(taker->img);
    if (made && workspace()->selectMode && viewHost())
        viewHost()->operate();
    if (figure.outlineEmpty())
        workspace()->messageBox(QString(), translated("Warning: No area selection was generated"));
}
} // namespace

imgWindow *selectionTaker(imgWindow *window, QPoint *offset)
{
    if (offset)
        *offset = QPoint(0, 0);
    const image *master = window->img;
    const image *layer = master->kind == 1 ? master->target : nullptr;
    if (!layer || !viewHost() || !master->layers.contains(const_cast<image *>(layer)))
        return window;
    imgWindow *taker = viewHost()->findWindow(layer);
    if (!taker || !taker->validImage())
        return window;
    if (offset)
        *offset = QPoint(layer->xOffset, layer->yOffset);
    return taker;
}

void commitSelection(imgWindow *window, int tool, bool dragged)
{
    if (!window->validImage())
        return;
    if (tool < 0)
        tool = workspace()->toolSelect;
    if (tool < 0 || tool >= int(std::size(kToolNames)) || !kToolNames[tool]) {
        window->refreshOverlay(); // Magnify selects nothing
        return;
    }
    QPoint offset;
    imgWindow *taker = selectionTaker(window, &offset);
    // The operator, or a box, may close windows.
    const QPointer<imgWindow> standing(window), standingTaker(taker);
    ViewHost *host = viewHost();
    if (taker != window)
        host->makeCurrent(taker);
    if (window->skipCommitOnce)
        window->skipCommitOnce = false;
    else
        selectFigure(window, taker, offset, tool, dragged);
    if (standingTaker)
        taker->addToMask = taker->subtractFromMask = false;
    if (!standing)
        return;
    window->addToMask = window->subtractFromMask = false;
    if (taker != window && host->isWindow(window))
        host->makeCurrent(window);
    window->refreshOverlay();
}
