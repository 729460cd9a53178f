// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/dialog/curve.h"

#include "core/image.h"

#include <QAccessible>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace
{
// Measures in points of a screen of 96 dpi; see unit().
constexpr double kHandle = 4.5; ///< radius of a knot
constexpr double kReach = 9;    ///< as far from a knot a press still takes it
constexpr double kLiftAt = 16;  ///< as far out of the widget a dragged knot is taken away
constexpr double kRamp = 6;     ///< breadth of the grey ramps along the axes
constexpr double kMargin = 7;   ///< room for handles at the edges
constexpr double kStep = 1 / 255.0;

int shownLevel(double level)
{
    return int(std::lround(std::clamp(level, 0.0, 1.0) * 255));
}

QColor faded(QColor colour, double opacity)
{
    colour.setAlphaF(opacity);
    return colour;
}
} // namespace

Curve::Curve(ToneCurve *curve, QWidget *parent)
    : QWidget(parent), edits(curve), beforePress(*curve), atPress(*curve)
{
    setAccessibleName(tr("Tone curve"));
    setToolTip(tr("Click to add a knot, drag it to move it, drag it out or press Delete to take it "
                  "away.\nKeys: Tab chooses a knot, arrows move it (Shift: faster), Insert adds "
                  "one."));
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    describe();
}

void Curve::showCurve()
{
    dragging = lifted = false;
    describe();
    update();
}

void Curve::setPicture(const image *picture)
{
    values = {};
    const int64_t count =
        picture && picture->valid() && picture->alpha ? picture->sampleCount() : 0;
    for (int64_t i = 0; i < count; ++i)
        if (picture->alpha[i])
            ++values[size_t(std::max({picture->red[i], picture->green[i], picture->blue[i]}) >> 8)];
    update();
}

QSize Curve::sizeHint() const
{
    return (QSizeF(280, 220) * unit()).toSize();
}

QSize Curve::minimumSizeHint() const
{
    return (QSizeF(160, 130) * unit()).toSize();
}

// --- Places ------------------------------------------------------------------------------

/// What a point is on a screen whose texts are larger.
double Curve::unit() const
{
    return std::max(1.0, logicalDpiY() / 96.0);
}

QRectF Curve::plot() const
{
    const double margin = kMargin * unit(), ramp = kRamp * unit();
    return QRectF(rect()).adjusted(margin + ramp, margin, -margin, -margin - ramp);
}

QPointF Curve::placeOf(double x, double y) const
{
    const QRectF area = plot();
    return {area.left() + x * area.width(), area.bottom() - y * area.height()};
}

ToneCurve::Knot Curve::levelsAt(const QPointF &place) const
{
    const QRectF area = plot();
    return {(place.x() - area.left()) / std::max(1.0, area.width()),
            (area.bottom() - place.y()) / std::max(1.0, area.height())};
}

int Curve::knotNear(const QPointF &place) const
{
    int nearest = -1;
    double least = kReach * unit();
    for (int i = 0; i < edits->count(); ++i) {
        const ToneCurve::Knot knot = edits->knot(i);
        const QPointF way = placeOf(knot.x, knot.y) - place;
        const double distance = std::hypot(way.x(), way.y());
        if (distance <= least) {
            least = distance;
            nearest = i;
        }
    }
    return nearest;
}

// --- Changes -----------------------------------------------------------------------------

void Curve::choose(int index)
{
    edits->chosen = std::clamp(index, 0, edits->count() - 1);
    describe();
    update();
    emit knotChosen();
}

void Curve::changed()
{
    describe();
    update();
    emit edited();
}

void Curve::removeKnot(int index)
{
    if (!edits->remove(index))
        return;
    edits->chosen = std::min(index, edits->count() - 1);
    changed();
}

/// Adds a knot on the curve halfway to the next one, behind the last halfway to the one before.
void Curve::insertKnot()
{
    const int from = std::min(edits->chosen, edits->count() - 2);
    const double x = (edits->knot(from).x + edits->knot(from + 1).x) / 2;
    const int added = edits->add(x, edits->valueAt(x));
    if (added < 0)
        return;
    edits->chosen = added;
    changed();
}

/// What a screen reader says of the curve.
void Curve::describe()
{
    const ToneCurve::Knot knot = edits->knot(edits->chosen);
    const QString text = tr("Knot %1 of %2: in %3, out %4")
                             .arg(edits->chosen + 1)
                             .arg(edits->count())
                             .arg(shownLevel(knot.x))
                             .arg(shownLevel(knot.y));
    if (text == accessibleDescription())
        return;
    setAccessibleDescription(text);
    QAccessibleEvent event(this, QAccessible::DescriptionChanged);
    QAccessible::updateAccessibility(&event);
}

// --- Mouse -------------------------------------------------------------------------------

