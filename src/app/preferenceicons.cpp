// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/preferenceicons.h"

#include "app/preferences.h"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QImageReader>
#include <QMessageBox>
#include <QPushButton>
#include <QTreeWidget>

#include <algorithm>
#include <utility>

namespace
{
enum Column { kNameColumn, kFileColumn };
constexpr int kPathRole = Qt::UserRole;
constexpr int kShownIcon = 24; ///< side in the list, in points
constexpr int kLargestIcon = 512;
constexpr int kListLines = 10;
} // namespace

QIcon readToolIcon(const QString &path, QString *error)
{
    const QString name = QFileInfo(path).fileName();
    QImageReader reader(path, "png");
    const QSize size = reader.size();
    QString reason;
    if (!size.isValid())
        reason = Preferences::tr("“%1” is no PNG picture that can be read.").arg(name);
    else if (size.width() > kLargestIcon || size.height() > kLargestIcon)
        reason = Preferences::tr("“%1” is %2 × %3 pixels large. An icon has at most %4 × %4.")
                     .arg(name, QString::number(size.width()), QString::number(size.height()),
                          QString::number(kLargestIcon));
    const QImage picture = reason.isEmpty() ? reader.read() : QImage();
    if (reason.isEmpty() && picture.isNull())
        reason = Preferences::tr("“%1” is damaged.").arg(name);
    if (error)
        *error = reason;
    return picture.isNull() ? QIcon() : QIcon(QPixmap::fromImage(picture));
}

ToolIconPage::ToolIconPage(const QStringList &names, const QList<QIcon> &icons,
                           std::function<QString()> pick)
    : PreferencePage(tr("Tools"),
                     tr("The buttons of the main window can have icons of your own: PNG files, "
                        "square ones best, of at least the size that tool icons are shown at.")),
      ownIcons(icons), pickIcon(std::move(pick)), list(new QTreeWidget)
{
    list->setObjectName(QLatin1String(kCustomIconsKey));
    list->setAccessibleName(tr("Tool buttons"));
    list->setToolTip(tr("The tool buttons with their icons and the files of these"));
    list->setRootIsDecorated(false);
    list->setUniformRowHeights(true);
    list->setIconSize(QSize(kShownIcon, kShownIcon));
    list->setHeaderLabels({tr("Button"), tr("Icon")});
    list->setTextElideMode(Qt::ElideMiddle);
    list->setMinimumHeight(fontMetrics().lineSpacing() * kListLines);
    for (const QString &name : names)
        new QTreeWidgetItem(list, {name});
    other(list);
    addButtons();
    showDefaults();
    list->header()->setSectionResizeMode(kNameColumn, QHeaderView::ResizeToContents);
    list->setCurrentItem(list->topLevelItem(0));
    connect(list, &QTreeWidget::currentItemChanged, this, &ToolIconPage::updateButtons);
    connect(list, &QTreeWidget::itemActivated, this, &ToolIconPage::change);
    updateButtons();
}

void ToolIconPage::addButtons()
{
    changeButton = new QPushButton(tr("C&hange…"));
    changeButton->setObjectName(QStringLiteral("changeIcon"));
    changeButton->setToolTip(tr("Chooses a PNG file for the selected button"));
    ownButton = new QPushButton(tr("De&fault"));
    ownButton->setObjectName(QStringLiteral("defaultIcon"));
    ownButton->setToolTip(tr("Gives the selected button the icon that it came with"));
    auto *row = new QWidget;
    auto *line = new QHBoxLayout(row);
    line->setContentsMargins(0, 0, 0, 0);
    line->addWidget(changeButton);
    line->addWidget(ownButton);
    line->addStretch();
    other(row);
    connect(changeButton, &QPushButton::clicked, this, &ToolIconPage::change);
    connect(ownButton, &QPushButton::clicked, this, &ToolIconPage::useOwn);
}

void ToolIconPage::setFile(QTreeWidgetItem *item, const QString &path)
{
    QString problem;
    const QIcon custom = path.isEmpty() ? QIcon() : readToolIcon(path, &problem);
    const int row = list->indexOfTopLevelItem(item);
    item->setIcon(kNameColumn, custom.isNull() ? ownIcons.value(row) : custom);
    item->setData(kNameColumn, kPathRole, path);
    item->setText(kFileColumn, path.isEmpty()      ? tr("default")
                               : problem.isEmpty() ? path
                                                   : tr("cannot be read: %1").arg(path));
    item->setToolTip(kFileColumn, problem.isEmpty() ? path : problem);
    updateButtons();
}

void ToolIconPage::updateButtons()
{
    const QTreeWidgetItem *item = list->currentItem();
    changeButton->setEnabled(item && pickIcon);
    ownButton->setEnabled(item && !item->data(kNameColumn, kPathRole).toString().isEmpty());
}

void ToolIconPage::change()
{
    QTreeWidgetItem *item = list->currentItem();
    const QString path = item && pickIcon ? pickIcon() : QString();
    if (path.isEmpty())
        return;
    QString problem;
    if (readToolIcon(path, &problem).isNull()) {
        QMessageBox::warning(this, tr("Tool Icon"), problem.toHtmlEscaped());
        return;
    }
    setFile(item, path);
    emit edited();
}

void ToolIconPage::useOwn()
{
    if (QTreeWidgetItem *item = list->currentItem()) {
        setFile(item, QString());
        emit edited();
    }
}

void ToolIconPage::show(const PreferenceValues &values)
{
    const QStringList files = values.value(QLatin1String(kCustomIconsKey)).split(QLatin1Char('\n'));
    for (int row = 0; row < list->topLevelItemCount(); ++row)
        setFile(list->topLevelItem(row), files.value(row));
}

void ToolIconPage::read(PreferenceValues *values) const
{
    QStringList files;
    for (int row = 0; row < list->topLevelItemCount(); ++row)
        files << list->topLevelItem(row)->data(kNameColumn, kPathRole).toString();
    const bool any = std::any_of(files.cbegin(), files.cend(),
                                 [](const QString &file) { return !file.isEmpty(); });
    values->insert(QLatin1String(kCustomIconsKey), any ? files.join(QLatin1Char('\n')) : QString());
}

void ToolIconPage::showDefaults()
{
    for (int row = 0; row < list->topLevelItemCount(); ++row)
        setFile(list->topLevelItem(row), QString());
    emit edited();
}
