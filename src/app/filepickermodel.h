// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/filepreview.h"

#include <QAbstractTableModel>
#include <QDateTime>
#include <QFileSystemWatcher>
#include <QIcon>
#include <QRegularExpression>
#include <QTimer>
#include <QVector>

#include <optional>
#include <vector>

/// One file or folder as it was when its folder was read.
struct FolderEntry {
    QString name, kind;
    qint64 bytes = 0;
    QDateTime modified;
    bool isFolder = false, isRegular = false, isHidden = false;

    bool operator==(const FolderEntry &other) const;
};

/// What a file is, in a word or two, as far as its name tells.
QString kindOfFile(const QString &name);

/// The files and folders of one folder, read in the background and again when something
/// changes in it. Folders stand first in every order.
class FolderModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column { NameColumn, SizeColumn, KindColumn, DateColumn, ColumnCount };
    enum class State { Reading, Ready, Missing, Forbidden };

    /// Small pictures are asked of `previews`.
    FolderModel(FilePreviews *previews, QObject *parent);

    /// Begins to read another folder; its files come with folderRead().
    void setFolder(const QString &path);
    void setPatterns(const QStringList &wildcards);
    void setHiddenShown(bool shown);
    void setFoldersOnly(bool only);
    /// Files are shown as pictures of that many device pixels a side; 0: as icons.
    void setPictureSide(int side, qreal ratio);
    void sort(int column, Qt::SortOrder order) override;
    /// The order that a person expects first: the newest and the largest on top.
    static Qt::SortOrder naturalOrder(int column)
    {
        return column == SizeColumn || column == DateColumn ? Qt::DescendingOrder
                                                            : Qt::AscendingOrder;
    }
    int sortColumn() const { return column; }

    const QString &folder() const { return folderPath; }
    State state() const { return readState; }
    /// Whether there is nothing at all, not even what is not shown.
    bool isEmpty() const { return all.empty(); }
    const FolderEntry &entry(int row) const { return shown[size_t(row)]; }
    QString path(int row) const;
    int rowOf(const QString &name) const; ///< -1 if it is not shown
    /// What shows a file in a square; nothing for what is no ordinary file.
    std::optional<PreviewRequest> requestFor(int row, int side) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

signals:
    void folderRead();

private:
    struct Listing {
        std::vector<FolderEntry> entries; ///< by name
        State state = State::Ready;
    };
    static Listing list(const QString &path);
    void read();
    void take(const Listing &listing);
    void showWanted();
    void sortShown();
    bool isWanted(const FolderEntry &entry) const;
    QVariant decoration(int row) const;
    void updatePicture(const PreviewRequest &request);

    FilePreviews *previews;
    QFileSystemWatcher watcher;
    QTimer rereadTimer; ///< a file that grows is no reason to read all the time
    QObject *reading = nullptr;
    QString folderPath;
    State readState = State::Ready;
    std::vector<FolderEntry> all;   ///< by name
    std::vector<FolderEntry> shown; ///< in the order of the rows
    QVector<QRegularExpression> patterns;
    bool hiddenShown = false, foldersOnly = false;
    int column = NameColumn;
    Qt::SortOrder order = Qt::AscendingOrder;
    int pictureSide = 0;
    qreal pictureRatio = 1;
    QIcon folderIcon, fileIcon, pictureIcon;
};
