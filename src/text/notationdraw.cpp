// SPDX-License-Identifier: GPL-3.0-or-later
#include "text/notationdraw.h"

#include <QColor>
#include <QFont>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QImage>
#include <QLineF>
#include <QPainter>
#include <QPainterPath>
#include <QStringList>
#include <QVector>

#include <algorithm>
#include <cmath>
#include <vector>

namespace
{
constexpr double kTextPoints = 11;
constexpr double kPixelsAt96 = kTextPoints * 96 / 72;
/// Files may hold texts of any length; more than this is no note that anybody reads.
constexpr int kMostLines = 200, kMostLineLength = 500;
/// A tangle of lines longer than this together shows no more than each nth of them.
constexpr double kMostLength = 400000;
constexpr double kFine = 0.7; ///< steps of a polygon below this length are left out
constexpr double kLine = 2.0, kRim = 1.4;
constexpr double kHeadLength = 13.0, kHeadHalf = 5.0;
constexpr double kPinRadius = 4.0;
constexpr double kPlateMargin = 4.0, kPlateRound = 3.0;
const QColor kLight(255, 238, 130), kDark(24, 20, 8);

enum Mode { kPlain, kOutlined, kPlate };

QFont fontOf(const Notation &note)
{
    QFont font(note.font.isEmpty() ? QStringLiteral("Times") : note.font);
    font.setPointSizeF(kTextPoints);
    font.setBold(note.mode == kOutlined);
    return font;
}

/// The lines as they are drawn, which a file from elsewhere may have made endless.
QStringList linesOf(const QString &text)
{
    QStringList lines;
    for (int from = 0; from <= text.size() && lines.size() < kMostLines;) {
        int end = text.indexOf(QLatin1Char('\n'), from);
        if (end < 0)
            end = text.size();
        lines << text.mid(from, std::min(end - from, kMostLineLength));
        from = end + 1;
    }
    return lines;
}

bool isBlank(const Notation &note)
{
    return note.text.trimmed().isEmpty();
}

bool isPin(const Notation &note)
{
    return isBlank(note) && !note.pointing && note.points.isEmpty();
}

double limitedOpacity(double opacity)
{
    return opacity >= 0.0 ? std::min(opacity, 1.0) : opacity < 0.0 ? 0.0 : 1.0;
}

/// The part of the line from a to b inside of `box`; false if there is none.
bool clipLine(const QRectF &box, QPointF *a, QPointF *b)
{
    const double dx = b->x() - a->x(), dy = b->y() - a->y();
    double first = 0.0, last = 1.0;
    const auto cut = [&first, &last](double direction, double room) {
        if (direction == 0.0)
            return room >= 0.0;
        const double at = room / direction;
        if (direction < 0.0)
            first = std::max(first, at);
        else
            last = std::min(last, at);
        return first <= last;
    };
    if (!cut(-dx, a->x() - box.left()) || !cut(dx, box.right() - a->x()) ||
        !cut(-dy, a->y() - box.top()) || !cut(dy, box.bottom() - a->y()))
        return false;
    const QPointF from = *a;
    *a = from + QPointF(dx, dy) * first;
    *b = from + QPointF(dx, dy) * last;
    return true;
}

/// Room around what is seen, so that no end of a cut line shows.
QRectF drawnArea(const NotationView &view)
{
    const double margin = 20.0 * notationUnit();
    return view.visible.adjusted(-margin, -margin, margin, margin);
}

/// The seen pieces of a closed outline. Lines apart, since a path would be filled as one
/// area, which takes minutes where thousands of lines cross.
void outlineLines(const QPolygon &points, const NotationView &view, QVector<QLineF> *lines)
{
    const QRectF area = drawnArea(view);
    std::vector<QPointF> path;
    for (const QPoint &point : points) {
        const QPointF at = view.map(point.x(), point.y());
        if (path.empty() || std::abs(at.x() - path.back().x()) >= kFine ||
            std::abs(at.y() - path.back().y()) >= kFine)
            path.push_back(at);
    }
    std::vector<QLineF> seen;
    double length = 0;
    for (size_t i = 0; i < path.size(); ++i) {
        QPointF a = path[i], b = path[(i + 1) % path.size()];
        if (!clipLine(area, &a, &b))
            continue;
        seen.emplace_back(a, b);
        length += seen.back().length();
    }
    const size_t step = size_t(length / kMostLength) + 1;
    for (size_t i = 0; i < seen.size(); i += step)
        lines->append(seen[i]);
}

/// Shaft and head of the arrow; a head alone where the ends are one.
void arrowParts(const Notation &note, const NotationView &view, QVector<QLineF> *lines,
                QPainterPath *head)
{
    const double unit = notationUnit();
    const QPointF tail = view.map(note.tailX, note.tailY), tip = view.map(note.headX, note.headY);
    const QPointF along = tip - tail;
    const double length = std::hypot(along.x(), along.y());
    const QRectF area = drawnArea(view);
    if (length < 1.0) {
        head->addEllipse(tip, kHeadHalf * unit, kHeadHalf * unit);
        return;
    }
    const QPointF forward = along / length, side(-forward.y(), forward.x());
    const double reach = std::min(kHeadLength * unit, length);
    const QPointF base = tip - forward * reach;
    QPointF from = tail, to = base + forward * (reach / 4);
    if (clipLine(area, &from, &to))
        lines->append(QLineF(from, to));
    if (area.contains(tip)) {
        const double half = kHeadHalf * unit;
        head->addPolygon(QPolygonF({tip, base + side * half, base - side * half}));
        head->closeSubpath();
    }
}

/// A rim below the lines first, so that crossing lines stay whole.
void drawLines(QPainter *painter, const QVector<QLineF> &lines, const QPainterPath &solids)
{
    const double unit = notationUnit();
    for (const bool rim : {true, false}) {
        const QColor color = rim ? kDark : kLight;
        const double more = rim ? 2 * kRim * unit : 0.0;
        painter->setPen(QPen(color, kLine * unit + more, Qt::SolidLine, Qt::RoundCap));
        painter->drawLines(lines);
        painter->setPen(rim ? QPen(color, more, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin)
                            : QPen(Qt::NoPen));
        painter->setBrush(color);
        painter->drawPath(solids);
    }
}

void drawText(QPainter *painter, const Notation &note, const NotationView &view)
{
    const QRectF box = notationTextBox(note, view);
    if (!box.intersects(view.visible))
        return;
    const double unit = notationUnit();
    const QFont font = fontOf(note);
    const QFontMetricsF metrics(font);
    const bool plate = note.mode == kPlate;
    if (plate) {
        painter->setPen(QPen(kDark, unit));
        painter->setBrush(kLight);
        painter->drawRoundedRect(box, kPlateRound * unit, kPlateRound * unit);
    }
    const double margin = plate ? kPlateMargin * unit : 0.0;
    QPointF at = box.topLeft() + QPointF(margin, margin + metrics.ascent());
    const double rim = (note.mode == kOutlined ? 2.0 : 1.0) * kRim * unit;
    painter->setFont(font);
    for (const QString &line : linesOf(note.text)) {
        if (!plate) {
            QPainterPath letters;
            letters.addText(at, font, line);
            painter->strokePath(letters,
                                QPen(kDark, 2 * rim, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
            painter->fillPath(letters, kLight);
        } else {
            painter->setPen(kDark);
            painter->drawText(at, line);
        }
        at.ry() += metrics.lineSpacing();
    }
}

void drawOpaque(QPainter *painter, const Notation &note, const NotationView &view)
{
    QPainterPath solids;
    QVector<QLineF> lines;
    outlineLines(note.points, view, &lines);
    if (note.pointing)
        arrowParts(note, view, &lines, &solids);
    if (isPin(note))
        solids.addEllipse(notationTextBox(note, view));
    if (!lines.isEmpty() || !solids.isEmpty())
        drawLines(painter, lines, solids);
    if (!isBlank(note))
        drawText(painter, note, view);
}

/// Rims must not shine through what lies on them, so all is drawn aside and laid on as one.
void drawThrough(QPainter *painter, const Notation &note, const NotationView &view, double opacity)
{
    const double ratio = painter->device()->devicePixelRatioF();
    QImage aside((view.visible.size() * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
    if (aside.isNull())
        return;
    aside.setDevicePixelRatio(ratio);
    aside.fill(Qt::transparent);
    {
        QPainter inner(&aside);
        inner.setRenderHints(painter->renderHints());
        inner.translate(-view.visible.topLeft());
        drawOpaque(&inner, note, view);
    }
    painter->setOpacity(painter->opacity() * opacity);
    painter->drawImage(view.visible.topLeft(), aside);
}
} // namespace

double notationUnit()
{
    QFont font(QStringLiteral("Times"));
    font.setPointSizeF(kTextPoints);
    return std::max(1.0, QFontInfo(font).pixelSize() / kPixelsAt96);
}

QRectF notationTextBox(const Notation &note, const NotationView &view)
{
    const double unit = notationUnit();
    const QPointF corner = view.map(note.textX, note.textY);
    if (isPin(note)) {
        const double radius = kPinRadius * unit;
        return {corner.x() - radius, corner.y() - radius, 2 * radius, 2 * radius};
    }
    if (isBlank(note))
        return {};
    const QFontMetricsF metrics(fontOf(note));
    const QStringList lines = linesOf(note.text);
    double widest = 0;
    for (const QString &line : lines)
        widest = std::max(widest, metrics.horizontalAdvance(line));
    const double margin = note.mode == kPlate ? kPlateMargin * unit : 0.0;
    const double height = metrics.height() + (lines.size() - 1) * metrics.lineSpacing();
    return {corner.x(), corner.y(), widest + 2 * margin, height + 2 * margin};
}

void drawNotation(QPainter *painter, const Notation &note, const NotationView &view)
{
    const double opacity = limitedOpacity(note.opacity);
    if (!painter || opacity == 0.0 || view.visible.isEmpty())
        return;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    if (opacity < 1.0)
        drawThrough(painter, note, view, opacity);
    else
        drawOpaque(painter, note, view);
    painter->restore();
}
