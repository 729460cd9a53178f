// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QPixmap>
#include <QPoint>
#include <QWidget>

class image;

constexpr int kPreviewSide = 100;
constexpr int kHalfPreviewSide = 50;

/// The small view of the operator dialog, 100 x 100 pixels. Dragging in it reports by
/// how much the mouse moved.
class OpPreview : public QWidget
{
    Q_OBJECT
public:
    explicit OpPreview(QWidget *parent = nullptr);

    /// Shows an internal preview image: 100 x 100 samples, or with `x2` 50 x 50 samples
    /// as blocks of 2 x 2 pixels. Null clears the view.
    void setPicture(const image *picture, bool x2);
    /// What the view shows, one image pixel a preview pixel; null when it is clear.
    QImage shown() const { return buffer.toImage(); }

signals:
    /// The mouse was dragged by this much since the last report.
    void prod(int dx, int dy);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    /// Where the mouse is, in pixels of the preview.
    QPoint placeOf(const QMouseEvent &event) const;

    int scale = 1; ///< side of a preview pixel on the screen
    QPixmap buffer;
    bool dragging = false;
    int startX = 0, startY = 0;
    QPoint lastOffset;
};
