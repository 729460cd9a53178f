// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class image;

/// A raw file of 64 or 32 bits a pixel. False with a reason; the old file then stands.
bool writeRgbaFile(const image *img, const QString &path, int depth, QString *error);

/// An 8-bit PNG or JPEG through Qt, with text keys and resolution; a JPEG also carries
/// the image's EXIF block if the workspace's saveEXIF is on. False with a reason; the old
/// file then stands.
bool writeThroughQt(const image &img, const QString &path, bool jpeg, int quality, QString *error);
