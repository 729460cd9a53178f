// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointF>

class QKeyEvent;
class QMouseEvent;
class imgWindow;

/// Turns the mouse in an image window into figures of the active area tool. The handlers
/// return true if they took the event; `position` is in image samples, snapped.
///
/// The state is open for the overlay, which draws it. Places are in image samples, so that a
/// figure stays where it is while the view moves.
class AreaGesture
{
public:
    explicit AreaGesture(imgWindow *shownIn) : window(shownIn) {}

    bool press(const QMouseEvent &event, QPointF position);
    bool move(const QMouseEvent &event, QPointF position);
    bool release(const QMouseEvent &event, QPointF position);
    bool keyPress(const QKeyEvent &event);
    /// Gives up what is going on; the selection stays as it is.
    void cancel();
    /// The cursor that the active tool has over the picture.
    void showCursor();

    bool rubberBand = false;    ///< a band, or the line to a figure's next point, is drawn
    QPointF bandStart, bandEnd; ///< of the band
    bool moveBand = false;      ///< the right button moves the band
    QPointF grab;               ///< where it was grabbed
    bool constrain = false;     ///< square or circle
    bool wandDown = false;
    int wandStartY = 0; ///< in window pixels
    int wandStartTolerance = 0;
    int vertexIndex = -1; ///< the vertex being worked on
    bool vertexMove = false, vertexDelete = false, vertexInsert = false;
    QPointF pointer; ///< where the mouse is

private:
    imgWindow *window;
};
