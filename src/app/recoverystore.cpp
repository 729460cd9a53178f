// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/recoverystore.h"

#include "formats/writers.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QRegularExpression>
#include <QSaveFile>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
constexpr int kIndexVersion = 1;
constexpr qint64 kLongestIndex = qint64(64) << 20;
constexpr int kLargestPreview = 512;
/// A folder that is being made is older than this only if its maker died over it.
constexpr qint64 kMakingSeconds = 3600;
const QString kLockName = QStringLiteral("/lock");

bool makePrivate(const QString &folder)
{
    if (QFileInfo(folder).isDir())
        return true;
    const QString above = QFileInfo(folder).path();
    return (above == folder || makePrivate(above)) &&
           (mkdir(QFile::encodeName(folder).constData(), S_IRWXU) == 0 ||
            QFileInfo(folder).isDir());
}

/// A locked descriptor, or -1 with errno. The lock belongs to the open file: it ends with the
/// process, and no other process that gets the same number can be taken for the owner.
int lockFile(const QString &path)
{
    const int file =
        open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file < 0 || flock(file, LOCK_EX | LOCK_NB) == 0)
        return file;
    const int reason = errno;
    ::close(file);
    errno = reason;
    return -1;
}

/// Its lock goes last, so that nobody claims what is half gone.
void removeFolder(const QString &folder)
{
    const QDir dir(folder);
    for (const QString &name : dir.entryList(QDir::Files | QDir::Hidden | QDir::System))
        if (QLatin1Char('/') + name != kLockName)
            QFile::remove(dir.filePath(name));
    QFile::remove(folder + kLockName);
    QDir().rmdir(folder);
}

QJsonArray arrayOf(const QList<int> &numbers)
{
    QJsonArray array;
    for (const int number : numbers)
        array << number;
    return array;
}

QList<int> numbersOf(const QJsonValue &value)
{
    QList<int> numbers;
    const QJsonArray array = value.toArray();
    for (const QJsonValue &number : array)
        numbers << number.toInt();
    return numbers;
}

QByteArray indexOf(const RecoveredPicture &picture)
{
    QByteArray preview;
    QBuffer buffer(&preview);
    picture.preview.save(&buffer, "PNG");
    const QJsonObject object{
        {"version", kIndexVersion},
        {"data", QFileInfo(picture.dataPath).fileName()},
        {"originalPath", picture.originalPath},
        {"name", picture.name},
        {"savedAt", picture.savedAt.toString(Qt::ISODateWithMs)},
        {"layered", picture.layered},
        {"width", picture.size.width()},
        {"height", picture.size.height()},
        {"preview", QString::fromLatin1(preview.toBase64())},
        {"tagLines", QJsonArray::fromStringList(picture.tagLines)},
        {"tagBlock", QString::fromLatin1(picture.tagBlock.toBase64())},
        {"guidesX", arrayOf(picture.guidesX)},
        {"guidesY", arrayOf(picture.guidesY)},
    };
    return QJsonDocument(object).toJson();
}

QImage previewOf(const QJsonValue &value)
{
    const QByteArray bytes = QByteArray::fromBase64(value.toString().toLatin1());
    const QImage preview = QImage::fromData(bytes, "PNG");
    return std::max(preview.width(), preview.height()) > kLargestPreview ? QImage() : preview;
}

/// Fills in what the index tells; false if it cannot be believed.
bool readIndex(const QStringList &versions, RecoveredPicture *picture)
{
    QFile file(picture->stem + QStringLiteral(".json"));
    if (file.size() > kLongestIndex || !file.open(QIODevice::ReadOnly))
        return false;
    const QJsonObject object = QJsonDocument::fromJson(file.readAll()).object();
    const QString data = object["data"].toString();
    if (object["version"].toInt() != kIndexVersion || !versions.contains(data))
        return false;
    picture->dataPath = QFileInfo(picture->stem).path() + QLatin1Char('/') + data;
    picture->originalPath = object["originalPath"].toString();
    picture->name = object["name"].toString();
    picture->savedAt = QDateTime::fromString(object["savedAt"].toString(), Qt::ISODateWithMs);
    picture->size = QSize(object["width"].toInt(), object["height"].toInt());
    picture->preview = previewOf(object["preview"]);
    const QJsonArray lines = object["tagLines"].toArray();
    for (const QJsonValue &line : lines)
        picture->tagLines << line.toString();
    picture->tagBlock = QByteArray::fromBase64(object["tagBlock"].toString().toLatin1());
    picture->guidesX = numbersOf(object["guidesX"]);
    picture->guidesY = numbersOf(object["guidesY"]);
    return true;
}

/// Any version is complete, so one whose index is missing or damaged still has its value.
RecoveredPicture describe(const QString &stem, const QStringList &versions)
{
    RecoveredPicture picture;
    picture.stem = stem;
    if (!readIndex(versions, &picture)) {
        const QString folder = QFileInfo(stem).path() + QLatin1Char('/');
        for (const QString &name : versions) {
            const QDateTime written = QFileInfo(folder + name).lastModified().toUTC();
            if (picture.dataPath.isEmpty() || written >= picture.savedAt) {
                picture.dataPath = folder + name;
                picture.savedAt = written;
            }
        }
    }
    picture.layered = picture.dataPath.endsWith(QLatin1String(".elx"));
    return picture;
}

