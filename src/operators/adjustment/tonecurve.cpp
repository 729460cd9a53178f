// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/adjustment/tonecurve.h"

#include <QCoreApplication>
#include <QLocale>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace
{
using Knot = ToneCurve::Knot;

constexpr int kEntries = 65536;
constexpr double kGrid = 1e9;           ///< places of a knot in each direction
constexpr int kMostLetters = 4096;      ///< of a text; all knots with all digits take 800
constexpr double kRoundingError = 1e-6; ///< far above that of a table entry, far below a level

/// Ready curves, in the order of their list, as their texts.
const struct {
    const char *name, *text;
} kPresets[] = {
    {QT_TRANSLATE_NOOP("ToneCurve", "Linear"), "0,0 1,1"},
    {QT_TRANSLATE_NOOP("ToneCurve", "S-Curve, Soft"), "0,0 0.25,0.2 0.75,0.8 1,1"},
    {QT_TRANSLATE_NOOP("ToneCurve", "S-Curve, Strong"), "0,0 0.25,0.13 0.75,0.87 1,1"},
    {QT_TRANSLATE_NOOP("ToneCurve", "Less Contrast"), "0,0 0.25,0.32 0.75,0.68 1,1"},
    {QT_TRANSLATE_NOOP("ToneCurve", "Brighten"), "0,0 0.5,0.62 1,1"},
    {QT_TRANSLATE_NOOP("ToneCurve", "Darken"), "0,0 0.5,0.38 1,1"},
    {QT_TRANSLATE_NOOP("ToneCurve", "Lift Shadows"), "0,0 0.15,0.24 0.5,0.53 0.75,0.75 1,1"},
    {QT_TRANSLATE_NOOP("ToneCurve", "Deepen Shadows"), "0,0 0.15,0.08 0.5,0.47 0.75,0.75 1,1"},
    {QT_TRANSLATE_NOOP("ToneCurve", "Tame Highlights"), "0,0 0.25,0.25 0.5,0.48 0.85,0.76 1,0.94"},
    {QT_TRANSLATE_NOOP("ToneCurve", "Faded Film"), "0,0.08 0.25,0.26 0.75,0.77 1,0.93"},
    {QT_TRANSLATE_NOOP("ToneCurve", "Negative"), "0,1 1,0"},
    {QT_TRANSLATE_NOOP("ToneCurve", "Solarize"), "0,0 0.5,1 1,0"},
    {QT_TRANSLATE_NOOP("ToneCurve", "Four Steps"),
     "0,0 0.249,0 0.251,0.333333333 0.499,0.333333333 0.501,0.666666667 0.749,0.666666667 "
     "0.751,1 1,1"},
};

double onGrid(double value)
{
    return std::round(value * kGrid) / kGrid;
}

bool isLevel(double value)
{
    return value >= 0 && value <= 1; // false for what is no number
}

double limited(double value, double low, double high)
{
    return std::isnan(value) ? low : std::clamp(value, low, high);
}

bool farEnough(double left, double right)
{
    return right - left >= ToneCurve::kLeastDistance - 1 / kGrid;
}

QString number(double value)
{
    return QString::number(value, 'f', QLocale::FloatingPointShortest);
}

/// The slope at the end of a parabola through three knots, from the two secants; it must not
/// turn back.
double endSlope(double nearWidth, double farWidth, double nearSecant, double farSecant)
{
    const double slope =
        ((2 * nearWidth + farWidth) * nearSecant - nearWidth * farSecant) / (nearWidth + farWidth);
    return slope * nearSecant > 0 ? slope : 0;
}

/// A cubic from one knot to the next with these slopes at them.
double between(const Knot &from, const Knot &to, double slopeFrom, double slopeTo, double x)
{
    if (x >= to.x)
        return to.y; // the sum below would miss it by the error of computing
    const double width = to.x - from.x, secant = (to.y - from.y) / width, along = x - from.x;
    const double square = (3 * secant - 2 * slopeFrom - slopeTo) / width;
    const double cube = (slopeFrom + slopeTo - 2 * secant) / (width * width);
    const double y = from.y + along * (slopeFrom + along * (square + along * cube));
    const auto [low, high] = std::minmax(from.y, to.y);
    return limited(y, low, high);
}
} // namespace

ToneCurve::ToneCurve()
{
    const Knot line[] = {{0, 0}, {1, 1}};
    setKnots(line, 2);
}

ToneCurve::Knot ToneCurve::knot(int index) const
{
    return points[size_t(std::clamp(index, 0, used - 1))];
}

bool ToneCurve::operator==(const ToneCurve &other) const
{
    return std::equal(points.begin(), points.begin() + used, other.points.begin(),
                      other.points.begin() + other.used);
}

bool ToneCurve::setKnots(const Knot *knots, int knotCount)
{
    if (knotCount < kLeastKnots || knotCount > kMostKnots)
        return false;
    for (int i = 0; i < knotCount; ++i)
        if (!isLevel(knots[i].x) || !isLevel(knots[i].y) ||
            (i > 0 && !farEnough(knots[i - 1].x, knots[i].x)))
            return false;
    // On the grid a knot's text gives the very same knot again.
    std::transform(knots, knots + knotCount, points.begin(), [](const Knot &knot) {
        return Knot{onGrid(knot.x), onGrid(knot.y)};
    });
    used = knotCount;
    chosen = std::clamp(chosen, 0, used - 1);
    findSlopes();
    return true;
}

