// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/areastate.h"
#include "area/areatools.h"
#include "core/workspace.h"
#include "views/areagesture.h"
#include "views/commitselection.h"
#include "views/imgwindow.h"
#include "views/viewhost.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

// Figures that are made of the points of the shared list, and the shape that is placed whole.

namespace
{
constexpr double kLeastDrag = 4.0; ///< client pixels; a shape dragged less has its own size
constexpr double kFarthestVertex = 1e8;

/// The first of the vertices nearest to a place, -1 without any.
int nearestVertex(const AreaState &state, QPoint to)
{
    int nearest = -1;
    double best = kFarthestVertex;
    for (int i = 0; i < state.pointCount; ++i) {
        const double distance =
            std::hypot(double(state.points[i].x) - to.x(), double(state.points[i].y) - to.y());
        if (distance < best) {
            best = distance;
            nearest = i;
        }
    }
    return nearest;
}
} // namespace

bool AreaGesture::figureOpen() const
{
    const int active = workspace()->toolSelect;
    return areaState() && areaState()->pointCount > 0 &&
           (active == kToolPolygon || active == kToolPolyspline);
}

// --- Vertices ---------------------------------------------------------------------------

/// Shift moves the nearest vertex, Alt takes it away, both put one behind it.
bool AreaGesture::chooseVertex(Qt::KeyboardModifiers keys)
{
    AreaState *state = areaState();
    const bool moves = keys & Qt::ShiftModifier, alters = keys & Qt::AltModifier;
    vertexIndex = state && (moves || alters) ? nearestVertex(*state, sampleUnder(pointer)) : -1;
    if (vertexIndex < 0)
        return false;
    vertexMove = true;
    vertexInsert = moves && alters;
    vertexDelete = alters && !moves;
    AreaPoint &vertex = state->points[vertexIndex];
    vertexFrom = {vertex.x, vertex.y};
    if (!alters)
        vertex = {sampleUnder(pointer).x(), sampleUnder(pointer).y()};
    return true;
}

void AreaGesture::finishVertex()
{
    AreaState *state = areaState();
    AreaPoint *points = state->points;
    const int last = state->pointCount - 1;
    if (vertexIndex <= last) {
        AreaPoint *vertex = points + vertexIndex, *end = points + state->pointCount;
        if (vertexDelete) {
            std::move(vertex + 1, end, vertex);
            --state->pointCount;
        } else if (!vertexInsert) {
            *vertex = {sampleUnder(pointer).x(), sampleUnder(pointer).y()};
        } else if (vertexIndex < last && state->pointCount <= kLastGrowingCount) {
            const AreaPoint next = vertex[1];
            std::move_backward(vertex + 1, end, end + 1);
            vertex[1] = {vertex->x + (next.x - vertex->x) / 2,
                         vertex->y + (next.y - vertex->y) / 2};
            ++state->pointCount;
        }
    }
    endPress();
    redraw();
}

// --- Points -----------------------------------------------------------------------------

/// The sample under the pointer. A pencil that rests, or a double click, adds nothing.
void AreaGesture::append() const
{
    AreaState *state = areaState();
    if (!state || !state->points)
        return;
    const QPoint at = sampleUnder(pointer);
    const AreaPoint point{at.x(), at.y()};
    if (state->pointCount == 0 || !(state->points[state->pointCount - 1] == point))
        state->appendPoint(at.x(), at.y());
}

/// The line from the last point to the pointer; with the first point it has no length.
void AreaGesture::showLineToNext()
{
    const AreaState *state = areaState();
    bandStart = bandEnd = pointer;
    if (state && state->pointCount > 0) {
        const AreaPoint &last = state->points[state->pointCount - 1];
        bandStart = QPointF(last.x, last.y);
    }
    rubberBand = true;
}

void AreaGesture::finishFigure(Qt::KeyboardModifiers keys)
{
    AreaState *state = areaState();
    if (!figureOpen())
        return;
    const int active = workspace()->toolSelect;
    const bool open = active == kToolPolyspline && workspace()->openFigure;
    const AreaPoint end = state->points[open ? state->pointCount - 1 : 0];
    state->appendPoint(end.x, end.y);
    endPress();
    joinBy(keys);
    commitSelection(window, active);
    state->clearPoints(); // of one that was too small to select anything
}

void AreaGesture::finishPencil(Qt::KeyboardModifiers keys)
{
    AreaState *state = areaState();
    if (!state || !state->points)
        return;
    append();
    state->appendPoint(state->points[0].x, state->points[0].y);
    joinBy(keys);
    commitSelection(window, kToolPencil);
    state->clearPoints();
}

// --- The P-Shape ------------------------------------------------------------------------

/// The press set its middle, the drag its half width and height; a click leaves it the size
/// that its figure had.
void AreaGesture::placeShape() const
{
    AreaState *state = areaState();
    if (!state)
        return;
    PShape &shape = state->shape;
    const QPointF pixel = window->scaleToImage(1.0, 1.0);
    const QPoint centre = sampleUnder(bandStart), reach = sampleUnder(bandEnd) - centre;
    shape.xCenter = centre.x();
    shape.yCenter = centre.y();
    shape.xScale = 2.0 * std::abs(reach.x());
    shape.yScale = 2.0 * std::abs(reach.y());
    if (std::abs(bandEnd.x() - bandStart.x()) < kLeastDrag * pixel.x() &&
        std::abs(bandEnd.y() - bandStart.y()) < kLeastDrag * pixel.y()) {
        shape.xScale = shape.baseWidth;
        shape.yScale = shape.baseHeight;
    } else if (workspace()->lockPAspect) {
        shape.xScale = std::max(shape.xScale, shape.yScale * shape.aspect());
        shape.yScale = shape.xScale / shape.aspect();
    }
}

/// Meta turns the shape while it is placed: Shift one way, Alt the other, both set it upright.
void AreaGesture::turnShape(Qt::KeyboardModifiers keys) const
{
    AreaState *state = areaState();
    const bool shift = keys & Qt::ShiftModifier, alt = keys & Qt::AltModifier;
    if (!state || !(keys & Qt::MetaModifier) || !(shift || alt))
        return;
    PShape &shape = state->shape;
    const double before = shape.rotation;
    if (shift && alt)
        shape.setRotation(0.0);
    else
        shape.rotateStep(shift ? 1 : -1, state->tick);
    if (shape.rotation != before && viewHost())
        viewHost()->shapeChanged();
}
