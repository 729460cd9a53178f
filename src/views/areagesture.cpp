// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/areagesture.h"

#include "area/areastate.h"
#include "area/areatools.h"
#include "core/workspace.h"
#include "views/commitselection.h"
#include "views/cropguides.h"
#include "views/imgwindow.h"
#include "views/viewhost.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPixmap>
#include <QPointer>
#include <QRectF>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace
{
constexpr double kLeastBand = 4.0; ///< client pixels; a smaller band of Magnify is a click

/// Control makes squares and circles of their bands.
bool constrains(int tool)
{
    return tool == kToolRectangle || tool == kToolEllipse || tool == kToolMagnify;
}

bool drawsBand(int tool)
{
    return constrains(tool) || tool == kToolPShape;
}

bool growsByClicks(int tool)
{
    return tool == kToolPolygon || tool == kToolPolyspline;
}

/// Desktops have no cursor for a magnifying glass.
QCursor magnifier(double ratio)
{
    constexpr int side = 24, middle = 9;
    constexpr double radius = 6.0;
    QPixmap picture(QSize(side, side) * ratio);
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPointF rim(middle + radius * M_SQRT1_2, middle + radius * M_SQRT1_2);
    for (const auto &[color, width] : {std::pair(Qt::white, 4.0), std::pair(Qt::black, 2.0)}) {
        painter.setPen(QPen(color, width, Qt::SolidLine, Qt::RoundCap));
        painter.drawEllipse(QPointF(middle, middle), radius, radius);
        painter.drawLine(rim, QPointF(side - 4, side - 4));
    }
    return {picture, middle, middle};
}
} // namespace

QPoint sampleUnder(QPointF position)
{
    const auto whole = [](double v) {
        constexpr double farthest = 1 << 28;
        return int(std::floor(std::clamp(v, -farthest, farthest)));
    };
    return {whole(position.x()), whole(position.y())};
}

// --- Press ------------------------------------------------------------------------------

bool AreaGesture::press(const QMouseEvent &event, QPointF position)
{
    pointer = position;
    if (event.button() == Qt::RightButton) {
        moveBand = leftDown && drawsBand(tool);
        grab = position;
        return true;
    }
    if (event.button() != Qt::LeftButton)
        return false;
    if (viewHost() && viewHost()->eyepointPending)
        window->choosePreview(event.localPos());
    else
        pressLeft(event);
    return true;
}

void AreaGesture::pressLeft(const QMouseEvent &event)
{
    settle();
    endPress(); // of a button whose release was lost
    tool = workspace()->toolSelect;
    leftDown = true;
    constrain = constrains(tool) && event.modifiers() & Qt::ControlModifier;
    bandStart = bandEnd = pointer;
    if (growsByClicks(tool)) {
        if (!chooseVertex(event.modifiers()))
            showLineToNext();
    } else if (tool == kToolWand) {
        pressWand(event);
    } else if (tool == kToolPencil) {
        append();
    } else {
        rubberBand = drawsBand(tool);
        if (tool == kToolPShape)
            placeShape();
    }
    redraw();
}

/// The button is up, or as good as that. A figure that grows by clicks stays open.
void AreaGesture::endPress()
{
    leftDown = false;
    rubberBand = false;
    wandDown = false;
    vertexMove = vertexDelete = vertexInsert = false;
    vertexIndex = -1;
}

// --- Move -------------------------------------------------------------------------------

bool AreaGesture::move(const QMouseEvent &event, QPointF position)
{
    pointer = position;
    if (leftDown && !(event.buttons() & Qt::LeftButton)) // the release went elsewhere
        growsByClicks(tool) ? endPress() : cancel();
    if (leftDown) {
        dragLeft(event);
        return true;
    }
    const bool line = figureOpen();
    if (line)
        showLineToNext();
    if (line || rubberBand)
        redraw();
    rubberBand = line; // the list may have been finished in another window
    return false;
}

void AreaGesture::dragLeft(const QMouseEvent &event)
{
    if (wandDown) {
        dragWand(event);
        return;
    }
    AreaState *state = areaState();
    if (vertexMove && !vertexInsert && !vertexDelete && state && vertexIndex < state->pointCount)
        state->points[vertexIndex] = {sampleUnder(pointer).x(), sampleUnder(pointer).y()};
    else if (tool == kToolPencil)
        append();
    else
        followBand(event);
    redraw();
}

