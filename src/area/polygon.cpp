// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/polygon.h"

#include "area/areatools.h"
#include "area/figurespans.h"
#include "core/floodfill.h"
#include "core/image.h"
#include "core/linesteps.h"
#include "core/rows.h"
#include "core/workspace.h"

#include <QDebug>

#include <algorithm>
#include <optional>

namespace
{
constexpr uint16_t kLine = 65535;
constexpr uint16_t kFlooded = 32768;
/// Rows and columns of zeros around a figure, so that all around it is one region.
constexpr int kMargin = 5;
/// 256 MiB for the scratch mask and twice as much for its flood.
constexpr int64_t kMostScratchWords = 1 << 27;

/// How the status line calls a figure of a tool.
QString kindOfTool(int tool)
{
    switch (tool) {
    case kToolRectangle:
        return QStringLiteral("Rectangular");
    case kToolNumericRectangle:
        return QStringLiteral("X-Y Rectangle");
    case kToolEllipse:
        return QStringLiteral("Elliptical");
    case kToolEntire:
        return QStringLiteral("Entire Image");
    case kToolPencil:
        return QStringLiteral("Penciled");
    case kToolWand:
        return QStringLiteral("Wand Region");
    case kToolPolyspline:
        return QStringLiteral("Splined");
    default: // a script draws figures whatever the tool
        return QStringLiteral("Polygonal");
    }
}

/// Entries of a figure that are drawn.
int drawnCount(int count)
{
    return workspace()->openFigure ? count - 1 : count;
}

void floodOutside(const MaskPlane &target, FloodStack *stack)
{
    const int right = target.width - 1, bottom = target.height - 1;
    const AreaPoint corners[] = {{0, 0}, {0, bottom}, {right, 0}, {right, bottom}};
    uint16_t *const end = target.words + int64_t(target.width) * target.height;
    for (const AreaPoint &corner : corners) {
        if (target.words[int64_t(corner.y) * target.width + corner.x] != 0)
            continue;
        floodFill(target.words, target.width, target.height, corner.x, corner.y, kLine, kFlooded,
                  stack);
        std::transform(target.words, end, target.words,
                       [](uint16_t word) { return word == kFlooded ? uint16_t(0) : kLine; });
        return;
    }
}

/// The two ways into a selection: as all of it, or as the larger of both.
void writeSpans(image *img, const FigureSpans &figure, bool clear)
{
    parallelRows(img->height, img->width, [&, clear](int first, int end) {
        for (int y = first; y < end; ++y) {
            uint16_t *row = img->gmask + int64_t(y) * img->width;
            if (clear)
                std::fill_n(row, img->width, uint16_t(0));
            for (const Span &span : figure.row(y)) {
                const int from = std::max(span.first, 0);
                const int to = std::min(span.last, img->width - 1);
                if (from <= to)
                    std::fill(row + from, row + to + 1, kLine);
            }
        }
    });
}

/// The same from a plane whose first word is the sample (left, top).
void writePlane(image *img, const MaskPlane &plane, int64_t left, int64_t top, bool clear)
{
    if (clear)
        img->fillGmask(0);
    const int64_t fromX = std::max<int64_t>(left, 0);
    const int64_t endX = std::min<int64_t>(left + plane.width, img->width);
    const int64_t endY = std::min<int64_t>(top + plane.height, img->height);
    for (int64_t y = std::max<int64_t>(top, 0); y < endY; ++y) {
        const uint16_t *from = plane.words + (y - top) * plane.width;
        uint16_t *to = img->gmask + y * img->width;
        for (int64_t x = fromX; x < endX; ++x)
            to[x] = std::max(to[x], from[x - left]);
    }
}

bool drawSpans(image *img, const AreaPoint *pts, int count, bool clear)
{
    FigureSpans figure;
    if (!figure.build(pts, drawnCount(count), workspace()->filledFigure))
        return false;
    writeSpans(img, figure, clear);
    return true;
}

/// The literal way: for figures whose lines cross more rows than the spans have room for,
/// which a plane of the figure's size takes with less.
bool drawInScratch(image *img, const AreaPoint *pts, int count, bool clear)
{
    const auto [minX, maxX] = std::minmax_element(
        pts, pts + count, [](const AreaPoint &a, const AreaPoint &b) { return a.x < b.x; });
    const auto [minY, maxY] = std::minmax_element(
        pts, pts + count, [](const AreaPoint &a, const AreaPoint &b) { return a.y < b.y; });
    const int64_t left = int64_t(minX->x) - kMargin, top = int64_t(minY->y) - kMargin;
    const int64_t width = maxX->x - left + kMargin + 1, height = maxY->y - top + kMargin + 1;
    if (width > kMostScratchWords / height)
        return false;
    TrackedBuffer<uint16_t> words(size_t(width * height), "tmp mask");
    TrackedBuffer<AreaPoint> moved(size_t(count) + 10, "temp poly-select-qpoint list");
    if (!words || !moved)
        return false;
    std::transform(pts, pts + count, moved.get(), [left, top](const AreaPoint &at) {
        return AreaPoint{int32_t(at.x - left), int32_t(at.y - top)};
    });
    const MaskPlane scratch = {words.get(), int(width), int(height)};
    if (!fillPolygon(scratch, moved.get(), count))
        return false;
    writePlane(img, scratch, left, top, clear);
    return true;
}

/// The last resort, without a margin: what of a figure lies beyond the image is lost.
bool drawDirectly(image *img, const AreaPoint *pts, int count, bool clear)
{
    if (clear)
        return fillPolygon({img->gmask, img->width, img->height}, pts, count);
    TrackedBuffer<uint16_t> words(size_t(img->sampleCount()), "tmp mask");
    const MaskPlane scratch = {words.get(), img->width, img->height};
    if (!words || !fillPolygon(scratch, pts, count))
        return false;
    writePlane(img, scratch, 0, 0, clear);
    return true;
}
} // namespace

