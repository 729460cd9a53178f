// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/rows.h"
#include "formats/bounds.h"
#include "formats/load.h"
#include "formats/readers.h"
#include "formats/save.h"
#include "formats/writers.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QtEndian>

#include <algorithm>

namespace
{
constexpr int kFieldBytes = 8;
constexpr int kHeaderBytes = 3 * kFieldBytes;
constexpr int kChunkBytes = 8 << 20;
constexpr int kChannels = 4;

/// The two depths: how samples stand in the file, and what the header calls them.
struct Depth32 {
    static constexpr char magic[kFieldBytes + 1] = "RAW32XY\0";
    static constexpr int sampleBytes = 1;
    static constexpr int leastFileBytes = 28;
    static uint16_t get(const uchar *at) { return uint16_t((*at << 8) + *at); }
    static void put(uint16_t sample, uchar *at) { *at = uchar(sample >> 8); }
};

struct Depth64 {
    static constexpr char magic[kFieldBytes + 1] = "RAW64XY\0";
    static constexpr int sampleBytes = 2;
    static constexpr int leastFileBytes = 32;
    static uint16_t get(const uchar *at) { return qFromBigEndian<uint16_t>(at); }
    static void put(uint16_t sample, uchar *at) { qToBigEndian(sample, at); }
};

/// A decimal number as "%d" would scan it: blanks, a sign, digits up to the first other
/// character. False without a digit. Eight characters cannot overflow.
bool scanNumber(const char *field, int64_t *value)
{
    const char *const end = field + kFieldBytes;
    while (field < end && (*field == ' ' || (*field >= '\t' && *field <= '\r')))
        ++field;
    const bool negative = field < end && *field == '-';
    if (field < end && (*field == '-' || *field == '+'))
        ++field;
    const char *const digits = field;
    int64_t number = 0;
    for (; field < end && *field >= '0' && *field <= '9'; ++field)
        number = number * 10 + (*field - '0');
    *value = negative ? -number : number;
    return field > digits;
}

/// Reads the header and holds it against the file's size; false if anything is amiss.
template <class Depth>
bool readHeader(QFile &file, int64_t *width, int64_t *height)
{
    const QByteArray header = file.read(kHeaderBytes);
    return header.size() == kHeaderBytes &&
           std::equal(Depth::magic, Depth::magic + kFieldBytes, header.constData()) &&
           scanNumber(header.constData() + kFieldBytes, width) &&
           scanNumber(header.constData() + 2 * kFieldBytes, height) &&
           sidesInRange(*width, *height) &&
           file.size() == *width * *height * kChannels * Depth::sampleBytes + kHeaderBytes;
}

/// Calls `work(firstRow, rows)` for chunks of whole rows, until one fails.
template <class Work>
bool inChunks(int rows, int rowBytes, Work work)
{
    const int chunk = std::max(1, kChunkBytes / rowBytes);
    for (int first = 0; first < rows; first += chunk)
        if (!work(first, std::min(chunk, rows - first)))
            return false;
    return true;
}

template <class Depth>
bool readPixels(QFile &file, image &img)
{
    const int rowBytes = img.width * kChannels * Depth::sampleBytes;
    const auto planes = img.colorPlanes();
    return inChunks(img.height, rowBytes, [&](int firstRow, int rows) {
        const QByteArray bytes = file.read(int64_t(rows) * rowBytes);
        if (bytes.size() != int64_t(rows) * rowBytes)
            return false;
        const uchar *in = reinterpret_cast<const uchar *>(bytes.constData());
        parallelRows(rows, rowBytes, [&](int first, int end) {
            const uchar *at = in + int64_t(first) * rowBytes;
            const int64_t start = int64_t(firstRow + first) * img.width;
            const int64_t stop = int64_t(firstRow + end) * img.width;
            for (int64_t i = start; i < stop; ++i)
                for (uint16_t *plane : planes) {
                    plane[i] = Depth::get(at);
                    at += Depth::sampleBytes;
                }
        });
        return true;
    });
}

template <class Depth>
image *readRgba(const QString &path, const QString &name)
{
    const QFileInfo info(path);
    if (path.isEmpty() || name.isEmpty() || !info.isFile() || info.size() < Depth::leastFileBytes)
        return nullptr;
    QFile file(path);
    int64_t width = 0, height = 0;
    if (!file.open(QIODevice::ReadOnly) || !readHeader<Depth>(file, &width, &height))
        return nullptr;
    auto img = std::make_unique<image>();
    if (!img->allocateUnfilled(int(width), int(height), name) || !readPixels<Depth>(file, *img))
        return nullptr;
    return img.release();
}

bool writeField(QIODevice &file, QByteArray text)
{
    return file.write(text.append(kFieldBytes - text.size(), '\0')) == kFieldBytes;
}

template <class Depth>
bool writePixels(QIODevice &file, const image &img)
{
    const int rowBytes = img.width * kChannels * Depth::sampleBytes;
    const auto planes = img.colorPlanes();
    QByteArray bytes;
    return inChunks(img.height, rowBytes, [&](int firstRow, int rows) {
        bytes.resize(rows * rowBytes);
        uchar *out = reinterpret_cast<uchar *>(bytes.data());
        parallelRows(rows, rowBytes, [&](int first, int end) {
            uchar *at = out + int64_t(first) * rowBytes;
            const int64_t start = int64_t(firstRow + first) * img.width;
            const int64_t stop = int64_t(firstRow + end) * img.width;
            for (int64_t i = start; i < stop; ++i)
                for (const uint16_t *plane : planes) {
                    Depth::put(plane[i], at);
                    at += Depth::sampleBytes;
                }
        });
        return file.write(bytes) == bytes.size();
    });
}

template <class Depth>
bool writeAll(QIODevice &file, const image &img)
{
    return writeField(file, QByteArray(Depth::magic)) &&
           writeField(file, QByteArray::number(img.width)) &&
           writeField(file, QByteArray::number(img.height)) && writePixels<Depth>(file, img);
}

bool writeAndLog(const image *img, const QString &path, int depth)
{
    QString error;
    const bool written = writeRgbaFile(img, path, depth, &error);
    if (!written)
        qDebug("%s: %s", qPrintable(path), qPrintable(error));
    return written;
}
} // namespace

image *readRgba32(const QString &path, const QString &name)
{
    return readRgba<Depth32>(path, name);
}

image *readRgba64(const QString &path, const QString &name)
{
    return readRgba<Depth64>(path, name);
}

bool writeRgbaFile(const image *img, const QString &path, int depth, QString *error)
{
    if (!img || !img->valid() || path.isEmpty()) {
        *error = QStringLiteral("no image or no name");
        return false;
    }
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) &&
        (depth == 32 ? writeAll<Depth32>(file, *img) : writeAll<Depth64>(file, *img)) &&
        commitWhole(file))
        return true;
    *error = file.errorString();
    return false;
}

bool writeRgba32(const image *img, const QString &path)
{
    return writeAndLog(img, path, 32);
}

bool writeRgba64(const image *img, const QString &path)
{
    return writeAndLog(img, path, 64);
}
