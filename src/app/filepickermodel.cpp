// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/filepickermodel.h"

#include "formats/load.h"

#include <QCollator>
#include <QDir>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QLocale>
#include <QPainter>
#include <QtConcurrentRun>

#include <algorithm>

namespace
{
constexpr int kRereadMs = 400;

/// Names in the order that a person expects: "2.png" before "10.png".
QCollator nameOrder()
{
    const QLocale user;
    // The plain C locale knows no order but that of the codes.
    QCollator collator(user.language() == QLocale::C ? QLocale(QLocale::English) : user);
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    return collator;
}

struct Kind {
    const char *extension, *text;
};
const Kind kKinds[] = {
    {".jpg", QT_TRANSLATE_NOOP("FolderModel", "JPEG picture")},
    {".jpeg", QT_TRANSLATE_NOOP("FolderModel", "JPEG picture")},
    {".png", QT_TRANSLATE_NOOP("FolderModel", "PNG picture")},
    {".gif", QT_TRANSLATE_NOOP("FolderModel", "GIF picture")},
    {".elx", QT_TRANSLATE_NOOP("FolderModel", "Layered picture")},
    {".ato", QT_TRANSLATE_NOOP("FolderModel", "Picture with every field")},
    {".mcai", QT_TRANSLATE_NOOP("FolderModel", "MCAI picture")},
    {".rgba", QT_TRANSLATE_NOOP("FolderModel", "Raw samples")},
    {".pix", QT_TRANSLATE_NOOP("FolderModel", "Small grey picture")},
    {".iff", QT_TRANSLATE_NOOP("FolderModel", "IFF picture")},
};

/// A picture for a square cell, whole and in the middle.
QIcon iconOf(const QImage &picture, int side, qreal ratio)
{
    QPixmap square(side, side);
    square.fill(Qt::transparent);
    QPainter painter(&square);
    const QSize size = picture.size().boundedTo(
        picture.size().scaled(side, side, Qt::KeepAspectRatio).expandedTo({1, 1}));
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(QRect(QPoint((side - size.width()) / 2, (side - size.height()) / 2), size),
                      picture);
    painter.end();
    square.setDevicePixelRatio(ratio);
    QIcon icon(square);
    icon.addPixmap(square, QIcon::Selected); // a tint would show wrong colours
    return icon;
}
} // namespace

bool FolderEntry::operator==(const FolderEntry &other) const
{
    return name == other.name && bytes == other.bytes && modified == other.modified &&
           isFolder == other.isFolder && isRegular == other.isRegular;
}

QString kindOfFile(const QString &name)
{
    for (const Kind &kind : kKinds)
        if (name.endsWith(QLatin1String(kind.extension), Qt::CaseInsensitive))
            return FolderModel::tr(kind.text);
    const QString extension = QFileInfo(name).suffix();
    if (rawExtensions().contains(QLatin1Char('.') + extension, Qt::CaseInsensitive))
        return FolderModel::tr("Camera RAW (%1)").arg(extension.toUpper());
    if (extension.isEmpty() || extension.size() > 8)
        return FolderModel::tr("File");
    return FolderModel::tr("%1 file").arg(extension.toUpper());
}

FolderModel::FolderModel(FilePreviews *previewMaker, QObject *parent)
    : QAbstractTableModel(parent), previews(previewMaker)
{
    const QFileIconProvider icons;
    folderIcon = icons.icon(QFileIconProvider::Folder);
    fileIcon = icons.icon(QFileIconProvider::File);
    pictureIcon = QIcon::fromTheme(QStringLiteral("image-x-generic"), fileIcon);
    rereadTimer.setSingleShot(true);
    rereadTimer.setInterval(kRereadMs);
    connect(&rereadTimer, &QTimer::timeout, this, &FolderModel::read);
    connect(&watcher, &QFileSystemWatcher::directoryChanged, this, [this]() {
        if (!rereadTimer.isActive())
            rereadTimer.start();
    });
    connect(previews, &FilePreviews::ready, this, &FolderModel::updatePicture);
}

