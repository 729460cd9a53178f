// SPDX-License-Identifier: GPL-3.0-or-later
#include "samplefiles.h"

#include "area/areastate.h"
#include "area/pshapefile.h"
#include "core/image.h"
#include "formats/mcai.h"
#include "formats/save.h"
#include "formats/tagged.h"
#include "support/dng.h"
#include "support/pictures.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QImageWriter>
#include <QTemporaryDir>
#include <QtEndian>

#include <vector>

namespace
{
QImage picture(QImage::Format format)
{
    QImage result(24, 16, QImage::Format_ARGB32);
    for (int y = 0; y < result.height(); ++y)
        for (int x = 0; x < result.width(); ++x)
            result.setPixel(x, y, qRgba(x * 10, y * 15, x * y, 255 - x));
    result.setText(QStringLiteral("Software"), QStringLiteral("Seeds"));
    return result.convertToFormat(format);
}

QByteArray encoded(const char *form, QImage::Format format)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter(&buffer, form).write(picture(format));
    return bytes;
}

/// QImage writes no GIF: one of a single red sample.
QByteArray smallGif()
{
    return QByteArray::fromHex("47494638396101000100800000ff0000ffffff2c00000000010001000002024401"
                               "003b");
}

QByteArray jpegWithExif()
{
    const QByteArray jpeg = encoded("jpeg", QImage::Format_RGB32);
    const QByteArray block = syntheticExif();
    const int length = int(block.size()) + 2;
    return QByteArray("\xFF\xD8\xFF\xE1") + char(length >> 8) + char(length & 0xFF) + block +
           jpeg.mid(2);
}

QByteArray dng()
{
    return syntheticDng(32, 24, [](int x, int y) { return uint16_t(x * 1000 + y * 700); });
}

/// The bytes of the file that `write` makes at a path.
template <class Write>
QByteArray written(Write write)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("sample"));
    write(path);
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray rgba(int depth)
{
    image img;
    img.allocate(5, 4, QStringLiteral("seed"));
    return written([&](const QString &path) {
        depth == 32 ? writeRgba32(&img, path) : writeRgba64(&img, path);
    });
}

/// A picture with two notes, one of them with a polygon.
void fill(image *img, int width, int height)
{
    img->allocate(width, height, QStringLiteral("seed"));
    img->creationTime = img->modificationTime = QStringLiteral("20250101:000000 UTC");
    Notation note;
    note.text = QStringLiteral("note");
    img->notations << note;
    note.points = QPolygon({{1, 1}, {4, 1}, {2, 3}});
    img->notations << note;
}

QByteArray ato()
{
    image img;
    fill(&img, 7, 5);
    QString error;
    return written([&](const QString &path) { writeAtomic(&img, path, &error); });
}

QByteArray elx(const std::vector<int> &modes)
{
    image master, layers[3];
    fill(&master, 8, 6);
    master.kind = 1;
    for (size_t i = 0; i < modes.size(); ++i) {
        image &layer = layers[i];
        fill(&layer, 4 + int(i), 6);
        layer.kind = 2;
        layer.master = &master;
        layer.layerMode = modes[i];
        layer.localStack = i == 1;
        master.layers << &layer;
    }
    QString error;
    const QByteArray bytes =
        written([&](const QString &path) { writeMaster(&master, path, &error); });
    master.layers.clear();
    return bytes;
}

/// With a selection, if one is asked for, and colours enough for two bytes a place.
QByteArray mcai(bool rich)
{
    image img;
    fill(&img, 21, 30);
    for (int64_t i = 0; rich && i < img.sampleCount(); ++i) {
        img.red[i] = uint16_t(i * 771);
        img.green[i] = uint16_t(i * i);
        img.alpha[i] = uint16_t(65535 - i % 7);
        img.gmask[i] = uint16_t(i % 21 * 3000);
    }
    img.tagBlock = rich ? syntheticExif() : QByteArray();
    QString error;
    return written([&](const QString &path) { writeMcai(&img, path, &error); });
}

QByteArray pshape()
{
    const AreaPoint corners[] = {{10, 10}, {90, 12}, {55, 70}, {10, 10}};
    PShape shape;
    shape.remember(corners, 4, QStringLiteral("Polygonal"), false);
    QString error;
    return written([&](const QString &path) { savePShape(path, shape, &error); });
}

QByteArray number(uint32_t value, int bytes)
{
    char big[4];
    qToBigEndian(value, big);
    return QByteArray(big + 4 - bytes, bytes);
}

