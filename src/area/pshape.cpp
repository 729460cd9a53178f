// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/pshape.h"

#include "area/areastate.h"
#include "core/memory.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr int64_t kLowestStart = 1000000; ///< of the search for the box of a figure
constexpr int64_t kHighestStart = -1000000;
constexpr uint64_t kTicksBetweenSteps = 2;

/// The extent of a figure along one axis.
struct Extent {
    int64_t low = kLowestStart, high = kHighestStart;

    void take(int64_t value)
    {
        low = std::min(low, value);
        high = std::max(high, value);
    }
    int64_t middle() const { return (low + high) / 2; }
    /// Never 0: points are divided by it.
    double length() const { return high == low ? 1.0 : double(high - low); }
};

bool fits(int pointCount)
{
    return pointCount > 0 && pointCount <= kShapeEntries;
}

bool makeRoom(ShapePoint **list, const char *label)
{
    return *list || ucalloc(list, kShapeEntries, sizeof(ShapePoint), label);
}
} // namespace

PShape::~PShape()
{
    upfree(&polylist);
    upfree(&lastpolylist);
}

void PShape::remember(const AreaPoint *pts, int pointCount, const QString &kindName,
                      bool openFigure)
{
    if (!pts || !fits(pointCount) || !makeRoom(&lastpolylist, "pshape lastpolylist"))
        return;
    Extent across, down;
    for (int i = 0; i < pointCount; ++i) {
        across.take(pts[i].x);
        down.take(pts[i].y);
    }
    const int64_t middleX = across.middle(), middleY = down.middle();
    lastBaseWidth = across.length();
    lastBaseHeight = down.length();
    for (int i = 0; i < pointCount; ++i)
        lastpolylist[i] = {double(pts[i].x - middleX) / lastBaseWidth,
                           double(pts[i].y - middleY) / lastBaseHeight};
    lastCount = pointCount;
    lastClosed = openFigure;
    kind = kindName;
    setRotation(0.0);
}

bool PShape::convert()
{
    return setCurrent(lastpolylist, lastCount, {kind, lastBaseWidth, lastBaseHeight, lastClosed});
}

bool PShape::setCurrent(const ShapePoint *pts, int pointCount, const Form &form)
{
    if (!pts || !fits(pointCount) || !makeRoom(&polylist, "pshape polylist"))
        return false;
    std::copy_n(pts, pointCount, polylist);
    count = pointCount;
    shapeName = form.name;
    baseWidth = form.baseWidth;
    baseHeight = form.baseHeight;
    closed = form.closed;
    setRotation(0.0);
    return true;
}

ShapePoint PShape::placed(int index) const
{
    if (rotation != cachedAngle) {
        cachedAngle = rotation;
        cosine = std::cos(rotation);
        sine = std::sin(rotation);
    }
    const double x = polylist[index].x * xScale, y = polylist[index].y * yScale;
    return {x * cosine - y * sine + xCenter, x * sine + y * cosine + yCenter};
}

bool PShape::rotateStep(int sign, uint64_t tick)
{
    if (tick - timerStamp < kTicksBetweenSteps)
        return false;
    timerStamp = tick;
    setRotation(rotation + (sign < 0 ? -kShapeTurn : kShapeTurn));
    return true;
}

void PShape::setRotation(double radians)
{
    rotation = std::isfinite(radians) ? radians : 0.0;
}