void AreaGesture::followBand(const QMouseEvent &event)
{
    if (moveBand && event.buttons() & Qt::RightButton) {
        bandStart += pointer - grab;
        bandEnd += pointer - grab;
        grab = pointer;
    } else {
        bandEnd = pointer;
    }
    constrain = constrains(tool) && event.modifiers() & Qt::ControlModifier;
    if (tool == kToolPShape) {
        turnShape(event.modifiers());
        placeShape();
    }
}

int AreaGesture::bandTool() const
{
    return tool >= 0 ? tool : workspace()->toolSelect;
}

double AreaGesture::bandAspect() const
{
    const Workspace &space = *workspace();
    const int used = bandTool();
    const bool cropping = space.mainOpIndex == kOpCrop;
    const bool holds = (used == kToolRectangle && (space.useCropGuides || cropping)) ||
                       (used == kToolEllipse && (space.useOvalGuides || cropping));
    return holds ? cropAspectRatio(space.cropAspect) : 0.0;
}

/// In whole samples, so that what is seen is what will be selected. A rectangle counts both
/// of its edges, the radii of an ellipse only one.
QPointF AreaGesture::shownEnd() const
{
    const double aspect = bandAspect();
    if (!constrain && aspect == 0.0)
        return bandEnd;
    const QPoint start = sampleUnder(bandStart), end = sampleUnder(bandEnd);
    const bool radii = bandTool() == kToolEllipse;
    const int edge = radii ? 0 : 1;
    int wide = std::abs(end.x() - start.x()) + edge, high = std::abs(end.y() - start.y()) + edge;
    if (constrain)
        wide = high = radii ? int(std::hypot(wide, high) + 0.5) : std::max(wide, high);
    else if (wide >= high)
        high = std::max(edge, int(wide / aspect + 0.5));
    else
        wide = std::max(edge, int(high / aspect + 0.5));
    return {double(start.x() + (end.x() < start.x() ? edge - wide : wide - edge)),
            double(start.y() + (end.y() < start.y() ? edge - high : high - edge))};
}

void AreaGesture::keysHeld(Qt::KeyboardModifiers keys)
{
    const bool held = keys & Qt::ControlModifier;
    if (!leftDown || !constrains(tool) || held == constrain)
        return;
    constrain = held;
    redraw();
}

// --- Release ----------------------------------------------------------------------------

bool AreaGesture::release(const QMouseEvent &event, QPointF position)
{
    pointer = position;
    if (event.button() == Qt::LeftButton && leftDown)
        releaseLeft(event);
    else if (event.button() == Qt::RightButton)
        releaseRight(event);
    else
        return false;
    return true;
}

/// Nothing of this object is touched after a commit, which may close the window.
void AreaGesture::releaseLeft(const QMouseEvent &event)
{
    const Qt::KeyboardModifiers keys = event.modifiers();
    if (vertexMove) {
        finishVertex();
        return;
    }
    if (drawsBand(tool))
        followBand(event);
    endPress();
    switch (tool) {
    case kToolMagnify:
        zoomByBand(event.localPos());
        commitSelection(window, tool);
        giveToolBack();
        break;
    case kToolNumericRectangle:
        askRectangle(keys);
        break;
    case kToolPolygon:
    case kToolPolyspline:
        append();
        showLineToNext();
        redraw();
        break;
    case kToolPencil:
        finishPencil(keys);
        break;
    case kToolPShape:
        if (!areaState() || !areaState()->shape.usable()) {
            workspace()->statusText(imgWindow::tr(
                "There is no P-Shape yet: draw a figure and choose Convert to P-Shape"));
            redraw();
            break;
        }
        joinBy(keys & Qt::MetaModifier ? Qt::NoModifier : keys);
        commitSelection(window, tool);
        break;
    case kToolWand:
        if (wandDragged) {
            endWandDrag();
            break;
        }
        if (!window->wandClick) // a command has completed the drag already
            break;
        [[fallthrough]];
    default:
        joinBy(keys);
        commitSelection(window, tool);
        break;
    }
}