void lineMask(uint16_t *buffer, int x0, int y0, int x1, int y1, int width, int height,
              uint16_t value)
{
    // The longer axis leads. Where a sample lies half-way, the line stays on its row.
    const bool flat = LineSteps::distance(x0, x1) > LineSteps::distance(y0, y1);
    const int majorSize = flat ? width : height, minorSize = flat ? height : width;
    LineSteps at = flat ? LineSteps(x0, x1, y0, y1, 1) : LineSteps(y0, y1, x0, x1, 1);
    if (!at.enter(majorSize))
        return;
    do {
        if (at.major < 0 || at.major >= majorSize)
            return; // it only goes on away from the plane
        if (at.minor >= 0 && at.minor < minorSize)
            buffer[flat ? at.minor * width + at.major : at.major * width + at.minor] = value;
    } while (at.next());
}

bool fillPolygon(const MaskPlane &target, const AreaPoint *pts, int count)
{
    std::optional<FloodStack> stack; // before the plane changes
    if (workspace()->filledFigure && !stack.emplace(target.width, target.height).usable())
        return false;
    std::fill_n(target.words, int64_t(target.width) * target.height, uint16_t(0));
    const int drawn = drawnCount(count);
    for (int i = 1; i < drawn; ++i)
        lineMask(target.words, pts[i - 1].x, pts[i - 1].y, pts[i].x, pts[i].y, target.width,
                 target.height, kLine);
    if (stack && drawn > 1)
        floodOutside(target, &*stack);
    return true;
}

bool polySelect(image *img, const AreaPoint *pts, int count, bool clear)
{
    if (!img || !img->gmask) {
        qDebug() << "bailing: no laa";
        return false;
    }
    AreaState *const shared = areaState();
    if (!pts && shared) {
        pts = shared->points;
        count = count == 0 ? shared->pointCount : std::min(count, kPointEntries);
    }
    if (!pts || count < 3)
        return false;
    if (shared && workspace()->toolSelect != kToolPShape)
        shared->shape.remember(pts, count, kindOfTool(workspace()->toolSelect),
                               workspace()->openFigure);
    const bool drawn = drawSpans(img, pts, count, clear) || drawInScratch(img, pts, count, clear) ||
                       drawDirectly(img, pts, count, clear);
    followSelectionCenter(img);
    if (shared)
        shared->lastPointCount = std::exchange(shared->pointCount, 0);
    return drawn;
}

void followSelectionCenter(image *img)
{
    if (!img || workspace()->mainOpIndex != kOpCenterSelection)
        return;
    int x = 0, y = 0;
    if (img->maskBounds(&x, &y).width <= 0)
        return; // nothing is selected: there is no middle
    img->xCenter = x;
    img->yCenter = y;
}
