// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/filerecord.h"

#include <QString>
#include <QStringList>

class image;

/// The load dispatch: decides from a file's name, then from its first bytes, which
/// reader handles it. Returns a new image (already handed to Workspace::showImage if
/// `show` is set; otherwise the caller owns it) or null, having told the person through
/// the workspace. With no record the workspace's own is used. Never throws; nothing is
/// changed by a file that cannot be read.
image *loadImageFile(const QString &path, const QString &name, const FileRecord *record, bool show,
                     bool mcaiOption = false);

/// First step of the dispatch: the forms that are recognised by an 8-byte magic.
image *loadNative(const FileRecord &record, bool show);

/// Every pixel of what QImage reads, each byte x 257, with text keys and resolution.
image *loadThroughQt(const QString &path, const QString &name, const FileRecord &record, bool show);

/// Linear 16-bit samples of a camera RAW file through LibRaw, with its metadata.
image *loadThroughLibRaw(const FileRecord &record, const QString &name, bool show);

/// A 128 x 128 picture of 4-bit greys.
image *loadPix(const QString &path, const QString &name, const FileRecord &record, bool show,
               bool checkExtension);

/// The raw forms, big-endian samples after three 8-byte header fields.
image *readRgba32(const QString &path, const QString &name);
image *readRgba64(const QString &path, const QString &name);

/// Extensions of the program's own forms, each with its dot. Files are told by their first
/// bytes; the names are for choosing among files.
const QStringList &nativeExtensions();
/// Extensions that the dispatch knows, each with its dot, in the order of the scan.
const QStringList &qtExtensions();
const QStringList &rawExtensions();
