// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/mcaiblock.h"

#include "core/image.h"
#include "core/rows.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

#include <libdeflate.h>

namespace
{
constexpr int kClasses = 32;
constexpr int kLevel = 10;
/// Above this share of the values places would only pretend to be smaller.
constexpr int kMostPlaces = ValueTable::kValues / 2;

using Counts = std::array<uint32_t, kClasses>;
using Packer = std::unique_ptr<libdeflate_compressor, void (*)(libdeflate_compressor *)>;
using Unpacker = std::unique_ptr<libdeflate_decompressor, void (*)(libdeflate_decompressor *)>;

// --- Prediction ------------------------------------------------------------------------------

struct Neighbours {
    int west, northWest, north, northEast;
    int west2, northWest2; ///< one further to the west
};

/// The left or upper neighbour at an edge, their plane through the upper left one elsewhere.
int predict(const Neighbours &n)
{
    const int low = std::min(n.west, n.north), high = std::max(n.west, n.north);
    return n.northWest >= high ? low : n.northWest <= low ? high : low + high - n.northWest;
}

/// How rough it is here, in steps of half an octave: of differences around, and of what the
/// prediction missed at this place in the plane before. The neighbour to the left is not
/// looked at: a reader would have to finish it before it could begin with this one.
int classOf(const Neighbours &n, int missedBefore)
{
    const unsigned rough =
        unsigned(std::abs(n.west2 - n.northWest2) + std::abs(n.northWest - n.north) +
                 std::abs(n.north - n.northEast) + missedBefore);
    if (rough < 2)
        return int(rough);
    const int octave = std::bit_width(rough) - 1;
    return std::min(2 * octave + int(rough >> (octave - 1) & 1), kClasses - 1);
}

/// Small numbers of either sign as small ones without: 0, -1, 1, -2 … become 0, 1, 2, 3 ….
uint16_t folded(int missed)
{
    return uint16_t(missed >= 0 ? 2 * missed : -2 * missed - 1);
}

int unfolded(uint16_t value)
{
    return value & 1 ? -(value >> 1) - 1 : value >> 1;
}

/// Where things stand in a frame, and how its numbers are counted.
struct Geometry {
    int stride, modulus;

    /// `at` points into a row whose left side and row above are complete.
    Neighbours around(const uint16_t *at) const
    {
        return {at[-1], at[-1 - stride], at[-stride], at[1 - stride], at[-2], at[-2 - stride]};
    }
    int wrapped(int value) const { return value & (modulus - 1); }
    /// A difference modulo `modulus`, from -modulus / 2 on.
    int wrappedDifference(int value) const
    {
        return ((value + modulus / 2) & (modulus - 1)) - modulus / 2;
    }
    int half() const { return modulus / 2; }
};

/// Places of some rows of one plane, in a frame: above is a row of zeros, to the left of each
/// row stands the first place of the row above, twice, to its right the last one of its own.
class Frame
{
public:
    Frame(int width, int rows, bool small)
        : geometry{width + 3, small ? 256 : ValueTable::kValues}, wide(width),
          places(size_t(geometry.stride) * size_t(rows + 1))
    {
    }
    uint16_t *row(int y) { return places.data() + size_t(geometry.stride) * size_t(y + 1) + 2; }
    void openRow(int y) { row(y)[-2] = row(y)[-1] = row(y - 1)[0]; }
    void closeRow(int y) { row(y)[wide] = row(y)[wide - 1]; }

