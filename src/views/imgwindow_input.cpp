// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/image.h"
#include "core/workspace.h"
#include "views/imgwindow.h"
#include "views/keytable.h"
#include "views/viewhost.h"

#include <QDebug>
#include <QDragEnterEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>

#include <cmath>

namespace
{
constexpr int kWheelNotch = 120;
constexpr int kPreviewSide = 100; ///< of the operator preview's crop, half of it at 2x
} // namespace

// --- Keys -------------------------------------------------------------------------------

void imgWindow::keyPressEvent(QKeyEvent *event)
{
    if (!event || !validImage())
        return;
    event_ = event;
    lastKey = event->key();
    const Qt::KeyboardModifiers modifiers = event->modifiers();
    control = modifiers & Qt::ControlModifier;
    shift = modifiers & Qt::ShiftModifier;
    alt = modifiers & Qt::AltModifier;
    meta = modifiers & Qt::MetaModifier;
    if (lastKey == Qt::Key_Space && !event->isAutoRepeat()) {
        spaceHeld = true;
        setCursor(Qt::OpenHandCursor);
    }
    // Set first: a command may open a box, whose event loop can outlive this window.
    event->accept();
    gesture.keysHeld(lastKey == Qt::Key_Control ? modifiers | Qt::ControlModifier : modifiers);
    if (dropper.keyPress(*event) || split.keyPress(*event) || notes.keyPress(*event) ||
        gesture.keyPress(*event)) {
        event_ = nullptr;
        return;
    }
    const int number = keyTable().command(lastKey, modifiers);
    ViewHost *host = viewHost();
    if (lastKey == Qt::Key_Escape && draggedGuide)
        cancelGuide();
    else if (number > 0)
        command(number);
    else if (lastKey == Qt::Key_Escape && isFullScreen())
        command(kCommandFullScreen);
    else if (lastKey != Qt::Key_Space && !(host && host->globalKey(event)))
        event->ignore();
    event_ = nullptr;
}

void imgWindow::keyReleaseEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Shift)
        shift = false;
    if (event->key() == Qt::Key_Control)
        gesture.keysHeld(event->modifiers() & ~Qt::ControlModifier);
    if (event->key() == Qt::Key_Space && !event->isAutoRepeat()) {
        spaceHeld = false;
        gesture.showCursor();
    }
}

// --- Mouse ------------------------------------------------------------------------------

bool imgWindow::dragsView(const QMouseEvent *event) const
{
    return event->button() == Qt::MiddleButton || (event->button() == Qt::LeftButton && spaceHeld);
}

void imgWindow::mousePressEvent(QMouseEvent *event)
{
    if (!event || !validImage())
        return;
    if (ViewHost *host = viewHost())
        host->makeCurrent(this);
    const QPointF at = event->localPos();
    const bool left = event->button() == Qt::LeftButton;
    if (dragsView(event)) {
        draggingView = true;
        dragButton = event->button();
        dragFrom = windowToImage(at.x(), at.y());
        setCursor(Qt::ClosedHandCursor);
    } else if ((left && pressRuler(at)) || dropper.press(*event)) {
        return;
    } else if (!guideAt(at) && split.press(*event)) {
        return;
    } else if (notes.press(*event, positionOf(*event))) {
        return;
    } else if (!left || !grabGuide(at)) {
        gesture.press(*event, positionOf(*event));
    }
}

/// Where in the image an event of the mouse happened, snapped.
QPointF imgWindow::positionOf(const QMouseEvent &event) const
{
    return snapped(windowToImage(event.localPos().x(), event.localPos().y()), event.modifiers());
}

void imgWindow::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (validImage() && !Dropper::armed() && split.doubleClick(*event))
        return;
    if (!validImage() || Dropper::armed() || !pictureRect().contains(event->pos()) ||
        !notes.doubleClick(*event, positionOf(*event)))
        mousePressEvent(event);
}

void imgWindow::mouseReleaseEvent(QMouseEvent *event)
{
    if (!event || !validImage()) {
        draggingView = false;
        return;
    }
    if (draggedGuide && event->button() == Qt::LeftButton)
        dropGuide(event->localPos());
    else if (draggingView && event->button() == dragButton)
        endViewDrag();
    else if (!dropper.release(*event) && !split.release(*event) &&
             !notes.release(*event, positionOf(*event)))
        gesture.release(*event, positionOf(*event)); // which may end this window
}

