// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "formats/readers.h"

#include <QString>

#include <atomic>

struct FileRecord;
class image;

/// The native forms, bytes as docs/file-formats.md has them. ".ato" holds one atomic image,
/// ".elx" a master with all its layers; both keep 16 bits a sample and every field.

/// Reads ".ato". Null for a file that is none, is cut inside a field, or whose key is
/// wrong; says so on the debug channel only. The image keeps the name stored in the file.
/// Null also if the person cancelled (Workspace::cancelRequested), which `cancelled` tells.
ImageHolder readAtomic(const FileRecord &record, bool *cancelled = nullptr);
/// Reads ".elx": the master with its layers, composed. Null as readAtomic.
ImageHolder readMaster(const FileRecord &record, bool *cancelled = nullptr);

/// Write whole files: an older one of that name stays until the new one is complete. False
/// with a reason, kSaveCancelled if the person cancelled. Planes are packed in parallel; the bytes
/// do not depend on it.
bool writeAtomic(const image *img, const QString &path, QString *error);
/// As writeAtomic, for the stack that `member` (a master or one of its layers) belongs to.
bool writeMaster(const image *member, const QString &path, QString *error);

/// What a write in the background shares with whoever waits for it.
struct BackgroundWrite {
    std::atomic<bool> stop{false}; ///< set: it gives up soon
    std::atomic<int> percent{0};
};

/// Writes a picture in the form of its kind, master or atomic, from any thread: the workspace
/// is neither told nor asked, and nobody may change the picture meanwhile. Quick rather than
/// small. False with a reason, kSaveCancelled after a stop; an older file then stands.
bool writeInBackground(const image &picture, const QString &path, BackgroundWrite *state,
                       QString *error);
