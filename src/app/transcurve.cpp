// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/transcurve.h"

#include "area/blendcurve.h"
#include "core/memory.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

TransCurve::TransCurve(QWidget *parent) : QWidget(parent)
{
    setMinimumSize(160, 90);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

QSize TransCurve::sizeHint() const
{
    return {320, 160};
}

void TransCurve::setCurve(int mode, double amplitude, double floorValue)
{
    curveMode = mode;
    peak = amplitude;
    floorHeight = floorValue;
    update();
}

void TransCurve::paintEvent(QPaintEvent *)
{
    // In device pixels, so that the columns of the plot leave no seams on any screen.
    const qreal ratio = devicePixelRatioF();
    QPainter painter(this);
    painter.scale(1 / ratio, 1 / ratio);
    const int line = std::max(1, int(std::lround(ratio)));
    QRect inside(QPoint(0, 0), (QSizeF(size()) * ratio).toSize());
    for (const Qt::GlobalColor colour : {Qt::darkGray, Qt::lightGray, Qt::darkGray}) {
        painter.fillRect(inside, colour);
        inside.adjust(line, line, -line, -line);
    }
    painter.fillRect(inside, palette().color(QPalette::Base));
    if (inside.isEmpty())
        return;
    drawCurve(&painter, inside);
    drawQuarters(&painter, inside, line);
}

void TransCurve::drawCurve(QPainter *painter, const QRect &plot) const
{
    const TrackedBuffer<double> row(size_t(plot.width()) + 1, "transcurve paintEvent() row");
    if (!row)
        return;
    buildCurve(row.get(), plot.width(), curveMode, peak, floorHeight);
    const QColor colour = palette().color(QPalette::Highlight);
    for (int x = 0; x < plot.width(); ++x) {
        const int high = int(std::lround(row[size_t(x)] * plot.height()));
        painter->fillRect(plot.left() + x, plot.bottom() + 1 - high, 1, high, colour);
    }
}

void TransCurve::drawQuarters(QPainter *painter, const QRect &plot, int thickness) const
{
    QColor colour = palette().color(QPalette::Text);
    colour.setAlphaF(0.25);
    for (int quarter = 1; quarter < 4; ++quarter)
        painter->fillRect(plot.left(), plot.top() + plot.height() * quarter / 4, plot.width(),
                          thickness, colour);
}
