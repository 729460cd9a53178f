// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "area/areastate.h"
#include "core/memory.h"

#include <utility>

class image;

/// The figures of the area tools, written into an image's selection: crisp, nothing smoothed.
/// All of them return false, with the selection as it was, if memory is short or there is
/// nothing to draw. With `clear` false each sample becomes the larger of old and new.

/// A rectangle of inclusive corners in any order. `square` makes the shorter side as long as
/// the longer one, away from (x1, y1).
bool rectSelect(image *img, int x1, int y1, int x2, int y2, bool square, bool clear = true);
/// An ellipse of radii as they are given, or a circle with the Euclidean length of both. None
/// if the circumference of the larger radius is above 256000.
bool ellipseSelect(image *img, double centerX, double centerY, double radiusX, double radiusY,
                   bool circle, bool clear = true);
/// The same from the box of inclusive corners, in any order, which it touches on all sides.
bool ellipseInBox(image *img, int x1, int y1, int x2, int y2, bool clear = true);
bool entireSelect(image *img, bool clear = true);
/// The curve through the points of the shared list.
bool splineSelect(image *img, bool clear = true);
/// The points of that curve, as splineSelect draws it. The last knot is to repeat the first one,
/// or, with the setting openFigure, the one before it; the points of a closed curve go round
/// once and a little further, over the same way. None without knots, without memory, or if the
/// curve is longer than some 10 million samples.
struct CurvePoints {
    AreaPoint *points = nullptr; ///< tracked
    int count = 0;
    CurvePoints() = default;
    CurvePoints(CurvePoints &&other) noexcept
        : points(std::exchange(other.points, nullptr)), count(other.count)
    {
    }
    CurvePoints &operator=(CurvePoints &&) = delete;
    ~CurvePoints() { upfree(&points); }
};
CurvePoints splinePoints(const AreaPoint *knots, int knotCount);
/// The polygon of the shared list (Polygon and Pencil).
bool polygonSelect(image *img, bool clear = true);
/// The current P-Shape, whose scale and centre are in image samples.
bool pshapeSelect(image *img, bool clear = true);
/// Brings the saved selection back, scaled if the image has another size.
bool redoSelect(image *img);
