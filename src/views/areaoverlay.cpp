// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/areaoverlay.h"

#include "area/areastate.h"
#include "area/areatools.h"
#include "area/numbers.h"
#include "core/memory.h"
#include "core/workspace.h"
#include "views/cropguides.h"
#include "views/imgwindow.h"
#include "views/selectionoutline.h"
#include "views/viewhost.h"

#include <QPainter>
#include <QVector>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <utility>

namespace
{
constexpr int kMostPieces = 1 << 16;         // a longer figure fills the view anyway
constexpr int64_t kLongestCurve = 1 << 18;   // samples; a longer one is shown by its knots
constexpr double kLongestCircle = 256000;    // samples; a longer one selects nothing
constexpr int kMostCorners = 1 << 14;        // of an ellipse's polygon
constexpr double kVertexSide = 5, kNear = 6; // points
constexpr double kTwoPi = 2 * M_PI;

/// Image positions among the client's device pixels.
struct Places {
    const ViewGeometry &view;

    QPointF of(QPointF position) const
    {
        return {(position.x() - view.panX) / view.xStep + view.offsetX,
                (position.y() - view.panY) / view.yStep + view.offsetY};
    }
    /// The middle of a sample, through which lines run that will select it.
    QPointF of(QPoint sample) const { return of(QPointF(sample) + QPointF(0.5, 0.5)); }
    QPointF of(const AreaPoint &sample) const { return of(QPoint(sample.x, sample.y)); }
};

double distance(QPointF a, QPointF b)
{
    return std::hypot(b.x() - a.x(), b.y() - a.y());
}

/// Lines in device pixels that change their colour each time the path has covered a dash.
/// What is outside of the view costs no drawing, and what there is of it is bounded: of a
/// figure too long the end is drawn, where the person works.
class DashedLines
{
public:
    DashedLines(const ViewGeometry &view, const DashLook &wanted)
        : look(wanted), left(-margin()), top(-margin()), right(view.width + margin()),
          bottom(view.height + margin())
    {
    }

    /// A path through `count` points, of which `at` gives the places.
    template <class At>
    void add(int count, At at)
    {
        double path = 0;
        for (int i = 1; i < count; ++i)
            path += distance(at(i - 1), at(i));
        if (count < 1)
            return;
        QPointF kept = at(count - 1), last = kept;
        double keptPath = path;
        if (count == 1)
            addPart(kept, kept, 0, 0);
        for (int i = count - 2; i >= 0 && pieces < kMostPieces; --i) {
            const QPointF place = at(i);
            path -= distance(place, last);
            last = place;
            if (i > 0 && samePixel(place, kept))
                continue;
            addPart(place, kept, std::max(path, 0.0), keptPath);
            kept = place;
            keptPath = path;
        }
    }
    void add(const GuideLine &line)
    {
        add(int(line.size()), [&line](int i) { return line[size_t(i)]; });
    }

    void draw(QPainter *painter) const
    {
        for (int colour = 0; colour < 2; ++colour) {
            QPen pen(QColor(colour ? look.second : look.first), look.line);
            pen.setCosmetic(true);
            painter->setPen(pen);
            painter->drawLines(lines[size_t(colour)]);
        }
    }
    int pieceCount() const { return pieces; }

private:
    int margin() const { return 2 * look.line; }
    static bool samePixel(QPointF a, QPointF b)
    {
        return std::floor(a.x()) == std::floor(b.x()) && std::floor(a.y()) == std::floor(b.y());
    }

    /// The part of a line that is in the view, as fractions of its length; false if none is.
    bool clip(QPointF a, QPointF b, double *from, double *to) const
    {
        const QPointF d = b - a;
        const auto cut = [&](double speed, double room) { // inside while t x speed <= room
            if (speed > 0)
                *to = std::min(*to, room / speed);
            else if (speed < 0)
                *from = std::max(*from, room / speed);
            return speed != 0 || room >= 0;
        };
        return cut(-d.x(), a.x() - left) && cut(d.x(), right - a.x()) && cut(-d.y(), a.y() - top) &&
               cut(d.y(), bottom - a.y()) && *from <= *to;
    }

