// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTreeWidget>
#include <QVector>

class image;

/// The open images with a small picture, title, size and a mark for unsaved changes.
class ImageList : public QTreeWidget
{
    Q_OBJECT
public:
    explicit ImageList(QWidget *parent = nullptr);

    /// Shows these images. Rows are touched only where something differs from the last
    /// call, so that a timer may call it as often as it likes.
    void sync(const QList<image *> &images, const image *current);
    /// The samples of the image changed: its small picture is drawn anew by drawStale().
    void markStale(const image *img);
    void drawStale();

signals:
    /// A click on the row, or Return on it.
    void imagePicked(image *img);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    struct Row {
        image *img = nullptr;
        QString title;
        int serial = 0; ///< an address may come back with another image
        int width = 0, height = 0;
        bool changed = false;
        bool stale = true;
        bool operator==(const Row &other) const;
    };
    QVector<Row> rows;
    const image *currentImage = nullptr;

    void rebuildCount(const QList<image *> &images);
    void showRow(int index);
    void pick(const QTreeWidgetItem *item);
};
