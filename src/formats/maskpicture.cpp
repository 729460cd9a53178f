// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/maskpicture.h"

#include "core/image.h"
#include "core/rows.h"
#include "core/workspace.h"
#include "formats/load.h"
#include "formats/writers.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDir>
#include <QImageWriter>
#include <QSaveFile>

#include <algorithm>
#include <utility>

namespace
{
/// The selection as Qt's kind of grey picture; null if memory is short.
QImage greyPicture(const image &img, bool deep)
{
    QImage picture(img.width, img.height,
                   deep ? QImage::Format_Grayscale16 : QImage::Format_Grayscale8);
    if (picture.isNull())
        return picture;
    uchar *const bits = picture.bits(); // once: it would detach on each thread
    const int lineBytes = picture.bytesPerLine();
    parallelRows(img.height, img.width, [&](int first, int end) {
        for (int y = first; y < end; ++y) {
            const uint16_t *words = img.gmask + int64_t(y) * img.width;
            uchar *line = bits + int64_t(y) * lineBytes;
            if (deep)
                std::copy_n(words, img.width, reinterpret_cast<quint16 *>(line));
            else
                std::transform(words, words + img.width, line,
                               [](uint16_t word) { return uchar(word >> 8); });
        }
    });
    return picture;
}

/// PNG files are read at 16 bits while this lives.
class DeepReading
{
public:
    DeepReading() : space(workspace()), before(space && std::exchange(space->png16, true)) {}
    ~DeepReading()
    {
        if (space)
            space->png16 = before;
    }
    DeepReading(const DeepReading &) = delete;
    DeepReading &operator=(const DeepReading &) = delete;

private:
    Workspace *space;
    bool before;
};
} // namespace

bool saveMaskPicture(const image &img, const QString &path, int bits, QString *error)
{
    const QImage picture = img.gmask ? greyPicture(img, bits == 16) : QImage();
    if (picture.isNull()) {
        *error = QCoreApplication::translate("formats", "There is not enough memory.");
        return false;
    }
    // Encoded in memory first: a disk that fills up then costs nothing but the message.
    QByteArray bytes;
    QBuffer buffer(&bytes);
    QImageWriter writer(&buffer, "png");
    if (!buffer.open(QIODevice::WriteOnly) || !writer.write(picture)) {
        *error = writer.errorString();
        return false;
    }
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && commitWhole(file))
        return true;
    *error = file.errorString();
    return false;
}

image *loadMaskPicture(const QString &path, QString *error)
{
    const DeepReading deep;
    const FileRecord record = FileRecord::fromPath(path);
    image *read = loadImageFile(path, record.name, &record, false);
    if (!read) {
        *error = QCoreApplication::translate("formats", "“%1” cannot be read as a picture.")
                     .arg(QDir::toNativeSeparators(path));
        return nullptr;
    }
    // A stack was composed as it was read: what it shows is all that counts.
    while (!read->layers.isEmpty())
        delete read->layers.takeLast();
    read->kind = 0;
    return read;
}
