// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/rulers.h"

#include <QCoreApplication>
#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>

namespace
{
constexpr double kLeastMajor = 60.0, kLeastMinor = 5.0; // in points
constexpr double kFontPoints = 11.0;                    // height of the numbers
constexpr double kCentimetresPerInch = 2.54;

/// Parts into which the step between numbered marks may fall, finest first, for steps
/// that begin with 1, 2 and 5: each part is again 1, 2 or 5 times a power of ten.
constexpr std::array<std::array<int, 4>, 3> kParts = {
    {{10, 5, 2, 1}, {10, 4, 2, 1}, {10, 5, 1, 1}}};
constexpr double kLeading[] = {1.0, 2.0, 5.0};

/// One ruler; places are counted along it, depths across it.
struct Strip {
    double pixelsPerSample, origin; ///< pixel of image position 0
    double samplesPerUnit;
    int length, thickness;
    double ratio;
    bool whole;
    bool vertical;

    QRect box(int along, int across, int longSide, int deep) const
    {
        return vertical ? QRect(across, along, deep, longSide)
                        : QRect(along, across, longSide, deep);
    }
    double place(double value) const
    {
        return std::ceil(value * samplesPerUnit * pixelsPerSample + origin - 1e-6);
    }
    void draw(QPainter *painter, const QPalette &palette, int first) const;
    void drawNumber(QPainter *painter, double at, const QString &number) const;
    int markHeight(int64_t mark, int parts) const;
};

/// Behind its mark; along an upright ruler the number reads upwards.
void Strip::drawNumber(QPainter *painter, double at, const QString &number) const
{
    const double behind = at + 3 * ratio, base = kFontPoints * ratio;
    if (!vertical) {
        painter->drawText(QPointF(behind, base), number);
        return;
    }
    painter->save();
    painter->translate(base, behind + painter->fontMetrics().horizontalAdvance(number));
    painter->rotate(-90);
    painter->drawText(QPointF(0, 0), number);
    painter->restore();
}

int Strip::markHeight(int64_t mark, int parts) const
{
    if (mark % parts == 0)
        return thickness;
    const bool half = parts % 2 == 0 && mark % (parts / 2) == 0;
    return half ? thickness / 2 : thickness / 4;
}

void Strip::draw(QPainter *painter, const QPalette &palette, int first) const
{
    const double perUnit = pixelsPerSample * samplesPerUnit;
    const RulerScale scale = rulerScale(perUnit, kLeastMajor * ratio, kLeastMinor * ratio, whole);
    const double step = scale.major / scale.parts;
    const int line = std::max(1, int(ratio));
    const QColor ink = palette.color(QPalette::ButtonText);
    painter->fillRect(box(0, 0, length, thickness), palette.color(QPalette::Button));
    painter->setPen(ink);
    // One numbered mark before the first pixel, since its number may reach into sight.
    auto mark = int64_t(std::floor((first - origin) / perUnit / scale.major) - 1) * scale.parts;
    for (;; ++mark) {
        const double at = place(double(mark) * step);
        if (at >= length)
            break;
        const int high = markHeight(mark, scale.parts);
        painter->fillRect(box(int(at), thickness - high, line, high), ink);
        if (mark % scale.parts == 0)
            drawNumber(painter, at, QString::number(double(mark) * step, 'f', scale.decimals));
    }
    painter->fillRect(box(0, thickness - line, length, line), palette.color(QPalette::Mid));
}

QFont rulerFont(double ratio)
{
    QFont font(QStringLiteral("Times"));
    font.setPixelSize(int(kFontPoints * ratio));
    return font;
}

Strip stripOf(const RulerLook &look, bool horizontal)
{
    const ViewGeometry &view = look.view;
    const double step = horizontal ? view.xStep : view.yStep;
    const int pan = horizontal ? view.panX : view.panY;
    return {1.0 / step,
            (horizontal ? view.offsetX : view.offsetY) - pan / step,
            horizontal ? look.perX : look.perY,
            horizontal ? view.width : view.height,
            qRound(kRulerThickness * look.ratio),
            look.ratio,
            look.unit == 0,
            !horizontal};
}
} // namespace

RulerScale rulerScale(double pixelsPerUnit, double leastMajor, double leastMinor, bool whole)
{
    const double least = leastMajor / pixelsPerUnit; // in units
    int power = int(std::floor(std::log10(least)));
    if (whole)
        power = std::max(power, 0);
    const double ten = std::pow(10.0, power);
    size_t lead = 0;
    while (lead < 3 && kLeading[lead] * ten < least)
        ++lead;
    if (lead == 3) {
        lead = 0;
        ++power;
    }
    RulerScale scale = {kLeading[lead] * std::pow(10.0, power), 1, std::max(0, -power)};
    for (const int parts : kParts[lead]) {
        const double part = scale.major / parts;
        scale.parts = parts;
        // Half a unit in front of the rounding, since a part may be 0.9999... of one.
        if (part * pixelsPerUnit >= leastMinor && (!whole || part > 0.5))
            break;
    }
    return scale;
}

bool RulerLook::operator==(const RulerLook &other) const
{
    return view == other.view && ratio == other.ratio && unit == other.unit && perX == other.perX &&
           perY == other.perY && palette == other.palette;
}

void Rulers::draw(QPainter *painter, const RulerLook &look, const QPalette &palette, QPoint pointer)
{
    const int thick = qRound(kRulerThickness * look.ratio), line = std::max(1, int(look.ratio));
    if (top.isNull() || !(look == drawn)) {
        const Strip across = stripOf(look, true), down = stripOf(look, false);
        top = QPixmap(look.view.width, thick);
        left = QPixmap(thick, look.view.height);
        if (top.isNull() || left.isNull())
            return;
        QPainter onTop(&top);
        onTop.setFont(rulerFont(look.ratio));
        across.draw(&onTop, palette, thick);
        onTop.fillRect(0, 0, thick, thick, palette.color(QPalette::Button));
        onTop.drawText(QRect(0, 0, thick, thick), Qt::AlignCenter, rulerUnitName(look.unit));
        QPainter onLeft(&left);
        onLeft.setFont(rulerFont(look.ratio));
        down.draw(&onLeft, palette, thick);
        drawn = look;
        ++draws;
    }
    painter->drawPixmap(0, thick, left, 0, thick, thick, look.view.height - thick);
    painter->drawPixmap(0, 0, top);
    const QColor mark = palette.color(QPalette::Highlight);
    if (pointer.x() >= thick)
        painter->fillRect(pointer.x(), 0, line, thick, mark);
    if (pointer.y() >= thick)
        painter->fillRect(0, pointer.y(), thick, line, mark);
}

QString rulerUnitName(int unit)
{
    const char *const names[] = {QT_TRANSLATE_NOOP("Rulers", "px"),
                                 QT_TRANSLATE_NOOP("Rulers", "in"),
                                 QT_TRANSLATE_NOOP("Rulers", "cm")};
    return QCoreApplication::translate("Rulers", names[std::clamp(unit, 0, 2)]);
}

double samplesPerRulerUnit(int unit, int dpi)
{
    if (unit == 0 || dpi <= 0)
        return 1.0;
    return unit == 1 ? dpi : dpi / kCentimetresPerInch;
}
