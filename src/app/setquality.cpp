// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/setquality.h"

#include "ui_setquality.h"

SetQuality::SetQuality(int quality, bool forPng, QWidget *parent)
    : QDialog(parent), ui(std::make_unique<Ui::SetQuality>())
{
    ui->setupUi(this);
    ui->explanation->setText(
        forPng ? tr("Lower makes the file smaller and saving slower; the picture stays the same.")
               : tr("Higher keeps more of the picture's detail and makes the file larger."));
    ui->value->setMinimumWidth(ui->value->fontMetrics().horizontalAdvance(QStringLiteral("100")));
    ui->slider->setValue(quality);
    on_slider_valueChanged(ui->slider->value());
}

SetQuality::~SetQuality() = default;

int SetQuality::quality() const
{
    return ui->slider->value();
}

void SetQuality::on_slider_valueChanged(int value)
{
    ui->value->setText(QString::number(value));
}

bool SetQuality::ask(QWidget *parent, int *quality, bool forPng)
{
    if (!quality)
        return false;
    SetQuality dialog(*quality, forPng, parent);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    *quality = dialog.quality();
    return true;
}
