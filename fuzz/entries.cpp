// SPDX-License-Identifier: GPL-3.0-or-later
#include "entries.h"

#include "area/pshape.h"
#include "area/pshapefile.h"
#include "core/image.h"
#include "core/memory.h"
#include "core/workspace.h"
#include "formats/exif.h"
#include "formats/gif.h"
#include "formats/iff.h"
#include "formats/load.h"
#include "formats/mcai.h"
#include "formats/mcaiblock.h"
#include "formats/orient.h"
#include "formats/readers.h"
#include "formats/tagged.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QImageReader>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <utility>

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

void fuzzIff(const uint8_t *data, size_t size)
{
    readAndCheck(".iff", data, size,
                 [](const QString &path) { return readIff(FileRecord::fromPath(path)).release(); });
}

/// Checksums hide the packed rows from a fuzzer, so what stands behind a first byte is also
/// unpacked as a block of a picture.
void fuzzMcai(const uint8_t *data, size_t size)
{
    readAndCheck(".mcai", data, size, [](const QString &path) {
        return readMcai(FileRecord::fromPath(path)).release();
    });
    image img;
    require(size == 0 || img.allocate(19, 11, QStringLiteral("block")), "no memory");
    if (size == 0)
        return;
    const int steps = 1 + data[0] % 2 * 63; // places of one byte, or of two
    for (int64_t i = 0; i < img.sampleCount(); ++i)
        img.red[i] = img.alpha[i] = img.gmask[i] = uint16_t(i * steps % 60000);
    const QByteArray block(reinterpret_cast<const char *>(data + 1), int(size - 1));
    unpackRows(block, McaiTables::of(img), 0, img.height, true, &img);
}

void fuzzExifBlock(QByteArray block)
{
    exifLines(block);
    if (const bool named = exifOrientation(block) != 0; setExifOrientation(&block, 3))
        require(exifOrientation(block) == 3, "an orientation that was not written");
    else
        require(!named, "an orientation that cannot be written");
}

/// A JPEG file, or else the content of a block.
void fuzzExif(const uint8_t *data, size_t size)
{
    const bool jpeg = size > 1 && data[0] == 0xFF && data[1] == 0xD8;
    if (jpeg)
        readExif(inputFile(".jpg", data, size));
    else
        fuzzExifBlock(
            QByteArray("Exif\0\0", 6).append(reinterpret_cast<const char *>(data), int(size)));
}

/// Bytes that decide what is tried; zeros once they are used up.
class Choices
{
public:
    Choices(const uint8_t *data, size_t size) : at(data), left(size) {}

    int next() { return left == 0 ? 0 : (--left, *at++); }
    int upTo(int most) { return next() % most + 1; }

private:
    const uint8_t *at;
    size_t left;
};

ImageHolder chosenFrame(Choices *choices, int width, int height)
{
    ImageHolder frame{new image};
    require(frame->allocate(width, height, QStringLiteral("frame")), "no memory for a frame");
    const int shades = choices->upTo(256), holes = choices->next();
    for (int64_t i = 0; i < frame->sampleCount(); ++i) {
        for (uint16_t *plane : {frame->red, frame->green, frame->blue})
            plane[i] = uint16_t(choices->next() % shades * 257 + shades);
        frame->alpha[i] = holes > 127 ? uint16_t(choices->next() * 257) : 65535;
    }
    return frame;
}

/// What a viewer has to show of a frame whose colours are kept, and how many those are.
QImage exactPicture(const image &frame, std::set<QRgb> *colors)
{
    QImage picture = frame.toQImage();
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) {
            const QRgb color = picture.pixel(x, y);
            const QRgb shown = qAlpha(color) < 128 ? 0U : color | 0xFF000000U;
            picture.setPixel(x, y, shown);
            colors->insert(shown);
        }
    return picture.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

/// Frames of random sizes and colours through reduction and writer: the file is read back.
void fuzzGif(const uint8_t *data, size_t size)
{
    needWorkspace();
    Choices choices(data, size);
    GifAnimation animation;
    animation.colors = choices.upTo(255) + 1;
    animation.dither = choices.next() % 2 != 0;
    animation.reversed = choices.next() % 2 != 0;
    const int width = choices.upTo(40), height = choices.upTo(40), count = choices.upTo(4);
    std::vector<ImageHolder> frames;
    QList<const image *> list;
    for (int i = 0; i < count; ++i) {
        frames.push_back(chosenFrame(&choices, width, height));
        list << frames.back().get();
        animation.delays << choices.next() * 100;
    }
    const QString path = inputFile(".gif", data, 0);
    QString error;
    require(writeGif(list, animation, path, &error), "the writer refused");
    QImageReader reader(path);
    bool roomForHoles = false; // in the first palette, from which Qt takes that there are any
    for (int i = 0; i < count; ++i) {
        const int number = animation.reversed ? count - 1 - i : i;
        const QImage read = reader.read().convertToFormat(QImage::Format_ARGB32_Premultiplied);
        require(read.size() == QSize(width, height), "a frame of another size");
        std::set<QRgb> colors;
        const QImage exact = exactPicture(*list[number], &colors);
        // One entry may go to the clearing before a frame with holes.
        const bool few = int(colors.size()) < animation.colors;
        roomForHoles = i == 0 ? few : roomForHoles;
        require(!few || !roomForHoles || read == exact, "colours were not kept");
    }
}

/// A shape that was read is whole and can be drawn; saved and read again it is the same.
void fuzzPShape(const uint8_t *data, size_t size)
{
    const int64_t before = memRecord.currentBytes;
    {
        PShape shape, again;
        QString error;
        if (!loadPShape(inputFile(".json", data, size), &shape, &error)) {
            require(!error.isEmpty() && !shape.usable(),
                    "a refusal without a reason or with a rest");
        } else {
            require(shape.count >= 3 && shape.count <= kShapeEntries, "a wrong count");
            shape.lastpolylist = std::exchange(shape.polylist, nullptr);
            shape.lastCount = shape.count;
            shape.lastBaseWidth = shape.baseWidth;
            shape.lastBaseHeight = shape.baseHeight;
            const QString path = inputFile(".saved", data, 0);
            require(savePShape(path, shape, &error) && loadPShape(path, &again, &error),
                    "a shape that cannot be saved and read again");
            require(again.count == shape.lastCount && again.aspect() == shape.aspect(),
                    "another shape");
            for (int i = 0; i < again.count; ++i)
                require(again.polylist[i].x == shape.lastpolylist[i].x &&
                            again.polylist[i].y == shape.lastpolylist[i].y,
                        "another point");
        }
    }
    require(memRecord.currentBytes == before, "tracked memory was lost");
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

// One name each, so that old ones do not pile up.
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
        {"rgba", fuzzRgba}, {"pix", fuzzPix},   {"qt", fuzzQt},         {"raw", fuzzRaw},
        {"exif", fuzzExif}, {"ato", fuzzAto},   {"elx", fuzzElx},       {"gif", fuzzGif},
        {"iff", fuzzIff},   {"mcai", fuzzMcai}, {"pshape", fuzzPShape}, {"dispatch", fuzzDispatch}};
    return entries;
}

void runFuzzEntry(const std::vector<FuzzEntry> &entries, const char *name, const uint8_t *data,
                  size_t size)
{
    for (const FuzzEntry &entry : entries)
        if (std::strcmp(entry.name, name) == 0)
            return entry.run(data, size);
    fail("no such entry");
}
