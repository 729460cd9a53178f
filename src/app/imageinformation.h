// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QSize>

#include <memory>

class image;
namespace Ui
{
class ImageInformation;
}

/// What is known about a picture, and the fields of it that a person may write. OK applies
/// them as one act. The image must stay while the dialog is open.
class ImageInformation : public QDialog
{
    Q_OBJECT
public:
    explicit ImageInformation(image *img, QWidget *parent = nullptr);
    ~ImageInformation() override;

public slots:
    void accept() override;

private slots:
    void on_countColors_clicked();
    void on_copyPlace_clicked();
    void on_copyLines_clicked();
    void on_search_textChanged(const QString &text);
    void on_xDpi_valueChanged(int dpi);
    void on_yDpi_valueChanged(int dpi);
    void on_lockDpi_toggled(bool on);

private:
    void fillFacts();
    void fillFields();
    void fillCamera();
    void showPrintSize();
    bool edited() const;

    std::unique_ptr<Ui::ImageInformation> ui;
    image *shown;
    QSize firstDpi; ///< as the fields showed it at first
};