QList<RecoveredPicture> picturesIn(const QString &folder)
{
    static const QRegularExpression version(
        QStringLiteral("^(picture-[0-9]+)-[0-9]+\\.(ato|elx)$"));
    QMap<QString, QStringList> found;
    const auto names = QDir(folder).entryList(QDir::Files | QDir::NoSymLinks, QDir::Name);
    for (const QString &name : names) {
        const QRegularExpressionMatch match = version.match(name);
        if (match.hasMatch())
            found[folder + QLatin1Char('/') + match.captured(1)] << name;
    }
    QList<RecoveredPicture> pictures;
    for (auto one = found.cbegin(); one != found.cend(); ++one)
        pictures << describe(one.key(), one.value());
    return pictures;
}

void removeVersions(const QString &stem, const QString &except)
{
    const QFileInfo place(stem);
    const QDir dir(place.path());
    // Also what a writer that was killed left under a passing name.
    for (const QString &name :
         dir.entryList({place.fileName() + QStringLiteral("-*")}, QDir::Files))
        if (dir.filePath(name) != except)
            QFile::remove(dir.filePath(name));
}
} // namespace

RecoveryStore::~RecoveryStore()
{
    for (const Claim &claimed : qAsConst(claims))
        ::close(claimed.lock);
    if (runLock >= 0)
        ::close(runLock);
}

QString RecoveryStore::userFolder()
{
    const QString named = QFile::decodeName(qgetenv("XDG_STATE_HOME"));
    const QString state =
        QDir::isAbsolutePath(named) ? named : QDir::homePath() + QStringLiteral("/.local/state");
    return state + QStringLiteral("/kestrane/recovery");
}

bool RecoveryStore::open(QString *error)
{
    if (!runFolder.isEmpty())
        return true;
    // The folder gets its name with the lock held: nobody takes it for one left behind.
    QByteArray making = QFile::encodeName(rootPath + QStringLiteral("/new-XXXXXX"));
    if (makePrivate(rootPath) && mkdtemp(making.data())) {
        const QString fresh = QFile::decodeName(making);
        const QString named =
            rootPath + QStringLiteral("/run-") + fresh.right(6) + QString::number(getpid());
        runLock = lockFile(fresh + kLockName);
        if (runLock >= 0 &&
            std::rename(making.constData(), QFile::encodeName(named).constData()) == 0) {
            runFolder = named;
            return true;
        }
        const int reason = errno;
        removeFolder(fresh);
        if (runLock >= 0)
            ::close(runLock);
        runLock = -1;
        errno = reason;
    }
    *error = qt_error_string(errno);
    return false;
}

QString RecoveryStore::newStem()
{
    return runFolder + QStringLiteral("/picture-%1").arg(++pictures);
}

QString RecoveryStore::newDataPath(const QString &stem, bool layered)
{
    return stem + QStringLiteral("-%1.").arg(++versions) +
           (layered ? QStringLiteral("elx") : QStringLiteral("ato"));
}

bool RecoveryStore::replace(const RecoveredPicture &picture, QString *error)
{
    QSaveFile file(picture.stem + QStringLiteral(".json"));
    const bool written =
        file.open(QIODevice::WriteOnly) && file.write(indexOf(picture)) >= 0 && commitWhole(file);
    if (written) {
        removeVersions(picture.stem, picture.dataPath);
    } else {
        *error = file.errorString();
        QFile::remove(picture.dataPath);
    }
    return written;
}

void RecoveryStore::remove(const QString &stem)
{
    removeVersions(stem, QString());
    QFile::remove(stem + QStringLiteral(".json"));
}

void RecoveryStore::close()
{
    if (runFolder.isEmpty())
        return;
    removeFolder(runFolder);
    ::close(runLock);
    runLock = -1;
    runFolder.clear();
}

bool RecoveryStore::claim(const QString &folder)
{
    const auto same = [&folder](const Claim &claimed) { return claimed.folder == folder; };
    if (std::any_of(claims.cbegin(), claims.cend(), same))
        return true;
    const int lock = lockFile(folder + kLockName);
    if (lock >= 0)
        claims.append({folder, lock});
    return lock >= 0;
}

QList<RecoveredPicture> RecoveryStore::leftovers()
{
    QList<RecoveredPicture> found;
    const QDir root(rootPath);
    for (const QFileInfo &made : root.entryInfoList({"new-*"}, QDir::Dirs | QDir::NoSymLinks))
        if (made.lastModified().secsTo(QDateTime::currentDateTime()) > kMakingSeconds)
            removeFolder(made.filePath());
    for (const QFileInfo &run : root.entryInfoList({"run-*"}, QDir::Dirs | QDir::NoSymLinks))
        if (claim(run.filePath()))
            found << picturesIn(run.filePath());
    for (int i = claims.size() - 1; i >= 0; --i)
        if (picturesIn(claims.at(i).folder).isEmpty()) {
            const Claim empty = claims.takeAt(i);
            removeFolder(empty.folder);
            ::close(empty.lock);
        }
    std::sort(found.begin(), found.end(),
              [](const auto &one, const auto &other) { return one.savedAt > other.savedAt; });
    return found;
}
