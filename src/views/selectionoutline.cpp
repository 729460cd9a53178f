// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/selectionoutline.h"

#include "core/image.h"
#include "core/rows.h"
#include "core/workspace.h"

#include <QColor>
#include <QEvent>
#include <QPainter>
#include <QTimerEvent>
#include <QWidget>

#include <algorithm>
#include <atomic>
#include <cstring>

namespace
{
constexpr int kLeastDash = 2, kUsualDash = 4, kMostDash = 20;
constexpr int kStepMs = 125;
constexpr int kTile = 32; ///< side of the squares that are drawn or left out as a whole
constexpr uint16_t kHalf = 32768;

/// What a pixel of the view is. Dashes that run along a diagonal would be of one colour
/// on an edge of that slant, so those edges get dashes of the other diagonal.
enum EdgeKind : uint8_t { kNoEdge, kEdge, kSlantingEdge };

/// What a row of the mask holds over the columns shown.
enum RowState : uint8_t { kNone, kSome, kAll };

uint32_t colourOr(const QString &text, uint32_t fallback)
{
    const QColor colour(text);
    return text.size() == 7 && text.startsWith(QLatin1Char('#')) && colour.isValid() ? colour.rgb()
                                                                                     : fallback;
}

/// Whether the selection is half or more anywhere.
bool reachesHalf(const image &img)
{
    std::atomic<bool> found{false};
    parallelRows(img.height, img.width, [&](int first, int end) {
        for (int y = first; y < end && !found.load(std::memory_order_relaxed); ++y) {
            const uint16_t *mask = img.gmask + int64_t(y) * img.width;
            uint16_t bits = 0;
            for (int x = 0; x < img.width; ++x)
                bits |= mask[x];
            if (bits & kHalf)
                found.store(true, std::memory_order_relaxed);
        }
    });
    return found;
}

/// For every pixel of a client area and of a margin around it: is it selected? Selections
/// are mostly of one piece, so rows that are all one are told apart first.
struct SelectedPixels {
    const image &img;
    int width, margin;
    const int32_t *columns, *rows; ///< entry 0 is the first pixel of the margin
    PixelRange inside;             ///< the columns that show the image
    uint8_t *states;               ///< a RowState for each row
    uint8_t *bytes;                ///< of rows in state kSome and kAll

    int stride() const { return width + 2 * margin; }
    uint8_t *line(int row) const { return bytes + int64_t(row) * stride(); }

    struct Found {
        bool any, selected;
    };

    /// Fills lines of the margin's count; from `threshold` on a sample counts as selected.
    Found fill(int first, int end, uint16_t threshold) const
    {
        Found found{};
        for (int y = first; y < end; ++y) {
            if (rows[y] < 0 || inside.first == inside.end)
                continue; // the zeroed buffers say it already
            const int from = columns[inside.first], to = columns[inside.end - 1] + 1;
            const uint16_t *mask = img.gmask + int64_t(rows[y]) * img.width;
            uint16_t bits = 0;
            states[y] = stateOf(mask + from, to - from, threshold, &bits);
            uint8_t *out = line(y);
            if (states[y] == kAll)
                std::fill(out + inside.first, out + inside.end, uint8_t(1));
            else if (states[y] == kSome)
                for (int x = inside.first; x < inside.end; ++x)
                    out[x] = mask[columns[x]] >= threshold;
            found.any |= bits != 0;
            found.selected |= states[y] != kNone;
        }
        return found;
    }

    static RowState stateOf(const uint16_t *mask, int count, uint16_t threshold, uint16_t *bits)
    {
        uint16_t any = 0, over = 0, under = 0;
        for (int i = 0; i < count; ++i) {
            any |= mask[i];
            over |= uint16_t(mask[i] >= threshold);
            under |= uint16_t(mask[i] < threshold);
        }
        *bits = any;
        return !over ? kNone : !under ? kAll : kSome;
    }

