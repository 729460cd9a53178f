// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/areatools.h"
#include "area/polygon.h"
#include "area/producers.h"
#include "core/floodfill.h"
#include "support/debuglog.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <random>

namespace
{
using Points = std::vector<AreaPoint>;
using Words = std::vector<uint16_t>;

constexpr int kLow = std::numeric_limits<int>::min(), kHigh = std::numeric_limits<int>::max();

/// A line point by point, as textbooks have it.
void plainLine(AreaPoint at, AreaPoint to, const std::function<void(AreaPoint)> &plot)
{
    const int64_t dx = std::abs(int64_t(to.x) - at.x), dy = std::abs(int64_t(to.y) - at.y);
    int64_t error = (dx > dy ? dx : -dy) / 2;
    for (plot(at); at != to; plot(at)) {
        const int64_t before = error;
        if (before > -dx) {
            error -= dy;
            at.x += at.x < to.x ? 1 : -1;
        }
        if (before < dy) {
            error += dx;
            at.y += at.y < to.y ? 1 : -1;
        }
    }
}

/// Every sample from which no way leads around the line to a corner outside of it.
Words plainFigure(const RecordingWorkspace &space, Points pts, const image &img, bool clear)
{
    Words mask(img.gmask, img.gmask + img.sampleCount());
    if (pts.size() < 3)
        return mask;
    AreaPoint low = pts[0], high = pts[0];
    for (const AreaPoint &at : pts) {
        low = {std::min(low.x, at.x), std::min(low.y, at.y)};
        high = {std::max(high.x, at.x), std::max(high.y, at.y)};
    }
    const int width = high.x - low.x + 3, height = high.y - low.y + 3;
    enum : char { kFree, kLine, kOutside };
    std::vector<char> grid(size_t(width) * size_t(height), kFree);
    if (space.openFigure)
        pts.pop_back();
    for (size_t i = 1; i < pts.size(); ++i)
        plainLine(pts[i - 1], pts[i], [&](AreaPoint at) {
            grid[size_t(at.y - low.y + 1) * size_t(width) + size_t(at.x - low.x + 1)] = kLine;
        });
    std::vector<int> todo = {0};
    while (!todo.empty()) {
        const int i = todo.back(), x = i % width;
        todo.pop_back();
        if (grid[size_t(i)] != kFree)
            continue;
        grid[size_t(i)] = kOutside;
        for (const auto &[next, inside] : {std::pair(i - 1, x > 0),
                                           {i + 1, x < width - 1},
                                           {i - width, i >= width},
                                           {i + width, i + width < int(grid.size())}})
            if (inside)
                todo.push_back(next);
    }
    for (int y = 0; y < img.height; ++y)
        for (int x = 0; x < img.width; ++x) {
            const int gx = x - low.x + 1, gy = y - low.y + 1;
            const bool near = gx >= 0 && gy >= 0 && gx < width && gy < height;
            const char cell = near ? grid[size_t(gy) * size_t(width) + size_t(gx)] : char(kOutside);
            const bool set = space.filledFigure ? cell != kOutside : cell == kLine;
            uint16_t &word = mask[size_t(y) * size_t(img.width) + size_t(x)];
            word = set ? 65535 : clear ? 0 : word;
        }
    return mask;
}

/// The curve by its definition, the whole sweep, without a short cut.
Points plainCurve(const Points &list, bool open)
{
    Points knots = list;
    if (!open && !knots.empty())
        knots.pop_back();
    if (knots.empty())
        return {};
    const Points all = knots;
    const bool round = !open && all.size() > 2;
    knots.insert(knots.begin(), 3, all.front());
    if (!open)
        knots.insert(knots.end(), 3, all.back());
    if (round) {
        std::copy_n(all.end() - 3, 3, knots.begin());
        std::copy_n(all.begin(), 3, knots.end() - 3);
    }
    const int n = int(knots.size());
    knots.resize(size_t(n) + 6);
    double sum = 0;
    for (int i = 0; i < n; ++i)
        sum += std::max(std::abs(knots[size_t(i) + 3].x - knots[size_t(i) + 2].x),
                        std::abs(knots[size_t(i) + 3].y - knots[size_t(i) + 2].y));
    const double dt = sum * 1.414 < 1 ? 1 : 1 / (sum * 1.414), first = (1.0 / n - 6) * 3;
    const auto value = [&](double t, int32_t AreaPoint::*axis) {
        const double u = std::clamp(t, 0.0, 1.0) * (n - 3), f = u - std::floor(u);
        const AreaPoint *at = &knots[size_t(u)];
        const double a = at[0].*axis, b = at[1].*axis, c = at[2].*axis, d = at[3].*axis;
        const double third = 1.5 * b - 0.5 * a - 1.5 * c + 0.5 * d;
        return b + f * (0.5 * c - 0.5 * a + f * (a - 2.5 * b + 2 * c - 0.5 * d + f * third));
    };
    Points result;
    double lastX = NAN, lastY = NAN; // which differ from everything
    for (double t = first - dt; t <= 1 - first; t += dt) {
        const double x = value(t, &AreaPoint::x), y = value(t, &AreaPoint::y);
        if (x != lastX && y != lastY)
            result.push_back({int32_t(x), int32_t(y)});
        lastX = x;
        lastY = y;
    }
    return result;
}

class Figures : public testing::Test
{
protected:
    void fill(const Points &pts)
    {
        std::copy(pts.begin(), pts.end(), state.points);
        state.pointCount = int(pts.size());
    }
    int pick(int low, int high) { return std::uniform_int_distribution(low, high)(random); }
    Points somePoints()
    {
        const int reach = pick(0, 4) * 4, shiftX = pick(-20, 20) * pick(0, 1);
        Points pts(size_t(pick(0, 9)));
        for (AreaPoint &at : pts)
            at = {shiftX + pick(-reach, 14 + reach), pick(-reach, 11 + reach)};
        if (!pts.empty() && pick(0, 1))
            pts.push_back(pts.front());
        if (pick(0, 19) == 0)
            std::fill(pts.begin(), pts.end(), AreaPoint{3, 4});
        return pts;
    }
    /// Runs one figure, in every third case without memory for the quick way.
    void compare(const Points &expected, const std::function<bool(bool)> &select)
    {
        const bool clear = pick(0, 1);
        img->fillGmask(uint16_t(pick(0, 65535)));
        const Words mask = plainFigure(space, expected, *img, clear);
        memFailAt(pick(0, 2) == 0 ? figureAllocation : 0);
        const bool done = select(clear);
        memFailAt(0);
        EXPECT_EQ(done, expected.size() >= 3);
        ASSERT_EQ(Words(img->gmask, img->gmask + img->sampleCount()), mask);
    }

