// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/run/masktext.h"

#include "area/mask.h"
#include "core/image.h"
#include "core/memory.h"

#include <QByteArray>
#include <QSize>

#include <algorithm>

#include <zlib.h>

namespace
{
/// A zlib stream is at least this part of its content.
constexpr int64_t kMostRatio = 1032;
constexpr size_t kWord = sizeof(uint16_t);
constexpr size_t kPiece = size_t(1) << 16;

/// The words as bytes, lower one first, of the differences: runs of one value and even slopes
/// become runs of bytes.
class Differences
{
public:
    explicit Differences(const uint16_t *words) : mask(words) {}
    size_t fill(uint8_t *bytes, size_t from, size_t count)
    {
        for (size_t i = from; i < from + count; ++i) {
            const auto step = uint16_t(mask[i] - last);
            last = mask[i];
            *bytes++ = uint8_t(step);
            *bytes++ = uint8_t(step >> 8);
        }
        return count * kWord;
    }

private:
    const uint16_t *mask;
    uint16_t last = 0;
};

/// Ends a stream whatever way its user leaves.
struct Deflater {
    z_stream stream = {};
    bool ready = deflateInit(&stream, Z_DEFAULT_COMPRESSION) == Z_OK;
    ~Deflater() { deflateEnd(&stream); }
};

/// The stream of all words, empty if it would be longer than `most` or memory is short.
QByteArray packed(const uint16_t *mask, size_t words, int most)
{
    Deflater deflater;
    z_stream &stream = deflater.stream;
    Differences differences(mask);
    uint8_t in[kPiece], out[kPiece];
    QByteArray bytes;
    int state = deflater.ready ? Z_OK : Z_MEM_ERROR;
    for (size_t done = 0; state == Z_OK && bytes.size() <= most;) {
        if (stream.avail_in == 0 && done < words) {
            const size_t count = std::min(kPiece / kWord, words - done);
            stream.avail_in = uInt(differences.fill(in, done, count));
            stream.next_in = in;
            done += count;
        }
        stream.avail_out = kPiece;
        stream.next_out = out;
        state = deflate(&stream, done < words ? Z_NO_FLUSH : Z_FINISH);
        bytes.append(reinterpret_cast<const char *>(out), int(kPiece - stream.avail_out));
    }
    return state == Z_STREAM_END && bytes.size() <= most ? bytes : QByteArray();
}

/// Makes words of differences in place, whatever order of bytes the machine has.
void addUp(uint16_t *words, size_t count)
{
    const auto *bytes = reinterpret_cast<const uint8_t *>(words);
    uint16_t last = 0;
    for (size_t i = 0; i < count; ++i) {
        last = uint16_t(last + bytes[i * kWord] + (bytes[i * kWord + 1] << 8));
        words[i] = last;
    }
}
} // namespace

QString maskText(const uint16_t *mask, int width, int height, int most)
{
    const QByteArray bytes = packed(mask, size_t(width) * size_t(height), most / 4 * 3);
    return bytes.isEmpty() ? QString() : QString::fromLatin1(bytes.toBase64());
}

bool maskFromText(const QString &text, const QSize &size, Mask *mask)
{
    const auto decoded =
        QByteArray::fromBase64Encoding(text.toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    const int width = size.width(), height = size.height();
    if (!decoded || width < 1 || height < 1 || width > kMaxImageSide || height > kMaxImageSide)
        return false;
    const QByteArray &bytes = *decoded;
    const int64_t length = int64_t(width) * height * int64_t(kWord);
    if (length > bytes.size() * kMostRatio || !mask->init(width, height))
        return false;
    auto got = uLongf(length);
    auto *out = reinterpret_cast<Bytef *>(mask->mask);
    const bool whole = uncompress(out, &got, reinterpret_cast<const Bytef *>(bytes.constData()),
                                  uLong(bytes.size())) == Z_OK;
    if (!whole || int64_t(got) != length)
        return false;
    addUp(mask->mask, size_t(width) * size_t(height));
    return true;
}
