// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

/// A plot of the blend curve across a selection: the height is the share that is left of the
/// selection there.
class TransCurve : public QWidget
{
    Q_OBJECT
public:
    explicit TransCurve(QWidget *parent = nullptr);

    /// `amplitude` already holds the factor.
    void setCurve(int mode, double amplitude, double floorValue);
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    /// In device pixels.
    void drawCurve(QPainter *painter, const QRect &plot) const;
    void drawQuarters(QPainter *painter, const QRect &plot, int thickness) const;

    int curveMode = 1;
    double peak = 1.0; ///< amplitude times factor
    double floorHeight = 0.0;
};
