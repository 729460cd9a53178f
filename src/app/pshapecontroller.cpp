// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/pshapecontroller.h"

#include "area/areastate.h"
#include "core/workspace.h"
#include "views/imgwindow.h"
#include "views/viewhost.h"

#include "ui_pshapecontroller.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace
{
constexpr double kPi = 3.14159265358979323846;
constexpr int kPreviewSide = 180;
constexpr int kPreviewMargin = 10;

/// In 0 up to, but not including, 360.
double wrapped(double degrees)
{
    const double rest = std::fmod(degrees, 360.0);
    return rest < 0 ? rest + 360.0 : rest;
}

/// The dial has its ends at the bottom, and the shape stands upright when it points up.
double degreesOfDial(int value)
{
    return std::fmod(value / 10.0 + 180.0, 360.0);
}

int dialOfDegrees(double degrees)
{
    return int(std::lround(wrapped(degrees + 180.0) * 10));
}

/// The outline of the shape around (0, 0), as large as fits into a square at every angle.
QPainterPath outlineOf(PShape *shape, double side)
{
    // Places come out of the shape itself, so that the preview shows what will be drawn.
    const double kept[] = {shape->xScale, shape->yScale, shape->xCenter, shape->yCenter};
    const double diagonal = std::hypot(shape->baseWidth, shape->baseHeight);
    const double scale = diagonal > 0 ? side / diagonal : 0;
    shape->xScale = shape->baseWidth * scale;
    shape->yScale = shape->baseHeight * scale;
    shape->xCenter = shape->yCenter = 0;
    QPainterPath path;
    for (int i = 0; i < shape->drawnCount(); ++i) {
        const ShapePoint at = shape->placed(i);
        if (i == 0)
            path.moveTo(at.x, at.y);
        else
            path.lineTo(at.x, at.y);
    }
    shape->xScale = kept[0];
    shape->yScale = kept[1];
    shape->xCenter = kept[2];
    shape->yCenter = kept[3];
    return path;
}

PShape *usableShape()
{
    AreaState *state = areaState();
    return state && state->shape.usable() ? &state->shape : nullptr;
}
} // namespace

TenthsBox::TenthsBox(QWidget *parent) : QSpinBox(parent)
{
    setRange(0, 3599);
    setWrapping(true);
    setSingleStep(10);
    setSuffix(QStringLiteral("°"));
    setKeyboardTracking(false); // a half-typed angle turns nothing
}

QString TenthsBox::textFromValue(int value) const
{
    return locale().toString(value / 10.0, 'f', 1);
}

bool TenthsBox::degreesOf(const QString &text, double *degrees) const
{
    QString number = text;
    number.remove(suffix());
    bool ok = false;
    *degrees = locale().toDouble(number.trimmed(), &ok);
    return ok;
}

int TenthsBox::valueFromText(const QString &text) const
{
    double degrees = 0;
    return degreesOf(text, &degrees) ? int(std::lround(degrees * 10)) : value();
}

QValidator::State TenthsBox::validate(QString &text, int &) const
{
    double degrees = 0;
    if (!degreesOf(text, &degrees))
        return text.contains(QLatin1Char('-')) ? QValidator::Invalid : QValidator::Intermediate;
    return degrees >= 0 && std::lround(degrees * 10) <= maximum() ? QValidator::Acceptable
                                                                  : QValidator::Invalid;
}

ShapePreview::ShapePreview(QWidget *parent) : QWidget(parent)
{
    setMinimumSize(kPreviewSide, kPreviewSide);
}

QSize ShapePreview::sizeHint() const
{
    return {kPreviewSide, kPreviewSide};
}

void ShapePreview::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Base));
    PShape *shape = usableShape();
    if (!shape) {
        painter.setPen(palette().color(QPalette::Disabled, QPalette::Text));
        painter.drawText(
            rect().adjusted(kPreviewMargin, kPreviewMargin, -kPreviewMargin, -kPreviewMargin),
            Qt::AlignCenter | Qt::TextWordWrap,
            tr("No P-Shape. Select something with another tool and make it one, or "
               "load one from a file."));
        return;
    }
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(width() / 2.0, height() / 2.0);
    QColor inside = palette().color(QPalette::Highlight);
    inside.setAlphaF(0.35);
    const QPainterPath path = outlineOf(shape, std::min(width(), height()) - 2.0 * kPreviewMargin);
    if (path.elementCount() > 2 && QPointF(path.elementAt(0)) == path.currentPosition())
        painter.fillPath(path, inside);
    painter.strokePath(path, QPen(palette().color(QPalette::Text), 1.5));
}

pShapeController::pShapeController(QWidget *parent)
    : QDialog(parent), ui(std::make_unique<Ui::pShapeController>())
{
    ui->setupUi(this);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    setAttribute(Qt::WA_DeleteOnClose);
    ui->lockAspect->setChecked(workspace()->lockPAspect);
    shapeChanged();
}

pShapeController::~pShapeController() = default;

void pShapeController::shapeChanged()
{
    const PShape *shape = usableShape();
    ui->turning->setEnabled(shape);
    const QString name = shape ? shape->shapeName : tr("none");
    ui->shapeName->setText(
        ui->shapeName->fontMetrics().elidedText(name, Qt::ElideMiddle, kPreviewSide));
    ui->shapeName->setToolTip(name);
    showDegrees(shape ? wrapped(shape->rotation * 180.0 / kPi) : 0);
}

void pShapeController::showDegrees(double degrees)
{
    const QSignalBlocker quiet[] = {QSignalBlocker(ui->dial), QSignalBlocker(ui->digits)};
    ui->dial->setValue(dialOfDegrees(degrees));
    // The field holds ten times the degree; just below 360 that would round to a whole turn.
    ui->digits->setValue(int(std::lround(degrees * 10)) % 3600);
    ui->preview->update();
}

void pShapeController::turnTo(double degrees)
{
    PShape *shape = usableShape();
    if (!shape)
        return;
    shape->setRotation(degrees / 360 * kPi * 2);
    showDegrees(degrees);
    if (const ViewHost *host = viewHost())
        for (imgWindow *window : host->windows)
            window->refreshOverlay();
}

void pShapeController::on_dial_valueChanged(int value)
{
    turnTo(degreesOfDial(value));
}

void pShapeController::on_digits_valueChanged(int value)
{
    turnTo(value / 10.0);
}

void pShapeController::on_r000_clicked()
{
    turnTo(0);
}

void pShapeController::on_r045_clicked()
{
    turnTo(45);
}

void pShapeController::on_r090_clicked()
{
    turnTo(90);
}

void pShapeController::on_r135_clicked()
{
    turnTo(135);
}

void pShapeController::on_r180_clicked()
{
    turnTo(180);
}

void pShapeController::on_r225_clicked()
{
    turnTo(225);
}

void pShapeController::on_r270_clicked()
{
    turnTo(270);
}

void pShapeController::on_r315_clicked()
{
    turnTo(315);
}

void pShapeController::on_lockAspect_clicked(bool on)
{
    workspace()->lockPAspect = on;
}
