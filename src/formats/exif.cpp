// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/exif.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <iterator>
#include <set>
#include <string>

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

/// What people look for first, in this order; the rest follows as the file has it.
constexpr const char *kFirstKeys[] = {
    "Exif.Image.Make",
    "Exif.Image.Model",
    "Exif.Photo.LensModel",
    "Exif.Photo.DateTimeOriginal",
    "Exif.Photo.ExposureTime",
    "Exif.Photo.FNumber",
    "Exif.Photo.ISOSpeedRatings",
    "Exif.Photo.ExposureBiasValue",
    "Exif.Photo.FocalLength",
    "Exif.Photo.FocalLengthIn35mmFilm",
    "Exif.Photo.Flash",
    "Exif.Photo.WhiteBalance",
    "Exif.Photo.MeteringMode",
    "Exif.Photo.ExposureProgram",
    "Exif.Image.ImageDescription",
    "Exif.Image.Artist",
    "Exif.Image.Copyright",
    "Exif.Image.Software",
    "Exif.GPSInfo.GPSLatitude",
    "Exif.GPSInfo.GPSLatitudeRef",
    "Exif.GPSInfo.GPSLongitude",
    "Exif.GPSInfo.GPSLongitudeRef",
    "Exif.GPSInfo.GPSAltitude",
    "Exif.Image.Orientation",
};

/// Places within the file, paddings, the thumbnail's own directory, and tags and values
/// without a meaning that is known.
bool tellsPeopleNothing(const Exiv2::Exifdatum &datum)
{
    static const std::set<std::string> unwanted = {"Exif.Image.ExifTag",
                                                   "Exif.Image.GPSTag",
                                                   "Exif.Photo.InteroperabilityTag",
                                                   "Exif.Photo.MakerNote",
                                                   "Exif.Photo.ComponentsConfiguration",
                                                   "Exif.Image.PrintImageMatching",
                                                   "Exif.Image.0xea1c",
                                                   "Exif.Photo.0xea1c"};
    return datum.count() <= 0 || size_t(datum.size()) > kValueBytes ||
           datum.groupName() == "Thumbnail" || datum.groupName() == "MakerNote" ||
           datum.tagName().rfind("0x", 0) == 0 || unwanted.count(datum.key()) > 0;
}

/// Empty if there is nothing to read.
QString lineOf(const Exiv2::Exifdatum &datum, const Exiv2::ExifData &all)
{
    const std::string label = datum.tagLabel();
    const QString name = QString::fromStdString(label.empty() ? datum.tagName() : label);
    const QString value = QString::fromStdString(datum.print(&all)).simplified();
    if (value.isEmpty())
        return QString();
    const QString line = name + QLatin1String(": ") + value;
    return line.size() <= kLineChars ? line : line.left(kLineChars - 1) + QChar(0x2026);
}

void appendLine(const Exiv2::Exifdatum &datum, const Exiv2::ExifData &all, QStringList *lines)
{
    if (tellsPeopleNothing(datum))
        return;
    if (const QString line = lineOf(datum, all); !line.isEmpty())
        *lines << line;
}

bool comesFirst(const std::string &key)
{
    return std::find(std::begin(kFirstKeys), std::end(kFirstKeys), key) != std::end(kFirstKeys);
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
        for (const char *key : kFirstKeys)
            if (const auto found = all.findKey(Exiv2::ExifKey(key)); found != all.end())
                appendLine(*found, all, &lines);
        for (const Exiv2::Exifdatum &datum : all)
            if (!comesFirst(datum.key()))
                appendLine(datum, all, &lines);
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
