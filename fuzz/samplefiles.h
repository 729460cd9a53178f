// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>

#include <cstdint>

/// Small valid files of every kind that is read, made on the spot: seeds of the fuzz targets,
/// and what tests damage.
struct SampleFile {
    const char *target; ///< fuzz target that it is a seed of
    QByteArray extension;
    QByteArray bytes;
};
QList<SampleFile> sampleFiles();

/// An IFF picture. A pixel's code holds a bit for each plane, the lowest first.
struct IffSample {
    QByteArray type = "ILBM";
    int width = 21, height = 3, planes = 4;
    uint32_t (*code)(int x, int y) = [](int x, int y) { return uint32_t(x + 7 * y); };
    bool packed = true;
    int masking = 0;
    int transparent = 0;
    int64_t viewMode = -1; ///< -1: none is written
    QByteArray palette = {};
    QByteArray otherChunks = {}; ///< stand before the picture
};
/// With a mask plane every third pixel of a row is transparent.
QByteArray iffFile(const IffSample &sample);
QByteArray iffChunk(const QByteArray &id, const QByteArray &data);
