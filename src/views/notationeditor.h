// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/notation.h"

#include <QPointF>

class QKeyEvent;
class QMouseEvent;
class QPainter;
class imgWindow;

/// Draws the notes of an image window's picture, and works on them with mouse and keys
/// while notes are being edited (ViewHost::editingNotations). The handlers return true if
/// they took the event; `position` is in image samples, snapped.
class NotationEditor
{
public:
    explicit NotationEditor(imgWindow *shownIn) : window(shownIn) {}

    bool press(const QMouseEvent &event, QPointF position);
    bool move(const QMouseEvent &event, QPointF position);
    bool release(const QMouseEvent &event, QPointF position);
    bool doubleClick(const QMouseEvent &event, QPointF position);
    bool keyPress(const QKeyEvent &event);
    /// The notes, if the setting showNotations is on, and the handles of the chosen one
    /// while notes are being edited. The painter works in client coordinates.
    void draw(QPainter *painter) const;

private:
    imgWindow *window;
};
