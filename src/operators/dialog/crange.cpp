// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/dialog/crange.h"

#include <QPainter>
#include <QStyleOptionFrame>
#include <QStylePainter>

#include <algorithm>
#include <utility>

namespace
{
constexpr int kHeight = 32, kLeastWidth = 64;
}

cRange::cRange(Colours colourAt, int wantedWidth, QWidget *parent)
    : QWidget(parent), colours(std::move(colourAt)), wanted(std::max(wantedWidth, kLeastWidth))
{
    setFixedHeight(kHeight);
    setMinimumWidth(kLeastWidth);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize cRange::sizeHint() const
{
    return {wanted, kHeight};
}

void cRange::paintEvent(QPaintEvent *)
{
    QStylePainter painter(this);
    const QRect inside = rect().adjusted(1, 1, -1, -1);
    const int last = std::max(1, inside.width() - 1);
    for (int x = 0; colours && x < inside.width(); ++x)
        painter.fillRect(inside.left() + x, inside.top(), 1, inside.height(),
                         QColor(QRgb(colours(double(x) / last) | 0xFF000000U)));
    QStyleOptionFrame frame;
    frame.initFrom(this);
    frame.lineWidth = 1;
    frame.state |= QStyle::State_Sunken;
    painter.drawPrimitive(QStyle::PE_Frame, frame);
}
