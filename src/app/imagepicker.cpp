// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/imagepicker.h"

#include "app/smallpicture.h"
#include "core/image.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace
{
constexpr int kPictureSide = 48;
}

ImagePicker::ImagePicker(const QString &title, const QString &goOn, const QList<image *> &offered,
                         QWidget *parent)
    : QDialog(parent), images(offered), list(new QListWidget)
{
    setWindowTitle(title);
    list->setObjectName(QStringLiteral("pictures"));
    list->setAccessibleName(title);
    list->setIconSize(QSize(kPictureSide, kPictureSide));
    list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    list->setTextElideMode(Qt::ElideMiddle);
    for (const image *img : qAsConst(images)) {
        const QPixmap picture = smallPicture(*img, kPictureSide, devicePixelRatioF(), true);
        QIcon icon(picture);
        icon.addPixmap(picture, QIcon::Selected); // a tint would show wrong colours
        new QListWidgetItem(
            icon, QStringLiteral("%1\n%2 × %3").arg(img->title).arg(img->width).arg(img->height),
            list);
    }
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->setObjectName(QStringLiteral("buttonBox"));
    QPushButton *add = buttons->button(QDialogButtonBox::Ok);
    add->setText(goOn);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(list, &QListWidget::itemDoubleClicked, this, &QDialog::accept);
    const auto follow = [this, add]() { add->setEnabled(!list->selectedItems().isEmpty()); };
    connect(list, &QListWidget::itemSelectionChanged, this, follow);
    list->setCurrentRow(0);
    follow();

    auto *column = new QVBoxLayout(this);
    column->addWidget(new QLabel(tr("Ctrl and Shift select several.")));
    column->addWidget(list);
    column->addWidget(buttons);
    resize(340, 320);
}

QList<image *> ImagePicker::picked() const
{
    QList<image *> chosen;
    for (int i = 0; i < list->count(); ++i)
        if (list->item(i)->isSelected())
            chosen << images.at(i);
    return chosen;
}
