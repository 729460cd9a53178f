// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/viewrender.h"

#include "core/image.h"
#include "core/memory.h"
#include "core/rows.h"
#include "views/render_kernels.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>

namespace
{
constexpr size_t kMostStrips = 64;

/// The image column (or row) of a client column, kNoSample where there is none. The test
/// comes before the truncation, or half a sample left of the image would show its edge.
int32_t sampleOf(int pixel, double step, int pan, int size)
{
    const double place = pixel * step + pan;
    return place >= 0.0 && place < size ? int32_t(place) : kNoSample;
}

int64_t pixelOrigin(int pan, double step, int offset)
{
    return int64_t(std::floor(pan / step + 0.5)) - offset;
}

/// One axis of a view.
struct Axis {
    double step;
    int pan, offset, pixels, size; ///< `size` of the image

    void fill(int32_t *table) const { fill(table, 0, pixels); }
    void fill(int32_t *table, int first, int count) const
    {
        for (int i = 0; i < count; ++i)
            table[i] = sampleOf(first + i - offset, step, pan, size);
    }
    int64_t origin() const { return pixelOrigin(pan, step, offset); }
};

Axis acrossOf(const image &img, const ViewGeometry &view)
{
    return {view.xStep, view.panX, view.offsetX, view.width, img.width};
}

Axis downOf(const image &img, const ViewGeometry &view)
{
    return {view.yStep, view.panY, view.offsetY, view.height, img.height};
}

/// Where in its period, which is twice a square, the checker begins.
int checkerPhase(const Axis &axis, int cell)
{
    const int64_t period = 2 * int64_t(cell), rest = axis.origin() % period;
    return int(rest < 0 ? rest + period : rest);
}

int pixelAt(double place, double step, int pan, int offset, int most)
{
    constexpr double slack = 1e-6; // a place on a pixel may come out a hair behind it
    const double pixel = std::ceil((place - pan) / step - slack) + offset;
    return int(std::clamp(pixel, -2.0, most + 2.0));
}

/// A row of 16-bit greys for each row phase of the checker.
void fillBackdrop(uint16_t *first, uint16_t *second, int width, int phase,
                  const ViewBackdrop &backdrop)
{
    const auto dark = uint16_t(backdrop.dark * 257);
    const auto light = uint16_t((backdrop.checker ? backdrop.light : backdrop.dark) * 257);
    for (int x = 0; x < width; ++x) {
        const bool odd = ((x + phase) / backdrop.cell) & 1;
        first[x] = odd ? light : dark;
        second[x] = odd ? dark : light;
    }
    if (!backdrop.checker)
        std::fill(second, second + width, dark);
}

/// The tables of one repaint, and the kernels run by them.
class Repaint
{
public:
    Repaint(const image &img, const ViewGeometry &view, const ViewBackdrop &backdrop, QImage *out)
        : tables(size_t(view.width) + size_t(view.height), "view tables"),
          greys(size_t(view.width) * 2, "view backdrop"), job{}
    {
        if (out->isNull() || !tables || !greys)
            return;
        const Axis across = acrossOf(img, view), down = downOf(img, view);
        int32_t *columnTable = tables.get(), *rowTable = columnTable + view.width;
        across.fill(columnTable);
        down.fill(rowTable);
        uint16_t *second = greys.get() + view.width;
        fillBackdrop(greys.get(), second, view.width, checkerPhase(across, backdrop.cell),
                     backdrop);
        const PixelRange inside = samplesInside(columnTable, view.width);
        usePlanes(img);
        job.columns = columnTable, job.rows = rowTable;
        job.firstColumn = inside.first, job.endColumn = inside.end;
        job.outWidth = view.width;
        job.out = reinterpret_cast<uint32_t *>(out->bits());
        job.surround = backdrop.surround;
        job.backdrop[0] = greys.get(), job.backdrop[1] = second;
        job.cell = backdrop.cell;
        job.rowPhase = checkerPhase(down, backdrop.cell);
    }

