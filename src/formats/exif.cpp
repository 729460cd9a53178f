// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/exif.h"

#include <QFile>
#include <QFileInfo>

#include <exiv2/exiv2.hpp>

namespace
{
constexpr int kSignatureBytes = 6;
const QByteArray kExifSignature("Exif\0\0", kSignatureBytes);
/// EXIF stands among the first segments; a file of nothing but segments is not walked on.
constexpr int kSegmentsSearched = 1024;
/// Maker notes hold binary values of thousands of numbers that tell a person nothing.
constexpr size_t kValueBytes = 4096;
constexpr int kLineChars = 200;

enum Marker { StartOfImage = 0xD8, EndOfImage = 0xD9, StartOfScan = 0xDA, App1 = 0xE1 };

/// The next marker, past fill bytes; -1 where no marker stands.
int nextMarker(QFile &file)
{
    char c = 0;
    if (!file.getChar(&c) || uchar(c) != 0xFF)
        return -1;
    while (uchar(c) == 0xFF)
        if (!file.getChar(&c))
            return -1;
    return uchar(c);
}

/// Bytes that follow the two length bytes of a segment; -1 if there is no sound length.
int payloadLength(QFile &file)
{
    char bytes[2];
    if (file.read(bytes, 2) != 2)
        return -1;
    return (uchar(bytes[0]) << 8 | uchar(bytes[1])) - 2;
}

QByteArray findExifSegment(QFile &file)
{
    if (nextMarker(file) != StartOfImage)
        return {};
    for (int i = 0; i < kSegmentsSearched; ++i) {
        const int marker = nextMarker(file);
        if (marker < 0 || marker == StartOfScan || marker == EndOfImage)
            return {};
        const int length = payloadLength(file);
        if (length < 0)
            return {};
        const qint64 start = file.pos();
        if (marker == App1 && file.peek(kSignatureBytes) == kExifSignature) {
            const QByteArray block = file.read(length);
            return block.size() == length && length >= kSignatureBytes ? block : QByteArray();
        }
        if (!file.seek(start + length))
            return {};
    }
    return {};
}

QString lineOf(const Exiv2::Exifdatum &datum, const Exiv2::ExifData &all)
{
    const std::string label = datum.tagLabel();
    const QString name = QString::fromStdString(label.empty() ? datum.tagName() : label);
    const QString value = QString::fromStdString(datum.print(&all)).simplified();
    const QString line = name + QLatin1String(": ") + value;
    return line.size() <= kLineChars ? line : line.left(kLineChars - 1) + QChar(0x2026);
}
} // namespace

QStringList exifLines(const QByteArray &block)
{
    QStringList lines;
    if (!block.startsWith(kExifSignature))
        return lines;
    try {
        Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
        Exiv2::ExifData all;
        Exiv2::ExifParser::decode(
            all, reinterpret_cast<const Exiv2::byte *>(block.constData()) + kSignatureBytes,
            uint32_t(block.size() - kSignatureBytes));
        for (const Exiv2::Exifdatum &datum : all)
            if (datum.count() > 0 && size_t(datum.size()) <= kValueBytes)
                lines << lineOf(datum, all);
    } catch (...) {
        // What was read up to the damage is still worth showing.
        qDebug("EXIF: damaged block");
    }
    return lines;
}

ExifContent readExif(const QString &path)
{
    ExifContent content;
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return content;
    content.block = findExifSegment(file);
    content.lines = exifLines(content.block);
    return content;
}
