// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/adjustment/tonecurve.h"

#include <QWidget>

#include <array>

class image;

/// A tone curve whose knots can be added, dragged and taken away, by the mouse or by keys,
/// over a histogram of the values that go into it.
class Curve : public QWidget
{
    Q_OBJECT
public:
    /// Edits `curve`, which is borrowed.
    Curve(ToneCurve *curve, QWidget *parent = nullptr);

    /// Shows the curve as it is now, after others changed it.
    void showCurve();
    /// Counts the values (of each pixel its largest channel) that stand behind the curve;
    /// null leaves the ground empty.
    void setPicture(const image *picture);

    /// Where a level pair lies in the widget, and the other way round (unlimited).
    QPointF placeOf(double x, double y) const;
    ToneCurve::Knot levelsAt(const QPointF &place) const;
    /// The line at the top: the levels of the chosen knot while it is worked on, else those
    /// under the pointer; empty without either.
    QString readout() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    /// The person changed the curve.
    void edited();
    /// Another knot is the chosen one.
    void knotChosen();

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    bool focusNextPrevChild(bool next) override;

private:
    double unit() const;
    QRectF plot() const;
    int knotNear(const QPointF &place) const;
    void choose(int index);
    void changed();
    void removeKnot(int index);
    void insertKnot();
    bool moveByKey(QKeyEvent *event);
    void drag(const QPointF &place);
    void stopDrag(bool takeBack);
    void showCursor(const QPointF &place);
    void describe();

    void drawGround(QPainter *painter, const QRectF &area) const;
    void drawHistogram(QPainter *painter, const QRectF &area) const;
    void drawLine(QPainter *painter, const QRectF &area) const;
    void drawKnots(QPainter *painter) const;
    void drawReadout(QPainter *painter, const QRectF &area) const;

    ToneCurve *edits;
    std::array<int, 256> values{};
    bool dragging = false;
    bool lifted = false; ///< dragged out of the widget: the knot is gone if it is let go there
    ToneCurve beforePress, atPress; ///< without and with the knot that the press made
    QPointF pointer{-1, -1};        ///< where it hovers; x below 0: nowhere
};
