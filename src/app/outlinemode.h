// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

#include <memory>

namespace Ui
{
class OutLineMode;
}

/// How a selection becomes an outline: from its own edge or from that of the picture's alpha.
/// Each choice takes effect at once. Closing deletes the dialog.
class OutLineMode : public QDialog
{
    Q_OBJECT
public:
    explicit OutLineMode(QWidget *parent);
    ~OutLineMode() override;

private slots:
    void on_horizontalSlider_valueChanged(int value);
    void on_ol8_clicked();
    void on_ol4_clicked();
    void on_selection_clicked();
    void on_alpha_clicked();
    void on_edgeOnly_clicked(bool on);

private:
    /// Only what the mode uses can be set.
    void showMode();

    std::unique_ptr<Ui::OutLineMode> ui;
};
