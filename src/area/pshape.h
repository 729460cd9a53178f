// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>

struct AreaPoint;

constexpr int kShapeEntries = 256032;               ///< room of either list of a shape
constexpr double kShapeTurn = 0.017453292519943295; ///< one step of the rotation: a degree

/// One corner of a shape.
struct ShapePoint {
    double x, y;
};

/// A shape that can be placed at any size and angle. Two lists of points: the remembered one,
/// into which each rasterised figure goes, and the one that the P-Shape tool draws. Each is
/// allocated when it is first needed; what memory does not allow leaves both as they were.
class PShape
{
public:
    PShape() = default;
    ~PShape();
    PShape(const PShape &) = delete;
    PShape &operator=(const PShape &) = delete;

    /// Takes a figure over as the remembered shape, normalised to about -0.5 to 0.5 on both
    /// axes, and resets the rotation. `kindName` is how the status line calls it ("Polygonal");
    /// `openFigure` is the setting as it drew the figure.
    /// A figure without points, or with more than kShapeEntries, is not remembered.
    void remember(const AreaPoint *pts, int pointCount, const QString &kindName, bool openFigure);
    /// Makes the remembered shape the current one. False if there is none or memory is short.
    bool convert();
    /// What a current shape is besides its points.
    struct Form {
        QString name;
        double baseWidth = 1.0, baseHeight = 1.0; ///< of the figure, in samples
        bool closed = false;
    };
    /// Makes normalised points the current shape, unturned. False as for convert.
    bool setCurrent(const ShapePoint *pts, int pointCount, const Form &form);
    /// The current shape is there to be drawn.
    bool usable() const { return count > 0; }

    /// Where entry `index` (below count) of the current shape lies for the present scale,
    /// centre and rotation, the first two in whatever units the caller set.
    ShapePoint placed(int index) const;
    /// Entries that a line through the figure joins: all, or all but the last.
    int drawnCount() const { return closed && count > 0 ? count - 1 : count; }

    /// Turns by one degree (sign +1 or -1) if at least two ticks have passed since the last
    /// step. True if it turned.
    bool rotateStep(int sign, uint64_t tick);
    void setRotation(double radians);

    ShapePoint *polylist = nullptr;     ///< current shape, tracked
    ShapePoint *lastpolylist = nullptr; ///< remembered shape, tracked
    int count = 0, lastCount = 0;
    double baseWidth = 1.0, baseHeight = 1.0; ///< of the current shape's figure, in samples
    double aspect() const { return baseHeight != 0.0 ? baseWidth / baseHeight : 1.0; }
    double rotation = 0.0; ///< radians
    uint64_t timerStamp = 0;
    double xScale = 1.0, yScale = 1.0;
    double xCenter = 0.0, yCenter = 0.0;
    QString shapeName = QStringLiteral("?");
    /// The last entry, which would only close the figure, is not drawn: what openFigure was
    /// when the figure was.
    bool closed = false;

    QString kind; ///< of the remembered shape, as the status line calls it
    double lastBaseWidth = 1.0, lastBaseHeight = 1.0;
    bool lastClosed = false;

private:
    /// Of the angle last used: all points of a figure ask for the same.
    mutable double cachedAngle = 0.0, cosine = 1.0, sine = 0.0;
};
