// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/dialog/oppreview.h"

#include "core/colour.h"
#include "core/image.h"
#include "core/workspace.h"

#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionFocusRect>

#include <algorithm>

namespace
{
constexpr int kCheckerSquare = 8;

/// What shows through where the picture is not opaque.
class Background
{
public:
    explicit Background(QRgb plain) : dark(plain), light(plain)
    {
        const Workspace *state = workspace();
        if (!state || !state->checkerOn)
            return;
        dark = qRgb(state->checkerDark, state->checkerDark, state->checkerDark);
        light = qRgb(state->checkerLight, state->checkerLight, state->checkerLight);
    }
    QRgb at(int x, int y) const
    {
        const bool odd = ((x / kCheckerSquare) & 1) != ((y / kCheckerSquare) & 1);
        return odd ? light : dark;
    }

private:
    QRgb dark, light;
};

int mixByte(int sample, int under, double opacity)
{
    return int((sample >> 8) * opacity + under * (1 - opacity));
}

/// The colour of a sample as a window shows it, whichever code the picture holds.
Rgb colourOf(const image &picture, int64_t i)
{
    const double first = picture.red[i], second = picture.green[i], third = picture.blue[i];
    return picture.imageMode == 1 ? yrbToRgb({first, second, third}) : Rgb{first, second, third};
}

QRgb pixel(const image &picture, int64_t i, QRgb under)
{
    const Rgb colour = colourOf(picture, i);
    const int red = int(colour.red), green = int(colour.green), blue = int(colour.blue);
    if (picture.alpha[i] == 65535)
        return qRgb(red >> 8, green >> 8, blue >> 8);
    const double opacity = picture.alpha[i] / kWhite;
    return qRgb(mixByte(red, qRed(under), opacity), mixByte(green, qGreen(under), opacity),
                mixByte(blue, qBlue(under), opacity));
}
} // namespace

OpPreview::OpPreview(QWidget *parent) : QWidget(parent)
{
    // Where letters are twice as large, each sample of the preview is too.
    scale = std::max(1, qRound(logicalDpiX() / 96.0));
    setFixedSize(scale * kPreviewSide, scale * kPreviewSide);
}

QPoint OpPreview::placeOf(const QMouseEvent &event) const
{
    return {qRound(event.localPos().x() / scale), qRound(event.localPos().y() / scale)};
}

void OpPreview::setPicture(const image *picture, bool x2)
{
    const int shift = x2 ? 1 : 0;
    const int side = kPreviewSide >> shift;
    if (!picture || !picture->valid() || picture->width < side || picture->height < side) {
        buffer = QPixmap();
        update();
        return;
    }
    const Background background(palette().color(QPalette::Window).rgb());
    QImage drawn(kPreviewSide, kPreviewSide, QImage::Format_RGB32);
    for (int y = 0; y < kPreviewSide; ++y) {
        QRgb *line = reinterpret_cast<QRgb *>(drawn.scanLine(y));
        const int64_t row = int64_t(y >> shift) * picture->width;
        for (int x = 0; x < kPreviewSide; ++x)
            line[x] = pixel(*picture, row + (x >> shift), background.at(x, y));
    }
    buffer = QPixmap::fromImage(drawn);
    update();
}

void OpPreview::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    // On a dense screen each pixel of the buffer becomes a whole block: what the operator
    // does to single pixels is what one wants to see.
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    if (!buffer.isNull())
        painter.drawPixmap(rect(), buffer);
    if (!hasFocus())
        return;
    QStyleOptionFocusRect focus;
    focus.initFrom(this);
    focus.rect = rect();
    focus.backgroundColor = palette().color(QPalette::Window);
    style()->drawPrimitive(QStyle::PE_FrameFocusRect, &focus, &painter, this);
}

void OpPreview::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const QPoint place = placeOf(*event);
    startX = place.x();
    startY = place.y();
    lastOffset = QPoint();
    dragging = true;
}

void OpPreview::mouseMoveEvent(QMouseEvent *event)
{
    if (!dragging)
        return;
    const QPoint offset = placeOf(*event) - QPoint(startX, startY);
    const QPoint change = offset - lastOffset;
    lastOffset = offset;
    if (!change.isNull())
        emit prod(change.x(), change.y());
}

void OpPreview::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        dragging = false;
}
