// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/image.h"
#include "core/rows.h"
#include "core/workspace.h"
#include "formats/writers.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QImageWriter>
#include <QSaveFile>

#include <algorithm>
#include <climits>
#include <cmath>

namespace
{
constexpr double kInchesPerMetre = 39.37;
constexpr int kLengthBytes = 2;

int dotsPerMetre(int dpi)
{
    return int(std::clamp(std::round(dpi * kInchesPerMetre), 0.0, double(INT_MAX)));
}

/// A picture with all 16 bits of the samples; null if memory is short.
QImage deepPicture(const image &img)
{
    QImage picture(img.width, img.height, QImage::Format_RGBA64);
    if (picture.isNull())
        return picture;
    uchar *const bits = picture.bits(); // once: it would detach on each thread
    const int lineBytes = picture.bytesPerLine();
    parallelRows(img.height, img.width * 4, [&](int first, int end) {
        for (int y = first; y < end; ++y) {
            auto *out = reinterpret_cast<QRgba64 *>(bits + int64_t(y) * lineBytes);
            const int64_t start = int64_t(y) * img.width;
            for (int x = 0; x < img.width; ++x)
                out[x] = qRgba64(img.red[start + x], img.green[start + x], img.blue[start + x],
                                 img.alpha[start + x]);
        }
    });
    return picture;
}

QImage pictureOf(const image &img, bool deep)
{
    QImage picture = deep ? deepPicture(img) : img.toQImage();
    picture.setDotsPerMeterX(dotsPerMetre(img.xDpi));
    picture.setDotsPerMeterY(dotsPerMetre(img.yDpi));
    picture.setText(QStringLiteral("Description"), img.annotation);
    picture.setText(QStringLiteral("Copyright"), img.copyright);
    picture.setText(QStringLiteral("Author"), img.author);
    picture.setText(QStringLiteral("Software"), img.software);
    picture.setText(QStringLiteral("Creation Time"), img.creationTime);
    picture.setText(QStringLiteral("Modification Time"), img.modificationTime);
    return picture;
}

/// A JPEG with the block as its first segment. The length field has 16 bits and takes
/// what fits of a longer block's length.
QByteArray withExif(const QByteArray &jpeg, const QByteArray &block)
{
    const int length = int(block.size()) + kLengthBytes;
    QByteArray result("\xFF\xD8\xFF\xE1");
    result.reserve(jpeg.size() + block.size() + 4);
    result.append(char(length >> 8 & 0xFF)).append(char(length & 0xFF));
    return result.append(block).append(jpeg.mid(2));
}
} // namespace

bool commitWhole(QSaveFile &file)
{
    // What is still buffered counts too: commit alone would overlook that a full disk did
    // not take it, and put a file without its end in the place of the old one.
    return file.flush() && file.commit();
}

bool writeThroughQt(const image &img, const QString &path, bool jpeg, int quality, QString *error)
{
    const bool deep = !jpeg && workspace() && workspace()->png16;
    const QImage picture = pictureOf(img, deep);
    if (picture.isNull()) {
        *error = QCoreApplication::translate("formats", "There is not enough memory.");
        return false;
    }
    // Encoded in memory first: a disk that fills up then costs nothing but the message.
    QByteArray bytes;
    QBuffer buffer(&bytes);
    QImageWriter writer(&buffer, jpeg ? "jpeg" : "png");
    writer.setQuality(quality);
    if (!buffer.open(QIODevice::WriteOnly) || !writer.write(picture)) {
        *error = writer.errorString();
        return false;
    }
    if (jpeg && !img.tagBlock.isEmpty() && workspace() && workspace()->saveEXIF)
        bytes = withExif(bytes, img.tagBlock);
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && commitWhole(file))
        return true;
    *error = file.errorString();
    return false;
}
