// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/image.h"
#include "core/workspace.h"
#include "formats/load.h"
#include "yardstick.h"

#include <QImage>
#include <QTemporaryDir>

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
} // namespace

void registerFormatBenchmarks()
{
    registerOpening("open/jpeg 24 Mpx against QImage", "photo.jpg", kBenchWidth, kBenchHeight);
    registerOpening("open/png 6 Mpx against QImage", "photo.png", 3000, 2000);
}