void Curve::mousePressEvent(QMouseEvent *event)
{
    const QPointF place = event->localPos();
    int index = knotNear(place);
    if (event->button() == Qt::RightButton && !dragging && index >= 0)
        removeKnot(index);
    if (event->button() != Qt::LeftButton || dragging)
        return;
    beforePress = *edits;
    const bool adds = index < 0;
    if (adds) {
        const ToneCurve::Knot at = levelsAt(place);
        index = edits->add(std::clamp(at.x, 0.0, 1.0), std::clamp(at.y, 0.0, 1.0));
        if (index < 0)
            return; // as many as there can be, or one stands right above or below
    }
    edits->chosen = index;
    atPress = *edits;
    dragging = true;
    lifted = false;
    showCursor(place);
    choose(index);
    if (adds)
        changed();
}

void Curve::mouseMoveEvent(QMouseEvent *event)
{
    pointer = event->localPos();
    if (dragging)
        drag(pointer);
    showCursor(pointer);
    update();
}

void Curve::drag(const QPointF &place)
{
    const double far = kLiftAt * unit();
    const QRectF around = QRectF(rect()).adjusted(-far, -far, far, far);
    const int index = atPress.chosen;
    const ToneCurve before = *edits;
    *edits = atPress;
    lifted = !around.contains(place) && !atPress.isEnd(index);
    if (lifted) {
        edits->remove(index);
    } else {
        const ToneCurve::Knot at = levelsAt(place);
        edits->move(index, at.x, at.y);
    }
    if (!(*edits == before))
        changed();
}

void Curve::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !dragging)
        return;
    stopDrag(false);
    showCursor(event->localPos());
}

void Curve::stopDrag(bool takeBack)
{
    dragging = lifted = false;
    if (takeBack) {
        *edits = beforePress;
        changed();
    }
    update();
}

void Curve::leaveEvent(QEvent *)
{
    pointer = {-1, -1};
    update();
}

void Curve::showCursor(const QPointF &place)
{
    const Qt::CursorShape shape = lifted                 ? Qt::ForbiddenCursor
                                  : dragging             ? Qt::ClosedHandCursor
                                  : knotNear(place) >= 0 ? Qt::OpenHandCursor
                                                         : Qt::CrossCursor;
    if (cursor().shape() != shape)
        setCursor(shape);
}

// --- Keys --------------------------------------------------------------------------------

bool Curve::moveByKey(QKeyEvent *event)
{
    const int dx = (event->key() == Qt::Key_Right) - (event->key() == Qt::Key_Left);
    const int dy = (event->key() == Qt::Key_Up) - (event->key() == Qt::Key_Down);
    if (!dx && !dy)
        return false;
    if (event->modifiers() & Qt::ControlModifier) {
        choose(edits->chosen + dx + dy);
        return true;
    }
    const double step = event->modifiers() & Qt::ShiftModifier ? 10 * kStep : kStep;
    const ToneCurve::Knot knot = edits->knot(edits->chosen);
    edits->move(edits->chosen, knot.x + dx * step, knot.y + dy * step);
    changed();
    return true;
}

void Curve::keyPressEvent(QKeyEvent *event)
{
    if (dragging) { // the mouse has the knot; one can only give up
        if (event->key() == Qt::Key_Escape)
            stopDrag(true);
        return;
    }
    if (moveByKey(event))
        return;
    switch (event->key()) {
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
        removeKnot(edits->chosen);
        break;
    case Qt::Key_Insert:
    case Qt::Key_Plus:
        insertKnot();
        break;
    case Qt::Key_Home:
        choose(0);
        break;
    case Qt::Key_End:
        choose(edits->count() - 1);
        break;
    default:
        QWidget::keyPressEvent(event);
    }
}

/// Tab goes from knot to knot, and on to the next control behind the last.
bool Curve::focusNextPrevChild(bool next)
{
    const int index = edits->chosen + (next ? 1 : -1);
    if (index < 0 || index >= edits->count())
        return QWidget::focusNextPrevChild(next);
    choose(index);
    return true;
}

void Curve::focusInEvent(QFocusEvent *event)
{
    if (event->reason() == Qt::TabFocusReason)
        choose(0);
    else if (event->reason() == Qt::BacktabFocusReason)
        choose(edits->count() - 1);
    QWidget::focusInEvent(event);
}

void Curve::focusOutEvent(QFocusEvent *event)
{
    if (dragging)
        stopDrag(false);
    QWidget::focusOutEvent(event);
}

// --- Drawing -----------------------------------------------------------------------------

QString Curve::readout() const
{
    const auto pair = [](double x, double y) {
        return QStringLiteral("%1 -> %2").arg(shownLevel(x)).arg(shownLevel(y));
    };
    if (lifted)
        return tr("taken away");
    const double under = levelsAt(pointer).x;
    if (!dragging && pointer.x() >= 0 && knotNear(pointer) < 0 && under >= 0 && under <= 1)
        return pair(under, edits->valueAt(under));
    const int near = dragging || pointer.x() < 0 ? -1 : knotNear(pointer);
    if (!dragging && near < 0 && !hasFocus())
        return QString();
    const ToneCurve::Knot knot = edits->knot(near < 0 ? edits->chosen : near);
    return pair(knot.x, knot.y);
}

