// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// What the EXIF reader found in a JPEG file; both are empty if there is nothing.
struct ExifContent {
    QStringList lines; ///< "Name: value", for people to read
    QByteArray block;  ///< the payload of the APP1 segment, beginning "Exif\0\0"
};

/// Reads the EXIF segment of a JPEG file. Damage only makes the result shorter.
ExifContent readExif(const QString &path);

/// The lines of an EXIF block that begins with "Exif\0\0".
QStringList exifLines(const QByteArray &block);
