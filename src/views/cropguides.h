// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointF>
#include <QSizeF>
#include <QStringList>

#include <vector>

/// The guide lines of the Crop operator, by the numbers that settings keep.
enum CropGuide {
    kGuideNone = 0,
    kGuideGoldenRectangle = 1,
    kGuideThirds = 2,
    kGuideGoldenSpiral = 3,
    kGuideGoldenTriangles = 4,
    kGuideDiagonal = 5
};

/// What the guides are called, in the order of their numbers.
QStringList cropGuideNames();
/// Longer side by shorter side for an entry of the aspect list; 0 where any will do.
double cropAspectRatio(int entry);

/// A line through points.
using GuideLine = std::vector<QPointF>;

/// The lines of a guide for a box of this size with its corner at (0, 0). A spiral winds
/// inwards from the corner of the box where a drag began: `fromRight`, `fromBottom`.
std::vector<GuideLine> cropGuideLines(int guide, QSizeF box, bool fromRight, bool fromBottom);
