// SPDX-License-Identifier: GPL-3.0-or-later
#include "entries.h"

#include "core/image.h"
#include "core/memory.h"
#include "core/workspace.h"
#include "formats/exif.h"
#include "formats/load.h"
#include "formats/readers.h"
#include "formats/tagged.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace
{
[[noreturn]] void fail(const char *what)
{
    std::fprintf(stderr, "fuzz entry: %s\n", what);
    std::abort();
}

void require(bool condition, const char *what)
{
    if (!condition)
        fail(what);
}

/// A file in memory with this content. One name each, so that old ones do not pile up.
QString inputFile(const char *extension, const uint8_t *data, size_t size)
{
    const QString memory = QStringLiteral("/dev/shm");
    static const QTemporaryDir folder((QDir(memory).exists() ? memory : QDir::tempPath()) +
                                      QStringLiteral("/kestrane-XXXXXX"));
    const QString path = folder.filePath(QStringLiteral("input") + QLatin1String(extension));
    QFile file(path);
    require(file.open(QIODevice::WriteOnly) &&
                file.write(reinterpret_cast<const char *>(data), qint64(size)) == qint64(size),
            "no room for the input");
    return path;
}

/// Readers need a workspace; a test has one, a fuzz target makes one.
void needWorkspace()
{
    if (!workspace())
        static Workspace own;
}

using Reader = image *(*)(const QString &path);

void requireUsable(const image &img)
{
    require(img.valid() && img.width > 0 && img.height > 0, "an invalid image");
    require(img.width <= kMaxImageSide && img.height <= kMaxImageSide, "too large an image");
    for (const uint16_t *plane : img.colorPlanes())
        require(plane != nullptr, "a plane is missing");
}

/// Reads the file and holds the outcome against what every reader promises.
void readAndCheck(const char *extension, const uint8_t *data, size_t size, Reader read)
{
    needWorkspace();
    const QString path = inputFile(extension, data, size);
    const int64_t before = memRecord.currentBytes;
    const int64_t refused = memRecord.allocationFailures;
    if (const ImageHolder img{read(path)}) {
        requireUsable(*img);
        require(img->layers.isEmpty() || img->kind == 1, "layers without a master");
        for (const image *layer : qAsConst(img->layers)) {
            requireUsable(*layer);
            require(layer->kind == 2 && layer->master == img.get(), "a stray layer");
        }
    }
    const bool balanced = memRecord.currentBytes == before;
    require(balanced || memRecord.allocationFailures != refused, "tracked memory was lost");
}

void fuzzRgba(const uint8_t *data, size_t size)
{
    for (const Reader read : {Reader([](const QString &path) { return readRgba32(path, path); }),
                              Reader([](const QString &path) { return readRgba64(path, path); })})
        readAndCheck(".rgba", data, size, read);
}

void fuzzPix(const uint8_t *data, size_t size)
{
    readAndCheck(".pix", data, size, [](const QString &path) {
        return loadPix(path, path, FileRecord::fromPath(path), false, true);
    });
}

void fuzzQt(const uint8_t *data, size_t size)
{
    readAndCheck(".png", data, size, [](const QString &path) {
        return loadThroughQt(path, path, FileRecord::fromPath(path), false);
    });
}

void fuzzRaw(const uint8_t *data, size_t size)
{
    readAndCheck(".dng", data, size, [](const QString &path) {
        return loadThroughLibRaw(FileRecord::fromPath(path), path, false);
    });
}

void fuzzAto(const uint8_t *data, size_t size)
{
    readAndCheck(".ato", data, size, [](const QString &path) {
        return readAtomic(FileRecord::fromPath(path)).release();
    });
}

void fuzzElx(const uint8_t *data, size_t size)
{
    readAndCheck(".elx", data, size, [](const QString &path) {
        return readMaster(FileRecord::fromPath(path)).release();
    });
}

/// A JPEG file, or else the content of a block.
void fuzzExif(const uint8_t *data, size_t size)
{
    const bool jpeg = size > 1 && data[0] == 0xFF && data[1] == 0xD8;
    if (jpeg)
        readExif(inputFile(".jpg", data, size));
    else
        exifLines(
            QByteArray("Exif\0\0", 6).append(reinterpret_cast<const char *>(data), int(size)));
}

void fuzzDispatch(const uint8_t *data, size_t size)
{
    if (size == 0)
        return;
    const auto &extensions = dispatchExtensions();
    readAndCheck(extensions[data[0] % extensions.size()], data + 1, size - 1,
                 [](const QString &path) { return loadImageFile(path, {}, nullptr, false); });
}
} // namespace

const std::vector<const char *> &dispatchExtensions()
{
    static const std::vector<const char *> list = {
        "",     ".rgba", ".jpg", ".png", ".gif", ".pbm", ".pgm", ".ppm", ".xbm", ".xpm",
        ".dng", ".cr2",  ".nef", ".raf", ".iff", ".pix", ".ato", ".elx", ".mcai"};
    return list;
}

const std::vector<FuzzEntry> &fuzzEntries()
{
    static const std::vector<FuzzEntry> entries = {
        {"rgba", fuzzRgba}, {"pix", fuzzPix}, {"qt", fuzzQt},   {"raw", fuzzRaw},
        {"exif", fuzzExif}, {"ato", fuzzAto}, {"elx", fuzzElx}, {"dispatch", fuzzDispatch}};
    return entries;
}

void runFuzzEntry(const char *name, const uint8_t *data, size_t size)
{
    for (const FuzzEntry &entry : fuzzEntries())
        if (std::strcmp(entry.name, name) == 0)
            return entry.run(data, size);
    fail("no such entry");
}
