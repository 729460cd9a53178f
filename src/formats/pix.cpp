// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/load.h"
#include "formats/readers.h"

#include <QFile>
#include <QFileInfo>

namespace
{
constexpr int kPixSide = 128;
constexpr int kPixBytes = kPixSide * kPixSide / 2;
constexpr int kPixMostBytes = 8384;
/// A 4-bit value x 17 is the 8-bit one, x 257 the 16-bit one.
constexpr int kNibbleScale = 17 * 257;

void setGrey(image &img, int at, int nibble)
{
    img.red[at] = img.green[at] = img.blue[at] = uint16_t(nibble * kNibbleScale);
    img.alpha[at] = 65535;
}
} // namespace

ImageHolder readPix(const QString &path, const QString &name, bool checkExtension)
{
    if (checkExtension && !path.endsWith(QLatin1String(".pix")))
        return nullptr;
    const QFileInfo info(path);
    if (!info.isFile() || info.size() < kPixBytes || info.size() > kPixMostBytes)
        return nullptr;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return nullptr;
    const QByteArray bytes = file.read(kPixBytes);
    if (bytes.size() != kPixBytes)
        return nullptr;
    auto img = std::make_unique<image>();
    if (!img->allocateUnfilled(kPixSide, kPixSide, name))
        return nullptr;
    for (int i = 0; i < kPixBytes; ++i) {
        setGrey(*img, 2 * i, uchar(bytes[i]) >> 4);
        setGrey(*img, 2 * i + 1, uchar(bytes[i]) & 15);
    }
    return img;
}

image *loadPix(const QString &path, const QString &name, const FileRecord &record, bool show,
               bool checkExtension)
{
    ImageHolder img = readPix(path, name, checkExtension);
    return img && show ? finishLoad(std::move(img), record, false) : img.release();
}