void AreaGesture::releaseRight(const QMouseEvent &event)
{
    if (std::exchange(moveBand, false) || leftDown)
        return;
    const int active = workspace()->toolSelect;
    if (growsByClicks(active)) {
        finishFigure(event.modifiers());
    } else if (active == kToolMagnify) {
        window->zoomTo(std::max(window->indexFurtherOut(), 0), event.localPos());
        giveToolBack();
    }
}

/// How the selection in the making is joined with the one that stands. An operator that is
/// applied at once takes the figure alone.
void AreaGesture::joinBy(Qt::KeyboardModifiers keys) const
{
    const bool waits = !workspace()->selectMode, add = keys & Qt::ShiftModifier;
    window->addToMask = waits && add;
    window->subtractFromMask = waits && !add && keys & Qt::AltModifier;
}

void AreaGesture::askRectangle(Qt::KeyboardModifiers keys) const
{
    ViewHost *host = viewHost();
    const QPointer<imgWindow> standing(window);
    joinBy(keys);
    const bool accepted = host && host->askNumericRectangle(window);
    if (!standing || !window->validImage())
        return;
    if (accepted)
        commitSelection(window, kToolNumericRectangle);
    else
        window->addToMask = window->subtractFromMask = false;
}

void AreaGesture::zoomByBand(QPointF client) const
{
    const QPointF pixel = window->scaleToImage(1.0, 1.0);
    const QRectF box = QRectF(bandStart, shownEnd()).normalized();
    if (box.width() >= kLeastBand * pixel.x() && box.height() >= kLeastBand * pixel.y())
        window->zoomToBox(box);
    else
        window->zoomTo(std::min(window->zoomIndex + 1, kLastFitIndex), client);
}

/// Magnify may have been taken for one use.
void AreaGesture::giveToolBack() const
{
    ViewHost *host = viewHost();
    if (host && host->toolBefore >= 0)
        host->chooseTool(std::exchange(host->toolBefore, -1));
}

// --- Keys, giving up --------------------------------------------------------------------

bool AreaGesture::keyPress(const QKeyEvent &event)
{
    const ViewHost *host = viewHost();
    AreaState *state = areaState();
    const bool open = figureOpen();
    switch (event.key()) {
    case Qt::Key_Escape:
        if (!leftDown && !open && host && host->eyepointPending) {
            window->command(kCommandEyepoint);
            return true;
        }
        if (!leftDown && !open)
            return false;
        cancel();
        return true;
    case Qt::Key_Backspace:
        if (!open || leftDown || !state)
            return false;
        --state->pointCount;
        if (figureOpen())
            showLineToNext();
        else
            endPress();
        redraw();
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (!open || leftDown || event.modifiers() & Qt::ControlModifier)
            return false;
        finishFigure(event.modifiers());
        return true;
    default:
        return false;
    }
}

void AreaGesture::cancel()
{
    AreaState *state = areaState();
    const bool vertex = vertexMove && leftDown;
    if (leftDown && tool == kToolWand)
        stopWand();
    else if (vertex && !vertexInsert && !vertexDelete && state && vertexIndex < state->pointCount)
        state->points[vertexIndex] = {vertexFrom.x(), vertexFrom.y()};
    else if (!vertex && state && (figureOpen() || (leftDown && tool == kToolPencil)))
        state->clearPoints();
    endPress();
    moveBand = false;
    redraw();
}

void AreaGesture::letGo()
{
    if (wandDown || wandDragged)
        workspace()->wandTolerance = wandStartTolerance;
    wandDragged = moveBand = false;
    endPress();
}

// --- Looks ------------------------------------------------------------------------------

/// The picture and the selection's outline stand; only what lies over them is drawn again.
void AreaGesture::redraw() const
{
    window->paintOverlayOnly = true;
    window->update();
}

void AreaGesture::showCursor()
{
    if (window->cursorTaken())
        return;
    const bool zooms = workspace()->toolSelect == kToolMagnify;
    if (window->cursor().shape() == (zooms ? Qt::BitmapCursor : Qt::CrossCursor))
        return;
    window->setCursor(zooms ? magnifier(window->devicePixelRatioF()) : QCursor(Qt::CrossCursor));
}
