// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/dialog/histogramview.h"

#include "core/image.h"

#include <QPainter>
#include <QPolygonF>

#include <algorithm>
#include <cmath>

HistogramView::HistogramView(QWidget *parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

QSize HistogramView::sizeHint() const
{
    return {180, 64};
}

QSize HistogramView::minimumSizeHint() const
{
    return {96, 40};
}

void HistogramView::setPicture(const image *picture)
{
    bins = {};
    if (picture && picture->valid() && picture->alpha) {
        const std::array<const uint16_t *, 3> planes = {picture->red, picture->green,
                                                        picture->blue};
        const int64_t count = picture->sampleCount();
        for (int64_t i = 0; i < count; ++i)
            if (picture->alpha[i])
                for (size_t c = 0; c < planes.size(); ++c)
                    ++bins[c][planes[c][i] >> 8];
    }
    update();
}

void HistogramView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Base));
    // Clipped samples pile up in the outer bins and would flatten all others.
    int top = 1;
    for (const Counts &channel : bins)
        top = std::max(top, *std::max_element(channel.begin() + 1, channel.end() - 1));

    const Qt::GlobalColor colours[] = {Qt::red, Qt::green, Qt::blue};
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const double step = width() / 256.0;
    for (size_t c = 0; c < bins.size(); ++c) {
        QPolygonF outline;
        outline << QPointF(0, height());
        for (int i = 0; i < 256; ++i) {
            // The square root keeps sparse values in sight beside a single tall bin.
            const double part = std::min(1.0, double(bins[c][size_t(i)]) / top);
            const double y = height() * (1 - std::sqrt(part));
            outline << QPointF(i * step, y) << QPointF((i + 1) * step, y);
        }
        outline << QPointF(width(), height());
        QColor fill(colours[c]);
        fill.setAlpha(130);
        painter.setBrush(fill);
        painter.drawPolygon(outline);
    }
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}
