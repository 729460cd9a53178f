// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/memory.h"
#include "core/rows.h"
#include "core/workspace.h"
#include "formats/bounds.h"
#include "formats/load.h"
#include "formats/readers.h"

#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QtConcurrentRun>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <cmath>

namespace
{
constexpr int kChunkPixels = 512;
constexpr int kByteToSample = 257;
constexpr double kInchesPerMetre = 39.37;
constexpr int kDecodedBytes = 8; // at most, in what QImageReader yields

/// The colours that the indices of a picture stand for. A file may hold indices that its
/// own table does not; these are transparent black, where QImage::pixel would read past
/// the table.
using ColorTable = std::array<QRgb, 256>;

ColorTable tableOf(const QImage &picture)
{
    ColorTable table{};
    const QVector<QRgb> colors = picture.colorTable();
    std::copy_n(colors.begin(), std::min(size_t(colors.size()), table.size()), table.begin());
    return table;
}

/// Fetches pixels of one row as QImage::pixel gives them, without its cost per call for
/// the formats that files commonly decode to.
class PixelRows
{
public:
    explicit PixelRows(const QImage &source)
        : picture(source), format(source.format()), table(tableOf(source))
    {
    }

    void fetch(int y, int x, int count, QRgb *out) const
    {
        const uchar *line = picture.constScanLine(y);
        switch (format) {
        case QImage::Format_ARGB32:
            std::copy_n(reinterpret_cast<const QRgb *>(line) + x, count, out);
            break;
        case QImage::Format_RGB32:
            each(x, count, out,
                 [p = reinterpret_cast<const QRgb *>(line)](int at) { return 0xFF000000 | p[at]; });
            break;
        case QImage::Format_Grayscale8:
            each(x, count, out, [line](int at) { return qRgb(line[at], line[at], line[at]); });
            break;
        case QImage::Format_Indexed8:
            each(x, count, out, [this, line](int at) { return table[line[at]]; });
            break;
        case QImage::Format_Mono:
            each(x, count, out,
                 [this, line](int at) { return table[line[at >> 3] >> (~at & 7) & 1]; });
            break;
        case QImage::Format_MonoLSB:
            each(x, count, out,
                 [this, line](int at) { return table[line[at >> 3] >> (at & 7) & 1]; });
            break;
        case QImage::Format_RGBX64:
        case QImage::Format_RGBA64:
            each(x, count, out, [p = reinterpret_cast<const QRgba64 *>(line)](int at) {
                return p[at].toArgb32();
            });
            break;
        default:
            each(x, count, out, [this, y](int at) { return picture.pixel(at, y); });
        }
    }

private:
    template <class PixelAt>
    static void each(int x, int count, QRgb *out, PixelAt pixelAt)
    {
        for (int i = 0; i < count; ++i)
            out[i] = pixelAt(x + i);
    }

