// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/notationeditor.h"

bool NotationEditor::press(const QMouseEvent &, QPointF)
{
    return false;
}
bool NotationEditor::move(const QMouseEvent &, QPointF)
{
    return false;
}
bool NotationEditor::release(const QMouseEvent &, QPointF)
{
    return false;
}
bool NotationEditor::doubleClick(const QMouseEvent &, QPointF)
{
    return false;
}
bool NotationEditor::keyPress(const QKeyEvent &)
{
    return false;
}
void NotationEditor::draw(QPainter *) const {}
