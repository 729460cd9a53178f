// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/iff.h"

#include "core/image.h"
#include "formats/bounds.h"
#include "formats/iffpixels.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QTextCodec>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

namespace
{
constexpr int kChunkHead = 8, kTypeBytes = 4;
constexpr int64_t kLongestText = 1 << 20;
constexpr int kByteToSample = 257;
/// Two bytes of a run stand for 128 bytes of eight pixels of one plane.
constexpr int64_t kBestPixelsPerByte = 512;
constexpr uint32_t kHoldAndModify = 0x800, kHalfBrite = 0x80;
constexpr size_t kPaletteSize = 256;

struct Chunk {
    QByteArray id;
    int64_t start, size; ///< of the data, as far as the file goes
};

/// Walks over the chunks between two places of a file.
class ChunkWalk
{
public:
    ChunkWalk(QFile *source, int64_t from, int64_t to) : file(source), at(from), end(to) {}
    bool next(Chunk *chunk)
    {
        if (at + kChunkHead > end || !file->seek(at))
            return false;
        const QByteArray head = file->read(kChunkHead);
        if (head.size() < kChunkHead)
            return false;
        const int64_t size = qFromBigEndian<uint32_t>(head.constData() + kTypeBytes);
        *chunk = {head.left(kTypeBytes), at + kChunkHead, std::min(size, end - at - kChunkHead)};
        at += kChunkHead + size + size % 2; // data of odd length have a byte of padding
        return true;
    }

private:
    QFile *file;
    int64_t at, end;
};

/// Texts are older than UTF-8: what is not valid in it is Latin-1.
QString textIn(const QByteArray &bytes)
{
    const QByteArray whole = bytes.left(int(qstrnlen(bytes.constData(), uint(bytes.size()))));
    QTextCodec::ConverterState state;
    const QString text =
        QTextCodec::codecForName("UTF-8")->toUnicode(whole.constData(), whole.size(), &state);
    return (state.invalidChars == 0 && state.remainingChars == 0 ? text
                                                                 : QString::fromLatin1(whole))
        .trimmed();
}

class IffReader
{
public:
    explicit IffReader(const FileRecord &source) : record(source), file(source.fullPath) {}

    ImageHolder read()
    {
        if (!QFileInfo(record.fullPath).isFile() || !file.open(QIODevice::ReadOnly))
            return nullptr;
        Chunk form;
        // The length that the form gives is not needed: files that were cut, or never had it
        // filled in, go on to their end.
        if (!ChunkWalk(&file, 0, file.size()).next(&form) || form.id != "FORM" ||
            !readForm(form.start))
            return nullptr;
        return picture();
    }

private:
    bool readForm(int64_t at)
    {
        const QByteArray type = bytesAt(at, kTypeBytes);
        ChunkWalk chunks(&file, at + kTypeBytes, file.size());
        Chunk chunk;
        if (type == "ANIM")
            return chunks.next(&chunk) && chunk.id == "FORM" &&
                   bytesAt(chunk.start, kTypeBytes) == "ILBM" && readForm(chunk.start);
        layout.chunky = type == "PBM ";
        if (type != "ILBM" && !layout.chunky)
            return false;
        while (body.id.isEmpty() && chunks.next(&chunk))
            take(chunk);
        while (!body.id.isEmpty() && chunks.next(&chunk))
            takeText(chunk); // they may stand behind the picture
        return !body.id.isEmpty() && headerSeen;
    }
    QByteArray bytesAt(int64_t at, int64_t most)
    {
        return file.seek(at) ? file.read(most) : QByteArray();
    }
    QByteArray dataOf(const Chunk &chunk, int64_t most)
    {
        return bytesAt(chunk.start, std::min(chunk.size, most));
    }