// --- Reading ------------------------------------------------------------------------------

/// Runs in a thread.
FolderModel::Listing FolderModel::list(const QString &path)
{
    Listing listing;
    const QDir folder(path);
    const QFileInfo info(path);
    if (!info.isDir() || !info.isReadable() || !info.isExecutable()) {
        listing.state = info.isDir() ? State::Forbidden : State::Missing;
        return listing;
    }
    const QFileInfoList files = folder.entryInfoList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::NoSort);
    listing.entries.reserve(size_t(files.size()));
    for (const QFileInfo &file : files) {
        FolderEntry entry;
        entry.name = file.fileName();
        entry.isFolder = file.isDir();
        entry.isRegular = file.isFile();
        entry.isHidden = file.isHidden();
        entry.bytes = entry.isFolder ? 0 : file.size();
        entry.modified = file.lastModified();
        entry.kind = entry.isFolder ? tr("Folder") : kindOfFile(entry.name);
        listing.entries.push_back(entry);
    }
    const QCollator collator = nameOrder();
    std::sort(listing.entries.begin(), listing.entries.end(),
              [&collator](const FolderEntry &one, const FolderEntry &other) {
                  const int difference = collator.compare(one.name, other.name);
                  return difference ? difference < 0 : one.name < other.name;
              });
    return listing;
}

void FolderModel::setFolder(const QString &path)
{
    if (!watcher.directories().isEmpty())
        watcher.removePaths(watcher.directories());
    folderPath = path;
    previews->giveUp();
    beginResetModel();
    all.clear();
    shown.clear();
    endResetModel();
    read();
    watcher.addPath(path);
}

void FolderModel::read()
{
    rereadTimer.stop();
    delete reading; // nobody waits for the last one any more
    if (shown.empty())
        readState = State::Reading;
    auto *waiting = new QFutureWatcher<Listing>(this);
    connect(waiting, &QFutureWatcherBase::finished, this, [this, waiting]() {
        waiting->deleteLater();
        reading = nullptr;
        take(waiting->result());
    });
    reading = waiting;
    waiting->setFuture(QtConcurrent::run(waitingThreads(), list, folderPath));
}

void FolderModel::take(const Listing &listing)
{
    readState = listing.state;
    if (listing.entries != all) {
        all = listing.entries;
        showWanted();
    }
    emit folderRead();
}

// --- What is shown ------------------------------------------------------------------------

void FolderModel::setPatterns(const QStringList &wildcards)
{
    patterns.clear();
    for (const QString &wildcard : wildcards)
        if (wildcard != QLatin1String("*") && wildcard != QLatin1String("*.*"))
            patterns << QRegularExpression(
                QRegularExpression::wildcardToRegularExpression(wildcard),
                QRegularExpression::CaseInsensitiveOption);
    showWanted();
}

void FolderModel::setHiddenShown(bool hidden)
{
    hiddenShown = hidden;
    showWanted();
}

void FolderModel::setFoldersOnly(bool only)
{
    foldersOnly = only;
    showWanted();
}

void FolderModel::setPictureSide(int side, qreal ratio)
{
    pictureSide = side;
    pictureRatio = ratio;
    if (!shown.empty())
        emit dataChanged(index(0, 0), index(rowCount() - 1, 0), {Qt::DecorationRole});
}

bool FolderModel::isWanted(const FolderEntry &entry) const
{
    if (entry.isHidden && !hiddenShown)
        return false;
    if (entry.isFolder || foldersOnly)
        return entry.isFolder;
    return patterns.isEmpty() ||
           std::any_of(patterns.begin(), patterns.end(), [&entry](const QRegularExpression &p) {
               return p.match(entry.name).hasMatch();
           });
}

void FolderModel::showWanted()
{
    beginResetModel();
    shown.clear();
    std::copy_if(all.begin(), all.end(), std::back_inserter(shown),
                 [this](const FolderEntry &entry) { return isWanted(entry); });
    sortShown();
    endResetModel();
}

