// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/xyrect.h"

#include "app/smallpicture.h"
#include "area/areastate.h"
#include "core/image.h"
#include "core/workspace.h"

#include "ui_xyrect.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>

#include <algorithm>

namespace
{
/// Of the coordinates to either side: far off any image, and both edges as well as the size
/// stay within what the settings take.
constexpr int kReach = 49999;
constexpr int kPictureSide = 200;
constexpr int kPictureMargin = 14; ///< where a rectangle beyond the image is seen
} // namespace

DragHandle::DragHandle(QWidget *parent) : QLabel(parent)
{
    setCursor(Qt::OpenHandCursor);
}

void DragHandle::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    setCursor(Qt::ClosedHandCursor);
    emit pressed();
}

void DragHandle::mouseMoveEvent(QMouseEvent *event)
{
    if (event->buttons() & Qt::LeftButton)
        emit moved(event->globalPos());
}

void DragHandle::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    setCursor(Qt::OpenHandCursor);
    emit released();
}

RectPicture::RectPicture(QWidget *parent) : QWidget(parent)
{
    setMinimumSize(kPictureSide, kPictureSide);
    setAccessibleName(tr("The rectangle in the image"));
}

QSize RectPicture::sizeHint() const
{
    return {kPictureSide, kPictureSide};
}

void RectPicture::setRectangle(const QRect &samples)
{
    rectangle = samples;
    update();
}

void RectPicture::makePicture(int side)
{
    picture = smallPicture(*img, side, devicePixelRatioF(), true);
    picture.setDevicePixelRatio(devicePixelRatioF());
    pictureSide = side;
}

void RectPicture::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Base));
    const int side = std::min(width(), height()) - 2 * kPictureMargin;
    if (!img || side <= 0)
        return;
    if (side != pictureSide)
        makePicture(side);
    const QPoint corner((width() - side) / 2, (height() - side) / 2);
    painter.drawPixmap(corner, picture);
    if (rectangle.isEmpty())
        return;
    const double scale = side / double(std::max(img->width, img->height));
    const QPointF origin(corner.x() + (side - img->width * scale) / 2,
                         corner.y() + (side - img->height * scale) / 2);
    const QRectF shown(QPointF(rectangle.topLeft()) * scale + origin,
                       QSizeF(rectangle.size()) * scale);
    // Two colours, one of which stands out from whatever lies below.
    painter.setPen(QPen(Qt::black, 3));
    painter.drawRect(shown);
    painter.setPen(QPen(Qt::white, 1));
    painter.drawRect(shown);
}

XYRect::XYRect(image *img, QWidget *parent) : QDialog(parent), ui(std::make_unique<Ui::XYRect>())
{
    ui->setupUi(this);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    ui->buttonBox->button(QDialogButtonBox::Ok)->setText(tr("&Select"));
    for (QLabel *line : {ui->message, ui->hint}) // so that nothing moves when they speak
        line->setMinimumHeight(fontMetrics().lineSpacing());
    ui->capture->setEnabled(areaState() && areaState()->rectKnown);
    const Workspace *space = workspace();
    {
        const QSignalBlocker quiet(ui->stepXY);
        ui->stepXY->setValue(space->stepXY);
    }
    ui->picture->setImage(img);
    across.imageSize = img->width;
    across.firstField = ui->sx1;
    across.lastField = ui->sx2;
    across.centreField = ui->scx;
    across.lengthField = ui->sw;
    down.imageSize = img->height;
    down.firstField = ui->sy1;
    down.lastField = ui->sy2;
    down.centreField = ui->scy;
    down.lengthField = ui->sh;
    initialise(&across, space->nrectX1, space->nrectX2);
    initialise(&down, space->nrectY1, space->nrectY2);
    ui->sx1->setFocus();
    ui->sx1->selectAll();
}

XYRect::~XYRect() = default;

void XYRect::initialise(Axis *axis, int first, int last)
{
    axis->start = std::clamp(first, -kReach, kReach);
    setLength(axis, last - first + 1);
}

void XYRect::shiftTo(Axis *axis, int start)
{
    const int low = std::max(-kReach, -kReach - axis->length + 1);
    const int high = std::min(kReach, kReach - axis->length + 1);
    axis->start = std::clamp(start, low, high);
    showAxis(*axis);
}

void XYRect::setLength(Axis *axis, int length)
{
    axis->length = std::clamp(length, -kReach - axis->start + 1, kReach - axis->start + 1);
    showAxis(*axis);
}

