// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/cropguides.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace
{
constexpr double kGolden = 1.6180339887498948;
constexpr int kQuarters = 10; // of the spiral; further in there is nothing to see
constexpr int kStepsAQuarter = 24;

/// Two lines down and two lines across the unit square, as far from either side.
std::vector<GuideLine> cross(double place)
{
    return {{{place, 0}, {place, 1}},
            {{1 - place, 0}, {1 - place, 1}},
            {{0, place}, {1, place}},
            {{0, 1 - place}, {1, 1 - place}}};
}

/// Quarter circles in the squares that are cut off a golden rectangle one after another,
/// from (0, 0) inwards; the rectangle is scaled to the unit square.
GuideLine spiral()
{
    GuideLine line;
    QPointF at(0, 0), toCentre(1, 0);
    double radius = 1.0;
    for (int quarter = 0; quarter < kQuarters; ++quarter, radius /= kGolden) {
        const QPointF centre = at + radius * toCentre, onwards(-toCentre.y(), toCentre.x());
        for (int step = quarter ? 1 : 0; step <= kStepsAQuarter; ++step) {
            const double angle = M_PI / 2 * step / kStepsAQuarter;
            const QPointF place =
                centre + radius * (std::sin(angle) * onwards - std::cos(angle) * toCentre);
            line.emplace_back(place.x() / kGolden, place.y());
        }
        at = centre + radius * onwards;
        toCentre = -onwards;
    }
    return line;
}

/// A diagonal, and the lines from the other two corners that meet it at right angles.
std::vector<GuideLine> triangles(QSizeF box)
{
    const double w = box.width(), h = box.height(), square = w * w + h * h;
    const QPointF foot(w * w * w / square, w * w * h / square); // of the corner (w, 0)
    return {{{0, 0}, {w, h}}, {{w, 0}, foot}, {{0, h}, QPointF(w, h) - foot}};
}

/// Lines that halve the corners.
std::vector<GuideLine> diagonals(QSizeF box)
{
    const double w = box.width(), h = box.height(), side = std::min(w, h);
    return {{{0, 0}, {side, side}},
            {{w, 0}, {w - side, side}},
            {{0, h}, {side, h - side}},
            {{w, h}, {w - side, h - side}}};
}
} // namespace

double cropAspectRatio(int entry)
{
    constexpr double ratios[] = {0.0,         1.0,         4.0 / 3.0,  7.0 / 5.0, 10.0 / 8.0,
                                 14.0 / 11.0, 20.0 / 16.0, 16.0 / 9.0, 1.85,      2.39};
    return entry >= 0 && entry < int(std::size(ratios)) ? ratios[entry] : 0.0;
}

QStringList cropGuideNames()
{
    const auto tr = [](const char *text) {
        return QCoreApplication::translate("CropGuides", text);
    };
    return {tr("None"),          tr("Golden Rectangle"), tr("Rule of Thirds"),
            tr("Golden Spiral"), tr("Golden Triangles"), tr("Diagonal")};
}

std::vector<GuideLine> cropGuideLines(int guide, QSizeF box, bool fromRight, bool fromBottom)
{
    std::vector<GuideLine> lines;
    bool unit = true;
    if (guide == kGuideGoldenRectangle) {
        lines = cross(1 / kGolden);
    } else if (guide == kGuideThirds) {
        lines = cross(1.0 / 3);
    } else if (guide == kGuideGoldenSpiral) {
        lines = {spiral()};
        if (box.height() > box.width()) // the long side of the rectangle goes down
            for (QPointF &place : lines.front())
                place = place.transposed();
    } else if (guide == kGuideGoldenTriangles || guide == kGuideDiagonal) {
        lines = guide == kGuideDiagonal ? diagonals(box) : triangles(box);
        unit = false;
    }
    for (GuideLine &line : lines)
        for (QPointF &place : line) {
            if (unit)
                place = {place.x() * box.width(), place.y() * box.height()};
            if (fromRight)
                place.setX(box.width() - place.x());
            if (fromBottom)
                place.setY(box.height() - place.y());
        }
    return lines;
}