    /// Which pixels of client row `y` are selected and have a neighbour that is not.
    void findEdges(int y, uint8_t *out) const
    {
        const uint8_t *state = states + y;
        if (state[margin] == kNone)
            return; // zeroed too
        if (std::all_of(state, state + 2 * margin + 1, [](uint8_t s) { return s == kAll; })) {
            // only near its ends can the row have such a neighbour
            findEdges(y, std::max(inside.first - margin, 0), std::min(inside.first, width), out);
            findEdges(y, std::max(inside.end - 2 * margin, 0), std::min(inside.end - margin, width),
                      out);
        } else {
            findEdges(y, 0, width, out);
        }
    }

    void findEdges(int y, int first, int end, uint8_t *__restrict__ out) const
    {
        if (first >= end)
            return;
        const uint8_t *here = line(y + margin) + margin;
        std::memcpy(out + first, here + first, size_t(end - first));
        for (int i = 1; i <= margin; ++i) { // leaves the pixels further inside
            const uint8_t *above = here - i * stride(), *below = here + i * stride();
            for (int x = first; x < end; ++x)
                out[x] &= above[x] & below[x] & here[x - i] & here[x + i];
        }
        const uint8_t *above = here - stride(), *below = here + stride();
        for (int x = first; x < end; ++x) {
            const auto edge = uint8_t(here[x] & ~out[x]);
            const auto corner =
                uint8_t(((above[x] | here[x - 1]) ^ 1) | ((below[x] | here[x + 1]) ^ 1));
            out[x] = uint8_t(edge + (edge & corner & above[x + 1] & below[x - 1]));
        }
    }
};

int positiveRest(int64_t value, int period)
{
    const auto rest = int(value % period);
    return rest < 0 ? rest + period : rest;
}
} // namespace

DashLook dashLook(double devicePixelRatio)
{
    DashLook look;
    const QStringList colours = workspace()->aSelectColor.split(QLatin1Char(' '));
    if (colours.size() == 2) {
        const uint32_t first = colourOr(colours.first(), 0), second = colourOr(colours.last(), 0);
        if (first && second) {
            look.first = first;
            look.second = second;
        }
    }
    const int wanted = workspace()->dashLength;
    const int dash = wanted < kLeastDash ? kUsualDash : std::min(wanted, kMostDash);
    look.dash = std::max(1, qRound(dash * devicePixelRatio));
    look.line = std::max(1, int(devicePixelRatio));
    return look;
}

// --- The outline --------------------------------------------------------------------------

void SelectionOutline::clear()
{
    patches.clear();
    kinds.reset();
    picture = QImage();
    expanded = false;
}

bool SelectionOutline::trace(const image &img, const ViewGeometry &view, int lineWidth)
{
    ++traces;
    patches.clear();
    expanded = false;
    if (!view.usableFor(img) || !img.gmask || lineWidth < 1)
        return false;
    const size_t columns = size_t(view.width) + 2 * size_t(lineWidth);
    const size_t rows = size_t(view.height) + 2 * size_t(lineWidth);
    const int across = (view.width + kTile - 1) / kTile, down = (view.height + kTile - 1) / kTile;
    const TrackedBuffer<int32_t> tables(columns + rows, "outline tables");
    const TrackedBuffer<uint8_t> bytes(columns * rows + rows, "outline pixels");
    const TrackedBuffer<uint8_t> tiles(size_t(across) * size_t(down), "outline tiles");
    kinds = std::make_unique<TrackedBuffer<uint8_t>>(size_t(view.width) * size_t(view.height),
                                                     "outline edges");
    if (!tables || !bytes || !tiles || !*kinds)
        return false;
    view.columnSamples(img, -lineWidth, int(columns), tables.get());
    view.rowSamples(img, -lineWidth, int(rows), tables.get() + columns);
    const SelectedPixels pixels{img,
                                view.width,
                                lineWidth,
                                tables.get(),
                                tables.get() + columns,
                                samplesInside(tables.get(), int(columns)),
                                bytes.get(),
                                bytes.get() + rows};
    std::atomic<bool> any{false}, selected{false};
    const auto fill = [&](uint16_t threshold) {
        parallelRows(int(rows), int(columns), [&, threshold](int first, int end) {
            const SelectedPixels::Found found = pixels.fill(first, end, threshold);
            if (found.any)
                any = true;
            if (found.selected)
                selected = true;
        });
    };
    fill(kHalf);
    if (!selected && any && !reachesHalf(img))
        fill(1); // weak everywhere, but it has to be seen
    if (!selected)
        return false;
    parallelRows(down, kTile * view.width, [&](int first, int end) {
        for (int y = first * kTile; y < std::min(end * kTile, view.height); ++y) {
            uint8_t *out = kinds->get() + int64_t(y) * view.width;
            pixels.findEdges(y, out);
            for (int tile = 0; tile < across; ++tile) {
                const int from = tile * kTile, to = std::min(from + kTile, view.width);
                uint8_t edges = 0;
                for (int x = from; x < to; ++x)
                    edges |= out[x];
                tiles[size_t(y / kTile) * size_t(across) + size_t(tile)] |= edges;
            }
        }
    });
    if (picture.width() != view.width || picture.height() != view.height)
        picture = QImage(view.width, view.height, QImage::Format_ARGB32_Premultiplied);
    if (picture.isNull())
        return false;
    originX = view.originX();
    originY = view.originY();
    findPatches(tiles.get(), across, down);
    return seen();
}

