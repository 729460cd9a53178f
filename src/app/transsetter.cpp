// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/transsetter.h"

#include "app/helppage.h"
#include "area/blendcurve.h"
#include "core/workspace.h"
#include "views/viewhost.h"

#include "ui_transsetter.h"

#include <QGuiApplication>
#include <QLocale>

#include <cmath>

namespace
{
constexpr double kSliderSteps = 200; ///< for a value of 1

QString percentage(double value)
{
    return TransSetter::tr("%1 %").arg(QLocale().toString(value * 100, 'f', 1));
}
} // namespace

TransSetter::TransSetter(QWidget *parent)
    : QDialog(parent), ui(std::make_unique<Ui::TransSetter>()), before(current())
{
    ui->setupUi(this);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    setAttribute(Qt::WA_DeleteOnClose);
    for (QLabel *number : {ui->amplitudeText, ui->floorText})
        number->setMinimumWidth(fontMetrics().horizontalAdvance(percentage(-9.99)));
    showControls();
    ui->plot->setCurve(before.mode, before.amplitude * factorValue(before.factor), before.floor);
    restorePlace();
}

TransSetter::~TransSetter() = default;

TransSetter::Curve TransSetter::current()
{
    const Workspace *space = workspace();
    return {space->curveMode, space->curveAmplitude, space->curveFloor, space->curveFactor};
}

void TransSetter::store(const Curve &curve)
{
    Workspace *space = workspace();
    space->curveMode = curve.mode;
    space->curveAmplitude = curve.amplitude;
    space->curveFloor = curve.floor;
    space->curveFactor = curve.factor;
}

void TransSetter::restorePlace()
{
    const QPoint place(workspace()->transX, workspace()->transY);
    // A place on a screen that is gone would hide the dialog for good.
    if (place != QPoint(-1, -1) && QGuiApplication::screenAt(place + QPoint(20, 20)))
        move(place);
}

void TransSetter::moveEvent(QMoveEvent *event)
{
    QDialog::moveEvent(event);
    if (!isVisible())
        return; // by its maker, or on its way out
    workspace()->transX = pos().x();
    workspace()->transY = pos().y();
}

void TransSetter::showControls()
{
    const QSignalBlocker quiet[] = {QSignalBlocker(ui->curveType), QSignalBlocker(ui->amplitude),
                                    QSignalBlocker(ui->floor), QSignalBlocker(ui->factor)};
    const Curve curve = current();
    ui->curveType->setCurrentIndex(curve.mode);
    ui->amplitude->setValue(int(std::lround(curve.amplitude * kSliderSteps)));
    ui->floor->setValue(int(std::lround(curve.floor * kSliderSteps)));
    ui->factor->setCurrentIndex(curve.factor);
    ui->amplitudeText->setText(percentage(curve.amplitude));
    ui->floorText->setText(percentage(curve.floor));
}

void TransSetter::curveChanged()
{
    const Curve curve = current();
    ui->amplitudeText->setText(percentage(curve.amplitude));
    ui->floorText->setText(percentage(curve.floor));
    ui->plot->setCurve(curve.mode, curve.amplitude * factorValue(curve.factor), curve.floor);
    if (ViewHost *host = viewHost())
        host->refreshOperatorSource();
}

void TransSetter::on_curveType_currentIndexChanged(int index)
{
    workspace()->curveMode = index;
    curveChanged();
}

void TransSetter::on_amplitude_valueChanged(int value)
{
    workspace()->curveAmplitude = value / 200.0;
    curveChanged();
}

void TransSetter::on_floor_valueChanged(int value)
{
    workspace()->curveFloor = value * 0.005;
    curveChanged();
}

void TransSetter::on_factor_currentIndexChanged(int index)
{
    workspace()->curveFactor = index;
    curveChanged();
}

void TransSetter::on_normalize_clicked()
{
    workspace()->curveAmplitude = 1.0 / factorValue(workspace()->curveFactor);
    showControls();
    curveChanged();
}

void TransSetter::on_reset_clicked()
{
    store(Curve());
    showControls();
    curveChanged();
}

void TransSetter::on_help_clicked()
{
    showHelpPage(this, tr("Help: Area Selection Blending"), QStringLiteral("blending.html"));
}

void TransSetter::reject()
{
    store(before);
    curveChanged();
    QDialog::reject();
}
