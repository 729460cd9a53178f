// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/commitfigure.h"

#include "area/areatools.h"
#include "area/outline.h"
#include "area/producers.h"
#include "area/smoothing.h"
#include "area/wand.h"
#include "core/image.h"
#include "core/workspace.h"

#include <cstdlib>

namespace
{
bool drawsFigure(int tool)
{
    return tool != kToolEntire && tool != kToolRedo && tool != kToolWand;
}

/// The shape stands where it was put in the window; its centre goes along into a layer.
bool produceShape(image *img, AreaPoint shift, bool clear)
{
    PShape &shape = areaState()->shape;
    const double x = shape.xCenter, y = shape.yCenter;
    shape.xCenter += shift.x;
    shape.yCenter += shift.y;
    const bool made = pshapeSelect(img, clear);
    shape.xCenter = x;
    shape.yCenter = y;
    return made;
}

bool produce(image *img, const ToolFigure &figure, bool clear)
{
    const AreaPoint first = figure.first, last = figure.last;
    switch (figure.tool) {
    case kToolRectangle:
    case kToolNumericRectangle:
        return rectSelect(img, first.x, first.y, last.x, last.y, figure.constrained, clear);
    case kToolEllipse:
        return ellipseSelect(img, first.x, first.y, std::abs(double(last.x) - first.x),
                             std::abs(double(last.y) - first.y), figure.constrained, clear);
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
        return figure.wand ? figure.wand()
                           : wandSelect(img, first.x, first.y, workspace()->wandTolerance);
    case kToolPShape:
        return produceShape(img, figure.shapeShift, clear);
    default:
        return false;
    }
}

/// A line would be paler than it was drawn: it is drawn again over its smooth border.
bool smooth(image *img, const ToolFigure &figure, int listed)
{
    const Workspace &space = *workspace();
    const bool smoothed = smoothSelection(img, space.aarange, space.aaamount);
    if (drawsFigure(figure.tool) && (!space.filledFigure || space.openFigure)) {
        areaState()->pointCount = listed;
        produce(img, figure, false);
    }
    return smoothed;
}
} // namespace

bool ToolFigure::drawsList() const
{
    return tool == kToolPolygon || tool == kToolPencil || tool == kToolPolyspline;
}

bool ToolFigure::empty() const
{
    constexpr int leastPoints = 3;
    const AreaState *state = areaState();
    if (!state)
        return true;
    if (drawsList())
        return state->pointCount < leastPoints;
    return (tool == kToolPShape && !state->shape.usable()) ||
           (tool == kToolRedo && state->savedSelection.empty());
}

FigureResult commitFigure(image *img, const ToolFigure &figure)
{
    const Workspace &space = *workspace();
    FigureResult result;
    if (!img->gmask || figure.empty())
        return result;
    const int listed = areaState()->pointCount;
    if (!produce(img, figure, true))
        return result;
    result.made = true;
    const auto smooths = smoothingSwitch(figure.tool);
    if (smooths && space.*smooths && space.mainOpIndex != kOpMeasure)
        result.shortOfMemory = !smooth(img, figure, listed);
    img->saveMask();
    if (space.outlineObject && figure.tool != kToolRedo) {
        const OutlineResult outlined = outlineSelect(img);
        result.nothingToOutline = outlined == OutlineResult::Nothing;
        result.shortOfMemory = result.shortOfMemory || outlined == OutlineResult::NoMemory;
    }
    if (figure.tool != kToolRedo)
        areaState()->savedSelection.copyFrom(*img);
    return result;
}