void FolderModel::sort(int by, Qt::SortOrder newOrder)
{
    if (by < 0 || by >= ColumnCount)
        return;
    column = by;
    order = newOrder;
    showWanted();
}

/// The rows stand by name before this: equal ones stay so.
void FolderModel::sortShown()
{
    const bool down = order == Qt::DescendingOrder;
    if (column == NameColumn && down)
        std::reverse(shown.begin(), shown.end());
    const auto isBefore = [this](const FolderEntry &one, const FolderEntry &other) {
        switch (column) {
        case SizeColumn:
            return one.bytes < other.bytes;
        case KindColumn:
            return one.kind < other.kind;
        case DateColumn:
            return one.modified < other.modified;
        default:
            return false;
        }
    };
    std::stable_sort(shown.begin(), shown.end(),
                     [&](const FolderEntry &one, const FolderEntry &other) {
                         if (one.isFolder != other.isFolder)
                             return one.isFolder;
                         return down ? isBefore(other, one) : isBefore(one, other);
                     });
}

QString FolderModel::path(int row) const
{
    return QDir(folderPath).filePath(entry(row).name);
}

int FolderModel::rowOf(const QString &name) const
{
    for (int row = 0; row < rowCount(); ++row)
        if (entry(row).name == name)
            return row;
    return -1;
}

std::optional<PreviewRequest> FolderModel::requestFor(int row, int side) const
{
    const FolderEntry &file = entry(row);
    if (!file.isRegular)
        return std::nullopt;
    return PreviewRequest{path(row), file.modified, file.bytes, side};
}

// --- For the views ------------------------------------------------------------------------

int FolderModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(shown.size());
}

int FolderModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(ColumnCount);
}

QVariant FolderModel::decoration(int row) const
{
    const FolderEntry &file = entry(row);
    if (file.isFolder)
        return folderIcon;
    const bool isPicture = FilePreviews::isPictureName(file.name);
    const QIcon &plain = isPicture ? pictureIcon : fileIcon;
    if (pictureSide == 0 || !isPicture || !file.isRegular)
        return plain;
    const PreviewRequest request = *requestFor(row, pictureSide);
    const FilePreview *made = FilePreviews::made(request);
    if (!made)
        previews->askLater(request);
    return made && !made->picture.isNull() ? iconOf(made->picture, pictureSide, pictureRatio)
                                           : plain;
}

QVariant FolderModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const FolderEntry &file = entry(index.row());
    if (role == Qt::TextAlignmentRole && index.column() == SizeColumn)
        return int(Qt::AlignRight | Qt::AlignVCenter);
    if (role == Qt::DecorationRole && index.column() == NameColumn)
        return decoration(index.row());
    if (role == Qt::ToolTipRole || role == Qt::AccessibleTextRole)
        return role == Qt::ToolTipRole || index.column() == NameColumn
                   ? file.name
                   : data(index, Qt::DisplayRole);
    if (role != Qt::DisplayRole)
        return {};
    switch (index.column()) {
    case NameColumn:
        return file.name;
    case SizeColumn:
        return file.isFolder ? QString() : QLocale().formattedDataSize(file.bytes);
    case KindColumn:
        return file.kind;
    default:
        return QLocale().toString(file.modified, QLocale::ShortFormat);
    }
}

QVariant FolderModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    const QString texts[ColumnCount] = {tr("Name"), tr("Size"), tr("Kind"), tr("Changed")};
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section >= ColumnCount)
        return {};
    return texts[section];
}

void FolderModel::updatePicture(const PreviewRequest &request)
{
    if (pictureSide == 0 || request.side != pictureSide)
        return;
    for (int row = 0; row < rowCount(); ++row)
        if (request.path == path(row))
            emit dataChanged(index(row, 0), index(row, 0), {Qt::DecorationRole});
}
