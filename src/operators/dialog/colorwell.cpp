// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/dialog/colorwell.h"

#include <QPainter>
#include <QStyleOptionFrame>
#include <QStylePainter>

ColorWell::ColorWell(QWidget *parent, int wellId) : QAbstractButton(parent), id(wellId)
{
    setFocusPolicy(Qt::StrongFocus);
    connect(this, &QAbstractButton::clicked, this,
            [this] { emit sendId(id, int(shown.rgb() & 0xFFFFFF)); });
}

void ColorWell::setColor8(int red, int green, int blue)
{
    shown = QColor(red & 0xFF, green & 0xFF, blue & 0xFF);
    update();
}

void ColorWell::setColor16(int red, int green, int blue)
{
    setColor8(red >> 8, green >> 8, blue >> 8);
}

QSize ColorWell::sizeHint() const
{
    const int side = fontMetrics().height();
    return {3 * side, side + 8};
}

void ColorWell::paintEvent(QPaintEvent *)
{
    QStylePainter painter(this);
    painter.fillRect(rect().adjusted(2, 2, -2, -2), shown);
    QStyleOptionFrame frame;
    frame.initFrom(this);
    frame.lineWidth = 1;
    frame.state |= isDown() ? QStyle::State_Sunken : QStyle::State_Raised;
    painter.drawPrimitive(QStyle::PE_Frame, frame);
    if (!hasFocus())
        return;
    QStyleOptionFocusRect focus;
    focus.initFrom(this);
    focus.rect = rect().adjusted(3, 3, -3, -3);
    focus.backgroundColor = shown;
    painter.drawPrimitive(QStyle::PE_FrameFocusRect, focus);
}