    const Geometry geometry;

private:
    int wide;
    std::vector<uint16_t> places;
};

// --- Streams ---------------------------------------------------------------------------------

void putCount(uint32_t value, QByteArray *to)
{
    for (; value >= 0x80; value >>= 7)
        to->append(char(0x80 | (value & 0x7F)));
    to->append(char(value));
}

/// Takes bytes of a block one behind the other; a request beyond its end fails for good.
class BlockBytes
{
public:
    explicit BlockBytes(const QByteArray &block)
        : at(reinterpret_cast<const uint8_t *>(block.constData())), left(block.size())
    {
    }
    const uint8_t *take(int64_t bytes)
    {
        good = good && bytes <= left;
        if (!good)
            return nullptr;
        left -= bytes;
        return std::exchange(at, at + bytes);
    }
    uint8_t byte()
    {
        const uint8_t *one = take(1);
        return one ? *one : 0;
    }
    uint32_t count()
    {
        uint32_t value = 0;
        for (int shift = 0; shift < 32; shift += 7) {
            const uint8_t next = byte();
            value |= uint32_t(next & 0x7F) << shift;
            if (!(next & 0x80))
                return value;
        }
        good = false;
        return 0;
    }
    void fail() { good = false; }
    bool whole() const { return good; }
    bool atEnd() const { return left == 0; }

private:
    const uint8_t *at;
    int64_t left;
    bool good = true;
};

/// One stream: its length packed and the deflate data, or its own length and the bytes as
/// they are where packing does not pay.
void putStream(libdeflate_compressor *packer, const uint8_t *bytes, uint32_t count, QByteArray *to)
{
    QByteArray packed(int(count), Qt::Uninitialized);
    const size_t size = libdeflate_deflate_compress(packer, bytes, count, packed.data(), count);
    const bool pays = size > 0 && size < count;
    putCount(pays ? uint32_t(size) : count, to);
    to->append(pays ? packed.constData() : reinterpret_cast<const char *>(bytes),
               int(pays ? size : count));
}

void takeStream(libdeflate_decompressor *unpacker, BlockBytes *from, uint8_t *bytes, uint32_t count)
{
    const uint32_t size = from->count();
    const uint8_t *data = from->take(size);
    if (!data || size > count)
        from->fail();
    else if (size == count)
        std::copy_n(data, count, bytes);
    else if (libdeflate_deflate_decompress(unpacker, data, size, bytes, count, nullptr) !=
             LIBDEFLATE_SUCCESS)
        from->fail();
}

Counts startsOf(const Counts &counts)
{
    Counts starts = {};
    for (int c = 1; c < kClasses; ++c)
        starts[c] = starts[c - 1] + counts[c - 1];
    return starts;
}

// --- Planes ----------------------------------------------------------------------------------

/// What one plane of a block is made of, and what its samples are compared with.
struct PlaneJob {
    uint16_t *samples; ///< of the first row
    const ValueTable &table;
    Frame *green;                  ///< places of the green plane, or null
    std::vector<uint16_t> *missed; ///< of the plane before; replaced by this one's. Or null
};

/// Folded misses of a plane with their classes.
struct Misses {
    std::vector<uint16_t> values;
    std::vector<uint8_t> classes;
    Counts counts = {};
    uint64_t sum = 0;

    explicit Misses(size_t samples) : values(samples), classes(samples) {}
};

class BlockPacker
{
public:
    BlockPacker(int width, int rows)
        : wide(width), high(rows),
          packer(libdeflate_alloc_compressor(kLevel), libdeflate_free_compressor)
    {
    }
    bool ready() const { return bool(packer); }

    void add(const PlaneJob &job, Frame *frame)
    {
        Misses best = missesOf(job, frame, false);
        bool lessGreen = false;
        if (job.green) {
            Misses other = missesOf(job, frame, true);
            lessGreen = other.sum < best.sum;
            if (lessGreen)
                best = std::move(other);
        }
        block.append(char(lessGreen));
        put(best, !job.table.small());
        if (job.missed)
            *job.missed = std::move(best.values);
    }
    QByteArray take() { return std::move(block); }

private:
    void fill(const PlaneJob &job, Frame *frame, bool lessGreen) const
    {
        const Geometry geometry = frame->geometry;
        for (int y = 0; y < high; ++y) {
            frame->openRow(y);
            const uint16_t *from = job.samples + int64_t(y) * wide;
            uint16_t *to = frame->row(y);
            const uint16_t *green = lessGreen ? job.green->row(y) : nullptr;
            for (int x = 0; x < wide; ++x) {
                const int place = job.table.placeOf(from[x]);
                to[x] =
                    uint16_t(green ? geometry.wrapped(place - green[x] + geometry.half()) : place);
            }
            frame->closeRow(y);
        }
    }
    Misses missesOf(const PlaneJob &job, Frame *frame, bool lessGreen) const
    {
        fill(job, frame, lessGreen);
        const Geometry geometry = frame->geometry;
        Misses result(size_t(wide) * size_t(high));
        const bool compared = job.missed && !job.missed->empty();
        size_t i = 0;
        for (int y = 0; y < high; ++y) {
            const uint16_t *row = frame->row(y);
            for (int x = 0; x < wide; ++x, ++i) {
                const Neighbours n = geometry.around(row + x);
                const uint16_t value = folded(geometry.wrappedDifference(row[x] - predict(n)));
                const int kind = classOf(n, compared ? (*job.missed)[i] : 0);
                result.values[i] = value;
                result.classes[i] = uint8_t(kind);
                ++result.counts[kind];
                result.sum += value;
            }
        }
        return result;
    }
    void put(const Misses &misses, bool twoBytes)
    {
        for (const uint32_t count : misses.counts)
            putCount(count, &block);
        const Counts starts = startsOf(misses.counts);
        std::vector<uint8_t> bytes(misses.values.size());
        for (int shift = twoBytes ? 8 : 0; shift >= 0; shift -= 8) {
            Counts at = starts;
            for (size_t i = 0; i < misses.values.size(); ++i)
                bytes[at[misses.classes[i]]++] = uint8_t(misses.values[i] >> shift);
            for (int c = 0; c < kClasses; ++c)
                if (misses.counts[c] > 0)
                    putStream(packer.get(), bytes.data() + starts[c], misses.counts[c], &block);
        }
    }

