// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/memory.h"
#include "views/viewrender.h"

#include <QBasicTimer>
#include <QImage>
#include <QObject>
#include <QRect>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

class QPainter;
class QWidget;

/// How lines over a picture look: dashes of two colours, so that they are seen on any.
struct DashLook {
    uint32_t first = 0xFF000000, second = 0xFFFFFFFF;
    int dash = 4;  ///< length in device pixels
    int line = 1;  ///< width in device pixels
    int phase = 0; ///< device pixels that the dashes have moved on

    bool operator==(const DashLook &other) const = default;
    int period() const { return 2 * dash; }
};

/// The look that the settings aSelectColor ("#rrggbb #rrggbb"; black and white if it cannot
/// be read) and dashLength (2 to 20 points; 4 below, 20 above) ask for.
DashLook dashLook(double devicePixelRatio);

/// The outline of an image's area selection as a view shows it. Tracing looks at the mask;
/// drawing at another phase does not.
class SelectionOutline
{
public:
    /// Finds the pixels of the view that lie on the edge of the selection: where the mask
    /// crosses half, or, if it reaches half nowhere in the image, where it leaves zero.
    /// False, with nothing to draw, if no edge is seen or memory is short.
    bool trace(const image &img, const ViewGeometry &view, int lineWidth);
    /// Draws it, the painter working in device pixels.
    void draw(QPainter *painter, const DashLook &look);
    void clear();

    bool seen() const { return !patches.empty(); }
    /// Rectangles that hold all of it, from top to bottom, in device pixels.
    const std::vector<QRect> &places() const { return patches; }
    int traceCount() const { return traces; }

private:
    void findPatches(const uint8_t *tiles, int across, int down);
    void expand(const DashLook &look);

    std::unique_ptr<TrackedBuffer<uint8_t>> kinds; ///< an EdgeKind for each pixel of the view
    QImage picture;                                ///< valid within the patches
    DashLook drawn;                                ///< how `picture` shows it
    bool expanded = false;
    std::vector<QRect> patches;
    int64_t originX = 0, originY = 0; ///< dashes lie still in the image while it is panned
    int traces = 0;
};

/// Lets the dashes of a window's outline move: calls `step` eight times a second while
/// `mayMove` allows it. Else there is no timer until the window is painted, activated or
/// shown again.
class OutlineMarch : public QObject
{
public:
    OutlineMarch(QWidget *watched, std::function<bool()> allowed, std::function<void()> moved);

    /// Starts or stops as `mayMove` says now.
    void settle();
    bool running() const { return timer.isActive(); }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    std::function<bool()> mayMove;
    std::function<void()> step;
    QBasicTimer timer;
};