    /// A line between two places of a path.
    void addPart(QPointF a, QPointF b, double pathA, double pathB)
    {
        double from = 0, to = 1;
        if (!clip(a, b, &from, &to))
            return;
        const QPointF d = b - a;
        const double length = std::max(pathB - pathA, 1e-9);
        double place = from;
        do {
            const auto turn = int64_t(std::floor((pathA + place * length) / look.dash + 1e-9));
            const double next = (double(turn + 1) * look.dash - pathA) / length;
            const double end = std::clamp(next, place, to);
            // Both ends of a line are drawn: a dash stops short of the one that follows it.
            const double shown = next > to ? end : std::max(place, end - look.line / length);
            lines[size_t(turn & 1)].push_back(QLineF(a + place * d, a + shown * d));
            ++pieces;
            place = end > place ? end : to;
        } while (place < to && pieces < kMostPieces);
    }

    DashLook look;
    double left, top, right, bottom;
    std::array<QVector<QLineF>, 2> lines;
    int pieces = 0;
};

/// The figure of one window's gesture and the shared point list.
class FigureDrawing
{
public:
    FigureDrawing(QPainter *onto, const imgWindow &window)
        : painter(onto), gesture(window.gesture), ratio(window.devicePixelRatioF()),
          view(window.geometryShown()), look(dashLook(ratio)), lines(view, look)
    {
    }

    void box() { lines.add(corners(startSample(), endSample())); }

    void magnifier()
    {
        const QPointF a = gesture.bandStart, b = gesture.shownEnd();
        lines.add(5, [&](int i) {
            return places.of(
                QPointF(i == 1 || i == 2 ? b.x() : a.x(), i == 2 || i == 3 ? b.y() : a.y()));
        });
    }

    void ellipse()
    {
        const QPointF middle = startSample(), reach = ellipseReach();
        const double rx = std::abs(reach.x()), ry = std::abs(reach.y());
        if (kTwoPi * std::max(rx, ry) > kLongestCircle)
            return;
        const double pixels = std::max(rx / view.xStep, ry / view.yStep);
        const int count = int(std::min(16 + 6 * std::sqrt(pixels), double(kMostCorners)));
        const QPointF centre = middle + QPointF(0.5, 0.5);
        lines.add(count + 1, [&](int i) {
            const double angle = kTwoPi * i / count;
            return places.of(centre + QPointF(rx * std::cos(angle), ry * std::sin(angle)));
        });
    }

    void boxGuides() { guides(startSample(), endSample()); }
    void ellipseGuides()
    {
        const QPointF middle = startSample(), reach = ellipseReach();
        guides(middle - reach, middle + reach);
    }

    void path(const AreaPoint *points, int count)
    {
        lines.add(count, [&](int i) { return places.of(points[i]); });
    }

    /// As far as it will be drawn.
    void shape(const PShape &shape)
    {
        lines.add(shape.drawnCount(), [&](int i) {
            const ShapePoint at = shape.placed(i);
            return places.of(QPoint(truncatedSample(at.x), truncatedSample(at.y)));
        });
    }

    /// From the last point of a figure to where the next one will be.
    void lineToNext(const AreaPoint &last)
    {
        const QPoint next = sampleUnder(gesture.bandEnd);
        lines.add(2, [&](int i) { return i ? places.of(next) : places.of(last); });
    }

