// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/recentlist.h"

#include "app/filepickerrules.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>

#include <algorithm>

namespace
{
QString canonical(const QString &path)
{
    const QFileInfo info(path);
    const QString real = info.canonicalFilePath();
    return real.isEmpty() ? QDir::cleanPath(info.absoluteFilePath()) : real;
}
} // namespace

RecentList::RecentList(const QString &settingsKey) : key(settingsKey) {}

void RecentList::load(QSettings &store)
{
    paths.clear();
    const QStringList stored = store.value(key).toStringList();
    for (const QString &text : stored) {
        const QString path = QDir::cleanPath(text);
        if (isPlausiblePath(path) && !paths.contains(path))
            paths << path;
        if (paths.size() == kMost)
            break;
    }
}

void RecentList::save(QSettings &store) const
{
    store.setValue(key, paths);
}

void RecentList::add(const QString &path, int limit)
{
    if (path.isEmpty())
        return;
    const QString real = canonical(path);
    paths.removeAll(real);
    paths.prepend(real);
    setLimit(limit);
}

void RecentList::remove(const QString &path)
{
    paths.removeAll(path);
    paths.removeAll(canonical(path));
}

void RecentList::clear()
{
    paths.clear();
}

void RecentList::setLimit(int limit)
{
    while (paths.size() > std::clamp(limit, 1, kMost))
        paths.removeLast();
}

RecentList &recentFolders()
{
    static RecentList list(QStringLiteral("recentFolders"));
    return list;
}
