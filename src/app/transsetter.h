// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

/// "Area Selection Blending": the curve that shapes the selection when an operator is applied.
/// Not modal, goes when it is closed.
class TransSetter : public QDialog
{
    Q_OBJECT
public:
    explicit TransSetter(QWidget *parent);
};
