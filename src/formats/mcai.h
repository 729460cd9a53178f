// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "formats/readers.h"

#include <QByteArray>
#include <QString>

#include <cstdint>

struct FileRecord;
class image;

/// The ".mcai" form: one picture with its selection, notations and all that it says about
/// itself, lossless and small. docs/file-formats.md has it byte for byte.

/// Reads a file; null, without a word, for one of another form. Rows whose part of the file is
/// damaged are zero, and the person is told; so is why a file of this form cannot be read at
/// all. With the record's mcaiOption the picture comes alone, with neither selection nor
/// metadata. Null also if the person cancelled, which `cancelled` tells.
ImageHolder readMcai(const FileRecord &record, bool *cancelled = nullptr);

/// Writes the whole file: an older one of that name stays until the new one is complete. False
/// with a reason, kSaveCancelled if the person cancelled.
bool writeMcai(const image *img, const QString &path, QString *error);

// --- What reader and writer share ----------------------------------------------------------

constexpr int kMcaiMagicBytes = 8;
constexpr char kMcaiMagic[kMcaiMagicBytes + 1] = "MCAI\r\n\x1A\n";
constexpr uint32_t kMcaiVersion = 1;
/// Magic, version, length and checksum of the header.
constexpr int kMcaiStartBytes = kMcaiMagicBytes + 3 * 4;
/// The header's flag: the selection is kept.
constexpr uint32_t kMcaiMaskFlag = 1;
/// Samples of a plane in a block, unless it is a single row that has more.
constexpr int kMcaiBlockSamples = 1 << 18;

inline int mcaiBlockRows(int width)
{
    return width < kMcaiBlockSamples ? kMcaiBlockSamples / width : 1;
}

inline int mcaiBlockCount(int width, int height)
{
    return (height + mcaiBlockRows(width) - 1) / mcaiBlockRows(width);
}
