// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/filebag.h"

#include <QFileInfo>
#include <QSettings>

void FileBag::load(QSettings &store)
{
    store.beginGroup(key);
    record.folder = store.value(QStringLiteral("folder")).toString();
    record.filter = store.value(QStringLiteral("filter")).toString();
    store.endGroup();
    // A folder that went away, or nonsense in the store, falls back on the current one.
    if (!record.folder.isEmpty() && !QFileInfo(record.folder).isDir())
        record.folder.clear();
    if (!filters.split(QStringLiteral(";;")).contains(record.filter))
        record.filter.clear();
}

void FileBag::save(QSettings &store) const
{
    store.beginGroup(key);
    store.setValue(QStringLiteral("folder"), record.folder);
    store.setValue(QStringLiteral("filter"), record.filter);
    store.endGroup();
}
