// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/layerlist.h"

#include <QAbstractItemDelegate>
#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyleOptionViewItem>
#include <QWindow>

#include <algorithm>

namespace
{
constexpr int kPictureSide = 40;
constexpr int kMargin = 4;
constexpr int kEyeSide = 18;
constexpr int kScrollMs = 40;
constexpr int kScrollStep = 12;
const QColor kTargetGreen(0x00, 0x88, 0x00);

class RowDelegate : public QAbstractItemDelegate
{
public:
    explicit RowDelegate(LayerList *shown) : QAbstractItemDelegate(shown), list(shown) {}
    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override
    {
        list->paintRow(painter, option, index.row());
    }
    QSize sizeHint(const QStyleOptionViewItem &, const QModelIndex &) const override
    {
        return list->rowSize();
    }

private:
    LayerList *list;
};
} // namespace

bool LayerRow::operator==(const LayerRow &other) const
{
    return name == other.name && detail == other.detail && tip == other.tip &&
           visible == other.visible && target == other.target;
}

LayerList::LayerList(QWidget *parent)
    : QListWidget(parent), eyeOpen(QStringLiteral(":/icons/eye.svg")),
      eyeClosed(QStringLiteral(":/icons/eye-off.svg"))
{
    setItemDelegate(new RowDelegate(this));
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setUniformItemSizes(true);
}

int LayerList::pictureSide()
{
    return kPictureSide;
}

QSize LayerList::rowSize() const
{
    const int lines = 2 * fontMetrics().height() + 2;
    return {120, std::max(kPictureSide, lines) + 2 * kMargin};
}

void LayerList::setRows(const QVector<LayerRow> &newRows)
{
    pictures.resize(newRows.size());
    while (count() > newRows.size())
        delete takeItem(count() - 1);
    rows.resize(newRows.size());
    for (int i = 0; i < newRows.size(); ++i) {
        if (i < count() && rows.at(i) == newRows.at(i))
            continue;
        rows[i] = newRows.at(i);
        if (i >= count())
            addItem(QString());
        QListWidgetItem *shown = item(i);
        const LayerRow &row = rows.at(i);
        shown->setText(row.name);
        shown->setToolTip(row.tip);
        QString spoken = row.name + QStringLiteral(", ") + row.detail;
        if (!row.visible)
            spoken += tr(", hidden");
        if (row.target)
            spoken += tr(", target");
        shown->setData(Qt::AccessibleTextRole, spoken);
    }
    viewport()->update();
}

void LayerList::setPicture(int row, const QPixmap &picture)
{
    if (row < 0 || row >= pictures.size())
        return;
    pictures[row] = picture;
    viewport()->update();
}

QRect LayerList::eyeRect(int row) const
{
    const QRect place = visualItemRect(item(row));
    return {place.left(), place.top(), kEyeSide + 2 * kMargin, place.height()};
}

void LayerList::paintRow(QPainter *painter, const QStyleOptionViewItem &option, int row) const
{
    if (row < 0 || row >= rows.size())
        return;
    const LayerRow &shown = rows.at(row);
    QStyleOptionViewItem back = option;
    style()->drawPrimitive(QStyle::PE_PanelItemViewItem, &back, painter, this);

    const bool selected = option.state & QStyle::State_Selected;
    const QPalette::ColorGroup group =
        !(option.state & QStyle::State_Active) ? QPalette::Inactive : QPalette::Active;
    const QColor text =
        option.palette.color(group, selected ? QPalette::HighlightedText : QPalette::Text);
    QColor quiet = text;
    quiet.setAlpha(170);

    QRect place = option.rect.adjusted(kMargin, kMargin, -kMargin, -kMargin);
    const QRect eye(place.left(), place.center().y() - kEyeSide / 2, kEyeSide, kEyeSide);
    drawEye(painter, eye, shown.visible, selected ? text : QColor());
    place.setLeft(eye.right() + 2 * kMargin);
    const QRect picture(place.left(), place.top(), kPictureSide, kPictureSide);
    painter->setOpacity(shown.visible ? 1.0 : 0.4);
    painter->drawPixmap(picture.topLeft(), pictures.at(row));
    painter->setOpacity(1.0);
    place.setLeft(picture.right() + 2 * kMargin);

    QFont bold = font();
    bold.setBold(true);
    const QFontMetrics boldMetrics(bold);
    QRect line(place.left(), place.center().y() - fontMetrics().height(), place.width(),
               fontMetrics().height());
    if (shown.target) {
        const QString mark = tr("Target");
        const int width = boldMetrics.horizontalAdvance(mark);
        painter->setFont(bold);
        painter->setPen(selected ? text : kTargetGreen);
        painter->drawText(line, Qt::AlignRight | Qt::AlignVCenter, mark);
        line.setRight(line.right() - width - 2 * kMargin);
    }
    painter->setFont(bold);
    painter->setPen(shown.visible ? text : quiet);
    painter->drawText(line, Qt::AlignLeft | Qt::AlignVCenter,
                      boldMetrics.elidedText(shown.name, Qt::ElideMiddle, line.width()));
    line = QRect(place.left(), line.bottom() + 2, place.width(), fontMetrics().height());
    painter->setFont(font());
    painter->setPen(quiet);
    painter->drawText(line, Qt::AlignLeft | Qt::AlignVCenter,
                      fontMetrics().elidedText(shown.detail, Qt::ElideRight, line.width()));
    if (option.state & QStyle::State_HasFocus) {
        QStyleOptionFocusRect focus;
        focus.QStyleOption::operator=(option);
        focus.rect = option.rect.adjusted(1, 1, -1, -1);
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &focus, painter, this);
    }
}

