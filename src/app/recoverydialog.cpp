// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/recoverydialog.h"

#include "app/recovery.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QMessageBox>
#include <QPainter>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace
{
constexpr int kPictureSide = 64;
constexpr int kWidth = 720, kHeight = 420;
enum Column { kNameColumn, kFileColumn, kTimeColumn, kColumns };

QString nameOf(const RecoveredPicture &picture)
{
    return picture.name.isEmpty() ? Recovery::tr("Recovered picture") : picture.name;
}

QString describe(const RecoveredPicture &picture)
{
    QStringList lines{nameOf(picture)};
    if (!picture.size.isEmpty())
        lines << QStringLiteral("%1 × %2").arg(picture.size.width()).arg(picture.size.height());
    if (picture.layered)
        lines << RecoveryDialog::tr("with layers");
    return lines.join(QLatin1Char('\n'));
}

/// Where the picture came from, and whether that file is the better one by now.
QString describeFile(const RecoveredPicture &picture)
{
    if (picture.originalPath.isEmpty())
        return RecoveryDialog::tr("never saved");
    const QFileInfo file(picture.originalPath);
    const QString path = file.fileName() + QLatin1Char('\n') + file.path();
    if (!file.exists())
        return path + QLatin1Char('\n') + RecoveryDialog::tr("no longer there");
    const bool newer = file.lastModified() > picture.savedAt;
    return newer ? path + QLatin1Char('\n') + RecoveryDialog::tr("saved again after this copy")
                 : path;
}

QIcon iconOf(const RecoveredPicture &picture, qreal ratio)
{
    if (picture.preview.isNull())
        return {};
    const int side = int(kPictureSide * ratio);
    QPixmap pixmap = QPixmap::fromImage(
        picture.preview.scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    pixmap.setDevicePixelRatio(ratio);
    QIcon icon(pixmap);
    icon.addPixmap(pixmap, QIcon::Selected); // a tint would show wrong colours
    return icon;
}
} // namespace

RecoveryDialog::RecoveryDialog(Recovery *from, const QList<RecoveredPicture> &found,
                               QWidget *parent)
    : QDialog(parent), recovery(from)
{
    setObjectName(QStringLiteral("RecoveryDialog"));
    setWindowTitle(tr("Recover Pictures"));
    auto *column = new QVBoxLayout(this);
    auto *label = new QLabel(
        tr("Kestrane did not end in order, but it kept copies of pictures with unsaved changes. "
           "Recovered pictures are opened as they were; the files on disk change only when you "
           "save them."));
    label->setWordWrap(true);
    column->addWidget(label);

    list = new QTreeWidget;
    list->setObjectName(QStringLiteral("pictures"));
    list->setAccessibleName(tr("Pictures with unsaved changes"));
    list->setHeaderLabels({tr("Picture"), tr("File"), tr("Copied")});
    list->setRootIsDecorated(false);
    list->setAllColumnsShowFocus(true);
    list->setIconSize(QSize(kPictureSide, kPictureSide));
    list->setTextElideMode(Qt::ElideMiddle);
    list->header()->setStretchLastSection(false);
    list->header()->setSectionResizeMode(kNameColumn, QHeaderView::Stretch);
    list->header()->setSectionResizeMode(kFileColumn, QHeaderView::Stretch);
    list->header()->setSectionResizeMode(kTimeColumn, QHeaderView::ResizeToContents);
    column->addWidget(list);

    auto *buttons = new QDialogButtonBox;
    recoverButton = buttons->addButton(tr("&Recover"), QDialogButtonBox::AcceptRole);
    discardButton = buttons->addButton(tr("&Discard…"), QDialogButtonBox::DestructiveRole);
    QPushButton *later = buttons->addButton(tr("Decide &Later"), QDialogButtonBox::RejectRole);
    recoverButton->setObjectName(QStringLiteral("recover"));
    discardButton->setObjectName(QStringLiteral("discard"));
    later->setObjectName(QStringLiteral("later"));
    recoverButton->setToolTip(tr("Open the pictures that are checked"));
    discardButton->setToolTip(tr("Delete the copies of the pictures that are checked"));
    later->setToolTip(tr("Keep the copies and ask again at the next start"));
    recoverButton->setDefault(true);
    column->addWidget(buttons);

    connect(list, &QTreeWidget::itemChanged, this, &RecoveryDialog::followChecks);
    connect(recoverButton, &QPushButton::clicked, this, &RecoveryDialog::recoverChecked);
    connect(discardButton, &QPushButton::clicked, this, &RecoveryDialog::discardChecked);
    connect(later, &QPushButton::clicked, this, &QDialog::reject);
    for (const RecoveredPicture &picture : found)
        addRow(picture);
    list->setCurrentItem(list->topLevelItem(0));
    followChecks();
    resize(kWidth, kHeight);
}

void RecoveryDialog::offer(Recovery *recovery, QWidget *parent)
{
    const QList<RecoveredPicture> found = recovery->leftovers();
    if (!found.isEmpty())
        RecoveryDialog(recovery, found, parent).exec();
}

void RecoveryDialog::addRow(const RecoveredPicture &picture)
{
    auto *row = new QTreeWidgetItem;
    row->setText(kNameColumn, describe(picture));
    row->setText(kFileColumn, describeFile(picture));
    row->setText(kTimeColumn,
                 QLocale().toString(picture.savedAt.toLocalTime(), QLocale::ShortFormat));
    row->setIcon(kNameColumn, iconOf(picture, devicePixelRatioF()));
    // Marked as rich text, so that a name with brackets is not taken for some.
    const auto tip = [](const QString &text) {
        return QStringLiteral("<span>%1</span>").arg(text.toHtmlEscaped());
    };
    row->setToolTip(kNameColumn, tip(nameOf(picture)));
    if (!picture.originalPath.isEmpty())
        row->setToolTip(kFileColumn, tip(picture.originalPath));
    row->setCheckState(kNameColumn, Qt::Checked);
    pictures << picture;
    list->addTopLevelItem(row);
}

QList<int> RecoveryDialog::checkedRows() const
{
    QList<int> rows;
    for (int i = 0; i < list->topLevelItemCount(); ++i)
        if (list->topLevelItem(i)->checkState(kNameColumn) == Qt::Checked)
            rows << i;
    return rows;
}

void RecoveryDialog::takeRow(int row)
{
    pictures.removeAt(row);
    delete list->takeTopLevelItem(row);
}

void RecoveryDialog::followChecks()
{
    const bool any = !checkedRows().isEmpty();
    recoverButton->setEnabled(any);
    discardButton->setEnabled(any);
}

void RecoveryDialog::recoverChecked()
{
    const QList<int> rows = checkedRows();
    QStringList failed;
    int taken = 0;
    for (const int row : rows) {
        const RecoveredPicture picture = pictures.at(row - taken);
        QApplication::setOverrideCursor(Qt::BusyCursor);
        const bool opened = recovery->restore(picture) != nullptr;
        QApplication::restoreOverrideCursor();
        if (opened)
            takeRow(row - taken++);
        else
            failed << picture.dataPath;
    }
    followChecks();
    if (!failed.isEmpty())
        QMessageBox::warning(this, windowTitle(),
                             tr("These copies could not be read:<br><br>%1<br><br>They stay where "
                                "they are until you discard them.")
                                 .arg(failed.join(QLatin1Char('\n'))
                                          .toHtmlEscaped()
                                          .replace(QLatin1Char('\n'), QLatin1String("<br>"))));
    if (pictures.isEmpty())
        accept();
}

void RecoveryDialog::discardChecked()
{
    const int count = checkedRows().size();
    const QString what = count == 1 ? tr("Discard the unsaved changes of this picture?")
                                    : tr("Discard the unsaved changes of %1 pictures?").arg(count);
    QMessageBox box(QMessageBox::Question, windowTitle(),
                    what + QStringLiteral("<br><br>") +
                        tr("The copies are deleted and cannot be brought back."),
                    QMessageBox::NoButton, this);
    const QPushButton *discard = box.addButton(tr("Discard"), QMessageBox::DestructiveRole);
    QPushButton *keep = box.addButton(tr("Keep"), QMessageBox::RejectRole);
    box.setDefaultButton(keep);
    box.exec();
    if (box.clickedButton() != discard)
        return;
    const QList<int> rows = checkedRows();
    for (int i = rows.size() - 1; i >= 0; --i) {
        recovery->discard(pictures.at(rows.at(i)));
        takeRow(rows.at(i));
    }
    followChecks();
    if (pictures.isEmpty())
        accept();
}