    /// The samples come from a picture that has only the shown ones.
    bool takeFrom(const image &part, const ViewGeometry &view)
    {
        int32_t *columnTable = tables.get(), *rowTable = columnTable + view.width;
        if (rank(columnTable, view.width) != part.width ||
            rank(rowTable, view.height) != part.height)
            return false;
        usePlanes(part);
        return true;
    }

    bool ready() const { return job.out != nullptr; }
    const int32_t *columns() const { return job.columns; }
    const int32_t *rows() const { return job.rows; }

    void render(PixelRange columnRange, PixelRange rowRange)
    {
        job.left = columnRange.first, job.right = columnRange.end;
        const int from = rowRange.first;
        parallelRows(rowRange.end - from, job.right - job.left, [this, from](int first, int last) {
            KERNEL_DISPATCH(renderRows, job, from + first, from + last);
        });
    }

private:
    void usePlanes(const image &img)
    {
        job.red = img.red, job.green = img.green, job.blue = img.blue, job.alpha = img.alpha;
        job.imageWidth = img.width;
        job.yrb = img.imageMode == 1;
    }
    /// Replaces the samples of a table by their places among those that it names, and returns
    /// how many there are.
    static int rank(int32_t *table, int count)
    {
        int found = 0;
        int32_t last = kNoSample;
        for (int i = 0; i < count; ++i) {
            if (table[i] == kNoSample)
                continue;
            if (table[i] != last)
                ++found;
            last = table[i];
            table[i] = found - 1;
        }
        return found;
    }

    TrackedBuffer<int32_t> tables;
    TrackedBuffer<uint16_t> greys;
    RenderJob job;
};

/// The pixels of one axis that a move by `shift` cannot supply.
struct Strips {
    std::vector<PixelRange> list;
    int64_t pixels = 0;

    Strips(const int32_t *now, const int32_t *before, int count, int64_t shift)
    {
        for (int i = 0; i < count && !tooMany(); ++i) {
            const int64_t from = i + shift;
            if (from >= 0 && from < count && before[from] == now[i])
                continue;
            if (list.empty() || list.back().end != i)
                list.push_back({i, i});
            ++list.back().end;
            ++pixels;
        }
    }
    /// Many thin strips cost more than one wide one.
    bool tooMany() const { return list.size() > kMostStrips; }
};

/// Every pixel gets what stood `dx` to its right and `dy` below it, where there was such.
void movePixels(QImage *out, int dx, int dy)
{
    const int width = out->width(), height = out->height();
    auto *pixels = reinterpret_cast<uint32_t *>(out->bits());
    const int to = std::max(-dx, 0), from = std::max(dx, 0), kept = width - to - from;
    const int first = std::max(-dy, 0), end = std::min(height, height - dy);
    if (kept <= 0)
        return;
    const auto moveRow = [=](int y) {
        std::memmove(pixels + int64_t(y) * width + to, pixels + int64_t(y + dy) * width + from,
                     size_t(kept) * sizeof(uint32_t));
    };
    if (dy >= 0) // downwards or upwards, so that no row is overwritten before it was moved
        for (int y = first; y < end; ++y)
            moveRow(y);
    else
        for (int y = end - 1; y >= first; --y)
            moveRow(y);
}

/// Only the samples of `part` are used if there is one.
bool renderAll(const image &img, const image *part, const ViewGeometry &view,
               const ViewBackdrop &backdrop, QImage *out)
{
    if (!view.usableFor(img) || backdrop.cell < 1)
        return false;
    if (out->width() != view.width || out->height() != view.height)
        *out = QImage(view.width, view.height, QImage::Format_RGB32);
    Repaint repaint(img, view, backdrop, out);
    if (!repaint.ready() || (part && !repaint.takeFrom(*part, view)))
        return false;
    repaint.render({0, view.width}, {0, view.height});
    return true;
}
} // namespace

