// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>

struct AreaPoint;

/// One corner of a shape.
struct ShapePoint {
    double x, y;
};

/// A shape that can be placed at any size and angle. Two lists of points: the remembered one,
/// into which each rasterised figure goes, and the one that the P-Shape tool draws.
class PShape
{
public:
    PShape();
    ~PShape();
    PShape(const PShape &) = delete;
    PShape &operator=(const PShape &) = delete;

    /// Takes a figure over as the remembered shape, normalised to about -0.5 to 0.5 on both
    /// axes. `kind` is how the status line calls it ("Polygonal").
    void remember(const AreaPoint *pts, int pointCount, const QString &kind, bool isClosed);
    /// Makes the remembered shape the current one. False if there is none.
    bool convert();
    /// The current shape is there to be drawn.
    bool usable() const { return count > 0; }

    /// Where entry `index` of the current shape lies for the present scale, centre and
    /// rotation (which are in whatever units the caller set).
    ShapePoint placed(int index) const;
    /// Entries to draw: the last one is left out when the shape is closed.
    int drawnCount() const;

    /// Turns by one degree (sign +1 or -1) if at least two ticks have passed since the last
    /// step. True if it turned.
    bool rotateStep(int sign, uint64_t tick);
    void setRotation(double radians);

    ShapePoint *polylist = nullptr;     ///< current shape, tracked
    ShapePoint *lastpolylist = nullptr; ///< remembered shape, tracked
    int count = 0, lastCount = 0;
    double baseWidth = 1.0, baseHeight = 1.0;
    double aspect() const { return baseHeight != 0.0 ? baseWidth / baseHeight : 1.0; }
    double rotation = 0.0; ///< radians
    uint64_t timerStamp = 0;
    double xScale = 1.0, yScale = 1.0;
    double xCenter = 0.0, yCenter = 0.0;
    QString shapeName = QStringLiteral("?");
    QString kind; ///< of the remembered shape, as the status line calls it
    bool closed = true;

private:
    double cachedAngle = 0.0, cosine = 1.0, sine = 0.0;
};
