// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/taggedplanes.h"

#include <QThread>
#include <QtEndian>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <memory>
#include <new>

#include <libdeflate.h>
#include <zlib.h>

namespace
{
constexpr int kSizeBytes = 4; ///< before the stream
constexpr int64_t kSampleBytes = 2;
constexpr int64_t kSamplesAtOnce = 1 << 16;
constexpr int kPieceBytes = 1 << 20;
/// zlib counts with 32 bits.
constexpr int64_t kMostAtOnce = 1 << 30;
/// Planes that are packed, or read for unpacking, beside those in work.
constexpr int kSpare = 2;
/// Below this many samples waking another thread costs more than it saves.
constexpr int64_t kSamplesWorthSharing = 1 << 15;

int threads()
{
    return std::max(1, QThread::idealThreadCount());
}

void swapBytes(const uint16_t *from, uint16_t *to, int64_t count)
{
    for (int64_t i = 0; i < count; ++i)
        to[i] = qToBigEndian(from[i]);
}

/// A zlib stream that grows by pieces.
class Deflater
{
public:
    Deflater(const QByteArray &before, int level) : good(deflateInit(&stream, level) == Z_OK)
    {
        pieces.push_back(before);
    }
    ~Deflater()
    {
        if (good)
            deflateEnd(&stream);
    }
    Deflater(const Deflater &) = delete;
    Deflater &operator=(const Deflater &) = delete;

    bool started() const { return good; }
    void add(const uint16_t *bytes, int64_t count, bool last)
    {
        stream.next_in = reinterpret_cast<Bytef *>(const_cast<uint16_t *>(bytes));
        stream.avail_in = uInt(count * kSampleBytes);
        int state = Z_OK;
        do {
            if (stream.avail_out == 0)
                addPiece();
            state = deflate(&stream, last ? Z_FINISH : Z_NO_FLUSH);
        } while (last ? state != Z_STREAM_END : stream.avail_in > 0 || stream.avail_out == 0);
    }
    std::vector<QByteArray> takePieces()
    {
        pieces.back().chop(int(stream.avail_out));
        return std::move(pieces);
    }

private:
    void addPiece()
    {
        pieces.emplace_back(kPieceBytes, Qt::Uninitialized);
        stream.next_out = reinterpret_cast<Bytef *>(pieces.back().data());
        stream.avail_out = kPieceBytes;
    }

    z_stream stream = {};
    std::vector<QByteArray> pieces;
    bool good;
};

QByteArray sizeHead(int64_t samples)
{
    QByteArray head(kSizeBytes, Qt::Uninitialized);
    // The largest planes need all 32 bits; no more fit into a picture.
    qToBigEndian(quint32(samples * kSampleBytes), head.data());
    return head;
}

/// The pieces of a packed plane. None if memory is short or the packer was stopped.
std::vector<QByteArray> packPlane(const PlaneSource &plane, int level, std::atomic<int64_t> *done,
                                  const std::atomic<bool> &stopped)
{
    Deflater deflater(sizeHead(plane.count), level);
    if (!deflater.started())
        return {};
    std::vector<uint16_t> chunk(size_t(std::min(kSamplesAtOnce, plane.count)));
    for (int64_t at = 0; at < plane.count && !stopped; at += kSamplesAtOnce) {
        const int64_t count = std::min(kSamplesAtOnce, plane.count - at);
        swapBytes(plane.samples + at, chunk.data(), count);
        deflater.add(chunk.data(), count, at + count == plane.count);
        *done += count;
    }
    return stopped ? std::vector<QByteArray>() : deflater.takePieces();
}

/// Bytes that a stream yields, `most` at most, also of one that is damaged or cut.
int64_t inflateAsFarAsPossible(const unsigned char *data, int64_t size, unsigned char *out,
                               int64_t most, bool *whole)
{
    z_stream stream = {};
    if (inflateInit(&stream) != Z_OK)
        return 0;
    stream.next_in = const_cast<Bytef *>(data);
    int64_t given = 0, made = 0;
    int state = Z_OK;
    while (state == Z_OK && made < most) {
        const int64_t in = std::min(size - given, kMostAtOnce);
        const int64_t room = std::min(most - made, kMostAtOnce);
        stream.avail_in = uInt(in);
        stream.next_out = out + made;
        stream.avail_out = uInt(room);
        state = inflate(&stream, Z_NO_FLUSH);
        given += in - stream.avail_in;
        made += room - stream.avail_out;
    }
    *whole = state == Z_STREAM_END || (state == Z_OK && made == most);
    inflateEnd(&stream);
    return made;
}

/// The quick way for streams that are in order; false, with nothing promised about the
/// output, for all others.
bool inflateWhole(const unsigned char *data, int64_t size, unsigned char *out, int64_t most,
                  int64_t *made)
{
    const std::unique_ptr<libdeflate_decompressor, void (*)(libdeflate_decompressor *)> engine(
        libdeflate_alloc_decompressor(), libdeflate_free_decompressor);
    size_t used = 0, yielded = 0;
    if (!engine ||
        libdeflate_zlib_decompress_ex(engine.get(), data, size_t(size), out, size_t(most), &used,
                                      &yielded) != LIBDEFLATE_SUCCESS)
        return false;
    *made = int64_t(yielded);
    return true;
}
} // namespace

