// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/setquality.h"

#include "ui_setquality.h"

namespace
{
constexpr int kTextWidth = 52; // characters of an explanation's line
constexpr int kTextLines = 4;

/// Qt turns the number into one of zlib's levels: 0, which stores, from 90 up; 1 from 80;
/// then one more for about each ten below, and 9 below 10.
int pngLevel(int quality)
{
    return (100 - quality) * 9 / 91;
}
} // namespace

SetQuality::SetQuality(int quality, bool forPng, QWidget *parent)
    : QDialog(parent), ui(std::make_unique<Ui::SetQuality>()), png(forPng)
{
    ui->setupUi(this);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    setWindowTitle(forPng ? tr("PNG Compression") : tr("JPEG Quality"));
    const QFontMetrics metrics(font());
    // Fixed, so that the dialog keeps its size while the slider moves.
    ui->explanation->setMinimumSize(metrics.averageCharWidth() * kTextWidth,
                                    metrics.lineSpacing() * kTextLines);
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
    ui->explanation->setText(png ? pngText(value) : jpegText(value));
}

QString SetQuality::pngText(int value)
{
    const QString same = tr("The picture is kept exactly, whatever the number. ");
    const int level = pngLevel(value);
    if (level == 0)
        return same + tr("At 90 and more the file is not compressed: saved fastest, and several "
                         "times as large as at 80.");
    if (level == 1)
        return same + tr("From 80 to 89 it is compressed quickly. Lower numbers make it smaller "
                         "and saving slower.");
    return same + tr("It is compressed at level %1 of 9: the lower the number, the smaller the "
                     "file and the slower the saving, by much below 20.")
                      .arg(level);
}

QString SetQuality::jpegText(int value)
{
    const QString loses = tr("JPEG leaves out detail: higher numbers keep more of it and make "
                             "the file larger. ");
    if (value > 95)
        return loses + tr("Above 95 the file grows much, and hardly any difference is seen; "
                          "some detail is lost even at 100.");
    if (value >= 85)
        return loses + tr("This suits photographs that are kept.");
    if (value >= 60)
        return loses + tr("This suits pictures for the web and for mail; fine edges may show "
                          "traces.");
    return loses + tr("Here blocks and blurred colors are seen.");
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
