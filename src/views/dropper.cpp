// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/dropper.h"

#include "core/image.h"
#include "core/workspace.h"
#include "views/areagesture.h"
#include "views/imgwindow.h"
#include "views/viewhost.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPixmap>

#include <algorithm>
#include <utility>

namespace
{
/// A pipette whose tip is the place that is read; desktops have no such cursor.
QCursor makePipette(double ratio)
{
    constexpr int side = 24, tip = 2;
    QPixmap picture(QSize(side, side) * ratio);
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPointF point(tip, side - tip - 1), neck(13, 10), bulb(18, 5);
    for (const auto &[color, wider] : {std::pair(Qt::white, 2.5), std::pair(Qt::black, 0.0)}) {
        painter.setPen(QPen(color, 2.0 + wider, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(point, neck);
        painter.drawLine(neck - QPointF(3, 3), neck + QPointF(3, 3));
        painter.setPen(QPen(color, 5.0 + wider, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(neck + QPointF(2, -2), bulb);
    }
    return {picture, tip, side - tip - 1};
}
} // namespace

bool Dropper::armed()
{
    return viewHost() && viewHost()->dropperArmed;
}

bool Dropper::press(const QMouseEvent &event)
{
    if (!armed())
        return false;
    if (event.button() == Qt::RightButton) {
        rightWentDown = true;
        end(false);
    } else if (event.button() == Qt::LeftButton) {
        last.reset();
        read(event.localPos());
        reading = last.has_value();
    }
    return true;
}

bool Dropper::move(const QMouseEvent &event)
{
    if (!armed())
        return false;
    showCursor();
    if (reading && !(event.buttons() & Qt::LeftButton)) // the release went elsewhere
        end(true);
    else if (reading)
        read(event.localPos());
    return true;
}

bool Dropper::release(const QMouseEvent &event)
{
    if (event.button() == Qt::RightButton)
        return std::exchange(rightWentDown, false);
    if (!armed() || event.button() != Qt::LeftButton)
        return false;
    if (reading)
        end(true);
    return true;
}

bool Dropper::keyPress(const QKeyEvent &event)
{
    if (!armed() || event.key() != Qt::Key_Escape)
        return false;
    end(false);
    return true;
}

/// The square around the sample under the mouse, as far as it lies in the picture.
void Dropper::read(QPointF client)
{
    image *img = window->img;
    const QRect picture(0, 0, img->width, img->height);
    const QPoint at = sampleUnder(window->windowToImage(client.x(), client.y()));
    if (!picture.contains(at) || last == at)
        return;
    last = at;
    const int side = std::max(workspace()->dropperSize, 1);
    const QRect square(at.x() - side / 2, at.y() - side / 2, side, side);
    viewHost()->dropperPicked(img, square & picture);
}

void Dropper::end(bool hasRead)
{
    ViewHost *host = viewHost();
    host->armDropper(false);
    host->dropperEnded(hasRead);
}

void Dropper::armingChanged()
{
    reading = false;
    if (armed()) {
        showCursor();
    } else {
        window->unsetCursor();
        window->gesture.showCursor();
    }
}

void Dropper::showCursor()
{
    if (!armed())
        return;
    if (pipette.shape() != Qt::BitmapCursor)
        pipette = makePipette(window->devicePixelRatioF());
    if (window->cursor() != pipette)
        window->setCursor(pipette);
}
