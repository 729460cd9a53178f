// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/imagelist.h"

#include "app/smallpicture.h"
#include "core/image.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>

#include <algorithm>

namespace
{
constexpr int kPictureSide = 36;
enum Column { kNameColumn, kSizeColumn, kChangedColumn, kColumns };
} // namespace

bool ImageList::Row::operator==(const Row &other) const
{
    return img == other.img && serial == other.serial && title == other.title &&
           width == other.width && height == other.height && changed == other.changed;
}

ImageList::ImageList(QWidget *parent) : QTreeWidget(parent)
{
    setColumnCount(kColumns);
    setHeaderHidden(true);
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setIconSize(QSize(kPictureSide, kPictureSide));
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setTextElideMode(Qt::ElideMiddle);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    header()->setStretchLastSection(false);
    header()->setMinimumSectionSize(16);
    header()->setSectionResizeMode(kNameColumn, QHeaderView::Stretch);
    header()->setSectionResizeMode(kSizeColumn, QHeaderView::ResizeToContents);
    header()->setSectionResizeMode(kChangedColumn, QHeaderView::ResizeToContents);
}

void ImageList::sync(const QList<image *> &images, const image *current)
{
    const bool otherImages = images.size() != rows.size();
    if (otherImages)
        rebuildCount(images);
    for (int i = 0; i < images.size(); ++i) {
        image *img = images.at(i);
        Row now{img,  img->title, img->serial, img->width, img->height, img->hasUnsavedChanges(),
                false};
        if (now == rows.at(i))
            continue;
        const Row &old = rows.at(i);
        now.stale = now.img != old.img || now.serial != old.serial || old.stale;
        rows[i] = now;
        showRow(i);
    }
    if (!otherImages && current == currentImage)
        return;
    currentImage = current;
    const int row = images.indexOf(const_cast<image *>(current));
    setCurrentItem(row < 0 ? nullptr : topLevelItem(row));
    drawStale();
}

void ImageList::rebuildCount(const QList<image *> &images)
{
    while (rows.size() > images.size()) {
        rows.removeLast();
        delete takeTopLevelItem(rows.size());
    }
    while (rows.size() < images.size()) {
        rows.append(Row());
        addTopLevelItem(new QTreeWidgetItem);
    }
    // With no image there is nothing to reach by keyboard.
    setFocusPolicy(images.isEmpty() ? Qt::NoFocus : Qt::StrongFocus);
}

void ImageList::showRow(int index)
{
    const Row &row = rows.at(index);
    QTreeWidgetItem *item = topLevelItem(index);
    const QString size = QStringLiteral("%1 × %2").arg(row.width).arg(row.height);
    item->setText(kNameColumn, row.title);
    item->setText(kSizeColumn, size);
    item->setText(kChangedColumn, row.changed ? QStringLiteral("●") : QString());
    item->setTextAlignment(kSizeColumn, Qt::AlignRight | Qt::AlignVCenter);
    item->setData(kChangedColumn, Qt::AccessibleTextRole,
                  row.changed ? tr("changed") : tr("unchanged"));
    QString tip = row.title + QLatin1Char('\n') + size;
    if (!row.img->fullPath.isEmpty())
        tip += QLatin1Char('\n') + row.img->fullPath;
    if (row.changed)
        tip += QLatin1Char('\n') + tr("Unsaved changes");
    for (int column = 0; column < kColumns; ++column)
        item->setData(column, Qt::ToolTipRole, tip.toHtmlEscaped().replace('\n', "<br>"));
}

void ImageList::markStale(const image *img)
{
    for (Row &row : rows)
        if (row.img == img)
            row.stale = true;
}

void ImageList::drawStale()
{
    for (int i = 0; i < rows.size(); ++i) {
        if (!rows.at(i).stale)
            continue;
        rows[i].stale = false;
        const QPixmap picture =
            smallPicture(*rows.at(i).img, kPictureSide, devicePixelRatioF(), false);
        QIcon icon(picture);
        icon.addPixmap(picture, QIcon::Selected); // a tint would show wrong colours
        topLevelItem(i)->setIcon(kNameColumn, icon);
    }
}

void ImageList::pick(const QTreeWidgetItem *item)
{
    const int index = item ? indexOfTopLevelItem(const_cast<QTreeWidgetItem *>(item)) : -1;
    if (index >= 0)
        emit imagePicked(rows.at(index).img);
}

void ImageList::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        pick(currentItem());
        return;
    case Qt::Key_Up:
    case Qt::Key_Down:
        QTreeWidget::keyPressEvent(event);
        return;
    default:
        // Letters are commands for the current image, not a search in this list.
        event->ignore();
    }
}

void ImageList::mousePressEvent(QMouseEvent *event)
{
    QTreeWidget::mousePressEvent(event);
    if (event->button() == Qt::LeftButton)
        pick(itemAt(event->pos()));
}

void ImageList::paintEvent(QPaintEvent *event)
{
    QTreeWidget::paintEvent(event);
    if (!rows.isEmpty())
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::Disabled, QPalette::Text));
    painter.drawText(viewport()->rect().adjusted(12, 12, -12, -12),
                     Qt::AlignCenter | Qt::TextWordWrap,
                     tr("No image is open.\nLoad one, or drop picture files here."));
}
