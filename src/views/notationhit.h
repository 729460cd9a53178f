// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/notation.h"

#include <QList>
#include <QPointF>

struct NotationView;

/// What of a note lies under the mouse.
struct NotationHit {
    enum class Part { None, Text, Tail, Head, Shaft, Corner, Edge };

    int note = -1; ///< place in the list, -1 for none
    Part part = Part::None;
    int point = -1; ///< of the polygon: the corner, or the one that the edge starts at
};

/// The note at a place of the surface, the topmost first, but parts of the chosen note and
/// ends and corners before what is larger. Reaches 6 points of a common screen around it.
NotationHit hitNotation(const QList<Notation> &notes, int chosen, const NotationView &view,
                        QPointF at);

/// Moves one part of a note by whole samples: a shaft takes both ends along, an edge the
/// polygon; with `whole` everything moves. Coordinates stop at their ends.
void moveNotationPart(Notation *note, const NotationHit &hit, bool whole, int dx, int dy);
