// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

#include <memory>

namespace Ui
{
class GuideSettings;
}

/// Aspect and guide lines of the Crop operator, and whether the bands of the area tools show
/// the guides too. Each choice takes effect at once. Closing deletes the dialog.
class GuideSettings : public QDialog
{
    Q_OBJECT
public:
    explicit GuideSettings(QWidget *parent);
    ~GuideSettings() override;

private slots:
    void on_aspect_currentIndexChanged(int index);
    void on_guide_currentIndexChanged(int index);
    void on_rectuse_clicked(bool on);
    void on_elluse_clicked(bool on);

private:
    std::unique_ptr<Ui::GuideSettings> ui;
};
