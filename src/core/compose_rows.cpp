// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/compose_rows.h"

#include "core/bilinear_inline.h"
#include "core/colour.h"
#include "core/image.h"
#include "core/layermodes.h"
#include "core/rows.h"
#include "core/warpfield.h"

#include <algorithm>
#include <array>
#include <climits>
#include <limits>
#include <memory>
#include <new>

namespace
{
constexpr uint16_t kOpaque = 65535;
constexpr int kChannels = 4;

/// A run of pixels of one row of a destination.
struct Piece {
    int64_t x, y;
    int count;
};

/// Samples of a layer below a piece, as they are blended.
struct Fetched {
    double channel[kChannels][kSpanPixels];
    bool inside[kSpanPixels];

    Rgba at(int x) const { return {channel[0][x], channel[1][x], channel[2][x], channel[3][x]}; }
};

void convertYrb(double (&channel)[kChannels][kSpanPixels], int count)
{
    double *const planes[3] = {channel[0], channel[1], channel[2]};
    KERNEL_DISPATCH(yrbSpan, planes, planes, count);
}

void setSample(Fetched *out, int x, Rgba sample)
{
    out->channel[0][x] = sample.red;
    out->channel[1][x] = sample.green;
    out->channel[2][x] = sample.blue;
    out->channel[3][x] = sample.alpha;
}

/// A layer's own samples at their own places; nothing outside of it.
void fetchInPlace(const PlacedLayer &layer, const Piece &piece, Fetched *out)
{
    const image &img = *layer.img;
    const int64_t y = piece.y - layer.top, from = piece.x - layer.left;
    const bool rowInside = y >= 0 && y < img.height;
    const int first = rowInside ? int(std::clamp<int64_t>(-from, 0, piece.count)) : piece.count;
    const int end = int(std::clamp<int64_t>(img.width - from, first, piece.count));
    std::fill(out->inside, out->inside + piece.count, false);
    std::fill(out->inside + first, out->inside + end, true);
    const auto planes = img.colorPlanes();
    for (int c = 0; c < kChannels; ++c) {
        double *to = out->channel[c];
        std::fill(to, to + first, 0.0);
        std::fill(to + end, to + piece.count, 0.0);
        if (end > first) {
            const uint16_t *row = planes[c] + y * img.width + from + first;
            std::copy(row, row + (end - first), to + first);
        }
    }
}

/// The same through the layer's rotation and fractions.
void fetchMoved(const PlacedLayer &layer, const Piece &piece, Fetched *out)
{
    const image &img = *layer.img;
    const double dy = double(piece.y - layer.top - img.yCenter);
    for (int i = 0; i < piece.count; ++i) {
        const double dx = double(piece.x + i - layer.left - img.xCenter);
        const double x = img.xCenter + layer.cosine * dx - layer.sine * dy + img.xFraction;
        const double y = img.yCenter + layer.sine * dx + layer.cosine * dy + img.yFraction;
        out->inside[i] = x >= 0 && x < img.width && y >= 0 && y < img.height;
        setSample(out, i, out->inside[i] ? img.sampleAt(x, y) : Rgba{0, 0, 0, 0});
    }
}

void fetch(const PlacedLayer &layer, const Piece &piece, Fetched *out)
{
    if (layer.moved)
        fetchMoved(layer, piece, out);
    else
        fetchInPlace(layer, piece, out);
    if (layer.yrb)
        convertYrb(out->channel, piece.count);
}

/// The rows of a destination's planes at a piece.
void aimUnder(image *destination, const Piece &piece, uint16_t *(&under)[kChannels])
{
    const auto planes = destination->colorPlanes();
    for (int c = 0; c < kChannels; ++c)
        under[c] = planes[c] + piece.y * destination->width + piece.x;
}

template <class Sample>
Span<Sample> spanOf(const ComposeStep &step, image *destination, const Piece &piece)
{
    Span<Sample> span;
    aimUnder(destination, piece, span.under);
    span.count = piece.count;
    span.opacity = step.opacity;
    span.factor = step.factor;
    span.tolerance = step.tolerance;
    return span;
}

void blendFetched(const ComposeStep &step, image *destination, const Piece &piece,
                  const Fetched &samples)
{
    RealSpan span = spanOf<double>(step, destination, piece);
    for (int c = 0; c < kChannels; ++c)
        span.over[c] = samples.channel[c];
    step.blend.reals(span);
}

/// Asks for what stands where the next piece begins while this one is worked on: the
/// processor does not foresee eight planes that are read in turns. The places are numbers,
/// since they may lie past the end of a plane.
template <int ToWrite, class Sample>
void fetchNextPiece(Sample *const (&planes)[kChannels])
{
    constexpr uintptr_t lineBytes = 64, pieceBytes = kSpanPixels * sizeof(uint16_t);
    constexpr int intoSecondCache = 2;
    for (Sample *plane : planes) {
        const uintptr_t next = reinterpret_cast<uintptr_t>(plane) + pieceBytes;
        for (uintptr_t byte = 0; byte < pieceBytes; byte += lineBytes)
            __builtin_prefetch(reinterpret_cast<const void *>(next + byte), ToWrite,
                               intoSecondCache);
    }
}

/// What a layer is blended into: what the destination holds, or zeros in its place.
enum class Under { Present, Empty };

void blendPiece(const ComposeStep &step, image *destination, const Piece &piece,
                Under under = Under::Present)
{
    const PlacedLayer &layer = step.layer;
    if (layer.moved || layer.yrb) {
        Fetched samples;
        fetch(layer, piece, &samples);
        blendFetched(step, destination, piece, samples);
        return;
    }
    PlaneSpan span = spanOf<uint16_t>(step, destination, piece);
    const auto planes = layer.img->colorPlanes();
    const int64_t at = (piece.y - layer.top) * layer.img->width + piece.x - layer.left;
    for (int c = 0; c < kChannels; ++c)
        span.over[c] = planes[c] + at;
    fetchNextPiece<0>(span.over);
    (under == Under::Empty ? step.blend.onEmpty : step.blend.planes)(span);
}

/// The sum by place of all layers of the run, divided by their number; alpha is that of
/// the last one.
void averagePiece(const ComposeStep &step, image *destination, const Piece &piece)
{
    double sum[3][kSpanPixels];
    for (auto &channel : sum)
        std::fill(channel, channel + piece.count, 0.0);
    Fetched samples;
    for (const PlacedLayer &source : step.sources) {
        fetch(source, piece, &samples);
        for (int c = 0; c < 3; ++c)
            for (int x = 0; x < piece.count; ++x)
                sum[c][x] += samples.inside[x] ? samples.channel[c][x] : 0.0;
    }
    const double number = double(step.sources.size());
    for (int c = 0; c < 3; ++c)
        for (int x = 0; x < piece.count; ++x)
            samples.channel[c][x] = sum[c][x] / number;
    blendFetched(step, destination, piece, samples);
}

/// Room to sort the layers of a median in, for one piece at a time.
struct MedianRoom {
    explicit MedianRoom(size_t layers)
        : samples(new (std::nothrow) Fetched[layers]),
          means(new (std::nothrow) double[layers * kSpanPixels]),
          order(new (std::nothrow) double[layers * kSpanPixels])
    {
    }
    explicit operator bool() const { return samples && means && order; }
    double *meansOf(int layer) { return &means[int64_t(layer) * kSpanPixels]; }
    double *orderOf(int layer) { return &order[int64_t(layer) * kSpanPixels]; }
    /// The layer that has this rank at pixel x.
    int ranked(int rank, int x) const { return int(order[int64_t(rank) * kSpanPixels + x]); }

