// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/commitselection.h"

#include "area/areastate.h"
#include "area/areatools.h"
#include "area/maskops.h"
#include "area/outline.h"
#include "area/producers.h"
#include "area/smoothing.h"
#include "area/wand.h"
#include "core/image.h"
#include "core/workspace.h"
#include "views/imgwindow.h"
#include "views/viewhost.h"
#include "views/windowacts.h"

#include <QCoreApplication>
#include <QPointer>

#include <cstdlib>
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

bool drawsFigure(int tool)
{
    return tool != kToolEntire && tool != kToolRedo && tool != kToolWand;
}

bool drawsList(int tool)
{
    return tool == kToolPolygon || tool == kToolPencil || tool == kToolPolyspline;
}

/// A figure on its way into the selection of an image.
class Figure
{
public:
    Figure(imgWindow *drawnIn, imgWindow *takenBy, QPoint place, int drawnWith)
        : window(drawnIn), taker(takenBy), img(takenBy->img), offset(place), tool(drawnWith)
    {
    }
    /// Makes it the selection; false, with the selection as it was, if it could not be.
    bool select(bool dragged);
    bool outlineEmpty() const { return nothingToOutline; }
    bool lacksMemory() const { return shortOfMemory; }
    QString report() const;

private:
    bool empty() const;
    bool make();
    bool produce(bool clear) const;
    bool produceShape(bool clear) const;
    void smooth();
    void join() const;

    imgWindow *window, *taker;
    image *img;
    QPoint offset; ///< of the image in the one that the figure was drawn in
    int tool;
    int listed = 0; ///< points of the shared list
    bool nothingToOutline = false;
    bool shortOfMemory = false;
};

bool Figure::empty() const
{
    constexpr int leastPoints = 3;
    const AreaState *state = areaState();
    if (drawsList(tool))
        return state->pointCount < leastPoints;
    return (tool == kToolPShape && !state->shape.usable()) ||
           (tool == kToolRedo && state->savedSelection.empty());
}

bool Figure::select(bool dragged)
{
    AreaState *state = areaState();
    if (!state || !img->gmask || empty())
        return false;
    if (!dragged)
        taker->beginMaskDrag();
    const bool selectMode = workspace()->selectMode;
    const bool joins = !selectMode && (window->addToMask || window->subtractFromMask);
    if (joins && !taker->backSaved && !taker->saveBackMask()) {
        shortOfMemory = true;
        return false;
    }
    std::optional<UndoRecord> record;
    if (!selectMode && !taker->actRecorded) // the operator makes its own
        record.emplace(img);
    if (drawsList(tool))
        for (int i = 0; i < state->pointCount; ++i)
            state->points[i] = {state->points[i].x - offset.x(), state->points[i].y - offset.y()};
    if (!make())
        return false;
    if (record)
        record->keep();
    if (joins)
        join();
    return true;
}

bool Figure::make()
{
    const Workspace &space = *workspace();
    listed = areaState()->pointCount;
    if (!produce(true))
        return false;
    const auto smooths = smoothingSwitch(tool);
    if (smooths && space.*smooths && space.mainOpIndex != kOpMeasure)
        smooth();
    img->saveMask();
    if (space.outlineObject && tool != kToolRedo) {
        const OutlineResult outlined = outlineSelect(img);
        nothingToOutline = outlined == OutlineResult::Nothing;
        shortOfMemory = shortOfMemory || outlined == OutlineResult::NoMemory;
    }
    if (tool != kToolRedo)
        areaState()->savedSelection.copyFrom(*img);
    return true;
}

/// A line would be paler than it was drawn: it is drawn again over its smooth border.
void Figure::smooth()
{
    const Workspace &space = *workspace();
    shortOfMemory = !smoothSelection(img, space.aarange, space.aaamount);
    if (!drawsFigure(tool) || (space.filledFigure && !space.openFigure))
        return;
    areaState()->pointCount = listed;
    produce(false);
}

bool Figure::produce(bool clear) const
{
    const Workspace &space = *workspace();
    const AreaGesture &gesture = window->gesture;
    const QPoint start = sampleUnder(gesture.bandStart) - offset;
    // The producers make squares and circles by themselves.
    const QPoint end =
        sampleUnder(gesture.constrain ? gesture.bandEnd : gesture.shownEnd()) - offset;
    switch (tool) {
    case kToolRectangle:
        return rectSelect(img, start.x(), start.y(), end.x(), end.y(), gesture.constrain, clear);
    case kToolNumericRectangle:
        return rectSelect(img, space.nrectX1 - offset.x(), space.nrectY1 - offset.y(),
                          space.nrectX2 - offset.x(), space.nrectY2 - offset.y(), false, clear);
    case kToolEllipse:
        return ellipseSelect(img, start.x(), start.y(), std::abs(end.x() - start.x()),
                             std::abs(end.y() - start.y()), gesture.constrain, clear);
    case kToolEntire:
        return entireSelect(img, clear);
    case kToolPolygon:
    case kToolPencil:
        return polygonSelect(img, clear);
    case kToolPolyspline:
        return splineSelect(img, clear);
    case kToolRedo:
        return redoSelect(img);
    case kToolWand:
        return window->gesture.produceWand(taker, offset);
    default:
        return produceShape(clear);
    }
}

/// The shape stands where it was put in the window; its centre goes along into a layer.
bool Figure::produceShape(bool clear) const
{
    PShape &shape = areaState()->shape;
    const double x = shape.xCenter, y = shape.yCenter;
    shape.xCenter -= offset.x();
    shape.yCenter -= offset.y();
    const bool made = pshapeSelect(img, clear);
    shape.xCenter = x;
    shape.yCenter = y;
    return made;
}

void Figure::join() const
{
    combineMasks(img->gmask, taker->backCopy(), img->width, img->height, window->addToMask);
}

QString Figure::report() const
{
    const QString name = translated(kToolNames[tool]);
    if (shortOfMemory)
        return translated("%1: not enough memory for all of it").arg(name);
    const Bounds found = img->maskBounds();
    if (found.left > found.right || found.top > found.bottom)
        return translated("%1: nothing selected").arg(name);
    if (tool == kToolWand)
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
