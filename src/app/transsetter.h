// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

#include <memory>

namespace Ui
{
class TransSetter;
}

/// "Area Selection Blending": the curve that shapes the selection when an operator is applied.
/// Changes hold at once, Cancel takes them back. Not modal, goes when it is closed.
class TransSetter : public QDialog
{
    Q_OBJECT
public:
    explicit TransSetter(QWidget *parent);
    ~TransSetter() override;

    void reject() override;

private slots:
    void on_curveType_currentIndexChanged(int index);
    void on_amplitude_valueChanged(int value);
    void on_floor_valueChanged(int value);
    void on_factor_currentIndexChanged(int index);
    void on_normalize_clicked();
    void on_reset_clicked();
    void on_help_clicked();

protected:
    void moveEvent(QMoveEvent *event) override;

private:
    struct Curve {
        int mode = 1;
        double amplitude = 1.0, floor = 0.0;
        int factor = 0;
    };
    static Curve current();
    static void store(const Curve &curve);
    void restorePlace();
    /// The controls as the settings stand. A slider cannot show every value; the setting
    /// keeps its own until the slider is moved.
    void showControls();
    /// After each change: numbers, plot and previews.
    void curveChanged();

    std::unique_ptr<Ui::TransSetter> ui;
    Curve before; ///< what Cancel brings back
};
