// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCursor>
#include <QPoint>
#include <QPointF>

#include <optional>

class QKeyEvent;
class QMouseEvent;
class imgWindow;

/// The eyedropper in an image window: while the host has it armed, a press of the left button
/// reads a square of samples, a drag reads on, and the release ends it. Escape and the right
/// button give it up. The handlers return true if they took the event.
class Dropper
{
public:
    explicit Dropper(imgWindow *shownIn) : window(shownIn) {}

    bool press(const QMouseEvent &event);
    bool move(const QMouseEvent &event);
    bool release(const QMouseEvent &event);
    bool keyPress(const QKeyEvent &event);
    /// The host armed it, or took that back: the cursor follows.
    void armingChanged();
    /// Shows the eyedropper's cursor while it is armed.
    void showCursor();
    static bool armed();

private:
    void read(QPointF client);
    void end(bool hasRead);

    imgWindow *window;
    QCursor pipette;            ///< an arrow until it was first needed
    bool reading = false;       ///< the left button is down
    bool rightWentDown = false; ///< its release belongs to the dropper too
    std::optional<QPoint> last; ///< sample read last
};
