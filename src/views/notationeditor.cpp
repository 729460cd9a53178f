// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/notationeditor.h"

#include "core/image.h"
#include "core/workspace.h"
#include "text/notationdraw.h"
#include "views/imgwindow.h"
#include "views/keytable.h"
#include "views/notationacts.h"
#include "views/viewhost.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <utility>

namespace
{
constexpr int kMostCorners = 256032;
constexpr int kLeastCorners = 3;
constexpr int kFarStep = 10;
constexpr int kMostHandles = 500; // more would lie on each other
constexpr double kHandle = 4.0, kCloseReach = 8.0;

using Part = NotationHit::Part;

QPoint rounded(QPointF position)
{
    const auto whole = [](double v) {
        constexpr double farthest = 1 << 30;
        return int(std::floor(std::clamp(v, -farthest, farthest) + 0.5));
    };
    return {whole(position.x()), whole(position.y())};
}

Qt::CursorShape cursorFor(const NotationHit &hit)
{
    switch (hit.part) {
    case Part::None:
        return Qt::CrossCursor; // a press makes something
    case Part::Tail:
    case Part::Head:
    case Part::Corner:
        return Qt::PointingHandCursor;
    default:
        return Qt::SizeAllCursor;
    }
}

void drawHandle(QPainter *painter, QPointF at)
{
    const double side = kHandle * notationUnit();
    painter->setPen(QPen(Qt::black, notationUnit()));
    painter->setBrush(Qt::white);
    painter->drawRect(QRectF(at.x() - side, at.y() - side, 2 * side, 2 * side));
}

void drawHandles(QPainter *painter, const Notation &note, const NotationView &view)
{
    if (const QRectF box = notationTextBox(note, view); !box.isEmpty()) {
        const double margin = 3.0 * notationUnit();
        const QRectF around = box.adjusted(-margin, -margin, margin, margin);
        painter->setBrush(Qt::NoBrush);
        painter->setPen(QPen(Qt::black, notationUnit()));
        painter->drawRect(around);
        painter->setPen(QPen(Qt::white, notationUnit(), Qt::DashLine));
        painter->drawRect(around);
    }
    if (note.pointing) {
        drawHandle(painter, view.map(note.tailX, note.tailY));
        drawHandle(painter, view.map(note.headX, note.headY));
    }
    int room = kMostHandles;
    for (const QPoint &corner : note.points) {
        const QPointF at = view.map(corner.x(), corner.y());
        if (!view.visible.contains(at))
            continue;
        if (room-- == 0)
            break;
        drawHandle(painter, at);
    }
}
} // namespace

// --- Standing ---------------------------------------------------------------------------

bool NotationEditor::active() const
{
    return viewHost() && viewHost()->editingNotations && workspace() &&
           workspace()->showNotations && window->validImage();
}

int NotationEditor::chosenNote() const
{
    return window->validImage() && chosen < window->img->notations.size() ? chosen : -1;
}

void NotationEditor::choose(int note)
{
    giveUp();
    chosen = note;
    repaint();
}

void NotationEditor::stop()
{
    choose(-1);
    if (cursorShown)
        window->unsetCursor();
    cursorShown = false;
}

NotationView NotationEditor::view() const
{
    NotationView view;
    view.visible = window->rect();
    const QPointF step = window->scaleToImage(1.0, 1.0);
    if (step.x() <= 0.0 || step.y() <= 0.0)
        return {};
    view.scaleX = 1.0 / step.x();
    view.scaleY = 1.0 / step.y();
    view.offsetX = -window->panX * view.scaleX;
    view.offsetY = -window->panY * view.scaleY;
    return view;
}

void NotationEditor::tellChoice() const
{
    repaint();
    viewHost()->notationsChanged(window->img, chosenNote());
}

/// The picture stands in the window's cache; only what lies over it is drawn again.
void NotationEditor::repaint() const
{
    window->paintOverlayOnly = true;
    window->update();
}

void NotationEditor::giveUp()
{
    work = Work::None;
    moved = false;
    draft = Notation();
}

bool NotationEditor::pastThreshold(QPointF client) const
{
    return (client - pressedClient).manhattanLength() >= QApplication::startDragDistance();
}

void NotationEditor::showCursor(const QMouseEvent &event)
{
    if (window->cursor().shape() == Qt::OpenHandCursor) // the space bar is held
        return;
    if (active()) {
        const NotationHit hit =
            work == Work::None
                ? hitNotation(window->img->notations, chosenNote(), view(), event.localPos())
                : NotationHit();
        if (work != Work::Drag)
            window->setCursor(cursorFor(hit));
        cursorShown = true;
    } else if (cursorShown) {
        window->unsetCursor();
        cursorShown = false;
    }
}

// --- Mouse ------------------------------------------------------------------------------

