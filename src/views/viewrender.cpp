// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/viewrender.h"

#include "core/image.h"
#include "core/memory.h"
#include "core/rows.h"
#include "views/render_kernels.h"

#include <algorithm>
#include <atomic>

namespace
{
constexpr int kOutside = -1;
constexpr int kLongestDash = 1 << 10;
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
void fillBackdrop(uint16_t *first, uint16_t *second, int width, const ViewBackdrop &backdrop)
{
    const auto dark = uint16_t(backdrop.dark * 257);
    const auto light = uint16_t((backdrop.checker ? backdrop.light : backdrop.dark) * 257);
    for (int x = 0; x < width; ++x) {
        const bool odd = (x / backdrop.cell) & 1;
        first[x] = odd ? light : dark;
        second[x] = odd ? dark : light;
    }
    if (!backdrop.checker)
        std::fill(second, second + width, dark);
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

bool renderView(const image &img, const ViewGeometry &view, const ViewBackdrop &backdrop,
                QImage *out)
{
    if (!usable(img, view) || backdrop.cell < 1)
        return false;
    if (out->width() != view.width || out->height() != view.height)
        *out = QImage(view.width, view.height, QImage::Format_RGB32);
    const TrackedBuffer<int32_t> tables(size_t(view.width) + size_t(view.height), "view tables");
    const TrackedBuffer<uint16_t> greys(size_t(view.width) * 2, "view backdrop");
    if (out->isNull() || !tables || !greys)
        return false;
    int32_t *columns = tables.get(), *rows = columns + view.width;
    fillTable(columns, 0, view.width, view.xStep, view.panX, img.width);
    fillTable(rows, 0, view.height, view.yStep, view.panY, img.height);
    fillBackdrop(greys.get(), greys.get() + view.width, view.width, backdrop);

    const Range inside = insideOf(columns, view.width);
    RenderJob job{};
    job.red = img.red, job.green = img.green, job.blue = img.blue, job.alpha = img.alpha;
    job.imageWidth = img.width;
    job.columns = columns, job.rows = rows;
    job.firstColumn = inside.first, job.endColumn = inside.end;
    job.outWidth = view.width;
    job.out = reinterpret_cast<uint32_t *>(out->bits());
    job.surround = backdrop.surround;
    job.backdrop[0] = greys.get(), job.backdrop[1] = greys.get() + view.width;
    job.cell = backdrop.cell;
    job.yrb = img.imageMode == 1;
    parallelRows(view.height, view.width,
                 [&job](int first, int last) { KERNEL_DISPATCH(renderRows, job, first, last); });
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
    fillTable(tables.get(), -1, int(columns), view.xStep, view.panX, img.width);
    fillTable(tables.get() + columns, -1, int(rows), view.yStep, view.panY, img.height);
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
