// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/busyguard.h"
#include "app/layers.h"
#include "app/mainwindow.h"
#include "core/image.h"
#include "core/layermodes.h"

#include "ui_layers.h"

namespace
{
constexpr double kTenthsPerPercent = 10.0;
}

/// Only marks: the master is composed at its next paint, so that a drag of a slider over a
/// large stack costs one composition for each picture shown, not for each step.
void Layers::settingChanged(image *layer)
{
    image *of = layer->master;
    layer->changed = true;
    of->changed = true;
    of->stampModification();
    of->needsRebuild = true;
    main->layersChanged(of);
    main->refreshViews(of);
}

template <class Value>
void Layers::change(Value image::*field, Value value)
{
    image *layer = selected();
    if (filling || !layer || layer->*field == value)
        return;
    layer->*field = value;
    settingChanged(layer);
}

void Layers::on_layerList_currentRowChanged(int row)
{
    log("on_layerList_currentRowChanged");
    if (filling)
        return;
    current = layerAt(row);
    setWorkingLayerModes();
    enabledWidgets();
}

void Layers::on_layerMode_currentIndexChanged(int index)
{
    log("on_layerMode_currentIndexChanged");
    const image *layer = selected();
    if (filling || !layer || index < 0)
        return;
    const int mode = ui->layerMode->itemData(index).toInt();
    if (mode == layer->layerMode)
        return;
    if (layer->layerMode == kWarpMode || (mode == kWarpMode && !mayBecomeWarp(layer))) {
        setLayerMode(selected());
        return;
    }
    change(&image::layerMode, int32_t(mode));
}

/// A picture makes a poor field of displacements, and there is no way back.
bool Layers::mayBecomeWarp(const image *layer)
{
    const BusyGuard guard(main->busyDepth());
    const int answer = main->question(
        tr("Layer Mode"),
        tr("As a warp, the samples of <b>%1</b> are displacements and no picture,<br>and it keeps "
           "this mode for good. A new warp layer is made under <i>Warp</i>.")
            .arg(layer->name.toHtmlEscaped()),
        {tr("Cancel"), tr("Make It a Warp")}, 1, 0);
    return answer == 1 && layer == selected();
}

void Layers::on_byName_clicked()
{
    log("on_byName_clicked");
    populateLayerModes();
}

void Layers::toggleVisible(int row)
{
    image *layer = layerAt(row);
    if (!layer || filling)
        return;
    layer->visible = !layer->visible;
    settingChanged(layer);
}

void Layers::on_visible_clicked()
{
    log("on_visible_clicked");
    change(&image::visible, ui->visible->isChecked());
}

void Layers::on_localstack_clicked()
{
    log("on_localstack_clicked");
    change(&image::localStack, ui->localstack->isChecked());
}

void Layers::on_lockstep_clicked()
{
    log("on_lockstep_clicked");
    change(&image::lockStep, ui->lockstep->isChecked());
}

void Layers::on_globalmask_clicked()
{
    log("on_globalmask_clicked");
    change(&image::globalMask, ui->globalmask->isChecked());
}

void Layers::on_opacity_valueChanged(double percent)
{
    log("on_opacity_valueChanged");
    change(&image::opacity, percent / 100);
}

void Layers::on_factor_valueChanged(double percent)
{
    log("on_factor_valueChanged");
    change(&image::factor, percent / 100);
}

void Layers::on_opacitySlider_valueChanged(int tenths)
{
    if (!filling)
        ui->opacity->setValue(tenths / kTenthsPerPercent);
}

void Layers::on_factorSlider_valueChanged(int percent)
{
    if (!filling)
        ui->factor->setValue(percent);
}

void Layers::on_xOffset_valueChanged(int value)
{
    change(&image::xOffset, int32_t(value));
}

void Layers::on_yOffset_valueChanged(int value)
{
    change(&image::yOffset, int32_t(value));
}

void Layers::on_xFraction_valueChanged(double value)
{
    change(&image::xFraction, value);
}

void Layers::on_yFraction_valueChanged(double value)
{
    change(&image::yFraction, value);
}

void Layers::on_xCenter_valueChanged(int value)
{
    change(&image::xCenter, int32_t(value));
}

void Layers::on_yCenter_valueChanged(int value)
{
    change(&image::yCenter, int32_t(value));
}

void Layers::on_rotation_valueChanged(double degrees)
{
    change(&image::rotation, degrees);
}
