// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class QSaveFile;
class image;

/// The reason of a writer that the person stopped.
constexpr const char *kSaveCancelled = "cancelled";

/// Puts the new file in the place of the old one, unless any of it could not be written.
bool commitWhole(QSaveFile &file);

/// A raw file of 64 or 32 bits a pixel. False with a reason; the old file then stands.
bool writeRgbaFile(const image *img, const QString &path, int depth, QString *error);

/// A PNG or JPEG through Qt at 8 bits (a PNG at 16 if the workspace's png16 is on), with text keys
/// and resolution; a JPEG also carries the image's EXIF block if the workspace's saveEXIF is on.
/// False with a reason; the old file then stands.
bool writeThroughQt(const image &img, const QString &path, bool jpeg, int quality, QString *error);
