// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/viewrender.h"

#include "core/image.h"
#include "core/memory.h"
#include "core/rows.h"
#include "views/render_kernels.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <vector>

namespace
{
constexpr int kOutside = -1;
constexpr int kLongestDash = 1 << 10;
constexpr size_t kMostStrips = 64;
constexpr uint32_t kDashDark = 0xFF101010, kDashLight = 0xFFF4F4F4;

/// The image column (or row) of a client column, kOutside where there is none. The test
/// comes before the truncation, or half a sample left of the image would show its edge.
int32_t sampleOf(int pixel, double step, int pan, int size)
{
    const double place = pixel * step + pan;
    return place >= 0.0 && place < size ? int32_t(place) : kOutside;
}

void fillTable(int32_t *table, int first, int count, double step, int pan, int size)
{
    for (int i = 0; i < count; ++i)
        table[i] = sampleOf(first + i, step, pan, size);
}

/// One axis of a view.
struct Axis {
    double step;
    int pan, offset, pixels, size; ///< `size` of the image

    void fill(int32_t *table) const { fillTable(table, -offset, pixels, step, pan, size); }
    /// Place of the client's first pixel, counted from image position 0 in whole pixels.
    int64_t origin() const { return int64_t(std::floor(pan / step + 0.5)) - offset; }
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

struct Range {
    int first, end;
};

/// The entries of a table that are not kOutside; they are neighbours.
Range insideOf(const int32_t *table, int count)
{
    const auto inside = [](int32_t place) { return place >= 0; };
    const int32_t *first = std::find_if(table, table + count, inside);
    return {int(first - table), int(std::find_if_not(first, table + count, inside) - table)};
}

bool usable(const image &img, const ViewGeometry &view)
{
    return img.valid() && view.width > 0 && view.height > 0 && view.xStep > 0.0 && view.yStep > 0.0;
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
        const Range inside = insideOf(columnTable, view.width);
        job.red = img.red, job.green = img.green, job.blue = img.blue, job.alpha = img.alpha;
        job.imageWidth = img.width;
        job.columns = columnTable, job.rows = rowTable;
        job.firstColumn = inside.first, job.endColumn = inside.end;
        job.outWidth = view.width;
        job.out = reinterpret_cast<uint32_t *>(out->bits());
        job.surround = backdrop.surround;
        job.backdrop[0] = greys.get(), job.backdrop[1] = second;
        job.cell = backdrop.cell;
        job.rowPhase = checkerPhase(down, backdrop.cell);
        job.yrb = img.imageMode == 1;
    }

    bool ready() const { return job.out != nullptr; }
    const int32_t *columns() const { return job.columns; }
    const int32_t *rows() const { return job.rows; }

    void render(Range columnRange, Range rowRange)
    {
        job.left = columnRange.first, job.right = columnRange.end;
        const int from = rowRange.first;
        parallelRows(rowRange.end - from, job.right - job.left, [this, from](int first, int last) {
            KERNEL_DISPATCH(renderRows, job, from + first, from + last);
        });
    }

private:
    TrackedBuffer<int32_t> tables;
    TrackedBuffer<uint16_t> greys;
    RenderJob job;
};

/// The pixels of one axis that a move by `shift` cannot supply.
struct Strips {
    std::vector<Range> list;
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

/// What a row of the mask holds over the columns shown.
enum RowState : uint8_t { kNone, kSome, kAll };

RowState stateOf(const uint16_t *mask, int count)
{
    uint16_t any = 0, clear = 0;
    for (int i = 0; i < count; ++i) {
        any |= mask[i];
        clear |= uint16_t(mask[i] == 0);
    }
    return any == 0 ? kNone : clear == 0 ? kAll : kSome;
}

/// For every pixel of a client area and of a margin of one around it: is it selected?
/// Selections are mostly of one piece, so rows that are all one are told apart first.
struct SelectedPixels {
    const image &img;
    const ViewGeometry &view;
    const int32_t *columns, *rows; ///< entry 0 is the pixel before the client area
    Range inside;                  ///< the columns that show the image
    uint8_t *states;               ///< a RowState for each row
    uint8_t *bytes;                ///< of rows in state kSome and kAll

    int stride() const { return view.width + 2; }
    uint8_t *line(int y) const { return bytes + int64_t(y) * stride(); }

