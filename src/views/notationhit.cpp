// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/notationhit.h"

#include "text/notationdraw.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr double kReach = 6.0;
constexpr int64_t kFarthest = 1 << 30; // as far as a window follows a position

double squaredLength(QPointF v)
{
    return QPointF::dotProduct(v, v);
}

/// Squared distance of p from the line between a and b.
double squaredDistance(QPointF p, QPointF a, QPointF b)
{
    const QPointF along = b - a;
    const double length = squaredLength(along);
    const double at =
        length > 0.0 ? std::clamp(QPointF::dotProduct(p - a, along) / length, 0.0, 1.0) : 0.0;
    return squaredLength(p - (a + along * at));
}

/// The parts of one note, as the mouse finds them.
class Target
{
public:
    Target(const Notation &of, int number, const NotationView &how, QPointF place)
        : note(of), index(number), view(how), at(place), reach(kReach * notationUnit())
    {
    }

    /// The nearest end or corner in reach.
    NotationHit point() const
    {
        NotationHit hit;
        double least = reach * reach;
        const auto look = [&](double x, double y, NotationHit::Part part, int number) {
            const double distance = squaredLength(view.map(x, y) - at);
            if (distance > least)
                return;
            least = distance;
            hit = {index, part, number};
        };
        for (int i = 0; i < note.points.size(); ++i)
            look(note.points[i].x(), note.points[i].y(), NotationHit::Part::Corner, i);
        if (note.pointing) {
            look(note.tailX, note.tailY, NotationHit::Part::Tail, -1);
            look(note.headX, note.headY, NotationHit::Part::Head, -1);
        }
        return hit;
    }

    NotationHit text() const
    {
        const QRectF box = notationTextBox(note, view);
        const double margin = reach / 2;
        const bool inside =
            !box.isEmpty() && box.adjusted(-margin, -margin, margin, margin).contains(at);
        return inside ? NotationHit{index, NotationHit::Part::Text, -1} : NotationHit();
    }

    NotationHit line() const
    {
        const double most = reach * reach;
        if (note.pointing && squaredDistance(at, view.map(note.tailX, note.tailY),
                                             view.map(note.headX, note.headY)) <= most)
            return {index, NotationHit::Part::Shaft, -1};
        for (int i = 0; i < note.points.size(); ++i) {
            const QPoint a = note.points[i], b = note.points[(i + 1) % note.points.size()];
            if (squaredDistance(at, view.map(a.x(), a.y()), view.map(b.x(), b.y())) <= most)
                return {index, NotationHit::Part::Edge, i};
        }
        return {};
    }

private:
    const Notation &note;
    int index;
    const NotationView &view;
    QPointF at;
    double reach;
};

template <class Value>
void moveBy(Value *value, int step)
{
    *value = Value(std::clamp(int64_t(*value) + step, -kFarthest, kFarthest));
}

void moveCorner(QPoint *corner, int dx, int dy)
{
    moveBy(&corner->rx(), dx);
    moveBy(&corner->ry(), dy);
}
} // namespace

NotationHit hitNotation(const QList<Notation> &notes, int chosen, const NotationView &view,
                        QPointF at)
{
    using Look = NotationHit (Target::*)() const;
    const auto find = [&](int i, std::initializer_list<Look> looks) {
        for (const Look look : looks)
            if (const NotationHit hit = (Target(notes[i], i, view, at).*look)(); hit.note >= 0)
                return hit;
        return NotationHit();
    };
    const std::initializer_list<Look> all = {&Target::point, &Target::text, &Target::line};
    if (chosen >= 0 && chosen < notes.size())
        if (const NotationHit hit = find(chosen, all); hit.note >= 0)
            return hit;
    for (int i = notes.size() - 1; i >= 0; --i)
        if (const NotationHit hit = find(i, all); hit.note >= 0)
            return hit;
    return {};
}

void moveNotationPart(Notation *note, const NotationHit &hit, bool whole, int dx, int dy)
{
    using Part = NotationHit::Part;
    const auto takes = [&](std::initializer_list<Part> parts) {
        return whole || std::find(parts.begin(), parts.end(), hit.part) != parts.end();
    };
    if (takes({Part::Text})) {
        moveBy(&note->textX, dx);
        moveBy(&note->textY, dy);
    }
    if (takes({Part::Tail, Part::Shaft})) {
        moveBy(&note->tailX, dx);
        moveBy(&note->tailY, dy);
    }
    if (takes({Part::Head, Part::Shaft})) {
        moveBy(&note->headX, dx);
        moveBy(&note->headY, dy);
    }
    if (takes({Part::Edge}))
        for (QPoint &corner : note->points)
            moveCorner(&corner, dx, dy);
    else if (hit.part == Part::Corner && hit.point >= 0 && hit.point < note->points.size())
        moveCorner(&note->points[hit.point], dx, dy);
}
