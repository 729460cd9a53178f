// SPDX-License-Identifier: GPL-3.0-or-later
// The commands that select as the area tools do: the figure alone, crisp, and no undo record.
#include "batch/console.h"

#include "area/areastate.h"
#include "area/producers.h"
#include "area/smoothing.h"
#include "area/wand.h"
#include "batch/session.h"
#include "core/image.h"
#include "core/memory.h"
#include "core/workspace.h"

namespace
{
/// Figures may reach out of the image by as much as the widest image has.
constexpr int kFurthestPlace = 2 * kMaxImageSide;
/// Ellipses of more have a circumference that the point list does not hold.
constexpr double kMostRadius = 40743;
/// The closing point follows, and then the list is full.
constexpr int kMostCorners = kLastGrowingCount;
constexpr int kLeastCorners = 3;
constexpr int kMostTolerance = 100;
constexpr double kMostAmount = 10; ///< share of the smoothed selection, either way
constexpr const char *kBoxSides[] = {"LEFT", "TOP", "RIGHT", "BOTTOM"};
} // namespace

template <class Select>
bool Console::select(const Select &produce)
{
    const int64_t refused = memRecord.allocationFailures;
    if (produce(session->current()))
        return true;
    return fail(memRecord.allocationFailures != refused ? QStringLiteral("not enough memory")
                                                        : QStringLiteral("nothing to select"));
}

bool Console::readBox(const QStringList &arguments, int *box)
{
    for (int i = 0; i < 4; ++i)
        if (!readWhole(arguments[i], kBoxSides[i], -kFurthestPlace, kFurthestPlace, &box[i]))
            return false;
    return true;
}

bool Console::rect(const QStringList &arguments)
{
    int box[4];
    return readBox(arguments, box) && select([&box](image *img) {
               return rectSelect(img, box[0], box[1], box[2], box[3], false);
           });
}

bool Console::rellipse(const QStringList &arguments)
{
    int box[4];
    return readBox(arguments, box) &&
           select([&box](image *img) { return ellipseInBox(img, box[0], box[1], box[2], box[3]); });
}

bool Console::ellipse(const QStringList &arguments)
{
    double x = 0, y = 0, across = 0, down = 0;
    return readReal(arguments[0], "XC", -kFurthestPlace, kFurthestPlace, &x) &&
           readReal(arguments[1], "YC", -kFurthestPlace, kFurthestPlace, &y) &&
           readReal(arguments[2], "XR", 0, kMostRadius, &across) &&
           readReal(arguments[3], "YR", 0, kMostRadius, &down) &&
           select([=](image *img) { return ellipseSelect(img, x, y, across, down, false); });
}

bool Console::entire(const QStringList &)
{
    return select([](image *img) { return entireSelect(img); });
}

bool Console::wand(const QStringList &arguments)
{
    int64_t index = 0;
    int tolerance = 0;
    if (!readPlace(arguments, &index) ||
        !readWhole(arguments[2], "TOL", 0, kMostTolerance, &tolerance))
        return false;
    return select([index, tolerance](image *img) {
        return wandSelect(img, int(index % img->width), int(index / img->width), tolerance);
    });
}

/// Fills the shared list with the corners given; false, and an empty list, if one is wrong.
bool Console::readCorners(const QStringList &arguments)
{
    AreaState *state = areaState();
    if (arguments.size() % 2 != 0)
        return fail(QStringLiteral("each X needs a Y"));
    if (arguments.size() / 2 > kMostCorners)
        return fail(QStringLiteral("more than %1 corners").arg(kMostCorners));
    if (!state->points)
        return fail(QStringLiteral("not enough memory"));
    state->clearPoints();
    for (int i = 0; i < arguments.size(); i += 2) {
        int x = 0, y = 0;
        if (!readWhole(arguments[i], "X", -kFurthestPlace, kFurthestPlace, &x) ||
            !readWhole(arguments[i + 1], "Y", -kFurthestPlace, kFurthestPlace, &y)) {
            state->clearPoints();
            return false;
        }
        state->appendPoint(x, y);
    }
    return true;
}

/// Ends the figure of the shared list with a repeated point and selects it, which leaves the
/// list empty.
bool Console::selectFigure(AreaPoint repeated, bool (*produce)(image *, bool))
{
    AreaState *state = areaState();
    state->appendPoint(repeated.x, repeated.y);
    const bool done = select([produce](image *img) { return produce(img, true); });
    state->clearPoints();
    return done;
}

bool Console::polygon(const QStringList &arguments)
{
    if (!readCorners(arguments))
        return false;
    AreaState *state = areaState();
    const AreaPoint first = state->points[0];
    if (state->pointCount < kLeastCorners) {
        state->clearPoints();
        return fail(QStringLiteral("nothing to select"));
    }
    if (state->points[state->pointCount - 1] == first) // its corners close it already
        --state->pointCount;
    return selectFigure(first, polygonSelect);
}

bool Console::spline(const QStringList &arguments)
{
    if (!readCorners(arguments))
        return false;
    const AreaState *state = areaState();
    const int repeated = session->workspace()->openFigure ? state->pointCount - 1 : 0;
    return selectFigure(state->points[repeated], splineSelect);
}

bool Console::smooth(const QStringList &arguments)
{
    int radius = 0;
    double amount = 0;
    return readWhole(arguments[0], "RADIUS", 1, kMostSmoothingRadius, &radius) &&
           readReal(arguments[1], "AMOUNT", -kMostAmount, kMostAmount, &amount) &&
           select([=](image *img) { return smoothSelection(img, radius, amount); });
}