    int wide, high;
    Packer packer;
    QByteArray block;
};

class BlockUnpacker
{
public:
    BlockUnpacker(const QByteArray &block, int width, int rows)
        : wide(width), high(rows), samples(size_t(width) * size_t(rows)), bytes(block),
          unpacker(libdeflate_alloc_decompressor(), libdeflate_free_decompressor)
    {
        if (!unpacker)
            bytes.fail();
    }

    /// Fills the plane, unless its samples are null: then it is passed over.
    void next(const PlaneJob &job, Frame *frame)
    {
        const bool lessGreen = bytes.byte() != 0;
        if (lessGreen && !job.green)
            bytes.fail();
        Counts counts = {};
        uint64_t sum = 0;
        for (uint32_t &count : counts)
            sum += count = bytes.count();
        if (sum != samples)
            bytes.fail();
        if (!bytes.whole())
            return;
        const Counts starts = startsOf(counts);
        low.resize(samples);
        high8.assign(job.table.small() ? 0 : samples, 0);
        if (!job.table.small())
            takeStreams(counts, starts, high8.data());
        takeStreams(counts, starts, low.data());
        if (bytes.whole())
            rebuild(job, frame, starts, lessGreen);
    }
    bool whole() const { return bytes.whole() && bytes.atEnd(); }

private:
    void takeStreams(const Counts &counts, const Counts &starts, uint8_t *to)
    {
        for (int c = 0; c < kClasses && bytes.whole(); ++c)
            if (counts[c] > 0)
                takeStream(unpacker.get(), &bytes, to + starts[c], counts[c]);
    }
    void rebuild(const PlaneJob &job, Frame *frame, const Counts &starts, bool lessGreen)
    {
        std::vector<uint16_t> none;
        std::vector<uint16_t> &missed = job.missed ? *job.missed : none;
        missed.resize(samples); // zeros, if there was no plane before
        // A damaged block may take more from a stream than it has: the bytes are then another
        // stream's, and wrong, but within what there is.
        Counts at = starts;
        for (int y = 0; y < high; ++y) {
            frame->openRow(y);
            uint16_t *misses = missed.data() + size_t(y) * size_t(wide);
            if (job.table.small())
                rebuildRow(frame, y, misses, &at, [this](uint32_t i) { return low[i]; });
            else
                rebuildRow(frame, y, misses, &at,
                           [this](uint32_t i) { return uint16_t(high8[i] << 8 | low[i]); });
            frame->closeRow(y);
            store(job, frame, y, lessGreen);
        }
    }
    template <class ValueAt>
    void rebuildRow(Frame *frame, int y, uint16_t *misses, Counts *at, ValueAt valueAt)
    {
        const uint32_t last = uint32_t(samples - 1);
        const Geometry places = frame->geometry;
        uint16_t *const row = frame->row(y);
        for (int x = 0; x < wide; ++x) {
            const Neighbours n = places.around(row + x);
            uint32_t &place = (*at)[classOf(n, misses[x])];
            const uint16_t value = valueAt(std::min(place++, last));
            misses[x] = value;
            row[x] = uint16_t(places.wrapped(predict(n) + unfolded(value)));
        }
    }
    void store(const PlaneJob &job, Frame *frame, int y, bool lessGreen)
    {
        if (!job.samples)
            return;
        const Geometry geometry = frame->geometry;
        uint16_t *to = job.samples + int64_t(y) * wide;
        const uint16_t *row = frame->row(y);
        const uint16_t *green = lessGreen ? job.green->row(y) : nullptr;
        for (int x = 0; x < wide; ++x)
            to[x] = job.table.valueAt(
                green ? uint16_t(geometry.wrapped(row[x] + green[x] - geometry.half())) : row[x]);
    }