    /// Fills lines of the margin's count; true if anything is selected in them.
    bool fill(int first, int end) const
    {
        bool any = false;
        for (int y = first; y < end; ++y) {
            if (rows[y] < 0 || inside.first == inside.end)
                continue; // the zeroed buffers say it already
            const int from = columns[inside.first], to = columns[inside.end - 1] + 1;
            const uint16_t *mask = img.gmask + int64_t(rows[y]) * img.width;
            states[y] = stateOf(mask + from, to - from);
            uint8_t *out = line(y);
            if (states[y] == kAll)
                std::fill(out + inside.first, out + inside.end, uint8_t(1));
            else if (states[y] == kSome)
                for (int x = inside.first; x < inside.end; ++x)
                    out[x] = mask[columns[x]] != 0;
            any |= states[y] != kNone;
        }
        return any;
    }

    /// Draws where a selected pixel of client row `y` has a neighbour that is not.
    void draw(int y, const uint32_t *dashes, uint32_t *out) const
    {
        const bool flat = states[y] == kAll && states[y + 1] == kAll && states[y + 2] == kAll;
        if (states[y + 1] == kNone || flat)
            std::fill(out, out + view.width, 0U);
        if (states[y + 1] == kNone)
            return;
        if (flat) { // only the ends of the row can have such a neighbour
            drawPixels(y, std::max(inside.first - 1, 0), std::max(inside.first, 1), dashes, out);
            drawPixels(y, std::min(inside.end - 2, view.width - 1),
                       std::min(inside.end - 1, view.width), dashes, out);
        } else {
            drawPixels(y, 0, view.width, dashes, out);
        }
    }

    void drawPixels(int y, int first, int end, const uint32_t *dashes, uint32_t *out) const
    {
        const uint8_t *here = line(y + 1) + 1, *above = line(y) + 1, *below = line(y + 2) + 1;
        for (int x = first; x < end; ++x) {
            const int inner = above[x] & below[x] & here[x - 1] & here[x + 1];
            out[x] = here[x] & ~inner ? dashes[x] : 0U;
        }
    }
};

void fillDashes(uint32_t *dashes, int count, int dash)
{
    for (int i = 0; i < count; ++i)
        dashes[i] = i / dash & 1 ? kDashLight : kDashDark;
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

bool renderView(const image &img, const ViewGeometry &view, const ViewBackdrop &backdrop,
                QImage *out)
{
    if (!usable(img, view) || backdrop.cell < 1)
        return false;
    if (out->width() != view.width || out->height() != view.height)
        *out = QImage(view.width, view.height, QImage::Format_RGB32);
    Repaint repaint(img, view, backdrop, out);
    if (!repaint.ready())
        return false;
    repaint.render({0, view.width}, {0, view.height});
    return true;
}

bool scrollView(const image &img, const ViewGeometry &before, const ViewGeometry &view,
                const ViewBackdrop &backdrop, QImage *out)
{
    if (!usable(img, view) || backdrop.cell < 1 || out->width() != view.width ||
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
    for (const Range &strip : columns.list)
        repaint.render(strip, {0, view.height});
    for (const Range &strip : rows.list)
        repaint.render({0, view.width}, strip);
    return true;
}

bool maskOutline(const image &img, const ViewGeometry &view, int dash, QImage *out)
{
    if (!usable(img, view) || !img.gmask || dash < 1 || dash > kLongestDash)
        return false;
    const size_t columns = size_t(view.width) + 2, rows = size_t(view.height) + 2;
    const int period = 2 * dash;
    const TrackedBuffer<int32_t> tables(columns + rows, "outline tables");
    const TrackedBuffer<uint8_t> bytes(columns * rows + rows, "outline pixels");
    const TrackedBuffer<uint32_t> dashes(columns + size_t(period), "outline dashes");
    if (!tables || !bytes || !dashes)
        return false;
    fillTable(tables.get(), -1 - view.offsetX, int(columns), view.xStep, view.panX, img.width);
    fillTable(tables.get() + columns, -1 - view.offsetY, int(rows), view.yStep, view.panY,
              img.height);
    const SelectedPixels selected{img,
                                  view,
                                  tables.get(),
                                  tables.get() + columns,
                                  insideOf(tables.get(), int(columns)),
                                  bytes.get(),
                                  bytes.get() + rows};
    std::atomic<bool> any{false};
    parallelRows(int(rows), int(columns), [&](int first, int end) {
        if (selected.fill(first, end))
            any = true;
    });
    if (!any)
        return false;
    if (out->width() != view.width || out->height() != view.height)
        *out = QImage(view.width, view.height, QImage::Format_ARGB32_Premultiplied);
    if (out->isNull())
        return false;
    fillDashes(dashes.get(), int(columns) + period, dash);
    auto *pixels = reinterpret_cast<uint32_t *>(out->bits());
    parallelRows(view.height, view.width, [&](int first, int end) {
        for (int y = first; y < end; ++y)
            selected.draw(y, dashes.get() + y % period, pixels + int64_t(y) * view.width);
    });
    return true;
}
