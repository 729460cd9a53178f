// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "area/producers.h"

#include <cstdint>
#include <memory>

class QPainter;
class imgWindow;
struct DashLook;

/// Draws the area tools' figure in the making over a window's picture: open figures, the
/// rubber band with the guides of the Crop operator, the P-Shape under the pointer. The
/// point list is that of all windows, so only the current one shows an open figure.
class AreaFigure
{
public:
    /// The painter works in device pixels.
    void draw(QPainter *painter, const imgWindow &window);
    /// How many lines and squares the last call drew; bounded, however long a figure is.
    int pieceCount() const { return pieces; }

private:
    const CurvePoints *curve(bool open);

    std::unique_ptr<CurvePoints> shownCurve; ///< that of the knots below
    uint64_t knots = 0;                      ///< what tells them from others
    int pieces = 0;
};
