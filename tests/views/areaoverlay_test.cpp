// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/areastate.h"
#include "area/areatools.h"
#include "area/producers.h"
#include "views/areaoverlay.h"
#include "views/cropguides.h"
#include "views/selectionoutline.h"
#include "views/testhost.h"

#include <QPainter>

#include <gtest/gtest.h>

#include <cmath>
#include <random>

class Figure : public testing::Test
{
protected:
    AreaState state;
    TestHost host;
    image *img = host.keep(plainImage(400, 200, 32768, 32768, 32768));
    imgWindow *window = host.show(img, {400, 200});
    AreaFigure figure;

    void band(QPointF from, QPointF to)
    {
        window->gesture.rubberBand = true;
        window->gesture.bandStart = from;
        window->gesture.bandEnd = to;
    }
    QImage drawn()
    {
        const ViewGeometry view = window->geometryShown();
        QImage out(view.width, view.height, QImage::Format_ARGB32_Premultiplied);
        out.fill(Qt::transparent);
        QPainter painter(&out);
        figure.draw(&painter, *window);
        return out;
    }
    static int pixelsOf(const QImage &of)
    {
        int count = 0;
        for (int i = 0; i < of.width() * of.height(); ++i)
            count += qAlpha(of.pixel(i % of.width(), i / of.width())) != 0;
        return count;
    }
    /// A sample or a neighbour of it, at most `away` off, is selected.
    bool selectedNear(int x, int y, int away) const
    {
        for (int dy = -away; dy <= away; ++dy)
            for (int dx = -away; dx <= away; ++dx)
                if (x + dx >= 0 && y + dy >= 0 && x + dx < 400 && y + dy < 200 &&
                    img->maskAt(x + dx, y + dy) != 0)
                    return true;
        return false;
    }
    /// Drawn pixels that show samples which are not selected, and selected samples in view
    /// of which no pixel is drawn.
    int misplaced(const QImage &shown, int away) const
    {
        const ViewGeometry view = window->geometryShown();
        int wrong = 0;
        std::vector<char> met(400 * 200);
        for (int i = 0; i < view.width * view.height; ++i) {
            const int px = i % view.width, py = i / view.width;
            if (qAlpha(shown.pixel(px, py)) == 0)
                continue;
            const int x = int(std::floor(px * view.xStep)) + view.panX;
            const int y = int(std::floor(py * view.yStep)) + view.panY;
            wrong += !selectedNear(x, y, away);
            for (int dy = -away; dy <= away; ++dy)
                for (int dx = -away; dx <= away; ++dx)
                    met[size_t(std::clamp(y + dy, 0, 199) * 400 + std::clamp(x + dx, 0, 399))] = 1;
        }
        const int right = view.panX + int(view.width * view.xStep) - 2;
        const int bottom = view.panY + int(view.height * view.yStep) - 2;
        for (int y = std::max(view.panY + 2, 0); y < std::min(bottom, 200); ++y)
            for (int x = std::max(view.panX + 2, 0); x < std::min(right, 400); ++x)
                wrong += img->maskAt(x, y) != 0 && !met[size_t(y * 400 + x)];
        return wrong;
    }
};

