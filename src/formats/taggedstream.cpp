// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/taggedstream.h"

#include "formats/taggedfields.h"

#include <QIODevice>
#include <QtEndian>

#include <algorithm>
#include <new>

namespace
{
/// No text that a person wrote is longer; QString could not hold much more.
constexpr int64_t kLongestText = int64_t(256) << 20;
} // namespace

void FieldWriter::put(const QByteArray &bytes)
{
    whole = whole && out->write(bytes) == bytes.size();
}

void FieldWriter::field(const QByteArray &tag, const QByteArray &data)
{
    put(tag + encodeInt(uint64_t(data.size())));
    put(data);
}

void FieldWriter::field(const QByteArray &tag, const std::vector<QByteArray> &pieces)
{
    uint64_t length = 0;
    for (const QByteArray &piece : pieces)
        length += uint64_t(piece.size());
    put(tag + encodeInt(length));
    for (const QByteArray &piece : pieces)
        put(piece);
}

FieldReader::FieldReader(QIODevice *device) : in(device), fileBytes(device->size()) {}

bool FieldReader::next()
{
    if (isCut || (in->pos() != nextField && !in->seek(nextField)))
        return false;
    currentTag = in->read(kTagBytes);
    if (currentTag.size() < kTagBytes)
        return false;
    const QByteArray bytes = in->read(kLengthBytes);
    const int64_t start = nextField + kTagBytes + kLengthBytes;
    // Compared unsigned: the largest lengths would be negative ones.
    isCut = bytes.size() < kLengthBytes || start > fileBytes ||
            qFromBigEndian<quint64>(bytes.constData()) > uint64_t(fileBytes - start);
    if (isCut)
        return false;
    currentLength = int64_t(qFromBigEndian<quint64>(bytes.constData()));
    nextField = start + currentLength;
    return true;
}

QByteArray FieldReader::data()
{
    if (currentLength > kLongestText)
        return {};
    QByteArray bytes = in->read(currentLength);
    isCut = isCut || bytes.size() < currentLength;
    return bytes;
}

FieldReader::Block FieldReader::block(int64_t most)
{
    Block result;
    const int64_t wanted = std::min(most, currentLength);
    result.bytes.reset(new (std::nothrow) unsigned char[size_t(wanted)]);
    isCut = isCut || !result.bytes;
    if (!result.bytes)
        return result;
    result.size = in->read(reinterpret_cast<char *>(result.bytes.get()), wanted);
    isCut = isCut || result.size < wanted;
    result.size = std::max<int64_t>(result.size, 0);
    return result;
}
