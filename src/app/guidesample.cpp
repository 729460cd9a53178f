// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/guidesample.h"

#include "views/cropguides.h"

#include <QPainter>

namespace
{
constexpr double kMargin = 3.0; // points
}

void GuideSample::setGuide(int guide, double aspect)
{
    shownGuide = guide;
    shownAspect = aspect;
    update();
}

void GuideSample::paintEvent(QPaintEvent *)
{
    const QSizeF room = QSizeF(size()) - QSizeF(2 * kMargin, 2 * kMargin);
    const QSizeF box = QSizeF(shownAspect, 1.0).scaled(room, Qt::KeepAspectRatio);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate((width() - box.width()) / 2, (height() - box.height()) / 2);
    painter.fillRect(QRectF(QPointF(), box), palette().base());
    painter.setPen(palette().color(QPalette::Highlight));
    for (const GuideLine &line : cropGuideLines(shownGuide, box, false, false))
        painter.drawPolyline(line.data(), int(line.size()));
    painter.setPen(palette().color(QPalette::Text));
    painter.drawRect(QRectF(QPointF(), box));
}
