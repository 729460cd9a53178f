// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/outlinemode.h"

#include "app/helppage.h"
#include "core/workspace.h"

#include "ui_outlinemode.h"

OutLineMode::OutLineMode(QWidget *parent) : QDialog(parent), ui(std::make_unique<Ui::OutLineMode>())
{
    ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    // Fixed, so that the slider keeps its length while it is moved.
    ui->threshold->setMinimumWidth(
        ui->threshold->fontMetrics().horizontalAdvance(QStringLiteral("255")));
    const Workspace &space = *workspace();
    (space.outlineExpand ? ui->selection : ui->alpha)->setChecked(true);
    (space.outline8w ? ui->ol8 : ui->ol4)->setChecked(true);
    ui->edgeOnly->setChecked(space.edgeOnly);
    ui->horizontalSlider->setValue(space.outlinethresh);
    on_horizontalSlider_valueChanged(ui->horizontalSlider->value());
    showMode();
    connect(ui->buttonBox, &QDialogButtonBox::helpRequested, this, [this] {
        showHelpPage(this, tr("Area tools"), QStringLiteral("areatools.html#outline"));
    });
}

OutLineMode::~OutLineMode() = default;

void OutLineMode::showMode()
{
    const bool ofSelection = workspace()->outlineExpand;
    ui->edgeOnly->setEnabled(ofSelection);
    for (QWidget *part :
         {static_cast<QWidget *>(ui->thresholdCaption),
          static_cast<QWidget *>(ui->horizontalSlider), static_cast<QWidget *>(ui->threshold)})
        part->setEnabled(!ofSelection);
}

void OutLineMode::on_horizontalSlider_valueChanged(int value)
{
    workspace()->outlinethresh = value;
    ui->threshold->setText(QStringLiteral("%1").arg(value));
}

void OutLineMode::on_ol8_clicked()
{
    workspace()->outline8w = true;
}

void OutLineMode::on_ol4_clicked()
{
    workspace()->outline8w = false;
}

void OutLineMode::on_selection_clicked()
{
    workspace()->outlineExpand = true;
    showMode();
}

void OutLineMode::on_alpha_clicked()
{
    workspace()->outlineExpand = false;
    showMode();
}

void OutLineMode::on_edgeOnly_clicked(bool on)
{
    workspace()->edgeOnly = on;
}
