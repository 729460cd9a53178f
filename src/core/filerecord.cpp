// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/filerecord.h"

#include <algorithm>

FileRecord FileRecord::fromPath(const QString &path)
{
    FileRecord record;
    const int slash = path.lastIndexOf(QLatin1Char('/'));
    record.fullPath = path;
    record.folder = path.left(std::max(slash, 0));
    record.name = path.mid(slash + 1);
    record.isSet = !path.isEmpty();
    return record;
}