    const QImage &picture;
    QImage::Format format;
    ColorTable table;
};

void copyPixels(const QImage &picture, image &img)
{
    const PixelRows pixels(picture);
    parallelRows(img.height, img.width * 4, [&](int first, int end) {
        QRgb chunk[kChunkPixels];
        for (int y = first; y < end; ++y)
            for (int x = 0; x < img.width; x += kChunkPixels) {
                const int count = std::min(kChunkPixels, img.width - x);
                pixels.fetch(y, x, count, chunk);
                const int64_t at = int64_t(y) * img.width + x;
                uint16_t *const __restrict red = img.red + at;
                uint16_t *const __restrict green = img.green + at;
                uint16_t *const __restrict blue = img.blue + at;
                uint16_t *const __restrict alpha = img.alpha + at;
                for (int i = 0; i < count; ++i) {
                    red[i] = uint16_t(qRed(chunk[i]) * kByteToSample);
                    green[i] = uint16_t(qGreen(chunk[i]) * kByteToSample);
                    blue[i] = uint16_t(qBlue(chunk[i]) * kByteToSample);
                    alpha[i] = uint16_t(qAlpha(chunk[i]) * kByteToSample);
                }
            }
    });
}

bool isDeep(const QImage &picture)
{
    const QImage::Format format = picture.format();
    return format == QImage::Format_RGBA64 || format == QImage::Format_RGBX64 ||
           format == QImage::Format_Grayscale16;
}

/// The 16 bits of each channel as they are.
void copyDeepPixels(const QImage &picture, image &img)
{
    const bool grey = picture.format() == QImage::Format_Grayscale16;
    const bool opaque = picture.format() != QImage::Format_RGBA64;
    parallelRows(img.height, img.width * 4, [&](int first, int end) {
        for (int y = first; y < end; ++y) {
            const uchar *line = picture.constScanLine(y);
            const auto *greys = reinterpret_cast<const quint16 *>(line);
            const auto *colors = reinterpret_cast<const QRgba64 *>(line);
            const int64_t start = int64_t(y) * img.width;
            for (int x = 0; x < img.width; ++x) {
                const QRgba64 pixel =
                    grey ? qRgba64(greys[x], greys[x], greys[x], 65535) : colors[x];
                img.red[start + x] = pixel.red();
                img.green[start + x] = pixel.green();
                img.blue[start + x] = pixel.blue();
                img.alpha[start + x] = opaque ? 65535 : pixel.alpha();
            }
        }
    });
}

/// Stores the text keys that are known; what the file does not name becomes empty, not
/// the user's default. A modification time lands in creationTime but does not count as a
/// find: alone it is cleared again.
void takeTexts(const QImage &picture, image &img)
{
    bool author = false, annotation = false, copyright = false, creation = false;
    bool software = false;
    const QStringList keys = picture.textKeys();
    for (const QString &key : keys) {
        const auto is = [&key](const char *known) {
            return key.compare(QLatin1String(known), Qt::CaseInsensitive) == 0;
        };
        const auto take = [&](QString &field, bool *found) {
            field = picture.text(key);
            if (found)
                *found = true;
        };
        if (is("Author"))
            take(img.author, &author);
        else if (is("Description"))
            take(img.annotation, &annotation);
        else if (is("Copyright"))
            take(img.copyright, &copyright);
        else if (is("Software"))
            take(img.software, &software);
        else if (is("Creation Time"))
            take(img.creationTime, &creation);
        else if (is("Modification Time"))
            take(img.creationTime, nullptr);
    }
    if (!author)
        img.author = QLatin1String("");
    if (!annotation)
        img.annotation = QLatin1String("");
    if (!copyright)
        img.copyright = QLatin1String("");
    if (!creation)
        img.creationTime = QLatin1String("");
    const QLatin1String program("Kestrane");
    if (!img.software.contains(program))
        img.software += (software ? QLatin1String(" and ") : QLatin1String("")) + program;
}

/// Pixels that a byte of a file can stand for at the very best, by its form: what claims
/// more is a lie that would cost memory.
int64_t bestPixelsPerByte(const QByteArray &format)
{
    constexpr int64_t deflatedBits = 1032 * 8;
    if (format == "pbm" || format == "xbm")
        return 8;
    if (format == "pgm" || format == "ppm" || format == "xpm")
        return 1;
    return deflatedBits;
}

/// The size that the file announces. Of a GIF the reader tells the first frame's, but
/// decodes to the canvas, which stands in the header.
QSize announcedSize(const QImageReader &reader, const QString &path)
{
    if (reader.format() != "gif")
        return reader.size();
    QFile file(path);
    const QByteArray header = file.open(QIODevice::ReadOnly) ? file.read(10) : QByteArray();
    if (header.size() < 10)
        return QSize();
    return QSize(qFromLittleEndian<uint16_t>(header.constData() + 6),
                 qFromLittleEndian<uint16_t>(header.constData() + 8))
        .expandedTo(reader.size());
}

/// Whether the picture may be decoded. Says why not.
bool sizeAllowed(QSize size, const QByteArray &format, int64_t fileBytes)
{
    // Drawings are no pictures, and without a size beforehand nothing bounds the memory.
    if (!size.isValid() || format.startsWith("svg") || format == "pdf") {
        sayStatus(QStringLiteral("failed to load image"));
        return false;
    }
    const int64_t pixels = int64_t(size.width()) * size.height();
    if (!sidesInRange(size.width(), size.height()) || !memoryCanHold(pixels, kDecodedBytes)) {
        sayStatus(QStringLiteral("Image allocation failed"));
        return false;
    }
    if (!fileCanHold(pixels, fileBytes, bestPixelsPerByte(format))) {
        sayStatus(QStringLiteral("failed to load image"));
        return false;
    }
    return true;
}

/// Writes to every page of the colour planes, which are zero. Fresh memory costs more at
/// its first touch than the pixels that go there.
void touchPages(const image *img)
{
    constexpr int64_t samplesPerPage = 4096 / sizeof(uint16_t);
    for (volatile uint16_t *plane : img->colorPlanes())
        for (int64_t at = 0; at < img->sampleCount(); at += samplesPerPage)
            plane[at] = 0;
}

/// A picture of the kind that JPEG and PNG files decode to, in tracked memory, which is
/// quicker to touch for the first time: opening a large file takes a seventh less time.
/// Null where that is not worth it; the reader then makes its own.
QImage roomToDecode(const QImageReader &reader, QSize size)
{
    constexpr int64_t worthwhile = 4 << 20;
    const QByteArray form = reader.format();
    const QImage::Format format = reader.imageFormat();
    const int bits = QImage::toPixelFormat(format).bitsPerPixel();
    const int64_t lineBytes = (int64_t(size.width()) * bits + 31) / 32 * 4;
    if ((form != "jpeg" && form != "png") || lineBytes * size.height() < worthwhile)
        return QImage();
    void *memory = umalloc(size_t(lineBytes) * size_t(size.height()), "decoded picture");
    if (!memory)
        return QImage();
    const QImage room(static_cast<uchar *>(memory), size.width(), size.height(), int(lineBytes),
                      format, ufree, memory);
    if (room.isNull())
        ufree(memory); // nobody else will
    return room;
}

/// Makes the image at the size that the file announces and decodes the picture. Decoding
/// keeps one core busy, so another one touches the planes meanwhile. Says what fails. `form` is
/// what the file really is, whatever its name.
ImageHolder decode(const QString &path, QImage *picture, QByteArray *form)
{
    const QFileInfo info(path);
    QImageReader reader(path);
    if (!info.isFile() || !reader.canRead()) {
        sayStatus(QStringLiteral("failed to load image"));
        return nullptr;
    }
    const QSize size = announcedSize(reader, path);
    if (!sizeAllowed(size, reader.format(), info.size()))
        return nullptr;
    auto img = std::make_unique<image>();
    if (!img->allocateUnfilled(size.width(), size.height(), path)) {
        sayStatus(QStringLiteral("Image allocation failed"));
        return nullptr;
    }
    *form = reader.format();
    *picture = roomToDecode(reader, size);
    QFuture<void> touched = QtConcurrent::run(touchPages, img.get());
    const bool read = reader.read(picture) && !picture->isNull();
    touched.waitForFinished();
    if (!read) {
        sayStatus(QStringLiteral("failed to load image"));
        return nullptr;
    }
    return img;
}

/// A file may announce one size and decode to another.
bool followSize(const QImage &picture, const QString &path, image *img)
{
    if (picture.width() == img->width && picture.height() == img->height)
        return true;
    return sidesInRange(picture.width(), picture.height()) &&
           img->allocateUnfilled(picture.width(), picture.height(), path);
}
} // namespace

