// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>

/// The file record: what a caller hands to the load dispatch, and what each image
/// keeps as its last-used path and filter state.
struct FileRecord {
    QString folder;   ///< the folder of the file, without a trailing slash
    QString filter;   ///< the filter last used in the file dialog
    QString fullPath; ///< the path that is opened
    QString name;     ///< the file's name without its folder
    QString title;    ///< caption of the file dialog

    bool isSet = false;
    bool forSaving = false;
    bool showHidden = false;
    bool showPreview = true;
    bool sortByDate = false;
    bool reverseSort = false;
    bool mcaiOption = false;

    uint32_t viewStyle = 0;

    /// A record for one path: folder and name are split at the last "/".
    static FileRecord fromPath(const QString &path);
};
