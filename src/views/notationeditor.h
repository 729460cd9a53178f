// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/notation.h"
#include "views/notationhit.h"

#include <QPointF>
#include <QPolygon>

class QKeyEvent;
class QMouseEvent;
class QPainter;
class image;
class imgWindow;
struct NotationView;

/// Draws the notes of an image window's picture, and works on them with mouse and keys
/// while notes are being edited (ViewHost::editingNotations) and shown. The handlers return
/// true if they took the event; `position` is in image samples, snapped.
///
/// What a drag changes is kept aside and shown in this window alone; the picture's own notes
/// change once, when the drag ends, as one act.
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

    /// The chosen note of the picture, -1 for none.
    int chosenNote() const;
    /// Chooses a note (-1: none) without telling the host.
    void choose(int note);
    /// Gives up what is going on and the choice, and takes the cursor back.
    void stop();

private:
    enum class Work { None, Drag, NewNote, Polygon };

    bool active() const;
    NotationView view() const;
    bool pastThreshold(QPointF client) const;
    void tellChoice() const;
    void showCursor(const QMouseEvent &event);
    void repaint() const;
    void giveUp();

    // Mouse
    void grab(const QMouseEvent &event, const NotationHit &hit, QPointF position);
    bool reshape(const NotationHit &hit, QPointF position);
    void dragTo(QPointF position);
    void finishDrag();
    void finishNew(bool arrow, QPointF position);
    void addCorner(QPointF position);
    bool closesPolygon(QPointF client) const;
    void finishPolygon();
    void append(const Notation &note, bool edit);

    // Keys
    bool workKey(int key);
    bool stepKey(const QKeyEvent &event);
    void nudge(int dx, int dy);
    void removeChosen();
    void next(int step);
    bool historyKey(const QKeyEvent &event);

    imgWindow *window;
    int chosen = -1;
    Work work = Work::None;
    NotationHit grabbed;       ///< what is dragged
    bool grabbedWhole = false; ///< all parts follow
    bool moved = false;        ///< the drag is past the threshold
    Notation draft;            ///< the note as the drag leaves it, or the polygon being drawn
    QPointF pressedAt;         ///< in image samples
    QPointF pressedClient;
    QPointF pointer; ///< in image samples
    bool cursorShown = false;
};
