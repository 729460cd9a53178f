// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/newimage.h"

#include "core/workspace.h"
#include "operators/dialog/colorwell.h"

#include "ui_newimage.h"

#include <QColorDialog>
#include <QLocale>
#include <QPushButton>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace
{
constexpr int kPlanes = 7;
constexpr int kSpareRows = 2;

/// Memory of this computer in bytes, 0 if it does not tell.
int64_t installedMemory()
{
#ifdef Q_OS_UNIX
    const int64_t pages = sysconf(_SC_PHYS_PAGES);
    const int64_t size = sysconf(_SC_PAGESIZE);
    return pages > 0 && size > 0 ? pages * size : 0;
#else
    return 0;
#endif
}

void fillWith(image *img, const QColor &colour, bool transparent)
{
    if (transparent)
        img->fill(65535, 65535, 65535, 0);
    else
        img->fill(uint16_t(colour.red() * 257), uint16_t(colour.green() * 257),
                  uint16_t(colour.blue() * 257), 65535);
}
} // namespace

NewImage::NewImage(QWidget *parent) : QDialog(parent), ui(std::make_unique<Ui::NewImage>())
{
    ui->setupUi(this);
    const Workspace *space = workspace();
    ui->buttonBox->button(QDialogButtonBox::Ok)->setText(tr("Create"));
    ui->fillColor->setColor16(space->backRed, space->backGreen, space->backBlue);
    ui->dpi->setValue(space->xDpi);
    ui->imageWidth->selectAll();
    showMemory();
}

NewImage::~NewImage() = default;

int64_t NewImage::bytesNeeded(int width, int height)
{
    return int64_t(width) * (int64_t(height) + kSpareRows) * kPlanes * int64_t(sizeof(uint16_t));
}

void NewImage::on_imageWidth_valueChanged(int)
{
    showMemory();
}

void NewImage::on_imageHeight_valueChanged(int)
{
    showMemory();
}

void NewImage::on_transparent_toggled(bool on)
{
    ui->fillColor->setEnabled(!on);
}

void NewImage::on_fillColor_clicked()
{
    const QColor chosen = QColorDialog::getColor(ui->fillColor->color(), this, tr("Fill Color"));
    if (chosen.isValid())
        ui->fillColor->setColor8(chosen.red(), chosen.green(), chosen.blue());
}

void NewImage::showMemory()
{
    const int64_t bytes = bytesNeeded(ui->imageWidth->value(), ui->imageHeight->value());
    const QString amount = QLocale().formattedDataSize(bytes);
    // The system grants more than there is and only fails when the planes are filled.
    const int64_t installed = installedMemory();
    const bool tooMuch = installed > 0 && bytes > installed;
    ui->memory->setText(tooMuch ? tr("%1, more than this computer has").arg(amount) : amount);
    ui->buttonBox->button(QDialogButtonBox::Ok)->setEnabled(!tooMuch);
}

void NewImage::accept()
{
    Workspace *space = workspace();
    auto made = std::make_unique<image>();
    // The serial that the image is given when it is shown.
    const QString name = tr("New Image %1").arg(space->imageSerial + 1);
    if (!made->allocateUnfilled(ui->imageWidth->value(), ui->imageHeight->value(), name)) {
        space->messageBox(tr("New Image"), tr("Image Allocation Failed"));
        return;
    }
    fillWith(made.get(), ui->fillColor->color(), ui->transparent->isChecked());
    made->xDpi = made->yDpi = ui->dpi->value();
    QDialog::accept();
    space->showImage(made.release(), FileRecord());
    space->statusText(tr("New Image Created"));
}
