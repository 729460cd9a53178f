// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/snapping.h"

#include <cmath>

namespace
{
double snapAxis(double place, const QList<int> &guides, double reach, int spacing, int offset)
{
    const int *nearest = nullptr;
    double best = reach;
    for (const int &guide : guides) {
        const double distance = std::fabs(guide - place);
        if (nearest ? distance < best : distance <= best) {
            nearest = &guide;
            best = distance;
        }
    }
    if (nearest)
        return *nearest;
    return spacing > 0 ? offset + std::floor((place - offset) / spacing + 0.5) * spacing : place;
}
} // namespace

QPointF snapPosition(QPointF position, const SnapRules &rules)
{
    return {snapAxis(position.x(), rules.guidesX, rules.reachX, rules.gridX, rules.gridOffsetX),
            snapAxis(position.y(), rules.guidesY, rules.reachY, rules.gridY, rules.gridOffsetY)};
}