void XYRect::centreAxis(Axis *axis)
{
    shiftTo(axis, axis->imageSize / 2 - axis->length / 2);
}

void XYRect::showAxis(const Axis &axis)
{
    const auto set = [](QSpinBox *field, int value) {
        if (field->value() == value)
            return; // else the cursor would jump in a field that is being typed into
        const QSignalBlocker quiet(field);
        field->setValue(value);
    };
    set(axis.firstField, axis.start);
    set(axis.lastField, axis.last());
    set(axis.centreField, axis.start + axis.length / 2);
    set(axis.lengthField, axis.length);
    showRectangle();
}

void XYRect::showRectangle()
{
    ui->message->clear();
    ui->hint->clear();
    ui->picture->setRectangle({across.start, down.start, across.length, down.length});
    ui->size->setText(tr("Image: %1 x %2 px").arg(across.imageSize).arg(down.imageSize));
}

void XYRect::on_sx1_valueChanged(int value)
{
    shiftTo(&across, value);
}

void XYRect::on_sy1_valueChanged(int value)
{
    shiftTo(&down, value);
}

void XYRect::on_sx2_valueChanged(int value)
{
    setLength(&across, value - across.start + 1);
}

void XYRect::on_sy2_valueChanged(int value)
{
    setLength(&down, value - down.start + 1);
}

void XYRect::on_scx_valueChanged(int value)
{
    shiftTo(&across, value - across.length / 2);
}

void XYRect::on_scy_valueChanged(int value)
{
    shiftTo(&down, value - down.length / 2);
}

void XYRect::on_sw_valueChanged(int value)
{
    setLength(&across, value);
}

void XYRect::on_sh_valueChanged(int value)
{
    setLength(&down, value);
}

void XYRect::on_stepXY_valueChanged(int value)
{
    workspace()->stepXY = value;
}

void XYRect::on_flushLeft_clicked()
{
    shiftTo(&across, 0);
}

void XYRect::on_flushRight_clicked()
{
    shiftTo(&across, across.imageSize - across.length);
}

void XYRect::on_flushTop_clicked()
{
    shiftTo(&down, 0);
}

void XYRect::on_flushBottom_clicked()
{
    shiftTo(&down, down.imageSize - down.length);
}

void XYRect::on_center_clicked()
{
    centreAxis(&across);
    centreAxis(&down);
}

void XYRect::on_shiftUp_clicked()
{
    shiftTo(&down, down.start - ui->stepXY->value());
}

void XYRect::on_shiftDown_clicked()
{
    shiftTo(&down, down.start + ui->stepXY->value());
}

void XYRect::on_shiftLeft_clicked()
{
    shiftTo(&across, across.start - ui->stepXY->value());
}

void XYRect::on_shiftRight_clicked()
{
    shiftTo(&across, across.start + ui->stepXY->value());
}

void XYRect::on_capture_clicked()
{
    const AreaState *state = areaState();
    if (!state || !state->rectKnown)
        return;
    initialise(&across, state->rectLeft, state->rectRight);
    initialise(&down, state->rectTop, state->rectBottom);
}

void XYRect::on_drag_pressed()
{
    dragging = true;
    dragPlaceKnown = false;
}

void XYRect::on_drag_moved(QPoint place)
{
    if (!dragging)
        return;
    const QPoint change = place - dragPlace;
    const bool first = !dragPlaceKnown;
    dragPlace = place;
    dragPlaceKnown = true;
    if (first || change.isNull())
        return;
    shiftTo(&across, across.start + change.x());
    shiftTo(&down, down.start + change.y());
}

void XYRect::on_drag_released()
{
    dragging = false;
}

void XYRect::accept()
{
    for (const Axis *axis : {&across, &down})
        if (axis->last() <= axis->start || axis->length < 0) {
            ui->message->setText(tr("Rectangle has negative size"));
            ui->hint->setText(axis == &across ? tr("Right must be greater than Left.")
                                              : tr("Bottom must be greater than Top."));
            axis->lastField->setFocus();
            axis->lastField->selectAll();
            return;
        }
    Workspace *space = workspace();
    space->nrectX1 = across.start;
    space->nrectY1 = down.start;
    space->nrectX2 = across.last();
    space->nrectY2 = down.last();
    space->nrectWidth = across.length;
    space->nrectHeight = down.length;
    QDialog::accept();
}
