// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/gif.h"

#include "core/image.h"
#include "core/workspace.h"
#include "formats/gif_palette.h"
#include "formats/writers.h"

#include <QCoreApplication>
#include <QSaveFile>

#include <gif_lib.h>

#include <algorithm>
#include <array>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace
{
constexpr int kMaxWord = 65535;
constexpr uint16_t kOpaqueFrom = 32768;
constexpr int kByteBits = 8;
constexpr int kRowsAStep = 64; // between looks at whether the person wants to stop
constexpr size_t kControlBytes = 4;

QString say(const char *text)
{
    return QCoreApplication::translate("formats", text);
}

QString faultOf(int count, const GifAnimation &animation)
{
    if (count < 1)
        return say("An animation needs a frame.");
    const auto isWord = [](int value) { return value >= 0 && value <= kMaxWord; };
    if (!isWord(animation.delay) || !isWord(animation.repeats) ||
        !std::all_of(animation.delays.begin(), animation.delays.end(), isWord))
        return say("Delay and repeats of an animation go from 0 to 65535.");
    if (animation.colors < 2 || animation.colors > 256)
        return say("A GIF has 2 to 256 colors.");
    return {};
}

bool hasTransparency(const image &frame)
{
    return std::any_of(frame.alpha, frame.alpha + frame.sampleCount(),
                       [](uint16_t alpha) { return alpha < kOpaqueFrom; });
}

/// Told after each row; false to stop.
using NextRow = std::function<bool()>;

/// Tells how far the work is, and whether to go on. Ends the telling when it goes.
class Telling
{
public:
    ~Telling()
    {
        if (Workspace *space = workspace())
            space->progress({}, 0, 0);
    }
    Telling() = default;
    Telling(const Telling &) = delete;
    Telling &operator=(const Telling &) = delete;

    bool nextRow()
    {
        if (++done % kRowsAStep != 0 || !workspace())
            return true;
        workspace()->progress(say("Writing GIF"), done, total);
        return !workspace()->cancelRequested();
    }

    int64_t total = 0; ///< rows, each of them twice

private:
    int64_t done = 0;
};

/// A frame's palette and how its rows become indices.
struct Reduction {
    std::vector<PaletteColor> palette; ///< without the transparent entry
    bool exact = false;
};

uint32_t colorAt(const image &frame, int64_t at)
{
    return uint32_t(frame.red[at] >> kByteBits << 16 | frame.green[at] >> kByteBits << 8 |
                    frame.blue[at] >> kByteBits);
}

/// Counts the opaque samples of one row; runs of one colour cost one search.
void countRow(const image &frame, int y, ColorHistogram *histogram)
{
    uint32_t color = 0;
    uint64_t run = 0;
    const int64_t start = int64_t(y) * frame.width, end = start + frame.width;
    for (int64_t i = start; i < end; ++i) {
        if (frame.alpha[i] < kOpaqueFrom)
            continue;
        const uint32_t here = colorAt(frame, i);
        if (here != color && run != 0) {
            histogram->add(color, run);
            run = 0;
        }
        color = here;
        ++run;
    }
    if (run != 0)
        histogram->add(color, run);
}

/// At most `most` colours, and one less where some are lost anyway if an entry is to be
/// `spared`. False if the person wants to stop.
bool reduceFrame(const image &frame, int most, bool spared, const NextRow &nextRow,
                 Reduction *reduction)
{
    ColorHistogram histogram;
    for (int y = 0; y < frame.height; ++y) {
        countRow(frame, y, &histogram);
        if (!nextRow())
            return false;
    }
    reduction->exact = histogram.exact() && histogram.size() <= size_t(most);
    reduction->palette = reduceColors(histogram, reduction->exact ? most : most - spared);
    return true;
}

/// Turns the rows of a frame, from the first to the last, into palette indices. With
/// diffusion, rows go in turns from left to right and back, which leaves fewer worms.
class RowMapper
{
public:
    RowMapper(const image &picture, const Reduction &reduction, bool diffuse)
        : frame(picture), nearest(reduction.palette), transparent(int(reduction.palette.size())),
          dither(diffuse && !reduction.exact)
    {
        if (dither)
            for (auto *row : {&errors, &below})
                row->resize(size_t(frame.width) + 2);
    }

    void map(int y, GifPixelType *out)
    {
        const bool back = dither && y % 2 != 0;
        const int64_t start = int64_t(y) * frame.width;
        for (int i = 0; i < frame.width; ++i) {
            const int x = back ? frame.width - 1 - i : i;
            const int64_t at = start + x;
            out[x] = GifPixelType(frame.alpha[at] < kOpaqueFrom ? transparent
                                  : dither ? diffused(colorAt(frame, at), x, back ? -1 : 1)
                                           : plain(colorAt(frame, at)));
        }
        errors.swap(below);
        std::fill(below.begin(), below.end(), Error{});
    }

private:
    using Error = std::array<int, 3>; ///< in sixteenths

    int plain(uint32_t rgb)
    {
        return nearest.find(int(rgb >> 16), int(rgb >> 8 & 0xFF), int(rgb & 0xFF));
    }

    int diffused(uint32_t rgb, int x, int step)
    {
        const size_t here = size_t(x) + 1; // a spare entry at either side
        const size_t ahead = here + size_t(step), behind = here - size_t(step);
        Error wanted = {int(rgb >> 16), int(rgb >> 8 & 0xFF), int(rgb & 0xFF)};
        for (size_t c = 0; c < 3; ++c)
            wanted[c] = std::clamp(wanted[c] + ((errors[here][c] + 8) >> 4), 0, 255);
        const int index = nearest.find(wanted[0], wanted[1], wanted[2]);
        const PaletteColor &got = nearest.palette()[size_t(index)];
        const Error left = {wanted[0] - got.red, wanted[1] - got.green, wanted[2] - got.blue};
        for (size_t c = 0; c < 3; ++c) {
            errors[ahead][c] += 7 * left[c];
            below[behind][c] += 3 * left[c];
            below[here][c] += 5 * left[c];
            below[ahead][c] += left[c];
        }
        return index;
    }

    const image &frame;
    NearestColor nearest;
    int transparent;
    bool dither;
    std::vector<Error> errors, below;
};

struct CloseGif {
    void operator()(GifFileType *gif) const { EGifCloseFile(gif, nullptr); }
};
struct FreeMap {
    void operator()(ColorMapObject *map) const { GifFreeMapObject(map); }
};
using ColorMap = std::unique_ptr<ColorMapObject, FreeMap>;

/// The palette filled up to a power of two, as the form has it; `entries` counts the
/// transparent one too. Null if memory is short.
ColorMap mapOf(const std::vector<PaletteColor> &palette, int entries)
{
    ColorMap map(GifMakeMapObject(1 << GifBitSize(entries), nullptr));
    if (map)
        for (size_t i = 0; i < size_t(map->ColorCount); ++i)
            map->Colors[i] = i < palette.size()
                                 ? GifColorType{palette[i].red, palette[i].green, palette[i].blue}
                                 : GifColorType{0, 0, 0};
    return map;
}

/// Writes one file. Each step returns false with `fault` set where it can be told.
class GifWriter
{
public:
    GifWriter(int frames, const GifFrameSource &from, const GifAnimation &how, QIODevice *device)
        : count(frames), source(from), animation(how), file(device)
    {
    }

    bool writeAll()
    {
        // A frame's clearing depends on the one that follows, so that is made ahead.
        Frame now = makeFrame(0), next;
        firstHasHoles = now.holes;
        gif.reset(EGifOpen(this, &GifWriter::put, nullptr));
        bool going = gif && now.picture;
        for (int i = 0; going && i < count; ++i, now = std::move(next)) {
            next = i + 1 < count ? makeFrame(i + 1) : Frame();
            going = (next.picture || i + 1 == count) && writeFrame(i, now, next.holes);
        }
        gif.reset(); // writes the last byte
        if (going && !broken)
            return true;
        if (fault.isEmpty() && !broken)
            fault = say("There is not enough memory.");
        return false;
    }

    QString fault; ///< empty if the file itself knows

private:
    struct Frame {
        std::shared_ptr<const image> picture;
        bool holes = false;
    };

    static int put(GifFileType *to, const GifByteType *bytes, int count)
    {
        auto *self = static_cast<GifWriter *>(to->UserData);
        const auto *from = reinterpret_cast<const char *>(bytes);
        self->broken = self->broken || self->file->write(from, count) != count;
        return self->broken ? 0 : count;
    }

    bool animated() const { return count > 1; }
    /// The number by which the source and the delays know what plays in this place.
    int numberOf(int place) const { return animation.reversed ? count - 1 - place : place; }

    /// Null, with the fault, for a frame that cannot be.
    Frame makeFrame(int place)
    {
        Frame frame;
        frame.picture = source(numberOf(place));
        if (!frame.picture)
            return {};
        const image &picture = *frame.picture;
        if (!picture.valid()) {
            fault = say("A frame is no picture.");
            return {};
        }
        if (size.isEmpty())
            size = {picture.width, picture.height};
        if (QSize(picture.width, picture.height) != size) {
            fault = say("The frames of an animation must have one size.");
            return {};
        }
        telling.total = int64_t(2) * count * picture.height;
        frame.holes = hasTransparency(picture);
        return frame;
    }

    bool writeFrame(int place, const Frame &frame, bool nextHoles)
    {
        const image &picture = *frame.picture;
        // Whether the frame is to be cleared away after it: only where the next one would
        // let it show through, because some viewers flicker when they clear.
        const bool cleared = animated() && (place + 1 < count ? nextHoles : firstHasHoles);
        // Some viewers clear to a colour, unless the frame has a transparent entry.
        const bool holes = frame.holes || cleared;
        // Some take from the first frame whether any has holes: it names a transparent entry
        // that it does not use, where there is room for one.
        const bool first = place == 0, spared = first && animated() && !holes;
        const NextRow nextRow = [this]() { return telling.nextRow(); };
        Reduction reduction;
        if (!reduceFrame(picture, animation.colors - holes, spared, nextRow, &reduction))
            return cancelled();
        const int last = int(reduction.palette.size());
        const bool named = holes || (spared && last < animation.colors);
        // The first palette stands in the file's head, where the simplest readers look.
        const ColorMap map = mapOf(reduction.palette, last + named);
        return map && (!first || writeHead(*map, named)) &&
               (!(animated() || named) || writeControl(animation.delayOf(numberOf(place)), cleared,
                                                       named ? last : NO_TRANSPARENT_COLOR)) &&
               EGifPutImageDesc(gif.get(), 0, 0, picture.width, picture.height, false,
                                first ? nullptr : map.get()) == GIF_OK &&
               writeRows(picture, reduction);
    }

    bool writeHead(const ColorMapObject &map, bool holes)
    {
        EGifSetGifVersion(gif.get(), animated() || holes);
        return EGifPutScreenDesc(gif.get(), size.width(), size.height(), kByteBits, 0, &map) ==
                   GIF_OK &&
               (!animated() || writeLoop());
    }

    bool writeLoop()
    {
        const std::array<GifByteType, 3> times = {1, GifByteType(animation.repeats & 0xFF),
                                                  GifByteType(animation.repeats >> kByteBits)};
        return EGifPutExtensionLeader(gif.get(), APPLICATION_EXT_FUNC_CODE) == GIF_OK &&
               EGifPutExtensionBlock(gif.get(), 11, "NETSCAPE2.0") == GIF_OK &&
               EGifPutExtensionBlock(gif.get(), int(times.size()), times.data()) == GIF_OK &&
               EGifPutExtensionTrailer(gif.get()) == GIF_OK;
    }

    bool writeControl(int delay, bool clear, int transparent)
    {
        GraphicsControlBlock block = {};
        block.DisposalMode = clear ? DISPOSE_BACKGROUND : DISPOSE_DO_NOT;
        block.DelayTime = animated() ? delay : 0;
        block.TransparentColor = transparent;
        std::array<GifByteType, kControlBytes> bytes = {};
        EGifGCBToExtension(&block, bytes.data());
        return EGifPutExtension(gif.get(), GRAPHICS_EXT_FUNC_CODE, int(bytes.size()),
                                bytes.data()) == GIF_OK;
    }

    bool writeRows(const image &picture, const Reduction &reduction)
    {
        RowMapper mapper(picture, reduction, animation.dither);
        std::vector<GifPixelType> row(size_t(picture.width));
        for (int y = 0; y < picture.height; ++y) {
            mapper.map(y, row.data());
            if (EGifPutLine(gif.get(), row.data(), picture.width) != GIF_OK)
                return false;
            if (!telling.nextRow())
                return cancelled();
        }
        return true;
    }

    bool cancelled()
    {
        fault = QLatin1String(kSaveCancelled);
        return false;
    }

    int count;
    const GifFrameSource &source;
    const GifAnimation &animation;
    QIODevice *file;
    QSize size;
    Telling telling;
    bool firstHasHoles = false;
    bool broken = false; ///< the file did not take what was written
    std::unique_ptr<GifFileType, CloseGif> gif;
};

/// Counts the bytes that a row's indices take, and shows them in their colours.
class PreviewWriter
{
public:
    PreviewWriter(const image &picture, const Reduction &how, bool withHoles)
        : frame(picture), reduction(how), holes(withHoles)
    {
        for (const PaletteColor &color : how.palette)
            colors.push_back(qRgb(color.red, color.green, color.blue));
        colors.resize(size_t(kPaletteEntries)); // the transparent entry and what is not used
    }

    bool write(bool dither, const NextRow &nextRow, GifPreview *preview)
    {
        preview->picture = QImage(frame.width, frame.height, QImage::Format_ARGB32);
        const ColorMap map = mapOf(reduction.palette, int(reduction.palette.size()) + holes);
        const std::unique_ptr<GifFileType, CloseGif> gif(EGifOpen(this, &count, nullptr));
        if (preview->picture.isNull() || !map || !gif ||
            EGifPutScreenDesc(gif.get(), frame.width, frame.height, kByteBits, 0, map.get()) !=
                GIF_OK ||
            EGifPutImageDesc(gif.get(), 0, 0, frame.width, frame.height, false, nullptr) != GIF_OK)
            return false;
        RowMapper mapper(frame, reduction, dither);
        std::vector<GifPixelType> row(size_t(frame.width));
        for (int y = 0; y < frame.height; ++y) {
            mapper.map(y, row.data());
            auto *out = reinterpret_cast<QRgb *>(preview->picture.scanLine(y));
            for (size_t x = 0; x < row.size(); ++x)
                out[x] = colors[row[x]];
            if (EGifPutLine(gif.get(), row.data(), frame.width) != GIF_OK || !nextRow())
                return false;
        }
        preview->bytes = bytes;
        return true;
    }

private:
    static constexpr int kPaletteEntries = 256;

    static int count(GifFileType *to, const GifByteType *, int count)
    {
        static_cast<PreviewWriter *>(to->UserData)->bytes += count;
        return count;
    }

    const image &frame;
    const Reduction &reduction;
    bool holes;
    int64_t bytes = 0;
    std::vector<QRgb> colors;
};
} // namespace

