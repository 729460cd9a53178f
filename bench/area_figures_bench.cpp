// SPDX-License-Identifier: GPL-3.0-or-later
#include "yardstick.h"

#include "area/polygon.h"
#include "area/producers.h"
#include "core/memory.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace
{
using Points = std::vector<AreaPoint>;

void fillList(const Points &points)
{
    std::copy(points.begin(), points.end(), areaState()->points);
    areaState()->pointCount = int(points.size());
}

/// A closed star about the middle of the picture whose corners lie near an ellipse that covers
/// half of it.
Points star(int corners, double jitter)
{
    constexpr double kRadius = 1600; // of a picture 4000 high, and half as much again across
    std::mt19937 random(corners);
    std::uniform_real_distribution<double> share(1.0 - jitter, 1.0 + jitter);
    Points points;
    for (int i = 0; i < corners; ++i) {
        const double a = 2 * M_PI * i / corners, r = kRadius * share(random);
        points.push_back({int(kBenchWidth / 2 + 1.5 * r * std::cos(a)),
                          int(kBenchHeight / 2 + r * std::sin(a))});
    }
    points.push_back(points.front());
    return points;
}

/// A figure that covers about half of the picture; `line` gives the points of its outline
/// after it was selected, from which the check draws it in the plain way.
BenchCase figureCase(std::function<bool(image *)> select, std::function<Points()> line)
{
    static AreaState state;
    std::shared_ptr<image> picture = benchImage(1);
    BenchCase one;
    one.run = [picture, select] { select(picture.get()); };
    one.check = [picture, select, line] {
        if (!select(picture.get()))
            return false;
        const Points points = line();
        const int64_t samples = picture->sampleCount();
        TrackedBuffer<uint16_t> plain(size_t(samples), "plain figure");
        if (!plain || !fillPolygon({plain.get(), picture->width, picture->height}, points.data(),
                                   int(points.size())))
            return false;
        const int64_t selected = std::count(plain.get(), plain.get() + samples, 65535);
        return std::equal(plain.get(), plain.get() + samples, picture->gmask) &&
               selected > samples * 2 / 5 && selected < samples * 3 / 5;
    };
    return one;
}

BenchCase rectangle()
{
    return figureCase(
        [](image *img) { return rectSelect(img, 900, 600, 5099, 3399, false); },
        [] {
            return Points{{900, 600}, {5099, 600}, {5099, 3399}, {900, 3399}, {900, 600}};
        });
}

BenchCase ellipse()
{
    return figureCase([](image *img) { return ellipseInBox(img, 600, 400, 5399, 3599); },
                      [] {
                          return Points(areaState()->points,
                                        areaState()->points + areaState()->lastPointCount);
                      });
}

BenchCase polygon()
{
    const Points points = star(1000, 0.2);
    return figureCase(
        [points](image *img) {
            fillList(points);
            return polygonSelect(img);
        },
        [points] { return points; });
}

/// Every segment leads from one side of the figure to near the other one.
BenchCase crossing()
{
    Points points = star(999, 0.02);
    points.pop_back();
    Points crossed;
    for (size_t i = 0; i < points.size(); ++i)
        crossed.push_back(points[i * 400 % points.size()]);
    crossed.push_back(crossed.front());
    return figureCase(
        [crossed](image *img) {
            fillList(crossed);
            return polygonSelect(img);
        },
        [crossed] { return crossed; });
}

BenchCase spline()
{
    const Points knots = star(40, 0.05);
    return figureCase(
        [knots](image *img) {
            fillList(knots);
            return splineSelect(img);
        },
        [knots] {
            const CurvePoints curve = splinePoints(knots.data(), int(knots.size()));
            return Points(curve.points, curve.points + curve.count);
        });
}

} // namespace

void registerAreaFigureBenchmarks()
{
    registerRatio("area/rectangle", 1.0, rectangle);
    registerRatio("area/ellipse", 1.0, ellipse);
    registerRatio("area/polygon_of_1000_points", 1.0, polygon);
    registerRatio("area/polygon_of_1000_chords", 2.5, crossing);
    registerRatio("area/spline_of_40_knots", 1.0, spline);
}
