// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/filepickerplaces.h"

#include "app/assigns.h"
#include "app/filepreview.h"
#include "app/recentlist.h"

#include <QDir>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QPainter>
#include <QSet>
#include <QStandardPaths>
#include <QStorageInfo>
#include <QStyle>
#include <QtConcurrentRun>

namespace
{
constexpr int kPathRole = Qt::UserRole;
constexpr int kWidthInLetters = 22;

struct Volume {
    QString name, path;
};

/// Volumes that a person put in, not the pieces that the system is made of. Runs in a
/// thread: a network share that is asleep keeps the one who asks waiting.
QVector<Volume> mountedVolumes()
{
    QVector<Volume> found;
    for (const QStorageInfo &volume : QStorageInfo::mountedVolumes()) {
        const QString path = volume.rootPath();
        const auto isUnder = [&path](const char *top) {
            return path.startsWith(QLatin1String(top));
        };
        if (volume.isReady() && (isUnder("/media/") || isUnder("/run/media/") || isUnder("/mnt/")))
            found << Volume{volume.displayName(), path};
    }
    return found;
}

constexpr qreal kHouse[][2] = {{1, 8},   {8, 1.5}, {15, 8},   {13, 8},   {13, 14.5}, {10, 14.5},
                               {10, 10}, {6, 10},  {6, 14.5}, {3, 14.5}, {3, 8}};

QString captionOf(const QString &folder)
{
    const QString name = QFileInfo(folder).fileName();
    return name.isEmpty() ? folder : name;
}
} // namespace

QIcon homeIcon(const QWidget &near)
{
    QPolygonF house;
    for (const auto &corner : kHouse)
        house << QPointF(corner[0], corner[1]);
    QIcon icon;
    for (const int side : {16, 24, 32, 48, 64}) {
        QPixmap drawn(side, side);
        drawn.fill(Qt::transparent);
        QPainter painter(&drawn);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.scale(side / 16.0, side / 16.0);
        painter.setPen(Qt::NoPen);
        painter.setBrush(near.palette().color(QPalette::WindowText));
        painter.drawPolygon(house);
        painter.end();
        icon.addPixmap(drawn);
    }
    return QIcon::fromTheme(QStringLiteral("go-home"), icon);
}

PlacesList::PlacesList(QWidget *parent) : QListWidget(parent)
{
    setAccessibleName(tr("Places"));
    setTextElideMode(Qt::ElideMiddle);
    const int icon = style()->pixelMetric(QStyle::PM_SmallIconSize);
    setIconSize(QSize(icon, icon));
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    addOwnFolders();
    addAssigns();
    addRecent();
    addVolumesLater();
    const auto choose = [this](const QListWidgetItem *item) {
        const QString path = item->data(kPathRole).toString();
        if (!path.isEmpty())
            emit chosen(path);
    };
    connect(this, &QListWidget::itemClicked, this, choose);
    connect(this, &QListWidget::itemActivated, this, choose);
}

QSize PlacesList::sizeHint() const
{
    return {fontMetrics().averageCharWidth() * kWidthInLetters, QListWidget::sizeHint().height()};
}

void PlacesList::addHeading(const QString &text)
{
    auto *item = new QListWidgetItem(text, this);
    item->setFlags(Qt::NoItemFlags);
    QFont font = item->font();
    font.setBold(true);
    item->setFont(font);
}

void PlacesList::addPlace(const QString &caption, const QString &folder, const QIcon &icon)
{
    auto *item = new QListWidgetItem(icon, caption, this);
    item->setData(kPathRole, folder);
    item->setToolTip(folder);
}

void PlacesList::addOwnFolders()
{
    const QFileIconProvider icons;
    const QIcon folder = icons.icon(QFileIconProvider::Folder);
    QSet<QString> seen; // some desktops have all of them in the home folder
    const auto add = [&](const QString &caption, const QString &path, const QIcon &icon) {
        if (path.isEmpty() || seen.contains(path) || !QFileInfo(path).isDir())
            return;
        seen << path;
        addPlace(caption, path, icon);
    };
    const auto standard = [](QStandardPaths::StandardLocation place) {
        return QStandardPaths::writableLocation(place);
    };
    add(tr("Home"), QDir::homePath(), homeIcon(*this));
    add(tr("Desktop"), standard(QStandardPaths::DesktopLocation),
        style()->standardIcon(QStyle::SP_DesktopIcon));
    add(tr("Documents"), standard(QStandardPaths::DocumentsLocation), folder);
    add(tr("Pictures"), standard(QStandardPaths::PicturesLocation), folder);
    add(tr("Downloads"), standard(QStandardPaths::DownloadLocation), folder);
    add(tr("Computer"), QDir::rootPath(), style()->standardIcon(QStyle::SP_ComputerIcon));
}

void PlacesList::addAssigns()
{
    const QStringList names = assigns().names();
    if (names.isEmpty())
        return;
    addHeading(tr("Assigns"));
    const QIcon icon = style()->standardIcon(QStyle::SP_DirLinkIcon);
    for (const QString &name : names)
        addPlace(name + QLatin1Char(':'), assigns().resolve(name + QLatin1Char(':')), icon);
}

void PlacesList::addRecent()
{
    const QStringList folders = recentFolders().entries();
    if (folders.isEmpty())
        return;
    addHeading(tr("Recent"));
    const QIcon icon = style()->standardIcon(QStyle::SP_DirIcon);
    for (const QString &folder : folders)
        addPlace(captionOf(folder), folder, icon);
}

void PlacesList::addVolumesLater()
{
    auto *watcher = new QFutureWatcher<QVector<Volume>>(this);
    connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher]() {
        watcher->deleteLater();
        const QVector<Volume> volumes = watcher->result();
        if (volumes.isEmpty())
            return;
        addHeading(tr("Volumes"));
        for (const Volume &volume : volumes)
            addPlace(volume.name, volume.path, style()->standardIcon(QStyle::SP_DriveHDIcon));
    });
    watcher->setFuture(QtConcurrent::run(waitingThreads(), mountedVolumes));
}

void PlacesList::showPlace(const QString &folder)
{
    clearSelection();
    for (int row = 0; row < count(); ++row)
        if (item(row)->data(kPathRole).toString() == folder) {
            setCurrentRow(row);
            return;
        }
}