    void take(const Chunk &chunk)
    {
        constexpr int headerBytes = 20;
        if (chunk.id == "BMHD")
            takeHeader(dataOf(chunk, headerBytes).leftJustified(headerBytes, '\0'));
        else if (chunk.id == "CMAP")
            colorMap = dataOf(chunk, kPaletteSize * 3);
        else if (chunk.id == "CAMG" && chunk.size >= 4)
            viewMode = qFromBigEndian<uint32_t>(dataOf(chunk, 4).leftJustified(4, '\0'));
        else if (chunk.id == "DPI " && chunk.size >= 4)
            takeDpi(dataOf(chunk, 4).leftJustified(4, '\0'));
        else if (chunk.id == "BODY")
            body = chunk;
        else
            takeText(chunk);
    }
    void takeHeader(const QByteArray &bytes)
    {
        const auto word = [&bytes](int at) {
            return int(qFromBigEndian<uint16_t>(bytes.constData() + at));
        };
        const auto byte = [&bytes](int at) { return int(uint8_t(bytes[at])); };
        headerSeen = true;
        layout.width = word(0);
        layout.height = word(2);
        layout.planes = byte(8);
        layout.masking =
            byte(9) <= IffLayout::Lasso ? IffLayout::Masking(byte(9)) : IffLayout::NoMask;
        packing = byte(10);
        layout.transparent = word(12);
        aspectX = byte(14);
        aspectY = byte(15);
    }
    void takeDpi(const QByteArray &bytes)
    {
        dpiX = qFromBigEndian<uint16_t>(bytes.constData());
        dpiY = qFromBigEndian<uint16_t>(bytes.constData() + 2);
    }
    void takeText(const Chunk &chunk)
    {
        QString *field = chunk.id == "AUTH"   ? &author
                         : chunk.id == "(c) " ? &copyright
                         : chunk.id == "NAME" ? &title
                         : chunk.id == "ANNO" ? &annotation
                                              : nullptr;
        if (!field)
            return;
        const QString more = textIn(dataOf(chunk, kLongestText));
        // Annotations may come in several pieces; a file of nothing else is not kept whole.
        if (!more.isEmpty() && field->size() < kLongestText)
            *field += (field->isEmpty() ? QString() : QStringLiteral("\n")) + more;
    }

    /// Whether this reader knows such a picture, and the file can hold it.
    bool settleLayout()
    {
        const int planes = layout.planes;
        const int64_t pixels = int64_t(layout.width) * layout.height;
        const bool deep = planes == 24 || planes == 32;
        if ((layout.chunky ? planes != 8 : planes < 1 || (planes > 8 && !deep)) || packing > 1 ||
            !sidesInRange(layout.width, layout.height) ||
            !fileCanHold(pixels, file.size(), kBestPixelsPerByte) || !memoryCanHold(pixels, 1))
            return false;
        layout.packed = packing == 1;
        layout.colors = deep             ? IffLayout::True
                        : layout.chunky  ? IffLayout::Palette
                        : holdsModify()  ? IffLayout::HoldAndModify
                        : isHalfBright() ? IffLayout::HalfBrite
                                         : IffLayout::Palette;
        makePalette();
        return true;
    }
    /// Writers that leave the view mode out are told by the size of their palette.
    bool holdsModify() const
    {
        const bool possible = layout.planes >= 5 && layout.planes <= 8;
        const bool looksSo = layout.planes == 6 && colorMap.size() == 16 * 3;
        return possible && (viewMode & kHoldAndModify || (viewMode == 0 && looksSo));
    }
    bool isHalfBright() const
    {
        return layout.planes == 6 &&
               (viewMode & kHalfBrite || (viewMode == 0 && colorMap.size() == 32 * 3));
    }
    void makePalette()
    {
        layout.palette.assign(kPaletteSize, qRgb(0, 0, 0));
        const int colors = colorMap.size() / 3;
        // Palettes of 4 bits a channel stand in the high halves.
        const bool fourBits =
            std::all_of(colorMap.begin(), colorMap.end(), [](char c) { return (c & 15) == 0; });
        const auto channel = [&](int at) {
            const int value = uint8_t(colorMap[at]);
            return fourBits ? value | value >> 4 : value;
        };
        for (int i = 0; i < colors; ++i)
            layout.palette[i] = qRgb(channel(3 * i), channel(3 * i + 1), channel(3 * i + 2));
        const int most = (1 << std::min(layout.planes, 8)) - 1;
        for (int i = 0; colors == 0 && i <= most; ++i)
            layout.palette[i] = qRgb(i * 255 / most, i * 255 / most, i * 255 / most);
        constexpr int half = 32;
        for (int i = 0; layout.colors == IffLayout::HalfBrite && i < half; ++i) {
            const QRgb full = layout.palette[i];
            layout.palette[half + i] = qRgb(qRed(full) / 2, qGreen(full) / 2, qBlue(full) / 2);
        }
    }

