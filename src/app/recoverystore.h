// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QImage>
#include <QList>
#include <QSize>
#include <QString>
#include <QStringList>

#include <utility>

/// A picture that was saved in the background, and what is known of it beside its planes.
struct RecoveredPicture {
    QString stem;         ///< its folder and "picture-3": how the paths of all its files begin
    QString dataPath;     ///< the picture in a native form
    QString originalPath; ///< the file that it was read from or last saved to; may be empty
    QString name;
    QDateTime savedAt; ///< UTC
    bool layered = false;
    QSize size;           ///< may be unknown
    QImage preview;       ///< a small picture; may be null
    QStringList tagLines; ///< these go with a picture, but a native file does not keep them
    QByteArray tagBlock;
    QList<int> guidesX, guidesY;
};

/// The files of background saves. Each run has a folder of its own below the root, with a
/// lock that the system gives up when the process ends, however it ends. A picture has two
/// files there: the picture in a native form, under a new name at each save, and an index that
/// names it. Both are complete before they get their names; the index is replaced after the
/// new picture is there, and the old picture goes after that.
class RecoveryStore
{
public:
    explicit RecoveryStore(const QString &rootFolder) : rootPath(rootFolder) {}
    /// Gives the locks up. Files stay as they are.
    ~RecoveryStore();
    RecoveryStore(const RecoveryStore &) = delete;
    RecoveryStore &operator=(const RecoveryStore &) = delete;

    /// "kestrane/recovery" in the user's state folder.
    static QString userFolder();

    const QString &root() const { return rootPath; }
    /// Makes and locks the folder of this run, once, for the user alone.
    bool open(QString *error);
    /// How the files of a new picture of this run begin.
    QString newStem();
    /// Where the next version of that picture is to be written.
    QString newDataPath(const QString &stem, bool layered);
    /// From now on the index of a picture names its new version, and the old one goes. False
    /// with a reason: then the old one stands and the new one is gone. From any thread.
    static bool replace(const RecoveredPicture &picture, QString *error);
    /// Takes away all files of a picture.
    static void remove(const QString &stem);
    /// Takes away the folder of this run with all that is in it.
    void close();

    /// Claims the folders of runs that are no more and lists their pictures, latest first. A
    /// picture without a readable index is listed too. Folders without pictures go.
    QList<RecoveredPicture> leftovers();

private:
    struct Claim {
        QString folder;
        int lock;
    };
    bool claim(const QString &folder);

    const QString rootPath;
    QString runFolder; ///< empty until it was made
    int runLock = -1;
    int pictures = 0, versions = 0;
    QList<Claim> claims;
};
