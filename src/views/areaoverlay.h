// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QPainter;
class imgWindow;

/// Draws the area tools' figure in the making over a window's picture: open figures, the
/// rubber band with the guides of the Crop operator, the P-Shape under the pointer. The
/// painter works in device pixels.
void drawAreaFigure(QPainter *painter, const imgWindow &window);
