// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

struct FileRecord;
class image;

/// The save dispatch, by the record's full path. With `flat` a layered image may be
/// written to a flat form. Returns whether the file was written completely; what went
/// wrong was told through the workspace and why to the debug channel. The old file of
/// that name is replaced only by a complete new one, and the image stays marked as
/// changed unless the save succeeded.
bool saveImageFile(const FileRecord &record, image *img, bool flat);

/// The raw forms: 8-bit (4 bytes a pixel) and 16-bit samples (8 bytes a pixel).
bool writeRgba32(const image *img, const QString &path);
bool writeRgba64(const image *img, const QString &path);
