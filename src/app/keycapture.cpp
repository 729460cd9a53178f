// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/keycapture.h"

#include "views/keytable.h"

#include <QKeyEvent>

KeyCapture::KeyCapture(QWidget *parent) : QLineEdit(parent)
{
    setReadOnly(true);
    setContextMenuPolicy(Qt::NoContextMenu);
    // Tab passes it by: a field that takes Tab would not let it go on.
    setFocusPolicy(Qt::ClickFocus);
    setPlaceholderText(tr("Click here, then press a key"));
}

void KeyCapture::start()
{
    waiting = true;
    setFocus();
    setText(tr("Press a key… (Esc gives up)"));
}

void KeyCapture::stop()
{
    waiting = false;
    clear();
}

bool KeyCapture::event(QEvent *event)
{
    // A key that is a shortcut of the dialog comes as an override first, and Tab would move
    // the focus before a handler of keys saw it.
    if (waiting && event->type() == QEvent::ShortcutOverride) {
        event->accept();
        return true;
    }
    if (waiting && event->type() == QEvent::KeyPress) {
        event->accept();
        keyPressed(*static_cast<QKeyEvent *>(event));
        return true;
    }
    return QLineEdit::event(event);
}

void KeyCapture::keyPressed(const QKeyEvent &event)
{
    if (event.isAutoRepeat())
        return;
    const int key = KeyTable::plainKey(event.key() | int(event.modifiers()));
    if (key == Qt::Key_Escape) {
        stop();
        emit ended();
    } else if (KeyTable::isBindable(key)) {
        stop();
        emit captured(key);
    } else if (!KeyTable::isModifier(event.key())) {
        setText(tr("This key has no name here. Press another one."));
    }
}

void KeyCapture::mousePressEvent(QMouseEvent *event)
{
    QLineEdit::mousePressEvent(event);
    start();
}

void KeyCapture::focusOutEvent(QFocusEvent *event)
{
    QLineEdit::focusOutEvent(event);
    if (!waiting)
        return;
    stop();
    emit ended();
}