TEST_F(Figure, LiesWhereTheSelectionWillBe)
{
    const std::vector<AreaPoint> corners = {{20, 30}, {90, 140}, {35, 150}, {180, 60}, {20, 30}};
    const struct {
        const char *name;
        int tool;
        bool constrain;
        int away; ///< a straight line and the staircase of samples under it differ
    } rows[] = {{"rectangle", kToolRectangle, false, 0}, {"square", kToolRectangle, true, 0},
                {"ellipse", kToolEllipse, false, 1},     {"circle", kToolEllipse, true, 1},
                {"polygon", kToolPolygon, false, 1},     {"pencil", kToolPencil, false, 1},
                {"spline", kToolPolyspline, false, 1},   {"shape", kToolPShape, false, 1},
                {"open shape", kToolPShape, true, 1}};
    host.filledFigure = false;
    for (const auto &row : rows)
        for (const int closer : {-1, 0, 1, 3}) {
            SCOPED_TRACE(testing::Message() << row.name << " at 2 to the " << closer);
            window->zoomTo(window->unityIndex + closer, {0, 0});
            window->panX = closer > 0 ? 10 : -20;
            window->panY = closer > 0 ? 20 : -10;
            host.toolSelect = row.tool;
            window->gesture = AreaGesture(window);
            window->gesture.constrain = row.constrain;
            std::copy(corners.begin(), corners.end(), state.points);
            state.pointCount = int(corners.size());
            if (row.tool == kToolRectangle || row.tool == kToolEllipse)
                band({60.7, 90.2}, {92.4, 140.9});
            if (row.tool == kToolPolyspline)
                state.pointCount -= 1; // the curve closes itself
            if (row.tool == kToolPShape) {
                PShape &shape = state.shape;
                shape.remember(corners.data(), 5, "Polygonal", row.constrain);
                ASSERT_TRUE(shape.convert());
                shape.xScale = shape.baseWidth;
                shape.yScale = shape.baseHeight;
                shape.xCenter = 100;
                shape.yCenter = 90;
                window->gesture.rubberBand = true;
            }
            const QImage shown = drawn();
            img->fillGmask(0);
            const bool made =
                row.tool == kToolPShape       ? pshapeSelect(img)
                : row.tool == kToolRectangle  ? rectSelect(img, 60, 90, 92, 140, row.constrain)
                : row.tool == kToolEllipse    ? ellipseSelect(img, 60, 90, 32, 50, row.constrain)
                : row.tool == kToolPolyspline ? (state.pointCount += 1, splineSelect(img))
                                              : polygonSelect(img);
            ASSERT_TRUE(made);
            const bool squares = row.tool == kToolPolygon || row.tool == kToolPolyspline;
            if (squares) // marks of the corners, a few pixels wide
                for (const AreaPoint &at : corners)
                    for (int i = 0; i < 13 * 13; ++i)
                        img->gmask[(at.y - 6 + i / 13) * 400 + at.x - 6 + i % 13] = 0;
            int wrong = misplaced(shown, row.away + (closer < 0 ? 1 : 0));
            if (squares) // the drawn marks alone may stand on samples without selection
                wrong -= std::min(wrong, 5 * 13 * 13 * (closer > 0 ? 1 << 2 * closer : 1));
            EXPECT_EQ(wrong, 0);
        }
}

TEST_F(Figure, SwapsColourWithEachDashAndKeepsItsDashes)
{
    host.toolSelect = kToolPencil;
    host.aSelectColor = QStringLiteral("#ff0000 #0000ff");
    host.dashLength = 5;
    for (int x = 10; x <= 60; ++x)
        state.appendPoint(x, 50);
    const QImage shown = drawn();
    for (int x = 12; x < 58; ++x)
        EXPECT_EQ(shown.pixel(x, 50), x / 5 % 2 ? 0xFF0000FF : 0xFFFF0000) << x;
    state.appendPoint(61, 58);
    const QImage longer = drawn();
    EXPECT_EQ(longer.copy(0, 0, 59, 60), shown.copy(0, 0, 59, 60));
    imgWindow *other = host.show(img, {200, 100});
    EXPECT_EQ(pixelsOf(drawn()), 0) << "the list is that of the current window";
    host.makeCurrent(window);
    EXPECT_GT(pixelsOf(drawn()), 0);
    EXPECT_GT((window->refreshOverlay(), window->grab(), window->figureShown().pieceCount()), 0);
    EXPECT_EQ((other->grab(), other->figureShown().pieceCount()), 0);
}

TEST_F(Figure, HugeFiguresAreDrawnInBoundedSteps)
{
    constexpr int most = 3 << 16; // lines, squares
    std::mt19937 random(3);
    for (const int spread : {200, 100000, 1 << 30}) {
        for (int i = 0; i < 256000; ++i)
            state.points[i] = {int32_t(random() % (2U * unsigned(spread)) - unsigned(spread)),
                               int32_t(random() % (2U * unsigned(spread)) - unsigned(spread))};
        state.pointCount = 256000;
        for (const int tool : {kToolPencil, kToolPolygon, kToolPolyspline}) {
            host.toolSelect = tool;
            drawn();
            EXPECT_LE(figure.pieceCount(), most) << spread;
        }
    }
    for (int i = 0; i < 256000; ++i) // wholly outside
        state.points[i] = {-5000 - i % 7, i};
    drawn();
    EXPECT_EQ(figure.pieceCount(), 0);
    for (int i = 0; i < 256000; ++i) // all on one pixel
        state.points[i] = {50, 60};
    host.toolSelect = kToolPencil;
    drawn();
    EXPECT_EQ(figure.pieceCount(), 1);
    host.toolSelect = kToolEllipse;
    band({0, 0}, {50000, 10});
    EXPECT_EQ(pixelsOf(drawn()), 0) << "such an ellipse selects nothing";
}

