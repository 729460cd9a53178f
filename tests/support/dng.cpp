// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/dng.h"
#include "support/pictures.h"

#include <QVector>

#include <initializer_list>

namespace
{
enum Type : uint16_t { Byte = 1, Ascii = 2, Short = 3, Long = 4, Rational = 5, SRational = 10 };

QByteArray little(uint32_t value, int bytes)
{
    QByteArray result;
    for (int i = 0; i < bytes; ++i)
        result.append(char(value >> (8 * i) & 0xFF));
    return result;
}

QByteArray numbers(std::initializer_list<uint32_t> values, int bytes)
{
    QByteArray result;
    for (const uint32_t value : values)
        result += little(value, bytes);
    return result;
}

/// One directory of a TIFF file; entries are added in the order of their tags.
class Directory
{
public:
    void add(uint16_t tag, Type type, const QByteArray &data, int elementBytes)
    {
        entries.append({tag, type, uint32_t(data.size() / elementBytes), data});
    }
    void shorts(uint16_t tag, std::initializer_list<uint32_t> values)
    {
        add(tag, Short, numbers(values, 2), 2);
    }
    void longs(uint16_t tag, uint32_t value) { add(tag, Long, little(value, 4), 4); }
    void bytes(uint16_t tag, std::initializer_list<uint32_t> values)
    {
        add(tag, Byte, numbers(values, 1), 1);
    }
    void text(uint16_t tag, const QByteArray &value) { add(tag, Ascii, value + '\0', 1); }
    void ratios(uint16_t tag, std::initializer_list<uint32_t> values, Type type = Rational)
    {
        add(tag, type, numbers(values, 4), 8);
    }

    /// Bytes that the directory and its data take.
    uint32_t size() const
    {
        int sum = 6 + 12 * entries.size();
        for (const Entry &entry : entries)
            sum += entry.data.size() > 4 ? entry.data.size() + entry.data.size() % 2 : 0;
        return uint32_t(sum);
    }

    /// The directory as it stands at `offset` of the file.
    QByteArray bytesAt(uint32_t offset) const
    {
        QByteArray table = little(uint32_t(entries.size()), 2), heap;
        const uint32_t heapAt = offset + 6 + 12 * uint32_t(entries.size());
        for (const Entry &entry : entries) {
            table += little(entry.tag, 2) + little(entry.type, 2) + little(entry.count, 4);
            if (entry.data.size() <= 4) {
                table += entry.data + QByteArray(4 - entry.data.size(), '\0');
                continue;
            }
            table += little(heapAt + uint32_t(heap.size()), 4);
            heap += entry.data + QByteArray(entry.data.size() % 2, '\0');
        }
        return table + little(0, 4) + heap;
    }

private:
    struct Entry {
        uint16_t tag;
        Type type;
        uint32_t count;
        QByteArray data;
    };
    QVector<Entry> entries;
};

const QByteArray kTiffHeader = QByteArray("II*\0\x08\0\0\0", 8);

Directory exposure()
{
    Directory exif;
    exif.ratios(33434, {1, 125}); // exposure time
    exif.ratios(33437, {28, 10}); // F number
    exif.shorts(34855, {200});    // ISO speed
    exif.ratios(37386, {50, 1});  // focal length
    return exif;
}

/// 48 degrees 30 minutes 36 seconds north, 11 degrees 15 minutes east, 520 metres.
Directory place()
{
    Directory gps;
    gps.text(1, "N");
    gps.ratios(2, {48, 1, 30, 1, 36, 1});
    gps.text(3, "E");
    gps.ratios(4, {11, 1, 15, 1, 0, 1});
    gps.bytes(5, {0});
    gps.ratios(6, {520, 1});
    return gps;
}

/// The main directory; the offsets have to be known, so it is built twice.
Directory mainDirectory(int width, int height, uint32_t exifAt, uint32_t gpsAt, uint32_t pixelsAt)
{
    Directory main;
    main.longs(254, 0);
    main.longs(256, uint32_t(width));
    main.longs(257, uint32_t(height));
    main.shorts(258, {16});
    main.shorts(259, {1});     // not compressed
    main.shorts(262, {32803}); // colour filter array
    main.text(270, "A synthetic picture");
    main.text(271, "Nobody");
    main.text(272, "Synthetic");
    main.longs(273, pixelsAt);
    main.shorts(274, {1});
    main.shorts(277, {1});
    main.longs(278, uint32_t(height));
    main.longs(279, uint32_t(width) * uint32_t(height) * 2);
    main.shorts(284, {1});
    main.text(305, "Generator");
    main.text(315, "A. Maker");
    main.shorts(33421, {2, 2});
    main.bytes(33422, {0, 1, 1, 2}); // red green, green blue
    main.longs(34665, exifAt);
    main.longs(34853, gpsAt);
    main.bytes(50706, {1, 4, 0, 0});
    main.bytes(50707, {1, 1, 0, 0});
    main.text(50708, "Nobody Synthetic");
    main.shorts(50714, {0});
    main.longs(50717, 65535);
    // XYZ to linear sRGB, so that the camera's colours are the picture's.
    main.ratios(50721,
                {32406, 10000, uint32_t(-15372), 10000, uint32_t(-4986), 10000, uint32_t(-9689),
                 10000, 18758, 10000, 415, 10000, 557, 10000, uint32_t(-2040), 10000, 10570, 10000},
                SRational);
    main.ratios(50728, {1, 1, 1, 1, 1, 1});
    main.shorts(50778, {21});
    return main;
}
} // namespace

QByteArray syntheticDng(int width, int height, uint16_t (*value)(int x, int y))
{
    const Directory exif = exposure(), gps = place();
    const uint32_t exifAt = 8 + mainDirectory(width, height, 0, 0, 0).size();
    const uint32_t gpsAt = exifAt + exif.size();
    const uint32_t pixelsAt = gpsAt + gps.size();
    const Directory main = mainDirectory(width, height, exifAt, gpsAt, pixelsAt);
    QByteArray file = kTiffHeader + main.bytesAt(8) + exif.bytesAt(exifAt) + gps.bytesAt(gpsAt);
    file.reserve(file.size() + width * height * 2);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            file += little(value(x, y), 2);
    return file;
}

QByteArray syntheticExif()
{
    const auto mainWith = [](uint32_t exifAt) {
        Directory main;
        main.text(271, "Nobody");
        main.shorts(274, {6}); // orientation
        main.longs(34665, exifAt);
        return main;
    };
    const uint32_t exifAt = 8 + mainWith(0).size();
    return QByteArray("Exif\0\0", 6) + kTiffHeader + mainWith(exifAt).bytesAt(8) +
           exposure().bytesAt(exifAt);
}
