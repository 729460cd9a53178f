// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

class QSettings;

/// The files or folders used last, newest first, each once. Nothing here asks whether an
/// entry still exists: a network share may be asleep, and whoever opens the entry is told.
class RecentList
{
public:
    /// As many as a list may ever hold.
    static constexpr int kMost = 33;

    /// `settingsKey` is where the list is kept between runs.
    explicit RecentList(const QString &settingsKey);

    /// Replaces the list by the one in the store; entries that cannot be paths are dropped.
    void load(QSettings &store);
    void save(QSettings &store) const;

    /// Puts a path first, under its canonical name if it exists, and keeps at most `limit`.
    void add(const QString &path, int limit);
    void remove(const QString &path);
    void clear();
    /// Drops the oldest entries beyond `limit`, which is 1 to kMost.
    void setLimit(int limit);

    const QStringList &entries() const { return paths; }

private:
    QString key;
    QStringList paths;
};

/// The folders that the file dialogs were used in; loaded and saved with the file bags.
RecentList &recentFolders();