bool writeGif(int count, const GifFrameSource &source, const GifAnimation &animation,
              const QString &path, QString *error)
{
    *error = faultOf(count, animation);
    if (!error->isEmpty())
        return false;
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly)) {
        GifWriter writer(count, source, animation, &file);
        if (writer.writeAll() && commitWhole(file))
            return true;
        *error = writer.fault;
    }
    if (error->isEmpty())
        *error = file.errorString();
    return false;
}

bool writeGif(const QList<const image *> &frames, const GifAnimation &animation,
              const QString &path, QString *error)
{
    if (frames.contains(nullptr)) {
        *error = say("A frame is no picture.");
        return false;
    }
    const auto source = [&frames](int number) { // borrowed, not owned
        return std::shared_ptr<const image>(std::shared_ptr<const image>(), frames.at(number));
    };
    return writeGif(frames.size(), source, animation, path, error);
}

GifPreview previewGifFrame(const image &frame, const GifAnimation &animation, bool animated,
                           const std::atomic<bool> &stop)
{
    const NextRow nextRow = [&stop]() { return !stop; };
    const bool holes = hasTransparency(frame);
    GifPreview preview;
    Reduction reduction;
    if (!faultOf(1, animation).isEmpty() ||
        !reduceFrame(frame, animation.colors - holes, false, nextRow, &reduction) ||
        !PreviewWriter(frame, reduction, holes).write(animation.dither, nextRow, &preview))
        return {};
    if (animated)
        preview.bytes += kControlBytes;
    return preview;
}