/// Tiles side by side make one patch.
void SelectionOutline::findPatches(const uint8_t *tiles, int across, int down)
{
    for (int row = 0; row < down; ++row, tiles += across)
        for (int from = 0, to; from < across; from = to + 1) {
            for (to = from; to < across && tiles[to]; ++to) {
            }
            if (to > from)
                patches.push_back(QRect(from * kTile, row * kTile, (to - from) * kTile, kTile) &
                                  picture.rect());
        }
}

void SelectionOutline::expand(const DashLook &look)
{
    if (expanded && drawn == look)
        return;
    const int width = picture.width(), period = look.period();
    std::vector<uint32_t> dashes(size_t(width) + size_t(period));
    for (size_t i = 0; i < dashes.size(); ++i)
        dashes[i] = int(i) / look.dash & 1 ? look.second : look.first;
    auto *pixels = reinterpret_cast<uint32_t *>(picture.bits());
    parallelRows(int(patches.size()), kTile * kTile, [&](int first, int end) {
        for (int i = first; i < end; ++i)
            for (int y = patches[size_t(i)].top(); y <= patches[size_t(i)].bottom(); ++y) {
                const int64_t down = originY + y;
                const uint32_t *falling =
                    dashes.data() + positiveRest(originX + down - look.phase, period);
                const uint32_t *rising =
                    dashes.data() + positiveRest(originX - down - look.phase, period);
                const uint8_t *kind = kinds->get() + int64_t(y) * width;
                uint32_t *__restrict__ out = pixels + int64_t(y) * width;
                for (int x = patches[size_t(i)].left(); x <= patches[size_t(i)].right(); ++x) {
                    const uint32_t color = kind[x] == kEdge ? falling[x] : rising[x];
                    out[x] = kind[x] == kNoEdge ? 0U : color;
                }
            }
    });
    drawn = look;
    expanded = true;
}

void SelectionOutline::draw(QPainter *painter, const DashLook &look)
{
    if (!seen())
        return;
    expand(look);
    for (const QRect &patch : patches)
        painter->drawImage(patch.topLeft(), picture, patch);
}

// --- The march ------------------------------------------------------------------------------

OutlineMarch::OutlineMarch(QWidget *watched, std::function<bool()> allowed,
                           std::function<void()> moved)
    : mayMove(std::move(allowed)), step(std::move(moved))
{
    watched->installEventFilter(this);
}

void OutlineMarch::settle()
{
    if (!mayMove())
        timer.stop();
    else if (!timer.isActive())
        timer.start(kStepMs, this);
}

bool OutlineMarch::eventFilter(QObject *, QEvent *event)
{
    switch (event->type()) {
    case QEvent::ActivationChange:
    case QEvent::WindowStateChange:
    case QEvent::Show:
    case QEvent::Hide:
        settle();
        break;
    default:
        break;
    }
    return false;
}

void OutlineMarch::timerEvent(QTimerEvent *)
{
    settle();
    if (timer.isActive())
        step();
}