/// Runs of equal bytes, and literals between them.
QByteArray packedRow(const QByteArray &row)
{
    constexpr int most = 128;
    QByteArray result;
    for (int at = 0; at < row.size();) {
        int run = 1;
        while (run < most && at + run < row.size() && row[at + run] == row[at])
            ++run;
        if (run > 2) {
            result.append(char(1 - run)).append(row[at]);
            at += run;
            continue;
        }
        int end = at;
        while (end < row.size() && end - at < most &&
               !(end + 2 < row.size() && row[end] == row[end + 1] && row[end] == row[end + 2]))
            ++end;
        result.append(char(end - at - 1)).append(row.mid(at, end - at));
        at = end;
    }
    return result;
}

QByteArray iffBody(const IffSample &sample)
{
    const bool chunky = sample.type == "PBM ";
    const int planes = chunky ? 1 : sample.planes + (sample.masking == 1 ? 1 : 0);
    const int rowBytes = chunky ? (sample.width + 1) / 2 * 2 : (sample.width + 15) / 16 * 2;
    QByteArray body;
    for (int y = 0; y < sample.height; ++y)
        for (int plane = 0; plane < planes; ++plane) {
            QByteArray row(rowBytes, '\0');
            for (int x = 0; x < sample.width; ++x) {
                const bool mask = plane == sample.planes;
                const uint32_t code = sample.code(x, y);
                const int bit = mask ? x % 3 != 0 : int(code >> plane & 1);
                char &byte = row.data()[chunky ? x : x / 8];
                byte = char(chunky ? code : uint32_t(byte) | uint32_t(bit) << (7 - x % 8));
            }
            body += sample.packed ? packedRow(row) : row;
        }
    return body;
}

QList<SampleFile> iffSeeds()
{
    IffSample plain, masked, held, half, deep, chunky, lasso;
    plain.palette = QByteArray(48, '\x70');
    masked.masking = 1;
    masked.packed = false;
    masked.otherChunks = iffChunk("ANNO", "odd") + iffChunk("AUTH", "Ann");
    held.planes = 8;
    held.viewMode = 0x800;
    held.palette = QByteArray(192, '\x35');
    half.planes = 6;
    half.viewMode = 0x80;
    half.palette = QByteArray(96, '\xA5');
    deep.planes = 32;
    chunky.type = "PBM ";
    chunky.planes = 8;
    lasso.masking = 3;
    lasso.transparent = 7;
    QList<SampleFile> seeds;
    for (const IffSample &sample : {plain, masked, held, half, deep, chunky, lasso})
        seeds.append({"iff", ".iff", iffFile(sample)});
    return seeds;
}
} // namespace

QByteArray iffChunk(const QByteArray &id, const QByteArray &data)
{
    return id + number(uint32_t(data.size()), 4) + data + QByteArray(data.size() % 2, '\0');
}

QByteArray iffFile(const IffSample &sample)
{
    const QByteArray header =
        number(uint32_t(sample.width), 2) + number(uint32_t(sample.height), 2) + number(0, 4) +
        number(uint32_t(sample.planes), 1) + number(uint32_t(sample.masking), 1) +
        number(sample.packed, 1) + number(0, 1) + number(uint32_t(sample.transparent), 2) +
        number(20, 1) + number(10, 1) + number(0, 4);
    QByteArray content = sample.type + iffChunk("BMHD", header);
    if (!sample.palette.isEmpty())
        content += iffChunk("CMAP", sample.palette);
    if (sample.viewMode >= 0)
        content += iffChunk("CAMG", number(uint32_t(sample.viewMode), 4));
    return iffChunk("FORM", content + sample.otherChunks + iffChunk("BODY", iffBody(sample)));
}

QList<SampleFile> sampleFiles()
{
    QList<SampleFile> seeds = {{"rgba", ".rgba", rgba(32)},
                               {"rgba", ".rgba", rgba(64)},
                               {"pix", ".pix", QByteArray(8192, '\x5A')},
                               {"raw", ".dng", dng()},
                               {"ato", ".ato", ato()},
                               {"elx", ".elx", elx({})},
                               {"elx", ".elx", elx({0})},
                               {"elx", ".elx", elx({0, 1, 6})},
                               {"mcai", ".mcai", mcai(false)},
                               {"mcai", ".mcai", mcai(true)},
                               {"pshape", "", pshape()},
                               {"exif", ".jpg", jpegWithExif()},
                               {"exif", "", syntheticExif().mid(6)},
                               {"qt", ".gif", smallGif()}};
    for (const char *form : {"jpeg", "png", "pbm", "pgm", "ppm", "xbm", "xpm", "bmp"})
        seeds.append({"qt", QByteArray(".") + form, encoded(form, QImage::Format_ARGB32)});
    for (const QImage::Format format :
         {QImage::Format_Mono, QImage::Format_Indexed8, QImage::Format_Grayscale8,
          QImage::Format_Grayscale16, QImage::Format_RGB32, QImage::Format_RGBA64})
        seeds.append({"qt", ".png", encoded("png", format)});
    return seeds + iffSeeds();
}