int ViewGeometry::columnAt(double x) const
{
    return pixelAt(x, xStep, panX, offsetX, width);
}

int ViewGeometry::rowAt(double y) const
{
    return pixelAt(y, yStep, panY, offsetY, height);
}

bool ViewGeometry::usableFor(const image &img) const
{
    return img.valid() && width > 0 && height > 0 && xStep > 0.0 && yStep > 0.0;
}

void ViewGeometry::columnSamples(const image &img, int first, int count, int32_t *table) const
{
    acrossOf(img, *this).fill(table, first, count);
}

void ViewGeometry::rowSamples(const image &img, int first, int count, int32_t *table) const
{
    downOf(img, *this).fill(table, first, count);
}

int64_t ViewGeometry::originX() const
{
    return pixelOrigin(panX, xStep, offsetX);
}

int64_t ViewGeometry::originY() const
{
    return pixelOrigin(panY, yStep, offsetY);
}

PixelRange samplesInside(const int32_t *table, int count)
{
    const auto inside = [](int32_t place) { return place >= 0; };
    const int32_t *first = std::find_if(table, table + count, inside);
    return {int(first - table), int(std::find_if_not(first, table + count, inside) - table)};
}

bool renderView(const image &img, const ViewGeometry &view, const ViewBackdrop &backdrop,
                QImage *out)
{
    return renderAll(img, nullptr, view, backdrop, out);
}

bool renderShown(const image &img, const image &part, const ViewGeometry &view,
                 const ViewBackdrop &backdrop, QImage *out)
{
    return renderAll(img, &part, view, backdrop, out);
}

ShownSamples::ShownSamples(const image &img, const ViewGeometry &view)
{
    const auto collect = [](const std::vector<int32_t> &table, std::vector<int32_t> *out) {
        std::copy_if(table.begin(), table.end(), std::back_inserter(*out),
                     [](int32_t sample) { return sample != kNoSample; });
        out->erase(std::unique(out->begin(), out->end()), out->end());
    };
    if (!view.usableFor(img))
        return;
    std::vector<int32_t> across(size_t(view.width)), down(size_t(view.height));
    view.columnSamples(img, 0, view.width, across.data());
    view.rowSamples(img, 0, view.height, down.data());
    collect(across, &columns);
    collect(down, &rows);
}

bool scrollView(const image &img, const ViewGeometry &before, const ViewGeometry &view,
                const ViewBackdrop &backdrop, QImage *out)
{
    if (!view.usableFor(img) || backdrop.cell < 1 || out->width() != view.width ||
        out->height() != view.height || before.width != view.width ||
        before.height != view.height || before.xStep != view.xStep || before.yStep != view.yStep)
        return false;
    const Axis across = acrossOf(img, view), down = downOf(img, view);
    const Axis acrossBefore = acrossOf(img, before), downBefore = downOf(img, before);
    const int64_t dx = across.origin() - acrossBefore.origin();
    const int64_t dy = down.origin() - downBefore.origin();
    const TrackedBuffer<int32_t> old(size_t(view.width) + size_t(view.height), "view tables");
    Repaint repaint(img, view, backdrop, out);
    if (!old || !repaint.ready())
        return false;
    acrossBefore.fill(old.get());
    downBefore.fill(old.get() + view.width);
    const Strips columns(repaint.columns(), old.get(), view.width, dx);
    const Strips rows(repaint.rows(), old.get() + view.width, view.height, dy);
    const int64_t all = int64_t(view.width) * view.height;
    if (columns.tooMany() || rows.tooMany() ||
        2 * (columns.pixels * view.height + rows.pixels * view.width) > all)
        return false;
    movePixels(out, int(dx), int(dy));
    for (const PixelRange &strip : columns.list)
        repaint.render(strip, {0, view.height});
    for (const PixelRange &strip : rows.list)
        repaint.render({0, view.width}, strip);
    return true;
}
