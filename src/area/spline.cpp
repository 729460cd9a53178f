// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/areastate.h"
#include "area/numbers.h"
#include "area/polygon.h"
#include "area/producers.h"
#include "core/memory.h"
#include "core/workspace.h"

#include <algorithm>
#include <cmath>

namespace
{
/// Steps between the ends of a curve: coordinates of a script are not to take minutes.
constexpr double kMostSteps = 1 << 24;
/// Zeroed entries past the last knot, which the length and the curve's end read.
constexpr int kSpareKnots = 12;
constexpr int kSparePoints = 50;

struct CurvePlace {
    double x, y;
};

/// A Catmull-Rom curve through knots that are repeated at both ends as it needs them.
class Curve
{
public:
    Curve(int listCount)
        : xs(size_t(listCount) + kSpareKnots, "X knots in polyspline"),
          ys(size_t(listCount) + kSpareKnots, "Y knots in polyspline")
    {
    }
    bool usable() const { return xs && ys; }

    void setKnots(const AreaPoint *pts, int n, bool open)
    {
        const bool round = !open && n > 2;
        for (int i = 0; i < 3; ++i)
            add(round ? pts[n - 3 + i] : pts[0]);
        for (int i = 0; i < n; ++i)
            add(pts[i]);
        for (int i = 0; i < 3 && !open; ++i)
            add(round ? pts[i] : pts[n - 1]);
    }

    /// The step of t from one sample to the next; 0 if there would be too many.
    double step() const
    {
        double sum = 0.0;
        for (int i = 0; i < knots; ++i)
            sum += std::max(std::fabs(xs[size_t(i) + 3] - xs[size_t(i) + 2]),
                            std::fabs(ys[size_t(i) + 3] - ys[size_t(i) + 2]));
        const double steps = sum * 1.414;
        if (steps > kMostSteps)
            return 0.0;
        return steps < 1.0 ? 1.0 : 1.0 / steps;
    }

    /// Goes along the curve and calls `keep` for the samples to be joined by lines: those that
    /// differ from the one before on both axes.
    template <class Keep>
    void sweep(double dt, Keep keep) const
    {
        // The sweep begins far before the curve, where every sample is its start, so only the
        // first of them counts; the steps decide where the samples on the curve lie. It ends
        // where the curve does, after which every sample is its end.
        const double begin = (1.0 / knots - 6.0) * 3.0;
        CurvePlace before = at(0.0);
        keep(before);
        double t = begin - dt;
        while (t <= 0.0)
            t += dt;
        for (bool ended = false; !ended; t += dt) {
            const CurvePlace here = at(t);
            if (here.x != before.x && here.y != before.y)
                keep(here);
            before = here;
            ended = t >= 1.0;
        }
    }

private:
    void add(const AreaPoint &knot)
    {
        xs[size_t(knots)] = knot.x;
        ys[size_t(knots)] = knot.y;
        ++knots;
    }
    CurvePlace at(double t) const
    {
        const int segments = knots - 3;
        const double u = std::clamp(t, 0.0, 1.0) * segments;
        // The last place reads one entry past the knots, with a weight of zero.
        const int i = std::min(int(u), segments);
        const double f = u - i;
        return {mix(&xs[size_t(i)], f), mix(&ys[size_t(i)], f)};
    }
    static double mix(const double *p, double f)
    {
        return p[1] + f * (0.5 * p[2] - 0.5 * p[0] +
                           f * (p[0] - 2.5 * p[1] + 2 * p[2] - 0.5 * p[3] +
                                f * (1.5 * p[1] - 0.5 * p[0] - 1.5 * p[2] + 0.5 * p[3])));
    }

    TrackedBuffer<double> xs, ys;
    int knots = 0;
};
} // namespace

CurvePoints splinePoints(const AreaPoint *knots, int knotCount)
{
    CurvePoints result;
    const bool open = workspace()->openFigure;
    const int used = open ? knotCount : knotCount - 1;
    if (!knots || used < 1)
        return result;
    Curve curve(knotCount);
    if (!curve.usable())
        return result;
    curve.setKnots(knots, used, open);
    const double dt = curve.step();
    if (dt == 0.0)
        return result;
    int count = 0;
    curve.sweep(dt, [&count](const CurvePlace &) { ++count; });
    if (!ucalloc(&result.points, size_t(count) + kSparePoints, sizeof(AreaPoint),
                 "spline temp point array"))
        return result;
    curve.sweep(dt, [&result](const CurvePlace &place) {
        result.points[result.count++] = {truncatedSample(place.x), truncatedSample(place.y)};
    });
    return result;
}

bool splineSelect(image *img, bool clear)
{
    const AreaState *const shared = areaState();
    if (!shared)
        return false;
    const CurvePoints curve = splinePoints(shared->points, shared->pointCount);
    return curve.points && polySelect(img, curve.points, curve.count, clear);
}
