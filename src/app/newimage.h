// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

#include <cstdint>
#include <memory>

namespace Ui
{
class NewImage;
}

/// Asks for the size and filling of a new image, then makes and shows it.
class NewImage : public QDialog
{
    Q_OBJECT
public:
    explicit NewImage(QWidget *parent = nullptr);
    ~NewImage() override;

    /// Makes the image and shows it; if memory is short the dialog says so and stays.
    void accept() override;

    /// Bytes that the planes of an image of this size take.
    static int64_t bytesNeeded(int width, int height);

private slots:
    void on_imageWidth_valueChanged(int);
    void on_imageHeight_valueChanged(int);
    void on_transparent_toggled(bool on);
    void on_fillColor_clicked();

private:
    void showMemory();

    std::unique_ptr<Ui::NewImage> ui;
};