    int wide, high;
    size_t samples;
    BlockBytes bytes;
    Unpacker unpacker;
    std::vector<uint8_t> low, high8;
};

/// Calls `work(job, frame)` for the planes of a block in their order: green, which red and blue
/// are compared with, red, blue, alpha, mask. Planes of one value only are not among them.
template <class Work>
void forPlanes(const image &img, const McaiTables &tables, int first, int end, Work work)
{
    const int64_t start = int64_t(first) * img.width;
    const int rows = end - first;
    if (!tables.color.constant()) {
        const bool small = tables.color.small();
        Frame green(img.width, rows, small), other(img.width, rows, small);
        std::vector<uint16_t> missed;
        work(PlaneJob{img.green + start, tables.color, nullptr, &missed}, &green);
        for (uint16_t *plane : {img.red, img.blue})
            work(PlaneJob{plane + start, tables.color, &green, &missed}, &other);
    }
    const std::array<std::pair<const ValueTable *, uint16_t *>, 2> rest = {
        {{&tables.alpha, img.alpha}, {&tables.mask, img.gmask}}};
    for (const auto &[table, plane] : rest)
        if (table->count() > 1) {
            Frame frame(img.width, rows, table->small());
            work(PlaneJob{plane + start, *table, nullptr, nullptr}, &frame);
        }
}

/// Planes that hold one value are not in the block.
void fillConstantPlanes(const McaiTables &tables, int first, int end, bool withMask, image *img)
{
    const auto fill = [&](const ValueTable &table, std::initializer_list<uint16_t *> planes) {
        for (uint16_t *plane : planes)
            if (table.constant())
                std::fill(plane + int64_t(first) * img->width, plane + int64_t(end) * img->width,
                          table.valueAt(0));
    };
    fill(tables.color, {img->red, img->green, img->blue});
    fill(tables.alpha, {img->alpha});
    if (withMask)
        fill(tables.mask, {img->gmask});
}
} // namespace

ValueTable::ValueTable(std::vector<uint16_t> values) : used(std::move(values)), places(kValues)
{
    for (size_t i = 0; i < used.size(); ++i)
        places[used[i]] = uint16_t(i);
}

ValueTable ValueTable::of(const std::vector<const uint16_t *> &planes, int width, int height)
{
    std::vector<uint8_t> present(kValues);
    std::mutex lock; // guards present
    parallelRows(height, width * int(planes.size()), [&](int first, int end) {
        std::vector<uint8_t> own(kValues);
        for (const uint16_t *plane : planes)
            for (int64_t i = int64_t(first) * width; i < int64_t(end) * width; ++i)
                own[plane[i]] = 1;
        const std::lock_guard guard(lock);
        for (int v = 0; v < kValues; ++v)
            present[v] |= own[v];
    });
    const bool all = std::count(present.begin(), present.end(), 1) > kMostPlaces;
    std::vector<uint16_t> values;
    for (int v = 0; v < kValues; ++v)
        if (all || present[v])
            values.push_back(uint16_t(v));
    return ValueTable(std::move(values));
}

bool ValueTable::fromBitmap(const QByteArray &bitmap, ValueTable *table)
{
    std::vector<uint16_t> values;
    for (int v = 0; v < kValues && bitmap.size() == kBitmapBytes; ++v)
        if (uint8_t(bitmap[v >> 3]) >> (~v & 7) & 1)
            values.push_back(uint16_t(v));
    *table = ValueTable(std::move(values));
    return table->count() > 0;
}

QByteArray ValueTable::bitmap() const
{
    QByteArray bits(kBitmapBytes, '\0');
    for (const uint16_t v : used)
        bits[v >> 3] = char(bits[v >> 3] | 1 << (~v & 7));
    return bits;
}

McaiTables McaiTables::of(const image &img)
{
    const auto tableOf = [&img](const std::vector<const uint16_t *> &planes) {
        return ValueTable::of(planes, img.width, img.height);
    };
    return {tableOf({img.red, img.green, img.blue}), tableOf({img.alpha}),
            img.anyMaskSet() ? tableOf({img.gmask}) : ValueTable()};
}

QByteArray packRows(const image &img, const McaiTables &tables, int first, int end)
{
    try {
        BlockPacker packer(img.width, end - first);
        if (!packer.ready())
            return QByteArray();
        forPlanes(img, tables, first, end,
                  [&](const PlaneJob &job, Frame *frame) { packer.add(job, frame); });
        const QByteArray block = packer.take();
        return block.isNull() ? QByteArray("") : block;
    } catch (const std::bad_alloc &) {
        return QByteArray();
    }
}

bool unpackRows(const QByteArray &block, const McaiTables &tables, int first, int end,
                bool withMask, image *img)
{
    try {
        fillConstantPlanes(tables, first, end, withMask, img);
        BlockUnpacker unpacker(block, img->width, end - first);
        forPlanes(*img, tables, first, end, [&](PlaneJob job, Frame *frame) {
            if (&job.table == &tables.mask && !withMask)
                job.samples = nullptr;
            unpacker.next(job, frame);
        });
        return unpacker.whole();
    } catch (const std::bad_alloc &) {
        return false;
    }
}
