// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/filerecord.h"

#include <QSize>
#include <QString>

class QSettings;

/// The last-used folder and filter of one kind of file and how the file dialog showed it,
/// under its own settings key.
struct FileBag {
    QString key;
    QString filters; ///< as a file dialog takes them, separated by ";;"
    FileRecord record;
    QSize dialogSize; ///< of the file dialog as it was left; not valid before its first use

    /// What is not sensible in the store becomes the default. Whether the folder still
    /// exists is not asked here: it may lie on a disk that is asleep.
    void load(QSettings &store);
    void save(QSettings &store) const;

    QStringList filterList() const;
    /// The folder to begin with: the last-used one, or what is left of its path, or home.
    QString startFolder() const;
};
