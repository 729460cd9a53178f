// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/areagesture.h"

bool AreaGesture::press(const QMouseEvent &, QPointF)
{
    return false;
}
bool AreaGesture::move(const QMouseEvent &, QPointF)
{
    return false;
}
bool AreaGesture::release(const QMouseEvent &, QPointF)
{
    return false;
}
bool AreaGesture::keyPress(const QKeyEvent &)
{
    return false;
}
void AreaGesture::cancel() {}
void AreaGesture::showCursor() {}
