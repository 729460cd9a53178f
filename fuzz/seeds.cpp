// SPDX-License-Identifier: GPL-3.0-or-later
// Writes the seed corpus of every fuzz target: fuzz_seeds FOLDER makes FOLDER/<target>/.
#include "entries.h"

#include "core/image.h"
#include "core/workspace.h"
#include "formats/save.h"
#include "formats/tagged.h"
#include "support/dng.h"
#include "support/pictures.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QImageWriter>

#include <cstdio>
#include <vector>

namespace
{
bool write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return QDir().mkpath(path.section(QLatin1Char('/'), 0, -2)) &&
           file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

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
    const QString path = QDir::tempPath() + QStringLiteral("/kestrane-seed");
    write(path);
    QFile file(path);
    const QByteArray bytes = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    file.remove();
    return bytes;
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

struct Seed {
    const char *target;
    QByteArray extension;
    QByteArray bytes;
};

QList<Seed> allSeeds()
{
    QList<Seed> seeds = {{"rgba", ".rgba", rgba(32)},
                         {"rgba", ".rgba", rgba(64)},
                         {"pix", ".pix", QByteArray(8192, '\x5A')},
                         {"raw", ".dng", dng()},
                         {"ato", ".ato", ato()},
                         {"elx", ".elx", elx({})},
                         {"elx", ".elx", elx({0})},
                         {"elx", ".elx", elx({0, 1, 6})},
                         {"exif", ".jpg", jpegWithExif()},
                         {"exif", "", syntheticExif().mid(6)},
                         {"qt", ".gif", smallGif()}};
    for (const char *form : {"jpeg", "png", "pbm", "pgm", "ppm", "xbm", "xpm", "bmp"})
        seeds.append({"qt", QByteArray(".") + form, encoded(form, QImage::Format_ARGB32)});
    for (const QImage::Format format :
         {QImage::Format_Mono, QImage::Format_Indexed8, QImage::Format_Grayscale8,
          QImage::Format_Grayscale16, QImage::Format_RGB32, QImage::Format_RGBA64})
        seeds.append({"qt", ".png", encoded("png", format)});
    return seeds;
}

/// The byte before a "dispatch" input that gives its file this extension.
char dispatchByte(const QByteArray &extension)
{
    const auto &list = dispatchExtensions();
    for (size_t i = 0; i < list.size(); ++i)
        if (extension == list[i])
            return char(i);
    return 0;
}
} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: fuzz_seeds FOLDER\n");
        return 2;
    }
    Workspace space;
    const QString folder = QFile::decodeName(argv[1]);
    int number = 0;
    for (const Seed &seed : allSeeds()) {
        const QString name = QStringLiteral("/seed-%1").arg(++number);
        const QByteArray named = dispatchByte(seed.extension) + seed.bytes;
        if (!write(folder + '/' + seed.target + name, seed.bytes) ||
            !write(folder + QStringLiteral("/dispatch") + name, named)) {
            std::fprintf(stderr, "fuzz_seeds: cannot write below %s\n", argv[1]);
            return 1;
        }
    }
    return 0;
}