int ToneCurve::add(double x, double y)
{
    if (used == kMostKnots || !isLevel(x) || !isLevel(y))
        return -1;
    const Knot added{onGrid(x), onGrid(y)};
    const auto end = points.begin() + used;
    const auto place =
        std::find_if(points.begin(), end, [&](const Knot &knot) { return knot.x > added.x; });
    if ((place != end && !farEnough(added.x, place->x)) ||
        (place != points.begin() && !farEnough(std::prev(place)->x, added.x)))
        return -1;
    std::copy_backward(place, end, end + 1);
    *place = added;
    ++used;
    findSlopes();
    return int(place - points.begin());
}

void ToneCurve::move(int index, double x, double y)
{
    if (index < 0 || index >= used)
        return;
    Knot &moved = points[size_t(index)];
    const double low = index > 0 ? points[size_t(index) - 1].x + kLeastDistance : 0;
    const double high = index < used - 1 ? points[size_t(index) + 1].x - kLeastDistance : 1;
    if (low <= high)
        moved.x = onGrid(limited(x, low, high));
    moved.y = onGrid(limited(y, 0, 1));
    findSlopes();
}

bool ToneCurve::remove(int index)
{
    if (isEnd(index))
        return false;
    std::copy(points.begin() + index + 1, points.begin() + used, points.begin() + index);
    --used;
    chosen = std::clamp(chosen, 0, used - 1);
    findSlopes();
    return true;
}

/// The slope at a knot is that of the parabola through it and its neighbours, and 0 where the
/// curve turns. Where the two slopes of a span would carry the cubic beyond its ends, both
/// shrink until they lie within a circle of three secants, in which no cubic does so.
void ToneCurve::findSlopes()
{
    std::array<double, kMostKnots> width{}, secant{};
    const size_t spans = size_t(used) - 1;
    for (size_t i = 0; i < spans; ++i) {
        width[i] = points[i + 1].x - points[i].x;
        secant[i] = (points[i + 1].y - points[i].y) / width[i];
    }
    if (spans == 1) {
        slopes[0] = slopes[1] = secant[0];
        return;
    }
    slopes[0] = endSlope(width[0], width[1], secant[0], secant[1]);
    slopes[spans] =
        endSlope(width[spans - 1], width[spans - 2], secant[spans - 1], secant[spans - 2]);
    for (size_t i = 1; i < spans; ++i)
        slopes[i] =
            secant[i - 1] * secant[i] <= 0
                ? 0
                : (width[i] * secant[i - 1] + width[i - 1] * secant[i]) / (width[i - 1] + width[i]);
    for (size_t i = 0; i < spans; ++i) {
        if (secant[i] == 0) {
            slopes[i] = slopes[i + 1] = 0;
            continue;
        }
        const double reach = std::hypot(slopes[i] / secant[i], slopes[i + 1] / secant[i]);
        if (reach > 3) {
            slopes[i] *= 3 / reach;
            slopes[i + 1] *= 3 / reach;
        }
    }
}

double ToneCurve::valueAt(double x) const
{
    const auto end = points.begin() + used;
    const auto right =
        std::find_if(points.begin(), end, [x](const Knot &knot) { return knot.x >= x; });
    if (right == points.begin())
        return right->y;
    if (right == end)
        return points[size_t(used) - 1].y;
    const auto at = size_t(right - points.begin());
    return between(points[at - 1], points[at], slopes[at - 1], slopes[at], x);
}

void ToneCurve::fillTable(uint16_t *table) const
{
    size_t at = 0; // the first knot that does not stand before the entry
    const auto end = size_t(used);
    for (int i = 0; i < kEntries; ++i) {
        const double x = i / 65535.0;
        while (at < end && points[at].x < x)
            ++at;
        const double y = at == 0 ? points[0].y
                         : at == end
                             ? points[end - 1].y
                             : between(points[at - 1], points[at], slopes[at - 1], slopes[at], x);
        // What lies on a level but for the error of computing belongs to that level: the
        // straight line changes nothing, however many knots it has.
        table[i] = uint16_t(std::clamp(y * 65535 + kRoundingError, 0.0, 65535.0));
    }
}

QString ToneCurve::text() const
{
    QStringList pairs;
    for (int i = 0; i < used; ++i)
        pairs << number(points[size_t(i)].x) + QLatin1Char(',') + number(points[size_t(i)].y);
    return pairs.join(QLatin1Char(' '));
}

bool ToneCurve::setText(const QString &text)
{
    if (text.size() > kMostLetters)
        return false;
    const QStringList pairs = text.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (pairs.size() > kMostKnots)
        return false;
    std::array<Knot, kMostKnots> read{};
    for (int i = 0; i < pairs.size(); ++i) {
        const QStringList sides = pairs.at(i).split(QLatin1Char(','));
        bool isX = false, isY = false;
        read[size_t(i)] = {sides.value(0).toDouble(&isX), sides.value(1).toDouble(&isY)};
        if (sides.size() != 2 || !isX || !isY)
            return false;
    }
    return setKnots(read.data(), int(pairs.size()));
}

QStringList ToneCurve::presetNames()
{
    QStringList names;
    for (const auto &preset : kPresets)
        names << QCoreApplication::translate("ToneCurve", preset.name);
    return names;
}

ToneCurve ToneCurve::preset(int index)
{
    ToneCurve curve;
    if (index > 0 && index < int(std::size(kPresets)))
        curve.setText(QLatin1String(kPresets[index].text));
    return curve;
}

int ToneCurve::presetIndex() const
{
    for (int i = 0; i < int(std::size(kPresets)); ++i)
        if (*this == preset(i))
            return i;
    return -1;
}
