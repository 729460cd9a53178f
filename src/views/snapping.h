// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QPointF>

/// Where positions on a picture are drawn to, all of it in image samples.
struct SnapRules {
    QList<int> guidesX, guidesY;       ///< empty: no snapping to guides
    double reachX = 0.0, reachY = 0.0; ///< how near a guide has to be
    int gridX = 0, gridY = 0;          ///< spacing of the grid; 0: no snapping to it
    int gridOffsetX = 0, gridOffsetY = 0;
};

/// The position with each axis on its nearest guide within reach, else on the nearest line
/// of the grid, else as it was.
QPointF snapPosition(QPointF position, const SnapRules &rules);