ImageHolder readThroughQt(const QString &path, const FileRecord &record)
{
    QImage picture;
    QByteArray form;
    ImageHolder img = decode(path, &picture, &form);
    if (!img)
        return nullptr;
    if (!followSize(picture, path, img.get())) {
        sayStatus(QStringLiteral("Image allocation failed"));
        return nullptr;
    }
    img->saveBag = record;
    img->saveBag.isSet = true;
    sayStatus(QStringLiteral("loading image %1 %2").arg(picture.width()).arg(picture.height()));
    if (form == "png" && workspace() && workspace()->png16 && isDeep(picture))
        copyDeepPixels(picture, *img);
    else
        copyPixels(picture, *img);
    takeTexts(picture, *img);
    // The default rounding: to the nearest, halves to even.
    img->xDpi = int32_t(std::lrint(picture.dotsPerMeterX() / kInchesPerMetre));
    img->yDpi = int32_t(std::lrint(picture.dotsPerMeterY() / kInchesPerMetre));
    return img;
}

image *loadThroughQt(const QString &path, const QString &name, const FileRecord &record, bool show)
{
    Q_UNUSED(name) // the picture is named by its path until the dispatch names it
    ImageHolder img = readThroughQt(path, record);
    return img && show ? finishLoad(std::move(img), record, true) : img.release();
}