PlanePacker::PlanePacker(std::vector<PlaneSource> sources, int level)
    : planes(std::move(sources)), packLevel(level), ahead(size_t(threads() + kSpare)),
      results(planes.size())
{
    for (const PlaneSource &plane : planes)
        inAll += plane.count;
    pool.setMaxThreadCount(threads());
    for (int i = 0; i < threads(); ++i)
        pool.start([this] { work(); });
}

PlanePacker::~PlanePacker()
{
    {
        const std::lock_guard guard(lock);
        stopped = true;
    }
    changed.notify_all();
    pool.waitForDone();
}

void PlanePacker::work()
{
    std::unique_lock guard(lock);
    while (!stopped && begun < planes.size()) {
        if (begun >= taken + ahead) {
            changed.wait(guard);
            continue;
        }
        const size_t index = begun++;
        guard.unlock();
        std::vector<QByteArray> pieces;
        try {
            pieces = packPlane(planes[index], packLevel, &done, stopped);
        } catch (const std::bad_alloc &) {
            pieces.clear();
        }
        guard.lock();
        results[index].pieces = std::move(pieces);
        results[index].finished = true;
        changed.notify_all();
    }
}

bool PlanePacker::ready(int milliseconds)
{
    std::unique_lock guard(lock);
    return changed.wait_for(guard, std::chrono::milliseconds(milliseconds),
                            [this] { return taken < results.size() && results[taken].finished; });
}

std::vector<QByteArray> PlanePacker::take()
{
    std::vector<QByteArray> pieces;
    {
        const std::lock_guard guard(lock);
        if (taken < results.size())
            pieces = std::move(results[taken++].pieces);
    }
    changed.notify_all();
    return pieces;
}

PlaneUnpacker::PlaneUnpacker()
{
    pool.setMaxThreadCount(threads());
}

PlaneUnpacker::~PlaneUnpacker()
{
    wait();
}

void PlaneUnpacker::start(FieldReader::Block data, bool packed, uint16_t *samples, int64_t count)
{
    if (count < kSamplesWorthSharing) {
        if (!unpackPlane(data.bytes.get(), data.size, packed, samples, count))
            damaged = true;
        return;
    }
    {
        std::unique_lock guard(lock);
        changed.wait(guard, [this] { return underWay < threads() + kSpare; });
        ++underWay;
    }
    std::shared_ptr<unsigned char[]> bytes(std::move(data.bytes));
    pool.start([this, bytes, size = data.size, packed, samples, count]() mutable {
        if (!unpackPlane(bytes.get(), size, packed, samples, count))
            damaged = true;
        bytes.reset(); // before the next one is read
        finished();
    });
}

void PlaneUnpacker::finished()
{
    const std::lock_guard guard(lock);
    --underWay;
    changed.notify_all();
}

void PlaneUnpacker::wait()
{
    {
        std::unique_lock guard(lock);
        changed.wait(guard, [this] { return underWay == 0; });
    }
    pool.waitForDone();
}

int64_t PlaneUnpacker::mostBytes(bool packed, int64_t count)
{
    // Twice the samples and then some: no packer makes them longer than that.
    constexpr int64_t streamRoom = 1 << 16;
    const int64_t plain = count * kSampleBytes;
    return packed ? 2 * plain + streamRoom : plain;
}

bool unpackPlane(const unsigned char *data, int64_t size, bool packed, uint16_t *samples,
                 int64_t count)
{
    auto *out = reinterpret_cast<unsigned char *>(samples);
    const int64_t most = count * kSampleBytes;
    int64_t made = 0;
    bool whole = true;
    if (!packed) {
        made = std::min(size, most);
        std::memcpy(out, data, size_t(made));
    } else if (size > kSizeBytes) {
        // The size before the stream is not believed: the plane is as large as it is.
        data += kSizeBytes;
        size -= kSizeBytes;
        if (!inflateWhole(data, size, out, most, &made))
            made = inflateAsFarAsPossible(data, size, out, most, &whole);
    }
    std::memset(out + made, 0, size_t(most - made));
    swapBytes(samples, samples, count);
    return whole && made == most;
}
