// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

class QSlider;

/// A modal question for one whole number: a slider and a field beside it.
class SingleSlider : public QDialog
{
    Q_OBJECT
public:
    SingleSlider(const QString &title, const QString &label, int low, int high, int value,
                 QWidget *parent = nullptr);

    int value() const;

private:
    QSlider *slider;
};
