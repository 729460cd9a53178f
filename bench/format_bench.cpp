// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/image.h"
#include "core/workspace.h"
#include "formats/load.h"
#include "formats/mcai.h"
#include "formats/tagged.h"
#include "yardstick.h"

#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QtEndian>

#include <algorithm>
#include <memory>

namespace
{
/// A picture in a file, like a photograph: smooth shapes with a little noise.
QString pictureFile(const char *name, int width, int height)
{
    static const QTemporaryDir folder;
    QImage picture(width, height, QImage::Format_RGB32);
    uint32_t noise = 1;
    for (int y = 0; y < height; ++y) {
        auto *row = reinterpret_cast<QRgb *>(picture.scanLine(y));
        for (int x = 0; x < width; ++x) {
            noise = noise * 1664525U + 1013904223U;
            const int grain = int(noise >> 29);
            row[x] = qRgb((x / 24 + grain) & 255, (y / 16 + grain) & 255, ((x + y) / 40) & 255);
        }
    }
    const QString path = folder.filePath(QLatin1String(name));
    picture.save(path, nullptr, 90);
    return path;
}

bool loadsLikeQImage(const QString &path)
{
    const std::unique_ptr<image> img(loadImageFile(path, path, nullptr, false));
    return img && img->toQImage() == QImage(path).convertToFormat(QImage::Format_ARGB32);
}

void registerOpening(const char *title, const char *name, int width, int height)
{
    const auto path = std::make_shared<QString>();
    const auto file = [=] {
        if (path->isEmpty())
            *path = pictureFile(name, width, height);
        return *path;
    };
    registerAgainst(
        title, 1.3,
        [=] {
            const QString from = file();
            return BenchCase{[from] { delete loadImageFile(from, from, nullptr, false); }, nullptr,
                             [from] { return loadsLikeQImage(from); }};
        },
        [=] {
            const QString from = file();
            return BenchCase{[from] { QImage decoded(from); }, nullptr, nullptr};
        });
}

/// A large picture of 16-bit samples, and files of it.
class DeepPicture
{
public:
    DeepPicture()
    {
        img.allocateUnfilled(3000, 2000, QStringLiteral("bench"));
        uint32_t noise = 1;
        for (int64_t i = 0; i < img.sampleCount(); ++i) {
            noise = noise * 1664525U + 1013904223U;
            const int x = int(i % img.width), y = int(i / img.width), grain = int(noise >> 24);
            img.red[i] = uint16_t(x * 9 + grain);
            img.green[i] = uint16_t(y * 13 + grain);
            img.blue[i] = uint16_t((x + y) * 5);
            img.alpha[i] = 65535;
        }
    }
    QString path(const char *name) const { return folder.filePath(QLatin1String(name)); }
    bool comesBack(const QString &from) const
    {
        const std::unique_ptr<image> read(loadImageFile(from, from, nullptr, false));
        return read && std::equal(img.green, img.green + img.sampleCount(), read->green);
    }
    QImage qtPicture() const
    {
        QImage picture(img.width, img.height, QImage::Format_RGBA64);
        for (int y = 0; y < img.height; ++y)
            for (int x = 0; x < img.width; ++x) {
                const int64_t i = int64_t(y) * img.width + x;
                reinterpret_cast<QRgba64 *>(picture.scanLine(y))[x] =
                    qRgba64(img.red[i], img.green[i], img.blue[i], img.alpha[i]);
            }
        return picture;
    }

    image img;

private:
    QTemporaryDir folder;
};

DeepPicture &deepPicture()
{
    static DeepPicture picture;
    return picture;
}

using Writer = bool (*)(const image *img, const QString &path, QString *error);

BenchCase saving(Writer write, const char *name)
{
    const QString path = deepPicture().path(name);
    const auto run = [=] {
        QString error;
        write(&deepPicture().img, path, &error);
    };
    const auto check = [=] {
        run();
        return deepPicture().comesBack(path);
    };
    return {run, nullptr, check};
}

BenchCase opening(Writer write, const char *name)
{
    const BenchCase saved = saving(write, name);
    saved.run();
    const QString path = deepPicture().path(name);
    return {[=] { delete loadImageFile(path, path, nullptr, false); }, nullptr, saved.check};
}

void registerDeepPng()
{
    const auto file = [] {
        const QString path = deepPicture().path("deep.png");
        if (!QFile::exists(path))
            deepPicture().qtPicture().save(path);
        return path;
    };
    registerAgainst(
        "open/png16 6 Mpx against QImage", 1.3,
        [=] {
            const QString path = file();
            const auto run = [=] {
                workspace()->png16 = true;
                delete loadImageFile(path, path, nullptr, false);
                workspace()->png16 = false;
            };
            const auto check = [=] {
                workspace()->png16 = true;
                const bool same = deepPicture().comesBack(path);
                workspace()->png16 = false;
                return same;
            };
            return BenchCase{run, nullptr, check};
        },
        [=] {
            const QString path = file();
            return BenchCase{[=] { QImage decoded(path); }, nullptr, nullptr};
        });
}

/// An unpacked picture of 24 planes and 6 megapixels.
void registerIff()
{
    registerRatio("open/iff 6 Mpx", 20, [] {
        const QString path = deepPicture().path("planes.iff");
        constexpr int width = 3008, height = 2000, bodyBytes = width / 8 * height * 24;
        const auto number = [](quint32 value) {
            const quint32 big = qToBigEndian(value);
            return QByteArray(reinterpret_cast<const char *>(&big), 4);
        };
        QFile file(path);
        if (file.open(QIODevice::WriteOnly))
            file.write("FORM" + number(bodyBytes + 48) + "ILBMBMHD" + number(20) +
                       number(width << 16 | height) + number(0) + number(24 << 24) + number(0) +
                       number(0) + "BODY" + number(bodyBytes) + QByteArray(bodyBytes, '\x5A'));
        file.close();
        const auto check = [path] {
            const std::unique_ptr<image> read(loadImageFile(path, path, nullptr, false));
            return read && read->red[0] == 0 && read->red[1] == 65535;
        };
        return BenchCase{[path] { delete loadImageFile(path, path, nullptr, false); }, nullptr,
                         check};
    });
}
} // namespace

void registerFormatBenchmarks()
{
    registerOpening("open/jpeg 24 Mpx against QImage", "photo.jpg", kBenchWidth, kBenchHeight);
    registerOpening("open/png 6 Mpx against QImage", "photo.png", 3000, 2000);
    registerDeepPng();
    registerIff();
    registerAgainst(
        "save/mcai 6 Mpx against ato", 2.0, [] { return saving(writeMcai, "a.mcai"); },
        [] { return saving(writeAtomic, "a.ato"); });
    registerAgainst(
        "open/mcai 6 Mpx against ato", 2.5, [] { return opening(writeMcai, "b.mcai"); },
        [] { return opening(writeAtomic, "b.ato"); });
}
