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

/// Tells for every place of a client area, and one pixel around it, what is selected.
struct MaskView {
    const uint16_t *mask;
    int imageWidth;
    const int32_t *columns, *rows; ///< entry 0 is the pixel before the client area

    const uint16_t *line(int y) const
    {
        return rows[y + 1] < 0 ? nullptr : mask + int64_t(rows[y + 1]) * imageWidth;
    }
    bool selected(const uint16_t *line, int x) const
    {
        return line && columns[x + 1] >= 0 && line[columns[x + 1]] != 0;
    }
};

bool outlineRow(const MaskView &view, int y, int width, int dash, uint32_t *out)
{
    const uint16_t *above = view.line(y - 1), *line = view.line(y), *below = view.line(y + 1);
    if (!line)
        return false;
    bool any = false, left = view.selected(line, -1), here = view.selected(line, 0);
    for (int x = 0; x < width; ++x) {
        const bool right = view.selected(line, x + 1);
        if (here && !(left && right && view.selected(above, x) && view.selected(below, x))) {
            out[x] = (x + y) / dash & 1 ? kDashLight : kDashDark;
            any = true;
        }
        left = here;
        here = right;
    }
    return any;
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

    const auto inside = [](int32_t column) { return column >= 0; };
    const int32_t *end = columns + view.width;
    const int32_t *firstIn = std::find_if(columns, rows, inside);
    const int32_t *endIn = std::find_if_not(firstIn, end, inside);
    RenderJob job{};
    job.red = img.red, job.green = img.green, job.blue = img.blue, job.alpha = img.alpha;
    job.imageWidth = img.width;
    job.columns = columns, job.rows = rows;
    job.firstColumn = int(firstIn - columns), job.endColumn = int(endIn - columns);
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

QImage maskOutline(const image &img, const ViewGeometry &view, int dash)
{
    if (!usable(img, view) || !img.gmask || dash < 1)
        return {};
    const size_t columns = size_t(view.width) + 2, rows = size_t(view.height) + 2;
    const TrackedBuffer<int32_t> tables(columns + rows, "outline tables");
    QImage outline(view.width, view.height, QImage::Format_ARGB32_Premultiplied);
    if (!tables || outline.isNull())
        return {};
    fillTable(tables.get(), -1, int(columns), view.xStep, view.panX, img.width);
    fillTable(tables.get() + columns, -1, int(rows), view.yStep, view.panY, img.height);
    const MaskView mask{img.gmask, img.width, tables.get(), tables.get() + columns};
    auto *pixels = reinterpret_cast<uint32_t *>(outline.bits());
    std::atomic<bool> any{false};
    parallelRows(view.height, view.width, [&](int first, int end) {
        for (int y = first; y < end; ++y) {
            uint32_t *line = pixels + int64_t(y) * view.width;
            std::fill(line, line + view.width, 0U);
            if (outlineRow(mask, y, view.width, dash, line))
                any = true;
        }
    });
    return any ? outline : QImage();
}
