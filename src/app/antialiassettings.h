// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QImage>

#include <memory>
#include <vector>

class QBoxLayout;
class QCheckBox;
class QGridLayout;
class QSlider;
class QSpinBox;
class image;

/// The edge of a selected disc, enlarged: crisp, and smoothed as the settings say.
class SmoothingSample : public QWidget
{
    Q_OBJECT
public:
    explicit SmoothingSample(QWidget *parent = nullptr);
    ~SmoothingSample() override;

    /// Smooths the sample anew.
    void settingsChanged();
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void selectDisc();
    QImage selectionPicture() const;

    std::unique_ptr<image> picture; ///< whose selection is smoothed
    QImage crisp, smoothed;
};

/// Radius, amount and per-tool switches of the smoothing of selections. Not modal, goes when
/// it is closed; changes hold at once.
class AntialiasSettings : public QDialog
{
    Q_OBJECT
public:
    explicit AntialiasSettings(QWidget *parent);

public slots:
    /// A switch was changed elsewhere, by a key for instance.
    void settingsChanged();

private:
    /// A slider with a field beside it; the field may reach further than the slider.
    struct Strength {
        QSlider *slider = nullptr;
        QSpinBox *field = nullptr;
        void show(int value) const;
    };
    Strength addStrength(QGridLayout *grid, const char *name, const QString &caption, int low,
                         int sliderHigh, int high, const QString &suffix);
    void addSwitches(QBoxLayout *column);
    void addButtons(QBoxLayout *column);
    void restoreDefaults();

    Strength radius, amount;
    std::vector<QCheckBox *> switches; ///< in the order of the table of switches
    SmoothingSample *sample;
};
