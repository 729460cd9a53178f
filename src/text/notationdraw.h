// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/notation.h"

#include <QPointF>
#include <QRectF>

class QPainter;

/// How image samples fall on a drawing surface: point = sample * scale + offset.
struct NotationView {
    double scaleX = 1.0, scaleY = 1.0; ///< points a sample
    double offsetX = 0.0, offsetY = 0.0;
    QRectF visible; ///< what is seen of the surface, in points

    QPointF map(double x, double y) const { return {x * scaleX + offsetX, y * scaleY + offsetY}; }
};

/// Draws a note. Text, lines and arrow head have one size on the surface whatever the scale,
/// and stand out from any picture by a rim of the other lightness. A note with nothing to
/// show is a pin. Of a polygon only what is seen is drawn, no finer than the surface shows.
void drawNotation(QPainter *painter, const Notation &note, const NotationView &view);

/// The rectangle of a note's text, or of the pin that stands for a note with nothing to
/// show; empty for a note that is an arrow or a polygon without text. In points.
QRectF notationTextBox(const Notation &note, const NotationView &view);

/// A length of 1 point on a screen of 96 dots per inch, as the fonts are scaled here.
double notationUnit();
