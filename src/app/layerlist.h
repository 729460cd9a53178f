// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QBasicTimer>
#include <QIcon>
#include <QListWidget>
#include <QPixmap>
#include <QVector>

/// What one row of the list tells about a layer.
struct LayerRow {
    QString name, detail, tip;
    bool visible = true, target = false;
    bool operator==(const LayerRow &other) const;
};

/// The layers of a stack, the top one first: an eye to click, a small picture, the name and
/// the settings. Rows are moved with the mouse or with Ctrl and an arrow key; the list only
/// asks for it, and whoever owns the stack does it.
class LayerList : public QListWidget
{
    Q_OBJECT
public:
    explicit LayerList(QWidget *parent = nullptr);

    /// Shows these rows; touches only those that differ from what is shown.
    void setRows(const QVector<LayerRow> &newRows);
    void setPicture(int row, const QPixmap &picture);
    /// Side of the small pictures in points.
    static int pictureSide();

    void paintRow(QPainter *painter, const QStyleOptionViewItem &option, int row) const;
    QSize rowSize() const;
    /// The eye of a row, in coordinates of the viewport.
    QRect eyeRect(int row) const;

signals:
    void eyeClicked(int row);
    /// A double click on the row, or Return on it.
    void rowOpened(int row);
    void moveRequested(int from, int to);
    void removeRequested();
    void renameRequested();

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void timerEvent(QTimerEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    int rowAt(QPoint position) const;
    /// The gap between rows that is nearest to a place: 0 above the first row.
    int gapAt(QPoint position) const;
    void endDrag();
    void drawGap(QPainter *painter) const;
    void drawEye(QPainter *painter, const QRect &place, bool open, const QColor &colour) const;

    QVector<LayerRow> rows;
    QVector<QPixmap> pictures;
    QIcon eyeOpen, eyeClosed;
    QPoint pressedAt, dragAt;
    int pressedRow = -1;
    bool dragging = false;
    QBasicTimer scrolling; ///< while a row is held at the edge of the list
};