    ImageHolder picture()
    {
        if (!settleLayout())
            return nullptr;
        auto img = std::make_unique<image>();
        if (!img->allocateUnfilled(layout.width, layout.height, record.fullPath))
            return nullptr;
        img->saveBag = record;
        img->saveBag.isSet = true;
        const bool whole = copyPixels(img.get());
        takeMetadata(img.get());
        if (!whole)
            sayInBox(QCoreApplication::translate("formats", "IFF"),
                     QCoreApplication::translate(
                         "formats", "This IFF file is damaged: part of the picture is missing and "
                                    "stays black.<br>Try another copy of it."));
        return img;
    }
    /// False if the file holds less than the picture.
    bool copyPixels(image *img)
    {
        // Packing can make a row longer, but not twice as long.
        const QByteArray bytes = dataOf(body, 2 * layout.rowBytes() * layout.height + 64);
        IffRows rows(layout, bytes);
        std::vector<QRgb> pixels(size_t(layout.width));
        const bool lasso = layout.masking == IffLayout::Lasso && layout.planes <= 8;
        for (int y = 0; y < layout.height; ++y) {
            if (!rows.next(pixels.data()))
                std::fill(pixels.begin(), pixels.end(), qRgb(0, 0, 0));
            storeRow(pixels, y, img);
            if (lasso)
                markTransparent(rows.indices(), y, img);
        }
        if (lasso)
            keepOutside(img);
        return !rows.cut();
    }
    static void storeRow(const std::vector<QRgb> &pixels, int y, image *img)
    {
        const int64_t start = int64_t(y) * img->width;
        for (int x = 0; x < img->width; ++x) {
            img->red[start + x] = uint16_t(qRed(pixels[x]) * kByteToSample);
            img->green[start + x] = uint16_t(qGreen(pixels[x]) * kByteToSample);
            img->blue[start + x] = uint16_t(qBlue(pixels[x]) * kByteToSample);
            img->alpha[start + x] = uint16_t(qAlpha(pixels[x]) * kByteToSample);
        }
    }
    void markTransparent(const uint8_t *indices, int y, image *img) const
    {
        for (int x = 0; x < img->width; ++x)
            img->mask2[int64_t(y) * img->width + x] = indices[x] == layout.transparent;
    }
    /// A lasso lies around what its colour does not reach from the edge of the picture: of the
    /// marked pixels those that hang together with the edge become transparent.
    static void keepOutside(image *img)
    {
        const int64_t width = img->width, last = img->sampleCount() - 1;
        std::vector<int64_t> open;
        const auto visit = [&](int64_t at) {
            if (img->mask2[at] == 0)
                return;
            img->mask2[at] = img->alpha[at] = 0;
            open.push_back(at);
        };
        for (int64_t x = 0; x < width; ++x) {
            visit(x);
            visit(last - x);
        }
        for (int64_t y = 0; y < img->height; ++y) {
            visit(y * width);
            visit(y * width + width - 1);
        }
        while (!open.empty()) {
            const int64_t at = open.back();
            open.pop_back();
            if (at % width > 0)
                visit(at - 1);
            if (at % width < width - 1)
                visit(at + 1);
            if (at >= width)
                visit(at - width);
            if (at + width <= last)
                visit(at + width);
        }
        std::fill_n(img->mask2, img->sampleCount(), 0);
    }
    void takeMetadata(image *img) const
    {
        img->annotation =
            title + (title.isEmpty() || annotation.isEmpty() ? QString() : QStringLiteral("\n")) +
            annotation;
        img->author = author;
        img->copyright = copyright;
        img->creationTime = QLatin1String("");
        constexpr double mostAspect = 4;
        const double aspect = aspectX > 0 && aspectY > 0 ? double(aspectY) / aspectX : 0;
        if (dpiX > 0 && dpiY > 0) {
            img->xDpi = dpiX;
            img->yDpi = dpiY;
        } else if (aspect >= 1 / mostAspect && aspect <= mostAspect) {
            img->xDpi = int32_t(std::lrint(img->yDpi * aspect)); // wide pixels: fewer an inch
        }
    }

    const FileRecord &record;
    QFile file;
    IffLayout layout;
    bool headerSeen = false;
    int packing = 0;
    uint32_t viewMode = 0;
    QByteArray colorMap;
    Chunk body = {};
    int aspectX = 0, aspectY = 0, dpiX = 0, dpiY = 0;
    QString title, annotation, author, copyright;
};
} // namespace

ImageHolder readIff(const FileRecord &record, bool *cancelled)
{
    if (cancelled)
        *cancelled = false;
    return IffReader(record).read();
}