TEST_F(Figure, GuidesStandInBandsThatUseThem)
{
    const auto count = [this](int tool) {
        host.toolSelect = tool;
        return pixelsOf(drawn());
    };
    band({100, 50}, {190, 140});
    host.cropGuide = kGuideThirds;
    const int rectangle = count(kToolRectangle), ellipse = count(kToolEllipse);
    host.useCropGuides = true;
    EXPECT_GT(count(kToolRectangle), rectangle + 250);
    EXPECT_EQ(count(kToolEllipse), ellipse);
    host.useCropGuides = false;
    host.useOvalGuides = true;
    EXPECT_GT(count(kToolEllipse), ellipse + 500);
    EXPECT_EQ(count(kToolRectangle), rectangle);
    host.mainOpIndex = kOpCrop;
    EXPECT_GT(count(kToolRectangle), rectangle + 250);
    EXPECT_NE(qAlpha(drawn().pixel(100 + 91 / 3, 75)), 0);
    host.cropGuide = kGuideNone;
    EXPECT_EQ(count(kToolRectangle), rectangle);
}

TEST(CropGuides, LinesHaveTheirProportions)
{
    const double golden = (1 + std::sqrt(5.0)) / 2, far = 1 / golden;
    const struct {
        int guide;
        QSizeF box;
        bool right, bottom;
        size_t lines;
        QPointF onFirst, endOfLast;
    } rows[] = {
        {kGuideNone, {90, 60}, false, false, 0, {}, {}},
        {kGuideThirds, {90, 60}, false, false, 4, {30, 0}, {90, 40}},
        {kGuideGoldenRectangle, {100, 10}, false, true, 4, {100 * far, 10}, {100, 10 * far}},
        {kGuideGoldenSpiral, {160, 90}, false, false, 1, {0, 0}, {160 * 0.7236, 90 * 0.2764}},
        {kGuideGoldenSpiral, {160, 90}, true, true, 1, {160, 90}, {160 * 0.2764, 90 * 0.7236}},
        {kGuideGoldenSpiral, {90, 160}, true, false, 1, {90, 0}, {90 * 0.7236, 160 * 0.7236}},
        {kGuideGoldenTriangles, {40, 30}, false, false, 3, {0, 0}, {14.4, 10.8}},
        {kGuideGoldenTriangles, {40, 30}, true, false, 3, {40, 0}, {25.6, 10.8}},
        {kGuideDiagonal, {50, 30}, false, false, 4, {0, 0}, {20, 0}}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.guide);
        const auto lines = cropGuideLines(row.guide, row.box, row.right, row.bottom);
        ASSERT_EQ(lines.size(), row.lines);
        const QRectF around = QRectF(QPointF(), row.box).adjusted(-1e-6, -1e-6, 1e-6, 1e-6);
        const double slack = row.box.width() * 0.02;
        for (const GuideLine &line : lines)
            for (size_t i = 0; i < line.size(); ++i) {
                EXPECT_TRUE(around.contains(line[i]));
                if (row.guide == kGuideGoldenSpiral && i > 0) { // of one piece
                    EXPECT_LT(QLineF(line[i - 1], line[i]).length(), row.box.width() * 0.15);
                }
            }
        if (lines.empty())
            continue;
        EXPECT_LT(QLineF(lines.front().front(), row.onFirst).length(), 1e-9);
        EXPECT_LT(QLineF(lines.back().back(), row.endOfLast).length(), slack);
    }
    EXPECT_EQ(cropGuideNames().size(), 6);
}