    std::unique_ptr<Fetched[]> samples;
    std::unique_ptr<double[]> means; ///< or keys, where layers lie plainly
    std::unique_ptr<double[]> order;
    std::vector<std::array<const uint16_t *, kChannels>> planes;
    int sorted = 0; ///< how many layers stand sorted for the present piece already
};

/// Sorts one more layer, whose means stand behind the others', into the others.
void sortInto(MedianRoom *room, int layer, int count)
{
    std::fill_n(room->orderOf(layer), count, double(layer));
    for (int i = layer; i > 0; --i)
        KERNEL_DISPATCH(exchangeMeans, room->meansOf(i - 1), room->meansOf(i), room->orderOf(i - 1),
                        room->orderOf(i), count);
}

bool coversPlainly(const PlacedLayer &layer, const Piece &piece)
{
    return !layer.moved && !layer.yrb && piece.y >= layer.top &&
           piece.y < layer.top + layer.img->height && piece.x >= layer.left &&
           piece.x + piece.count <= layer.left + layer.img->width;
}

/// The layer that a key belongs to.
size_t layerOf(double key)
{
    return size_t(int64_t(key) & 0xFFFF);
}

/// The middle one of an odd number of layers: its samples are whole numbers.
void blendMiddle(const ComposeStep &step, image *destination, const Piece &piece, MedianRoom *room)
{
    const double *middle = room->meansOf(int(step.sources.size() / 2));
    uint16_t samples[kChannels][kSpanPixels];
    for (int x = 0; x < piece.count; ++x) {
        const auto &planes = room->planes[layerOf(middle[x])];
        for (int c = 0; c < kChannels; ++c)
            samples[c][x] = planes[c][x];
    }
    PlaneSpan span = spanOf<uint16_t>(step, destination, piece);
    for (int c = 0; c < kChannels; ++c)
        span.over[c] = samples[c];
    step.blend.planes(span);
}

/// The mean of the two middle ones of an even number of layers.
void blendMiddlePair(const ComposeStep &step, image *destination, const Piece &piece,
                     MedianRoom *room)
{
    const double *second = room->meansOf(int(step.sources.size() / 2));
    const double *first = second - kSpanPixels;
    int32_t sums[kChannels][kSpanPixels];
    for (int x = 0; x < piece.count; ++x) {
        const auto &a = room->planes[layerOf(first[x])], &b = room->planes[layerOf(second[x])];
        for (int c = 0; c < kChannels; ++c)
            sums[c][x] = a[c][x] + b[c][x];
    }
    Fetched result;
    for (int c = 0; c < kChannels; ++c)
        for (int x = 0; x < piece.count; ++x)
            result.channel[c][x] = sums[c][x] / 2.0;
    blendFetched(step, destination, piece, result);
}

/// Where all layers lie plainly below the piece, their planes serve as they are, and a
/// stack of medians sorts each layer only once.
void plainMedian(const ComposeStep &step, image *destination, const Piece &piece, MedianRoom *room)
{
    const int layers = int(step.sources.size());
    std::vector<std::array<const uint16_t *, kChannels>> &planes = room->planes;
    planes.resize(size_t(layers));
    for (int i = 0; i < layers; ++i) {
        const PlacedLayer &source = step.sources[i];
        const auto own = source.img->colorPlanes();
        const int64_t at = (piece.y - source.top) * source.img->width + piece.x - source.left;
        for (int c = 0; c < kChannels; ++c)
            planes[i][c] = own[c] + at;
    }
    for (; room->sorted < layers; ++room->sorted) {
        const auto &plane = planes[room->sorted];
        KERNEL_DISPATCH(medianKeys, plane[0], plane[1], plane[2], room->sorted, piece.count,
                        room->meansOf(room->sorted));
        for (int i = room->sorted; i > 0; --i)
            KERNEL_DISPATCH(exchangeKeys, room->meansOf(i - 1), room->meansOf(i), piece.count);
    }
    if (layers % 2)
        blendMiddle(step, destination, piece, room);
    else
        blendMiddlePair(step, destination, piece, room);
}

void writeMeans(const Fetched &samples, int count, double *means, int *covering)
{
    for (int x = 0; x < count; ++x) {
        const double mean =
            (samples.channel[0][x] + samples.channel[1][x] + samples.channel[2][x]) / 3.0;
        means[x] = samples.inside[x] ? mean : std::numeric_limits<double>::infinity();
        covering[x] += samples.inside[x];
    }
}

void medianPiece(const ComposeStep &step, image *destination, const Piece &piece, MedianRoom *room)
{
    constexpr size_t mostKeys = 65536;
    if (step.sources.size() <= mostKeys &&
        std::all_of(step.sources.begin(), step.sources.end(),
                    [&](const PlacedLayer &source) { return coversPlainly(source, piece); })) {
        plainMedian(step, destination, piece, room);
        return;
    }
    const int layers = int(step.sources.size());
    int covering[kSpanPixels] = {};
    for (int i = 0; i < layers; ++i) {
        fetch(step.sources[i], piece, &room->samples[i]);
        writeMeans(room->samples[i], piece.count, room->meansOf(i), covering);
        sortInto(room, i, piece.count);
    }
    room->sorted = 0;
    // Where the layer turned away from under its own rectangle its own samples stand in.
    PlacedLayer inPlace = step.layer;
    inPlace.moved = false;
    Fetched result;
    fetch(inPlace, piece, &result);
    for (int x = 0; x < piece.count; ++x) {
        const int n = covering[x];
        if (n == 0)
            continue;
        const Rgba a = room->samples[room->ranked((n - 1) / 2, x)].at(x);
        const Rgba b = room->samples[room->ranked(n / 2, x)].at(x);
        // An odd number has one middle: the mean of a value with itself is that value.
        setSample(&result, x,
                  {(a.red + b.red) / 2, (a.green + b.green) / 2, (a.blue + b.blue) / 2,
                   (a.alpha + b.alpha) / 2});
    }
    blendFetched(step, destination, piece, result);
}

/// Columns of the destination that a layer's rectangle reaches in row y; none if empty.
struct Columns {
    int64_t first, end;
};
Columns columnsOf(const PlacedLayer &layer, const image &destination, int64_t y)
{
    const int64_t row = y - layer.top;
    if (row < 0 || row >= layer.img->height)
        return {0, 0};
    return {std::clamp<int64_t>(layer.left, 0, destination.width),
            std::clamp<int64_t>(layer.left + layer.img->width, 0, destination.width)};
}

/// The part of a piece that lies within some columns; empty if its count is not positive.
Piece partOf(const Piece &piece, const Columns &columns)
{
    const int64_t first = std::max(piece.x, columns.first);
    const int64_t end = std::min(piece.x + piece.count, columns.end);
    return {first, piece.y, int(std::max<int64_t>(end - first, 0))};
}

void clearOutside(const ComposeStep &step, image *destination, const Piece &piece)
{
    const Piece inside = partOf(piece, columnsOf(step.layer, *destination, piece.y));
    uint16_t *row = destination->alpha + piece.y * destination->width;
    const int64_t end = piece.x + piece.count;
    if (inside.count == 0) {
        std::fill(row + piece.x, row + end, uint16_t(0));
        return;
    }
    std::fill(row + piece.x, row + inside.x, uint16_t(0));
    std::fill(row + inside.x + inside.count, row + end, uint16_t(0));
}

void runPiece(const ComposeStep &step, image *destination, const Piece &piece, MedianRoom *room)
{
    if (step.kind == ComposeStep::Kind::ClearOutside) {
        clearOutside(step, destination, piece);
        return;
    }
    const Piece part = partOf(piece, columnsOf(step.layer, *destination, piece.y));
    if (part.count == 0)
        return;
    if (step.kind == ComposeStep::Kind::Blend) {
        blendPiece(step, destination, part);
    } else if (step.kind == ComposeStep::Kind::Average) {
        averagePiece(step, destination, part);
    } else if (room && *room) {
        if (part.x != piece.x || part.count != piece.count)
            room->sorted = 0; // what is sorted is of another place
        medianPiece(step, destination, part, room);
        if (part.x != piece.x || part.count != piece.count)
            room->sorted = 0;
    }
}

bool allOpaque(const uint16_t *alpha, int64_t count)
{
    constexpr int64_t atOnce = 512;
    for (int64_t first = 0; first < count; first += atOnce) {
        uint16_t common = kOpaque;
        const int64_t end = std::min(first + atOnce, count);
        for (int64_t x = first; x < end; ++x)
            common &= alpha[x];
        if (common != kOpaque)
            return false;
    }
    return true;
}

/// Whether a step puts its layer's samples in the place of everything in a row.
bool replacesRow(const ComposeStep &step, const image &destination, int64_t y)
{
    const PlacedLayer &layer = step.layer;
    if (step.kind != ComposeStep::Kind::Blend || step.mode != kNormalMode || step.opacity != 1.0 ||
        layer.moved || layer.yrb)
        return false;
    const Columns columns = columnsOf(layer, destination, y);
    return columns.first == 0 && columns.end == destination.width &&
           allOpaque(layer.img->alpha + (y - layer.top) * layer.img->width - layer.left,
                     destination.width);
}

/// The last step that replaces a whole row, below which nothing shows; -1 if there is none.
int replacingStep(const std::vector<ComposeStep> &steps, const image &destination, int64_t y)
{
    for (int i = int(steps.size()) - 1; i >= 0; --i)
        if (replacesRow(steps[i], destination, y))
            return i;
    return -1;
}

void copyPiece(const PlacedLayer &layer, image *destination, const Piece &piece)
{
    const auto from = layer.img->colorPlanes();
    uint16_t *to[kChannels];
    aimUnder(destination, piece, to);
    const int64_t at = (piece.y - layer.top) * layer.img->width + piece.x - layer.left;
    for (int c = 0; c < kChannels; ++c)
        std::copy(from[c] + at, from[c] + at + piece.count, to[c]);
}

void clearPiece(image *destination, const Piece &piece)
{
    uint16_t *to[kChannels];
    aimUnder(destination, piece, to);
    for (uint16_t *plane : to)
        std::fill(plane, plane + piece.count, uint16_t(0));
}

/// Whether a median puts its samples in the place of everything in a piece: whichever of
/// its layers is the middle one is opaque there.
bool medianReplaces(const ComposeStep &step, const Piece &piece)
{
    return step.kind == ComposeStep::Kind::Median && step.opacity == 1.0 &&
           coversPlainly(step.layer, piece) &&
           std::all_of(step.sources.begin(), step.sources.end(), [&](const PlacedLayer &source) {
               const int64_t at =
                   (piece.y - source.top) * source.img->width + piece.x - source.left;
               return coversPlainly(source, piece) &&
                      allOpaque(source.img->alpha + at, piece.count);
           });
}

/// The first step after `base` that matters in a piece.
size_t firstStep(const std::vector<ComposeStep> &steps, int base, const Piece &piece)
{
    for (int i = int(steps.size()) - 1; i > base; --i)
        if (medianReplaces(steps[i], piece))
            return size_t(i);
    return size_t(base + 1);
}

/// Whether a step can write a whole piece without reading it, as if it held zeros.
bool fillsEmptyPiece(const ComposeStep &step, const Piece &piece)
{
    return step.kind == ComposeStep::Kind::Blend && step.blend.onEmpty &&
           coversPlainly(step.layer, piece);
}

/// Puts into a piece what its steps begin on; returns the first one that is left to do.
size_t beginPiece(const std::vector<ComposeStep> &steps, int base, image *destination,
                  const Piece &piece, bool clearFirst)
{
    if (base >= 0) {
        copyPiece(steps[base].layer, destination, piece);
    } else if (clearFirst && !steps.empty() && fillsEmptyPiece(steps[0], piece)) {
        blendPiece(steps[0], destination, piece, Under::Empty);
        return 1;
    } else if (clearFirst) {
        clearPiece(destination, piece);
    }
    return size_t(base + 1);
}

/// A row goes through all steps piece by piece: a piece stays in the nearest cache.
void runRow(const std::vector<ComposeStep> &steps, image *destination, int64_t y, bool clearFirst,
            MedianRoom *room)
{
    const int base = replacingStep(steps, *destination, y);
    const int width = destination->width;
    if (base >= 0 && base + 1 == int(steps.size())) {
        copyPiece(steps[base].layer, destination, {0, y, width});
        return;
    }
    for (int x = 0; x < width; x += kSpanPixels) {
        const Piece piece{x, y, std::min(kSpanPixels, width - x)};
        uint16_t *here[kChannels];
        aimUnder(destination, piece, here);
        fetchNextPiece<1>(here);
        size_t i = room ? firstStep(steps, base, piece) : size_t(base + 1);
        if (i == size_t(base + 1)) // or else nothing of what lies below is seen
            i = beginPiece(steps, base, destination, piece, clearFirst);
        if (room)
            room->sorted = 0;
        for (; i < steps.size(); ++i)
            runPiece(steps[i], destination, piece, room);
    }
}

size_t mostMedianSources(const std::vector<ComposeStep> &steps)
{
    size_t most = 0;
    for (const ComposeStep &step : steps)
        if (step.kind == ComposeStep::Kind::Median)
            most = std::max(most, step.sources.size());
    return most;
}
} // namespace

