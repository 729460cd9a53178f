// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/filepreviewpane.h"

#include "app/filepickermodel.h"

#include <QLabel>
#include <QLocale>
#include <QPainter>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace
{
constexpr int kSide = 220; ///< points of the square for the picture
constexpr int kCheckerCell = 8;
constexpr int kGap = 8;
constexpr QRgb kCheckerDark = 0xFF767676, kCheckerLight = 0xFF8A8A8A;

void paintChecker(QPainter *painter, const QRect &place)
{
    painter->fillRect(place, QColor(kCheckerLight));
    for (int y = 0; y * kCheckerCell < place.height(); ++y)
        for (int x = y % 2; x * kCheckerCell < place.width(); x += 2)
            painter->fillRect(QRect(place.x() + x * kCheckerCell, place.y() + y * kCheckerCell,
                                    kCheckerCell, kCheckerCell)
                                  .intersected(place),
                              QColor(kCheckerDark));
}
} // namespace

FilePreviewPane::FilePreviewPane(QWidget *parent)
    : QWidget(parent), nameLabel(new QLabel), factsLabel(new QLabel)
{
    setObjectName(QStringLiteral("previewPane"));
    setAccessibleName(tr("Preview"));
    nameLabel->setTextFormat(Qt::PlainText);
    nameLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    QFont bold = nameLabel->font();
    bold.setBold(true);
    nameLabel->setFont(bold);
    factsLabel->setObjectName(QStringLiteral("facts"));
    factsLabel->setTextFormat(Qt::PlainText);
    factsLabel->setWordWrap(true);
    factsLabel->setMinimumHeight(4 * factsLabel->fontMetrics().lineSpacing());
    factsLabel->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addStretch(1); // the picture is painted there
    column->addWidget(nameLabel);
    column->addWidget(factsLabel);
    setMinimumWidth(kSide / 2);
}

QSize FilePreviewPane::sizeHint() const
{
    return {kSide, kSide + QWidget::sizeHint().height()};
}

int FilePreviewPane::side() const
{
    return int(std::lround(kSide * 1.5 * devicePixelRatioF())); // room to grow with the dialog
}

QRect FilePreviewPane::pictureRect() const
{
    const QRect inside = contentsRect();
    return {inside.x(), 0, inside.width(), std::max(0, nameLabel->y() - kGap)};
}

void FilePreviewPane::showFile(const FolderEntry &file)
{
    name = file.name;
    kindText = file.kind;
    sizeText =
        file.isFolder ? QString() : QLocale().formattedDataSize(file.bytes) + QLatin1Char('\n');
    sizeText += QLocale().toString(file.modified, QLocale::ShortFormat);
    shown = QImage();
    note.clear();
    factsLabel->setText(kindText + QLatin1Char('\n') + sizeText);
    elideName();
    update();
}

void FilePreviewPane::showPreview(const FilePreview &preview)
{
    shown = preview.picture;
    note = preview.note;
    QString facts = kindText;
    if (preview.depth > 0)
        facts += preview.depth == 1 ? tr(", black and white")
                                    : tr(", %1 bits a channel").arg(preview.depth);
    if (!preview.pixels.isEmpty())
        facts += QLatin1Char('\n') +
                 tr("%1 × %2 pixels").arg(preview.pixels.width()).arg(preview.pixels.height());
    factsLabel->setText(facts + QLatin1Char('\n') + sizeText);
    update();
}

void FilePreviewPane::showText(const QString &text)
{
    shown = QImage();
    name.clear();
    kindText.clear();
    sizeText.clear();
    note = text;
    factsLabel->clear();
    elideName();
    update();
}

void FilePreviewPane::elideName()
{
    nameLabel->setText(
        nameLabel->fontMetrics().elidedText(name, Qt::ElideMiddle, contentsRect().width()));
    nameLabel->setToolTip(name);
}

void FilePreviewPane::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    elideName();
}

void FilePreviewPane::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QRect place = pictureRect();
    if (shown.isNull()) {
        painter.setPen(palette().color(QPalette::Disabled, QPalette::WindowText));
        painter.drawText(place, int(Qt::AlignCenter) | Qt::TextWordWrap, note);
        return;
    }
    const QSize own = shown.size() / devicePixelRatioF(); // never larger than its pixels
    QSize size = own.scaled(place.size(), Qt::KeepAspectRatio).boundedTo(own);
    size = size.expandedTo({1, 1});
    QRect at({}, size);
    at.moveCenter(place.center());
    if (shown.hasAlphaChannel())
        paintChecker(&painter, at);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(at, shown);
}
