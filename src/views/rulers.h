// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "views/viewrender.h"

#include <QPalette>
#include <QPixmap>
#include <QString>

class QPainter;

constexpr int kRulerThickness = 20; ///< in points, along the left and the upper edge

/// Marks of a ruler: a numbered one each `major` units, `parts` - 1 smaller ones between.
struct RulerScale {
    double major;
    int parts;
    int decimals; ///< of the numbers
};

/// The finest scale of 1, 2 or 5 times a power of ten whose numbered marks stand at least
/// `leastMajor` pixels apart and its smaller ones `leastMinor`. With `whole` no mark stands
/// for a part of a unit.
RulerScale rulerScale(double pixelsPerUnit, double leastMajor, double leastMinor, bool whole);

/// All that decides how the rulers of a window look.
struct RulerLook {
    ViewGeometry view;
    double ratio = 1.0;            ///< device pixels in a point
    int unit = 0;                  ///< as the setting rulerUnit
    double perX = 1.0, perY = 1.0; ///< image samples in a unit
    qint64 palette = 0;            ///< its cache key

    bool operator==(const RulerLook &other) const;
};

/// The rulers of one window, kept as a pair of pixmaps until their look changes.
class Rulers
{
public:
    /// Draws both in device pixels, with the places of the pointer marked (negative: none).
    void draw(QPainter *painter, const RulerLook &look, const QPalette &palette, QPoint pointer);
    /// How often the pixmaps were drawn anew.
    int drawCount() const { return draws; }

private:
    QPixmap top, left; ///< the corner belongs to `top`
    RulerLook drawn;
    int draws = 0;
};

/// Short name of a ruler unit, as it stands in the corner.
QString rulerUnitName(int unit);
/// Image samples in a unit, at so many dots per inch.
double samplesPerRulerUnit(int unit, int dpi);
