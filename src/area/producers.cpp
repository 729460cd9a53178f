// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/producers.h"

#include "area/areatools.h"
#include "area/numbers.h"
#include "area/polygon.h"
#include "core/image.h"
#include "core/rows.h"
#include "core/workspace.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr double kLongestCircumference = 256000.0;
/// A side this far off every picture may stand anywhere beyond without changing what is
/// selected, and a script's rectangle of any height is drawn.
constexpr int kFarAway = 1000000;

/// Where a side from `from` ends if it is `length` long and goes towards `to`.
int sideEnd(int from, int to, int64_t length)
{
    return truncatedSample(to < from ? double(from - length) : double(from + length));
}

/// The corners of a rectangle, the first one again at the end.
bool selectCorners(image *img, int left, int top, int right, int bottom, bool clear)
{
    for (int *side : {&left, &top, &right, &bottom})
        *side = std::clamp(*side, -kFarAway, kFarAway);
    const AreaPoint corners[] = {
        {left, top}, {right, top}, {right, bottom}, {left, bottom}, {left, top}};
    return polySelect(img, corners, 5, clear);
}
} // namespace

bool rectSelect(image *img, int x1, int y1, int x2, int y2, bool square, bool clear)
{
    if (square) {
        const int64_t side = std::max(std::llabs(int64_t(x2) - x1), std::llabs(int64_t(y2) - y1));
        x2 = sideEnd(x1, x2, side);
        y2 = sideEnd(y1, y2, side);
    }
    const auto [left, right] = std::minmax(x1, x2);
    const auto [top, bottom] = std::minmax(y1, y2);
    AreaState *const shared = areaState();
    if (shared && workspace()->toolSelect == kToolRectangle) {
        shared->rectLeft = left;
        shared->rectTop = top;
        shared->rectRight = right;
        shared->rectBottom = bottom;
        shared->rectKnown = true;
    }
    return selectCorners(img, left, top, right, bottom, clear);
}

bool ellipseSelect(image *img, double centerX, double centerY, double radiusX, double radiusY,
                   bool circle, bool clear)
{
    AreaState *const shared = areaState();
    if (!shared || !shared->points || !std::isfinite(centerX + centerY + radiusX + radiusY))
        return false;
    radiusX = std::fabs(radiusX);
    radiusY = std::fabs(radiusY);
    if (circle)
        radiusX = radiusY = std::sqrt(radiusX * radiusX + radiusY * radiusY);
    const double circumference = 2 * M_PI * std::max(radiusX, radiusY);
    if (circumference > kLongestCircumference)
        return false;
    // About one sample of the longer radius's circle; infinite, so a single point, without one.
    const double step = 2 * M_PI / circumference;
    int count = 0;
    for (double a = 0.0; a < 2 * M_PI && count < kPointEntries; a += step) {
        const AreaPoint at = {truncatedSample(centerX + radiusX * std::cos(a) + 0.5),
                              truncatedSample(centerY + radiusY * std::sin(a) + 0.5)};
        if (count == 0 || at != shared->points[count - 1])
            shared->points[count++] = at;
    }
    shared->pointCount = count;
    return polySelect(img, nullptr, 0, clear);
}

bool ellipseInBox(image *img, int x1, int y1, int x2, int y2, bool clear)
{
    // Points are rounded to the nearest sample, so an ellipse about the middle of the box with
    // half of the distance between its outer samples as radius reaches these samples and no
    // further. None of its points lies further from an extreme than half a step, which is less
    // than the half sample that rounding gives back.
    const double middleX = (double(x1) + x2) / 2, middleY = (double(y1) + y2) / 2;
    return ellipseSelect(img, middleX, middleY, (double(x2) - x1) / 2, (double(y2) - y1) / 2, false,
                         clear);
}

bool entireSelect(image *img, bool clear)
{
    if (!img)
        return polySelect(img, nullptr, 0, clear); // which says so
    const bool selected = selectCorners(img, 0, 0, img->width - 1, img->height - 1, clear);
    if (selected && workspace()->mainOpIndex == kOpCenterSelection) {
        img->xCenter = img->width / 2;
        img->yCenter = img->height / 2;
    }
    return selected;
}

bool polygonSelect(image *img, bool clear)
{
    return polySelect(img, nullptr, 0, clear);
}

bool pshapeSelect(image *img, bool clear)
{
    AreaState *const shared = areaState();
    if (!shared || !shared->points || !shared->shape.usable())
        return false;
    const PShape &shape = shared->shape;
    // All entries: a shape that was drawn open says so by `closed`, and an open figure's last
    // entry is left out below.
    shared->pointCount = std::min(shape.count, kPointEntries);
    for (int i = 0; i < shared->pointCount; ++i) {
        const ShapePoint at = shape.placed(i);
        shared->points[i] = {truncatedSample(at.x), truncatedSample(at.y)};
    }
    bool &openFigure = workspace()->openFigure;
    const bool usual = std::exchange(openFigure, shape.closed);
    const bool selected = polySelect(img, nullptr, 0, clear);
    openFigure = usual;
    return selected;
}

bool redoSelect(image *img)
{
    const AreaState *const shared = areaState();
    if (!img || !img->gmask || !shared || shared->savedSelection.empty())
        return false;
    const Mask *source = &shared->savedSelection;
    Mask scaled;
    if (source->width != img->width || source->height != img->height) {
        if (!scaled.init(img->width, img->height))
            return false;
        Mask::rescale(source, &scaled);
        source = &scaled;
    }
    copyPlane(source->mask, img->gmask, img->width, img->height);
    return true;
}
