// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

#include <vector>

class QSettings;

/// Named folders: with "photos" standing for /home/me/Pictures, "photos:2024/a.png" is a
/// path wherever a person types one. Names are compared without regard to case.
class Assigns
{
public:
    /// Makes a name stand for a folder, which may begin with "~" or with another assign and
    /// need not exist. A name that stands for something already is changed. False with a
    /// reason a person can act on, and nothing changed.
    bool set(const QString &name, const QString &folder, QString *error);
    void remove(const QString &name);
    void clear() { entries.clear(); }

    QStringList names() const; ///< sorted
    bool contains(const QString &name) const;
    /// As it was typed: see resolve() for the folder that it comes to. Null if unknown.
    QString folder(const QString &name) const;

    /// The absolute path of what a person typed, if it begins with an assign that leads to
    /// one; otherwise the text as it is.
    QString resolve(const QString &typed) const;
    /// An absolute path by the assign that leaves least of it; without one as it is.
    QString shorten(const QString &path) const;

    /// Replaces everything by what the store holds. Entries that make no sense are left out.
    void load(QSettings &store);
    void save(QSettings &store) const;

private:
    struct Entry {
        QString name, folder;
    };
    const Entry *find(const QString &name) const;
    void insert(const Entry &entry);
    /// The absolute folder of an entry; empty if it leads nowhere or in a circle.
    QString absoluteFolder(const Entry &entry, int depth) const;

    std::vector<Entry> entries; ///< sorted by name
};

/// The assigns of the program.
Assigns &assigns();