void runSteps(const std::vector<ComposeStep> &steps, image *destination, bool clearFirst)
{
    const size_t medianSources = mostMedianSources(steps);
    const int64_t work = int64_t(destination->width) * kChannels * int64_t(steps.size() + 1);
    parallelRows(destination->height, int(std::min<int64_t>(work, INT_MAX)),
                 [&](int firstRow, int endRow) {
                     std::unique_ptr<MedianRoom> room;
                     if (medianSources)
                         room = std::make_unique<MedianRoom>(medianSources);
                     for (int64_t y = firstRow; y < endRow; ++y)
                         runRow(steps, destination, y, clearFirst, room.get());
                 });
}

void warpRows(const PlacedLayer &field, const image &before, image *destination)
{
    const int64_t width = destination->width, height = destination->height;
    const auto from = before.colorPlanes();
    const auto to = destination->colorPlanes();
    parallelRows(destination->height, destination->width * kChannels, [&](int first, int end) {
        for (int64_t y = first; y < end; ++y) {
            const Columns columns = columnsOf(field, *destination, y);
            for (int64_t x = columns.first; x < columns.end; ++x) {
                const Displacement d =
                    displacementAt(*field.img, (y - field.top) * field.img->width + x - field.left);
                const double sx = double(x) + d.x, sy = double(y) + d.y;
                if (!(sx >= 0 && sx < double(width) && sy >= 0 && sy < double(height)))
                    continue;
                const int64_t ix = int64_t(sx), iy = int64_t(sy);
                const int64_t row = iy * width, nextRow = std::min(iy + 1, height - 1) * width;
                const int64_t next = std::min(ix + 1, width - 1);
                for (int c = 0; c < kChannels; ++c)
                    to[c][y * width + x] = uint16_t(int32_t(
                        bilinearMix(from[c][row + ix], from[c][row + next], from[c][nextRow + ix],
                                    from[c][nextRow + next], sx - double(ix), sy - double(iy))));
            }
        }
    });
}
