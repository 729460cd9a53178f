// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

#include <memory>

namespace Ui
{
class SetQuality;
}

/// Asks for the quality of a picture that is about to be saved, 1 to 100.
class SetQuality : public QDialog
{
    Q_OBJECT
public:
    SetQuality(int quality, bool forPng, QWidget *parent = nullptr);
    ~SetQuality() override;

    int quality() const;

    /// Shows the dialog with *quality and writes the answer back. False, with *quality as
    /// it was, if the save was given up.
    static bool ask(QWidget *parent, int *quality, bool forPng);

private slots:
    void on_slider_valueChanged(int value);

private:
    /// What the number does, in words.
    static QString pngText(int value);
    static QString jpegText(int value);

    std::unique_ptr<Ui::SetQuality> ui;
    bool png;
};