    void vertices(const AreaPoint *points, int count)
    {
        const int side = int(kVertexSide * ratio) | 1;
        const QRect seen = QRect(0, 0, view.width, view.height).adjusted(-side, -side, side, side);
        const int marked =
            gesture.vertexIndex >= 0 ? gesture.vertexIndex : underPointer(points, count);
        QPoint before(-side, -side);
        for (int i = 0; i < count && squares.size() < kMostPieces; ++i) {
            const QPointF place = places.of(points[i]);
            if (!QRectF(seen).contains(place))
                continue;
            const QPoint pixel(int(std::floor(place.x())), int(std::floor(place.y())));
            if (pixel != before || i == marked)
                squares.push_back({pixel, i == marked});
            before = pixel;
        }
    }

    int draw()
    {
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing, false);
        lines.draw(painter);
        for (const auto &[at, marked] : std::as_const(squares))
            drawVertex(at, marked);
        painter->restore();
        return lines.pieceCount() + squares.size();
    }

private:
    /// The guides of the Crop operator within all samples between two corners.
    void guides(QPointF a, QPointF b)
    {
        const QPointF low(std::min(a.x(), b.x()), std::min(a.y(), b.y()));
        const QPointF high(std::max(a.x(), b.x()) + 1, std::max(a.y(), b.y()) + 1);
        const QPointF from = places.of(low), to = places.of(high);
        const QSizeF size(to.x() - from.x(), to.y() - from.y());
        for (GuideLine &line :
             cropGuideLines(workspace()->cropGuide, size, b.x() < a.x(), b.y() < a.y())) {
            for (QPointF &place : line)
                place += from;
            lines.add(line);
        }
    }

    QPoint startSample() const { return sampleUnder(gesture.bandStart); }
    QPoint endSample() const { return sampleUnder(gesture.shownEnd()); }
    /// From the middle of an ellipse to the corner of the quarter that was dragged. A circle
    /// has the length of the band for its radius, which need not be whole.
    QPointF ellipseReach() const
    {
        const QPointF end = sampleUnder(gesture.constrain ? gesture.bandEnd : gesture.shownEnd());
        const QPointF reach = end - startSample();
        if (!gesture.constrain)
            return reach;
        const double radius = std::hypot(reach.x(), reach.y());
        return {std::copysign(radius, reach.x()), std::copysign(radius, reach.y())};
    }

    GuideLine corners(QPoint a, QPoint b) const
    {
        return {places.of(a), places.of(QPoint(b.x(), a.y())), places.of(b),
                places.of(QPoint(a.x(), b.y())), places.of(a)};
    }

    int underPointer(const AreaPoint *points, int count) const
    {
        const QPointF pointer = places.of(gesture.pointer);
        int nearest = -1;
        double best = kNear * ratio;
        for (int i = 0; i < count; ++i) {
            const double away = distance(places.of(points[i]), pointer);
            if (away < best) {
                best = away;
                nearest = i;
            }
        }
        return nearest;
    }

    void drawVertex(QPoint middle, bool marked)
    {
        const int half = int(kVertexSide * ratio) / 2 + (marked ? look.line : 0);
        const QRect square(middle - QPoint(half, half), QSize(2 * half + 1, 2 * half + 1));
        painter->fillRect(square, QColor(marked ? look.second : look.first));
        painter->fillRect(square.adjusted(look.line, look.line, -look.line, -look.line),
                          QColor(marked ? look.first : look.second));
    }

    QPainter *painter;
    const AreaGesture &gesture;
    double ratio;
    ViewGeometry view;
    Places places{view};
    DashLook look;
    DashedLines lines;
    QVector<std::pair<QPoint, bool>> squares; ///< middle, marked
};

/// Samples that a curve through these knots runs over, about.
int64_t lengthThrough(const AreaPoint *points, int count)
{
    int64_t length = 0;
    for (int i = 1; i < count; ++i)
        length += std::max(std::abs(int64_t(points[i].x) - points[i - 1].x),
                           std::abs(int64_t(points[i].y) - points[i - 1].y));
    return length;
}