void Curve::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QRectF area = plot();
    if (area.width() < 4 || area.height() < 4)
        return;
    drawGround(&painter, area);
    painter.setRenderHint(QPainter::Antialiasing);
    drawLine(&painter, area);
    drawKnots(&painter);
    drawReadout(&painter, area);
}

void Curve::drawGround(QPainter *painter, const QRectF &area) const
{
    painter->fillRect(area, palette().color(QPalette::Base));
    drawHistogram(painter, area);

    const QColor ink = palette().color(QPalette::Text);
    painter->setPen(QPen(faded(ink, 0.18), 0)); // 0: one device pixel on any screen
    for (int i = 1; i < 4; ++i) {
        painter->drawLine(placeOf(i / 4.0, 0), placeOf(i / 4.0, 1));
        painter->drawLine(placeOf(0, i / 4.0), placeOf(1, i / 4.0));
    }
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(QPen(faded(ink, 0.35), unit(), Qt::DashLine));
    painter->drawLine(placeOf(0, 0), placeOf(1, 1));
    painter->setRenderHint(QPainter::Antialiasing, false);
    painter->setPen(QPen(faded(ink, 0.5), 0));
    painter->setBrush(Qt::NoBrush);
    painter->drawRect(area);

    // What goes in runs along the bottom, what comes out up the left side.
    QLinearGradient across(area.bottomLeft(), area.bottomRight());
    QLinearGradient upwards(area.bottomLeft(), area.topLeft());
    for (QLinearGradient *ramp : {&across, &upwards}) {
        ramp->setColorAt(0, Qt::black);
        ramp->setColorAt(1, Qt::white);
    }
    const double ramp = kRamp * unit(), gap = 2 * unit();
    painter->setBrush(across);
    painter->drawRect(QRectF(area.left(), area.bottom() + gap, area.width(), ramp));
    painter->setBrush(upwards);
    painter->drawRect(QRectF(area.left() - gap - ramp, area.top(), ramp, area.height()));
}

void Curve::drawHistogram(QPainter *painter, const QRectF &area) const
{
    // Clipped values pile up at the ends and would flatten all others.
    const int top = *std::max_element(values.begin() + 1, values.end() - 1);
    if (top == 0)
        return;
    QPainterPath shape(area.bottomLeft());
    const double width = area.width() / double(values.size());
    for (size_t i = 0; i < values.size(); ++i) {
        const double high = std::min(1.0, values[i] / double(top)) * area.height() * 0.9;
        shape.lineTo(area.left() + double(i) * width, area.bottom() - high);
        shape.lineTo(area.left() + double(i + 1) * width, area.bottom() - high);
    }
    shape.lineTo(area.bottomRight());
    painter->fillPath(shape, faded(palette().color(QPalette::Text), 0.16));
}

void Curve::drawLine(QPainter *painter, const QRectF &area) const
{
    const double step = 0.5 / devicePixelRatioF(); // finer than a pixel of the screen
    QPolygonF line;
    for (double at = 0; at < area.width(); at += step)
        line << placeOf(at / area.width(), edits->valueAt(at / area.width()));
    line << placeOf(1, edits->valueAt(1));
    painter->setPen(QPen(palette().color(QPalette::Text), 1.6 * unit()));
    painter->setBrush(Qt::NoBrush);
    painter->drawPolyline(line);
}

void Curve::drawKnots(QPainter *painter) const
{
    const QColor ink = palette().color(QPalette::Text);
    for (int i = 0; i < edits->count(); ++i) {
        const ToneCurve::Knot knot = edits->knot(i);
        const bool isChosen = i == edits->chosen && !lifted;
        painter->setPen(QPen(ink, (isChosen && hasFocus() ? 2 : 1.2) * unit()));
        painter->setBrush(palette().color(isChosen ? QPalette::Highlight : QPalette::Base));
        painter->drawEllipse(placeOf(knot.x, knot.y), kHandle * unit(), kHandle * unit());
    }
}

void Curve::drawReadout(QPainter *painter, const QRectF &area) const
{
    const QString text = readout();
    if (text.isEmpty())
        return;
    // In the corner where the curve is not: it is above the middle there or below.
    const bool low = edits->valueAt(0.15) > 0.75;
    const QSizeF size(fontMetrics().horizontalAdvance(text) + 8, fontMetrics().height() + 2);
    const QPointF corner(area.left() + 4, low ? area.bottom() - size.height() - 4 : area.top() + 4);
    const QRectF box(corner, size);
    painter->setPen(Qt::NoPen);
    painter->setBrush(faded(palette().color(QPalette::Base), 0.8));
    painter->drawRect(box);
    painter->setPen(palette().color(QPalette::Text));
    painter->drawText(box, Qt::AlignCenter, text);
}