bool NotationEditor::press(const QMouseEvent &event, QPointF position)
{
    if (!active() || event.button() != Qt::LeftButton)
        return false;
    pressedAt = pointer = position;
    pressedClient = event.localPos();
    moved = false;
    if (work == Work::Polygon) {
        addCorner(position);
        return true;
    }
    const NotationHit hit =
        hitNotation(window->img->notations, chosenNote(), view(), event.localPos());
    if (hit.note >= 0) {
        grab(event, hit, position);
    } else if (event.modifiers() & Qt::ShiftModifier) {
        work = Work::Polygon;
        draft = Notation();
        addCorner(position);
    } else {
        work = Work::NewNote;
    }
    repaint();
    return true;
}

void NotationEditor::grab(const QMouseEvent &event, const NotationHit &hit, QPointF position)
{
    const bool known = hit.note == chosenNote();
    chosen = hit.note;
    if (!known)
        tellChoice();
    else if (event.modifiers() & Qt::ShiftModifier && reshape(hit, position))
        return;
    work = Work::Drag;
    grabbed = hit;
    grabbedWhole = event.modifiers() & Qt::ControlModifier;
    draft = notationAt(*window->img, hit.note);
}

/// Shift on the chosen polygon: an edge gets a corner, a corner goes.
bool NotationEditor::reshape(const NotationHit &hit, QPointF position)
{
    Notation changed = notationAt(*window->img, hit.note);
    QPolygon &points = changed.points;
    if (hit.part == Part::Edge && points.size() < kMostCorners)
        points.insert(hit.point + 1, rounded(position));
    else if (hit.part == Part::Corner && points.size() > kLeastCorners)
        points.remove(hit.point);
    else
        return false;
    beginNotationAct(window->img, hit.note, NotationAct::Reshape);
    setNotation(window->img, hit.note, std::move(changed));
    endNotationAct(window->img, hit.note);
    return true;
}

bool NotationEditor::move(const QMouseEvent &event, QPointF position)
{
    showCursor(event);
    if (!active() || work == Work::None)
        return false;
    pointer = position;
    moved = moved || pastThreshold(event.localPos());
    if (work == Work::Drag && moved)
        dragTo(position);
    repaint();
    return true;
}

void NotationEditor::dragTo(QPointF position)
{
    if (chosenNote() < 0) {
        giveUp(); // the note went meanwhile
        return;
    }
    const QPoint by = rounded(position) - rounded(pressedAt);
    draft = notationAt(*window->img, chosen);
    moveNotationPart(&draft, grabbed, grabbedWhole, by.x(), by.y());
}

bool NotationEditor::release(const QMouseEvent &event, QPointF position)
{
    if (work == Work::None || event.button() != Qt::LeftButton)
        return false;
    if (!active()) {
        giveUp();
        return false;
    }
    moved = moved || pastThreshold(event.localPos());
    if (work == Work::Drag && moved)
        dragTo(position);
    if (work == Work::Drag)
        finishDrag();
    else if (work == Work::NewNote)
        finishNew(moved, position);
    repaint();
    return true;
}

void NotationEditor::finishDrag()
{
    const bool changes = moved && chosenNote() >= 0;
    Notation made = std::move(draft);
    giveUp();
    if (!changes)
        return;
    beginNotationAct(window->img, chosen, NotationAct::Reshape);
    setNotation(window->img, chosen, std::move(made));
    endNotationAct(window->img, chosen);
}

void NotationEditor::finishNew(bool arrow, QPointF position)
{
    const QPoint from = rounded(pressedAt), to = rounded(arrow ? position : pressedAt);
    Notation note;
    note.textX = note.tailX = from.x();
    note.textY = note.tailY = from.y();
    note.headX = to.x();
    note.headY = to.y();
    note.pointing = arrow;
    giveUp();
    append(note, !arrow);
}

/// A text note is nothing before it has a text, so that is asked for at once; arrows and
/// polygons are often drawn several in a row.
void NotationEditor::append(const Notation &note, bool edit)
{
    image *img = window->img;
    const int index = img->notations.size();
    beginNotationAct(img, index, NotationAct::Make);
    img->notations.append(note);
    chosen = index;
    endNotationAct(img, index);
    if (edit)
        viewHost()->editNotation(window, index);
}

bool NotationEditor::closesPolygon(QPointF client) const
{
    if (draft.points.size() < kLeastCorners)
        return false;
    const QPoint first = draft.points.first();
    const QPointF away = view().map(first.x(), first.y()) - client;
    return std::hypot(away.x(), away.y()) <= kCloseReach * notationUnit();
}

void NotationEditor::addCorner(QPointF position)
{
    const QPoint corner = rounded(position);
    if (closesPolygon(pressedClient))
        finishPolygon();
    else if (draft.points.size() < kMostCorners &&
             (draft.points.isEmpty() || draft.points.last() != corner))
        draft.points << corner;
    repaint();
}

void NotationEditor::finishPolygon()
{
    if (draft.points.size() < kLeastCorners)
        return; // goes on; Escape gives up
    Notation note = std::move(draft);
    note.textX = note.tailX = note.headX = note.points.first().x();
    note.textY = note.tailY = note.headY = note.points.first().y();
    giveUp();
    append(note, false);
}

