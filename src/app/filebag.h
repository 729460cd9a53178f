// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/filerecord.h"

#include <QString>

class QSettings;

/// The last-used folder and filter of one kind of file, under its own settings key.
struct FileBag {
    QString key;
    QString filters; ///< as a file dialog takes them, separated by ";;"
    FileRecord record;

    void load(QSettings &store);
    void save(QSettings &store) const;
};
