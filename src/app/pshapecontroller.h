// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

/// Turns the current P-Shape. Not modal, goes when it is closed.
class pShapeController : public QDialog
{
    Q_OBJECT
public:
    explicit pShapeController(QWidget *parent);

public slots:
    /// The shape was turned elsewhere, or another one took its place.
    void shapeChanged();
};