/// In its own colours, or in one that stands out from a selected row.
void LayerList::drawEye(QPainter *painter, const QRect &place, bool open,
                        const QColor &colour) const
{
    const QIcon &icon = open ? eyeOpen : eyeClosed;
    if (!colour.isValid()) {
        icon.paint(painter, place);
        return;
    }
    QPixmap tinted = icon.pixmap(window()->windowHandle(), place.size());
    QPainter tint(&tinted);
    tint.setCompositionMode(QPainter::CompositionMode_SourceIn);
    tint.fillRect(QRect(QPoint(0, 0), place.size()), colour);
    tint.end();
    painter->drawPixmap(place.topLeft(), tinted);
}

int LayerList::rowAt(QPoint position) const
{
    const QModelIndex index = indexAt(position);
    return index.isValid() ? index.row() : -1;
}

int LayerList::gapAt(QPoint position) const
{
    for (int i = 0; i < count(); ++i)
        if (position.y() < visualItemRect(item(i)).center().y())
            return i;
    return count();
}

void LayerList::mousePressEvent(QMouseEvent *event)
{
    const int row = rowAt(event->pos());
    if (event->button() == Qt::LeftButton && row >= 0 && eyeRect(row).contains(event->pos())) {
        emit eyeClicked(row);
        return;
    }
    QListWidget::mousePressEvent(event);
    if (event->button() == Qt::LeftButton) {
        pressedRow = row;
        pressedAt = event->pos();
    }
}

void LayerList::mouseMoveEvent(QMouseEvent *event)
{
    // Not to the list itself: it would select the rows that the mouse passes.
    if (!(event->buttons() & Qt::LeftButton) || pressedRow < 0)
        return;
    dragAt = event->pos();
    if (!dragging && (dragAt - pressedAt).manhattanLength() >= QApplication::startDragDistance()) {
        dragging = true;
        viewport()->setCursor(Qt::ClosedHandCursor);
        scrolling.start(kScrollMs, this);
    }
    if (dragging)
        viewport()->update();
}

void LayerList::mouseReleaseEvent(QMouseEvent *event)
{
    const bool moved = dragging;
    const int from = pressedRow;
    endDrag();
    if (!moved) {
        QListWidget::mouseReleaseEvent(event);
        return;
    }
    const int gap = gapAt(event->pos());
    const int to = gap > from ? gap - 1 : gap;
    if (from < count() && to != from)
        emit moveRequested(from, to);
}

void LayerList::mouseDoubleClickEvent(QMouseEvent *event)
{
    const int row = rowAt(event->pos());
    if (event->button() != Qt::LeftButton || row < 0)
        return;
    if (eyeRect(row).contains(event->pos()))
        emit eyeClicked(row); // a quick second click hides what the first one showed
    else
        emit rowOpened(row);
}

void LayerList::endDrag()
{
    pressedRow = -1;
    dragging = false;
    scrolling.stop();
    viewport()->unsetCursor();
    viewport()->update();
}

void LayerList::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != scrolling.timerId()) {
        QListWidget::timerEvent(event);
        return;
    }
    const int edge = rowSize().height() / 3;
    QScrollBar *bar = verticalScrollBar();
    if (dragAt.y() < edge)
        bar->setValue(bar->value() - kScrollStep);
    else if (dragAt.y() > viewport()->height() - edge)
        bar->setValue(bar->value() + kScrollStep);
}

void LayerList::keyPressEvent(QKeyEvent *event)
{
    const int row = currentRow();
    const bool control = event->modifiers().testFlag(Qt::ControlModifier);
    switch (event->key()) {
    case Qt::Key_Escape:
        if (dragging)
            endDrag();
        else
            event->ignore();
        return;
    case Qt::Key_Up:
    case Qt::Key_Down:
        if (!control)
            QListWidget::keyPressEvent(event);
        else if (const int to = row + (event->key() == Qt::Key_Up ? -1 : 1);
                 row >= 0 && to >= 0 && to < count())
            emit moveRequested(row, to);
        return;
    case Qt::Key_Home:
    case Qt::Key_End:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        QListWidget::keyPressEvent(event);
        return;
    case Qt::Key_Space:
        if (row >= 0)
            emit eyeClicked(row);
        return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (row >= 0 && !control)
            emit rowOpened(row);
        else
            event->ignore();
        return;
    case Qt::Key_Delete:
        emit removeRequested();
        return;
    case Qt::Key_F2:
        emit renameRequested();
        return;
    default:
        // Letters are commands for the current image, not a search in this list.
        event->ignore();
    }
}

void LayerList::drawGap(QPainter *painter) const
{
    const int gap = gapAt(dragAt);
    const int y = gap < count() ? visualItemRect(item(gap)).top()
                                : visualItemRect(item(count() - 1)).bottom();
    painter->setPen(QPen(palette().color(QPalette::Highlight), 3));
    painter->drawLine(0, y, viewport()->width(), y);
}

void LayerList::paintEvent(QPaintEvent *event)
{
    QListWidget::paintEvent(event);
    QPainter painter(viewport());
    if (dragging && count() > 0)
        drawGap(&painter);
    if (count() > 0)
        return;
    painter.setPen(palette().color(QPalette::Disabled, QPalette::Text));
    painter.drawText(viewport()->rect().adjusted(12, 12, -12, -12),
                     Qt::AlignCenter | Qt::TextWordWrap, property("emptyText").toString());
}
