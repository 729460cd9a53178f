// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/taggedfields.h"

#include <QtEndian>

#include <array>
#include <charconv>
#include <cmath>

namespace
{
constexpr int kIntBytes = 8;
constexpr int kDpi = 300;
/// The longest double without an exponent: sign, 309 digits, the point, six more.
constexpr size_t kRealBytes = 320;
constexpr int kRealDecimals = 6;

using ImageRules = std::vector<FieldRule<image>>;

ImageRules describingRules(const QByteArray &prefix)
{
    return {{prefix + "_NAME", &image::name, QString()},
            {prefix + "_ANNO", &image::annotation, QString()},
            {prefix + "_CPYR", &image::copyright, QString()},
            {prefix + "_AUTH", &image::author, QString()},
            {prefix + "_SOFT", &image::software, QString()},
            {prefix + "_CTIM", &image::creationTime, QString()},
            {prefix + "_MTIM", &image::modificationTime, QString()},
            {prefix + "_LATI", &image::latitude, 0.0},
            {prefix + "_LONG", &image::longitude, 0.0},
            {prefix + "_ALTI", &image::altitude, 0.0},
            {prefix + "_SHUT", &image::shutter, 1.0},
            {prefix + "_APER", &image::aperture, 1.0},
            {prefix + "_FOCA", &image::focalLength, 1.0},
            {prefix + "_ISOS", &image::iso, 1.0}};
}

/// The size is not restored into the members: the planes are made by it.
void appendSize(ImageRules *rules, const TaggedPart &part)
{
    rules->push_back({part.widthTag, &image::width, 0, false, false});
    rules->push_back({part.heightTag, &image::height, 0, false, false});
    rules->push_back({part.prefix + "_XDPI", &image::xDpi, kDpi, true});
    rules->push_back({part.prefix + "_YDPI", &image::yDpi, kDpi, true});
}

void appendPlacing(ImageRules *rules, const QByteArray &prefix)
{
    rules->push_back({prefix + "_IMOD", &image::imageMode, 0});
    rules->push_back({prefix + "_XCEN", &image::xCenter, 0, true});
    rules->push_back({prefix + "_YCEN", &image::yCenter, 0, true});
}

ImageRules settingRules(const QByteArray &prefix)
{
    return {{prefix + "_MODE", &image::layerMode, 0},
            {prefix + "_XOFF", &image::xOffset, 0},
            {prefix + "_YOFF", &image::yOffset, 0},
            {prefix + "_OPAC", &image::opacity, 1.0},
            {prefix + "_ROTA", &image::rotation, 0.0},
            // The fractions are for whoever else reads the file; here they begin at 0.
            {prefix + "_FRXX", &image::xFraction, 0.0, false, false},
            {prefix + "_FRYY", &image::yFraction, 0.0, false, false},
            {prefix + "_FACT", &image::factor, 1.0},
            {prefix + "_VISI", &image::visible, true},
            {prefix + "_LOCS", &image::localStack, false},
            {prefix + "_GLOM", &image::globalMask, false},
            {prefix + "_LOKS", &image::lockStep, false}};
}

std::vector<FieldRule<Notation>> noteRules(const QByteArray &prefix)
{
    return {{prefix + "_INPU", &Notation::pointing, false},
            {prefix + "_INAM", &Notation::mode, 0},
            {prefix + "_INTX", &Notation::textX, 0, true},
            {prefix + "_INTY", &Notation::textY, 0, true},
            {prefix + "_INAX", &Notation::tailX, 0, true},
            {prefix + "_INAY", &Notation::tailY, 0, true},
            {prefix + "_INEX", &Notation::headX, 0, true},
            {prefix + "_INEY", &Notation::headY, 0, true},
            {prefix + "_INOP", &Notation::opacity, 1.0}};
}

TaggedPart commonPart(const QByteArray &prefix)
{
    TaggedPart part;
    part.prefix = prefix;
    part.head = describingRules(prefix);
    part.noteText = prefix + "_INOT";
    part.note = noteRules(prefix);
    part.pointX = prefix + "_INPX";
    part.pointY = prefix + "_INPY";
    part.noteMark = prefix + "_INBU";
    return part;
}

TaggedPart pixelPart(const QByteArray &prefix, const QByteArray &kind, const char *label)
{
    TaggedPart part = commonPart(prefix);
    part.keyMark = kind + "KEY";
    part.buildMark = kind + "BLD";
    part.label = label;
    part.widthTag = prefix + "_XWID";
    part.heightTag = prefix + "_YWID";
    appendSize(&part.head, part);
    appendPlacing(&part.head, prefix);
    part.packedTag = prefix + "_COMP";
    part.settings = settingRules(prefix);
    for (const char *plane : {"_RCHN", "_GCHN", "_BCHN", "_ACHN"})
        part.planes.push_back(prefix + plane);
    return part;
}

TaggedPart stackPart()
{
    TaggedPart part = commonPart("MST");
    part.keyMark = "MAST_KEY";
    part.label = "MAST_KEY";
    part.widthTag = "MASTERXD";
    part.heightTag = "MASTERYD";
    appendSize(&part.head, part);
    return part;
}

double decodeReal(const QByteArray &data, double fallback)
{
    bool good = false;
    const double value = QString::fromUtf8(data).toDouble(&good);
    return good && std::isfinite(value) ? value : fallback;
}

QByteArray encodeReal(double value)
{
    std::array<char, kRealBytes> text;
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), value,
                                            std::chars_format::fixed, kRealDecimals);
    return error == std::errc() ? QByteArray(text.data(), int(end - text.data())) : QByteArray();
}
} // namespace

const TaggedPart &atomicPart()
{
    static const TaggedPart part = pixelPart("ATO", "IMAGE", ": image key");
    return part;
}

const TaggedPart &masterPart()
{
    static const TaggedPart part = stackPart();
    return part;
}

const TaggedPart &layerPart()
{
    static const TaggedPart part = pixelPart("LAY", "LAYER", ": layer key");
    return part;
}

const TaggedHeader &atomicHeader()
{
    static const TaggedHeader header = {"ATO16BIT", "AVERSION", "AKEYVALU", 0x2E5A9B3E};
    return header;
}

const TaggedHeader &masterHeader()
{
    static const TaggedHeader header = {"ELF16BIT", "EVERSION", "EKEYVALU", 0x1F4B8C3D};
    return header;
}

QByteArray encodeInt(uint64_t value)
{
    QByteArray bytes(kIntBytes, Qt::Uninitialized);
    qToBigEndian<quint64>(value, bytes.data());
    return bytes;
}

QByteArray encodeField(const FieldValue &value, bool zeroExtended)
{
    if (const auto *text = std::get_if<QString>(&value))
        return text->toUtf8();
    if (const auto *real = std::get_if<double>(&value))
        return encodeReal(*real);
    if (const auto *flag = std::get_if<bool>(&value))
        return *flag ? "T" : "F";
    const int32_t number = std::get<int32_t>(value);
    return encodeInt(zeroExtended ? uint64_t(uint32_t(number)) : uint64_t(int64_t(number)));
}

FieldValue decodeField(const QByteArray &data, const FieldValue &fallback)
{
    if (std::holds_alternative<QString>(fallback))
        return QString::fromUtf8(data);
    if (const auto *real = std::get_if<double>(&fallback))
        return decodeReal(data, *real);
    if (std::holds_alternative<bool>(fallback))
        return data.startsWith('T');
    if (data.size() < kIntBytes)
        return fallback;
    return int32_t(uint32_t(qFromBigEndian<quint64>(data.constData())));
}