/// Points of a closed curve that go round once; further on it runs over the same way, where
/// its dashes would cover each other. There are three more stretches than knots.
int onceRound(const CurvePoints &curve, int knots)
{
    const int64_t end = int64_t(curve.count) * knots / (knots + 3);
    const int64_t slack = curve.count / (knots + 3);
    const AreaPoint &start = curve.points[0];
    for (int64_t i = std::max<int64_t>(end - slack, 1);
         i < std::min<int64_t>(end + slack, curve.count); ++i)
        if (std::abs(int64_t(curve.points[i].x) - start.x) <= 1 &&
            std::abs(int64_t(curve.points[i].y) - start.y) <= 1)
            return int(i) + 1;
    return curve.count;
}

uint64_t mixed(uint64_t hash, uint64_t word)
{
    return (hash ^ word) * 0x100000001B3 ^ hash >> 29;
}

uint64_t hashOf(const AreaPoint *points, int count, bool open)
{
    uint64_t hash = mixed(0xCBF29CE484222325, uint64_t(count) * 2 + (open ? 1 : 0));
    for (int i = 0; i < count; ++i)
        hash = mixed(hash, uint64_t(uint32_t(points[i].x)) << 32 | uint32_t(points[i].y));
    return hash;
}
} // namespace

/// The curve that a right click would make of the shared list; null if there is none. It
/// costs more than drawing it, so it is kept until a knot changes.
const CurvePoints *AreaFigure::curve(bool open)
{
    const AreaState &state = *areaState();
    const int count = state.pointCount;
    const uint64_t wanted = hashOf(state.points, count, open);
    if (shownCurve && knots == wanted)
        return shownCurve.get();
    shownCurve.reset();
    if (count < 2 || lengthThrough(state.points, count) > kLongestCurve)
        return nullptr;
    const TrackedBuffer<AreaPoint> list(size_t(count) + 1, "overlay knots");
    if (!list)
        return nullptr;
    std::memcpy(list.get(), state.points, size_t(count) * sizeof(AreaPoint));
    list[size_t(count)] = open ? state.points[count - 1] : state.points[0];
    auto made = std::make_unique<CurvePoints>(splinePoints(list.get(), count + 1));
    if (!made->points)
        return nullptr;
    if (!open && count > 2)
        made->count = onceRound(*made, count);
    shownCurve = std::move(made);
    knots = wanted;
    return shownCurve.get();
}

void AreaFigure::draw(QPainter *painter, const imgWindow &window)
{
    pieces = 0;
    const Workspace &space = *workspace();
    const AreaState *state = areaState();
    const int tool = space.toolSelect;
    if (tool != kToolPolyspline)
        shownCurve.reset();
    if (!state || (viewHost() && viewHost()->currentWindow != &window) ||
        !window.geometryShown().usableFor(*window.img))
        return;
    const bool band = window.gesture.rubberBand;
    const int count = state->points ? state->pointCount : 0;
    FigureDrawing figure(painter, window);
    switch (tool) {
    case kToolRectangle:
        if (!band)
            return;
        if (space.useCropGuides || space.mainOpIndex == kOpCrop)
            figure.boxGuides();
        figure.box();
        break;
    case kToolEllipse:
        if (!band)
            return;
        if (space.useOvalGuides)
            figure.ellipseGuides();
        figure.ellipse();
        break;
    case kToolMagnify:
        if (!band)
            return;
        figure.magnifier();
        break;
    case kToolPencil:
        if (!count)
            return;
        figure.path(state->points, count);
        break;
    case kToolPolygon:
    case kToolPolyspline:
        if (!count)
            return;
        if (const CurvePoints *spline = tool == kToolPolyspline ? curve(space.openFigure) : nullptr)
            figure.path(spline->points, spline->count);
        else
            figure.path(state->points, count);
        if (band)
            figure.lineToNext(state->points[count - 1]);
        figure.vertices(state->points, count);
        break;
    case kToolPShape:
        if (!band || !state->shape.usable())
            return;
        figure.shape(state->shape);
        break;
    default:
        return;
    }
    pieces = figure.draw();
}