void imgWindow::endViewDrag()
{
    draggingView = false;
    if (spaceHeld)
        setCursor(Qt::OpenHandCursor);
    else
        gesture.showCursor();
}

void imgWindow::mouseMoveEvent(QMouseEvent *event)
{
    if (!event) {
        qDebug() << "NULL QMouseEvent pointer in imgWindow!";
        return;
    }
    if (!validImage())
        return;
    const QPointF at = event->localPos();
    if (draggingView)
        dragView(at);
    else if (draggedGuide)
        dragGuide(at, event->modifiers());
    else if (!dropper.move(*event) && !split.move(*event) &&
             !notes.move(*event, positionOf(*event)) && !gesture.move(*event, positionOf(*event)))
        hover(*event);
    reportPointer(at);
    markPointer(at);
}

/// Nothing is dragged: the cursor says what a press would do.
void imgWindow::hover(const QMouseEvent &event)
{
    if (spaceHeld)
        return;
    showGuideCursor(event.localPos());
    if (!guideCursor)
        split.showCursor(event.localPos());
    if (pictureRect().contains(event.pos()))
        gesture.showCursor();
    else if (!cursorTaken())
        unsetCursor();
}

bool imgWindow::cursorTaken() const
{
    const bool noted = viewHost() && viewHost()->editingNotations && workspace()->showNotations;
    return spaceHeld || draggingView || guideCursor || split.cursorHeld() || Dropper::armed() ||
           noted;
}

void imgWindow::enterEvent(QEvent *event)
{
    QDialog::enterEvent(event);
    dropper.showCursor();
    gesture.showCursor();
}

void imgWindow::leaveEvent(QEvent *event)
{
    QDialog::leaveEvent(event);
    markPointer(QPointF(-1, -1));
    if (ViewHost *host = viewHost())
        host->pointerOver(this, -1, -1);
}

void imgWindow::dragView(QPointF position)
{
    const int beforeX = panX, beforeY = panY;
    placeAt(dragFrom, position);
    if (panX != beforeX || panY != beforeY)
        viewPanned();
}

/// The operator preview shows the surroundings of the place pressed.
void imgWindow::choosePreview(QPointF position)
{
    const QPoint sample = windowToSample(position.x(), position.y());
    const int side = workspace()->opsX2Preview ? kPreviewSide / 2 : kPreviewSide;
    previewX = sample.x() - side / 2;
    previewY = sample.y() - side / 2;
    if (ViewHost *host = viewHost()) {
        host->eyepointPending = false;
        host->refreshOperatorSource();
        host->updateMenus();
    }
    paintOverlayOnly = true;
    update();
}

void imgWindow::reportPointer(QPointF position)
{
    ViewHost *host = viewHost();
    if (!host)
        return;
    const QPointF place = windowToImage(position.x(), position.y());
    const bool inside = place.x() >= 0.0 && place.y() >= 0.0 && place.x() < img->width &&
                        place.y() < img->height && rect().contains(position.toPoint());
    host->pointerOver(this, inside ? int(place.x()) : -1, inside ? int(place.y()) : -1);
}

void imgWindow::wheelEvent(QWheelEvent *event)
{
    event->accept();
    const QPoint delta = event->angleDelta();
    if (event->modifiers() & Qt::ControlModifier) {
        wheelRest += delta.y();
        const int notches = wheelRest / kWheelNotch;
        wheelRest -= notches * kWheelNotch;
        if (notches != 0)
            zoomTo((notches > 0 ? zoomIndex : indexFurtherOut() + 1) + notches, event->position());
        return;
    }
    if (delta.x() != 0)
        command(delta.x() < 0 ? kCommandLeft : kCommandRight);
    if (delta.y() != 0)
        command(delta.y() < 0 ? kCommandUp : kCommandDown);
}

// --- Activation and drops -----------------------------------------------------------------

void imgWindow::changeEvent(QEvent *event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::WindowTitleChange)
        describe();
    if (event->type() == QEvent::WindowStateChange)
        stateChanged();
    if (event->type() != QEvent::ActivationChange)
        return;
    if (isActiveWindow() && validImage() && viewHost() && viewHost()->isWindow(this))
        viewHost()->makeCurrent(this);
    if (!isActiveWindow()) // the release of the space bar went elsewhere
        spaceHeld = false;
}

void imgWindow::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void imgWindow::dropEvent(QDropEvent *event)
{
    if (!event->mimeData()->hasUrls())
        return;
    event->acceptProposedAction();
    if (ViewHost *host = viewHost())
        host->openUrls(event->mimeData()->urls());
}