    RecordingWorkspace space;
    AreaState state;
    ImagePtr img = randomImage(15, 12, 5);
    std::mt19937 random{20260};
    int figureAllocation = 1; ///< the first one that a figure's spans take
};

TEST_F(Figures, EqualThePlainRasteriser)
{
    space.toolSelect = kToolPShape; // nothing is remembered, so only figures allocate
    for (int i = 0; i < 9000 && !HasFailure(); ++i) {
        SCOPED_TRACE(i);
        space.openFigure = pick(0, 2) == 0;
        space.filledFigure = pick(0, 3) != 0;
        const Points pts = somePoints();
        fill(pts);
        figureAllocation = 1;
        if (i % 3 == 0) {
            compare(pts, [&](bool clear) { return polygonSelect(img.get(), clear); });
            EXPECT_EQ(state.pointCount, pts.size() < 3 ? int(pts.size()) : 0);
        } else if (i % 3 == 1) {
            figureAllocation = 4; // after the knots and the points
            compare(plainCurve(pts, space.openFigure),
                    [&](bool clear) { return splineSelect(img.get(), clear); });
        } else {
            const double cx = pick(-4, 38) / 2.0, cy = pick(-4, 24) / 2.0;
            const double rx = pick(0, 60) / 4.0, ry = pick(0, 60) / 4.0, r = std::max(rx, ry);
            Points circle;
            for (double a = 0; a < 2 * M_PI; a += 2 * M_PI / (2 * M_PI * r)) {
                const AreaPoint at = {int(cx + rx * cos(a) + 0.5), int(cy + ry * sin(a) + 0.5)};
                if (circle.empty() || circle.back() != at)
                    circle.push_back(at);
            }
            compare(circle, [&](bool clear) {
                return ellipseSelect(img.get(), cx, cy, -rx, ry, false, clear);
            });
        }
    }
}

TEST_F(Figures, LinesEqualThePlainWalk)
{
    for (int i = 0; i < 3000 && !HasFailure(); ++i) {
        const int reach = i % 10 == 0 ? 20000 : 25;
        const AreaPoint from = {pick(-reach, 9 + reach), pick(-reach, 7 + reach)};
        const AreaPoint to = {pick(-reach, 9 + reach), pick(-reach, 7 + reach)};
        Words plain(9 * 7), drawn(9 * 7);
        plainLine(from, to, [&](AreaPoint at) {
            if (at.x >= 0 && at.y >= 0 && at.x < 9 && at.y < 7)
                plain[size_t(at.y * 9 + at.x)] = 3;
        });
        lineMask(drawn.data(), from.x, from.y, to.x, to.y, 9, 7, 3);
        ASSERT_EQ(drawn, plain) << from.x << ',' << from.y << ' ' << to.x << ',' << to.y;
    }
}

TEST_F(Figures, ReachAsFarAsPointsDo)
{
    const auto selected = [&] { return std::count(img->gmask, img->gmask + 15 * 12, 65535); };
    const Points wide = {{kLow, 2}, {kHigh, 2}, {kHigh, 5}, {kLow, 5}, {kLow, 2}};
    fill(wide);
    ASSERT_TRUE(polygonSelect(img.get()));
    EXPECT_EQ(selected(), 15 * 4);
    ASSERT_TRUE(rectSelect(img.get(), kHigh, 1, 3, kLow, false));
    EXPECT_EQ(selected(), 12 * 2);
    ASSERT_TRUE(rectSelect(img.get(), kLow, kLow, kHigh, kHigh, true));
    EXPECT_EQ(selected(), 15 * 12);
    // Too high for spans and a scratch: drawn on the picture itself, through (0, 0).
    fill({{kLow + 1, kLow + 1}, {kHigh, kHigh}, {kLow + 1, kLow + 1}});
    ASSERT_TRUE(polygonSelect(img.get()));
    EXPECT_EQ(selected(), 180 - 66); // the first free corner, bottom left, is the outside
    fill({{4, kLow}, {4, kHigh}, {4, kLow}});
    ASSERT_TRUE(polygonSelect(img.get(), false)); // a maximum all the same
    EXPECT_EQ(img->maskAt(1, 1), 65535);
    EXPECT_FALSE(ellipseSelect(img.get(), 0, 0, 40744, 1, false)); // longer than 256000
    EXPECT_FALSE(ellipseSelect(img.get(), NAN, 0, 5, 5, false));
    fill({{kLow, kLow}, {kHigh, 0}, {0, kHigh}, {kLow, kLow}});
    EXPECT_FALSE(splineSelect(img.get()));
}

TEST_F(Figures, OfThreeHundredThousandPoints)
{
    img = randomImage(200, 150, 7);
    for (const int rise : {3, 70}) { // the second one crosses more rows than spans allow
        Points pts(300000);
        for (size_t i = 0; i < pts.size(); ++i)
            pts[i] = {pick(-20, 160), int(i % 2) * rise + pick(-20, 80)};
        compare(pts, [&](bool clear) {
            return polySelect(img.get(), pts.data(), int(pts.size()), clear);
        });
    }
}

TEST_F(Figures, StandOrFallWhole)
{
    const Points pts = {{3, 2}, {10, 3}, {7, 9}, {2, 7}, {3, 2}};
    const Points tooHigh = {{3, kLow}, {5, kHigh}, {3, kLow}};
    state.savedSelection.copyFrom(*randomImage(7, 9, 3));
    const std::pair<const char *, std::function<bool()>> producers[] = {
        {"rectangle", [&] { return rectSelect(img.get(), 2, 2, 9, 8, false); }},
        {"ellipse", [&] { return ellipseInBox(img.get(), 2, 2, 9, 8); }},
        {"polygon", [&] { return polygonSelect(img.get(), false); }},
        {"too high", [&] { return polySelect(img.get(), tooHigh.data(), 3, true); }},
        {"spline", [&] { return splineSelect(img.get()); }},
        {"re-do", [&] { return redoSelect(img.get()); }}};
    const ImagePtr start = randomImage(15, 12, 5);
    for (const auto &[name, producer] : producers) {
        fill(pts);
        img->copyWorkPlanes(*start);
        ASSERT_TRUE(producer()) << name; // which also makes the remembered shape's list
        const Words right(img->gmask, img->gmask + img->sampleCount());
        const int64_t blocks = memRecord.currentBlocks;
        for (int n = 1, failures = 1; failures > 0; ++n) {
            fill(pts);
            img->copyWorkPlanes(*start);
            failures = int(memRecord.allocationFailures);
            memFailAt(n);
            const bool done = producer();
            memFailAt(0);
            failures = int(memRecord.allocationFailures) - failures;
            EXPECT_EQ(memRecord.currentBlocks, blocks) << name << n;
            const Words now(img->gmask, img->gmask + img->sampleCount());
            EXPECT_EQ(now, done ? right : Words(start->gmask, start->gmask + now.size()))
                << name << n;
        }
    }
}

TEST_F(Figures, FloodStaysInItsBuffers)
{
    const int64_t broken = memRecord.overruns + memRecord.underruns;
    for (int i = 0; i < 4000; ++i) {
        const int width = pick(1, 14), height = pick(1, 14), lines = pick(0, 3);
        TrackedBuffer<uint16_t> plane(size_t(width * height), "flooded"); // with guards
        for (int at = 0; at < width * height; ++at)
            plane[size_t(at)] = pick(0, 3) < lines ? 65535 : uint16_t(pick(0, 32767));
        FloodStack stack(width, height);
        ASSERT_TRUE(floodFill(plane.get(), width, height, pick(0, width - 1), pick(0, height - 1),
                              65535, 32768, &stack));
        memSweep();
        ASSERT_EQ(memRecord.overruns + memRecord.underruns, broken);
        for (int at = 0; at < width * height; ++at) // only a line parts flooded from dry words
            for (const int next : {at + 1, at + width})
                if (next < width * height && (next == at + width || next % width != 0)) {
                    const uint16_t one = plane[size_t(at)], other = plane[size_t(next)];
                    ASSERT_FALSE((one == 32768) != (other == 32768) && one != 65535 &&
                                 other != 65535);
                }
    }
    EXPECT_FALSE(FloodStack(65536, 1).usable()); // longer than its coordinates
}

TEST_F(Figures, EllipsesTouchTheirBox)
{
    for (int i = 0; i < 500 && !HasFailure(); ++i) {
        const int x = pick(0, 13), y = pick(0, 10), toX = pick(x + 1, 14), toY = pick(y + 1, 11);
        if (toX + toY - x - y < 3)
            continue; // an ellipse of two points is none
        ASSERT_TRUE(ellipseInBox(img.get(), toX, y, x, toY));
        const Bounds box = img->maskBounds();
        EXPECT_EQ(std::tie(box.left, box.top, box.right, box.bottom), std::tie(x, y, toX, toY));
    }
}

TEST_F(Figures, AreRememberedAndComeBack)
{
    for (const bool open : {false, true}) {
        space.openFigure = open;
        space.toolSelect = kToolPolygon;
        fill({{2, 1}, {12, 3}, {9, 11}, {4, 8}, {2, 1}}); // 10 x 10 about (7, 6)
        ASSERT_TRUE(polygonSelect(img.get()));
        EXPECT_EQ(state.shape.kind, QLatin1String("Polygonal"));
        const Words drawn(img->gmask, img->gmask + img->sampleCount());
        ASSERT_TRUE(state.shape.convert());
        ASSERT_TRUE(state.savedSelection.copyFrom(*img));
        state.shape.xScale = state.shape.yScale = 10;
        state.shape.xCenter = 7.001;
        state.shape.yCenter = 6.001; // just above whole numbers, which truncation keeps
        space.toolSelect = kToolPShape;
        space.openFigure = false;
        for (const auto &bringBack :
             {pshapeSelect, +[](image *i, bool) { return redoSelect(i); }}) {
            img->fillGmask(1);
            ASSERT_TRUE(bringBack(img.get(), true));
            EXPECT_EQ(Words(img->gmask, img->gmask + img->sampleCount()), drawn) << open;
        }
    }
}

TEST_F(Figures, SquaresCentresAndTheLastRectangle)
{
    space.mainOpIndex = kOpCenterSelection;
    ASSERT_TRUE(rectSelect(img.get(), 10, 9, 8, 5, true)); // up and to the left: 6 to 10
    EXPECT_EQ(std::tie(state.rectLeft, state.rectTop, state.rectRight, state.rectBottom),
              std::tuple(6, 5, 10, 9));
    EXPECT_TRUE(state.rectKnown);
    EXPECT_EQ(std::pair(img->xCenter, img->yCenter), std::pair(8, 7));
    ASSERT_TRUE(rectSelect(img.get(), 50, 50, 60, 60, false)); // nothing, so no new middle
    EXPECT_EQ(std::pair(img->xCenter, img->yCenter), std::pair(8, 7));
    ASSERT_TRUE(entireSelect(img.get()));
    EXPECT_EQ(std::pair(img->xCenter, img->yCenter), std::pair(15 / 2, 12 / 2));
    takeDebugLines();
    EXPECT_FALSE(polySelect(nullptr, nullptr, 0, true));
    EXPECT_EQ(takeDebugLines(), QStringList("bailing: no laa"));
}
} // namespace