bool NotationEditor::doubleClick(const QMouseEvent &event, QPointF position)
{
    if (!active() || event.button() != Qt::LeftButton)
        return false;
    if (work == Work::Polygon) {
        finishPolygon(); // the first click of the two has set its corner
        return true;
    }
    const NotationHit hit =
        hitNotation(window->img->notations, chosenNote(), view(), event.localPos());
    if (hit.note < 0)
        return press(event, position);
    choose(hit.note);
    tellChoice();
    viewHost()->editNotation(window, hit.note);
    return true;
}

// --- Keys -------------------------------------------------------------------------------

bool NotationEditor::keyPress(const QKeyEvent &event)
{
    if (!active())
        return false;
    if (work != Work::None)
        return workKey(event.key());
    if (stepKey(event) || historyKey(event))
        return true;
    const bool plain = !(event.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier));
    if (!plain)
        return false;
    const int count = window->img->notations.size();
    switch (event.key()) {
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        next(event.key() == Qt::Key_Tab ? 1 : -1);
        return count > 0;
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
        removeChosen();
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (chosenNote() >= 0)
            viewHost()->editNotation(window, chosen);
        return chosenNote() >= 0;
    case Qt::Key_Escape:
        if (chosenNote() < 0)
            return false;
        chosen = -1;
        tellChoice();
        return true;
    default:
        return false;
    }
}

/// While something is being drawn or dragged no other key does anything: an undo in the
/// middle of a drag would change what is dragged.
bool NotationEditor::workKey(int key)
{
    if (key == Qt::Key_Escape)
        giveUp();
    else if (work == Work::Polygon && key == Qt::Key_Backspace) {
        draft.points.removeLast();
        if (draft.points.isEmpty())
            giveUp();
    } else if (work == Work::Polygon && (key == Qt::Key_Return || key == Qt::Key_Enter))
        finishPolygon();
    // The view may be moved to where the next corner lies.
    else if (work == Work::Polygon && key != Qt::Key_Delete)
        return false;
    repaint();
    return true;
}

bool NotationEditor::stepKey(const QKeyEvent &event)
{
    if (chosenNote() < 0 || event.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier))
        return false;
    const int step = event.modifiers() & Qt::ShiftModifier ? kFarStep : 1;
    switch (event.key()) {
    case Qt::Key_Left:
        nudge(-step, 0);
        return true;
    case Qt::Key_Right:
        nudge(step, 0);
        return true;
    case Qt::Key_Up:
        nudge(0, -step);
        return true;
    case Qt::Key_Down:
        nudge(0, step);
        return true;
    default:
        return false;
    }
}

void NotationEditor::nudge(int dx, int dy)
{
    beginNotationAct(window->img, chosen, NotationAct::Nudge);
    Notation note = notationAt(*window->img, chosen);
    moveNotationPart(&note, {}, true, dx, dy);
    setNotation(window->img, chosen, std::move(note));
    endNotationAct(window->img, chosen);
}

void NotationEditor::removeChosen()
{
    if (chosenNote() < 0)
        return;
    const int gone = chosen;
    chosen = -1;
    beginNotationAct(window->img, gone, NotationAct::Remove);
    window->img->notations.removeAt(gone);
    endNotationAct(window->img, -1);
}

void NotationEditor::next(int step)
{
    const int count = window->img->notations.size();
    if (count == 0)
        return;
    const int from = chosenNote();
    chosen = from < 0 ? (step > 0 ? 0 : count - 1) : (from + step + count) % count;
    tellChoice();
}

/// A master's own undo belongs to its target layer; in notes mode the notes come first.
bool NotationEditor::historyKey(const QKeyEvent &event)
{
    if (window->img->kind != 1)
        return false;
    const int number = keyTable().command(event.key(), event.modifiers());
    if (number == kCommandUndo)
        return undoMasterNotations(window->img);
    return number == kCommandRedo && redoMasterNotations(window->img);
}

// --- Drawing ----------------------------------------------------------------------------

void NotationEditor::draw(QPainter *painter) const
{
    if (!window->validImage() || !workspace()->showNotations)
        return;
    const NotationView shown = view();
    const QList<Notation> &notes = window->img->notations;
    const int dragged = work == Work::Drag && moved ? chosenNote() : -1;
    for (int i = 0; i < notes.size(); ++i)
        drawNotation(painter, i == dragged ? draft : notes[i], shown);
    if (!active())
        return;
    painter->save();
    if (work == Work::NewNote && moved) {
        Notation arrow;
        const QPoint tail = rounded(pressedAt), head = rounded(pointer);
        arrow.pointing = true;
        arrow.tailX = tail.x(), arrow.tailY = tail.y();
        arrow.headX = head.x(), arrow.headY = head.y();
        drawNotation(painter, arrow, shown);
    } else if (work == Work::Polygon) {
        Notation outline = draft;
        outline.points << rounded(pointer);
        drawNotation(painter, outline, shown);
        drawHandles(painter, draft, shown);
    } else if (chosenNote() >= 0) {
        drawHandles(painter, dragged >= 0 ? draft : notes[chosen], shown);
    }
    painter->restore();
}
