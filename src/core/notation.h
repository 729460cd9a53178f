// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPolygon>
#include <QString>

#include <cstdint>

/// A text note on an image: a text at a place, an optional arrow and an optional
/// polygon, all in image samples.
struct Notation {
    int32_t textX = 0, textY = 0; ///< top left of the text
    int32_t tailX = 0, tailY = 0; ///< where the arrow starts
    int32_t headX = 0, headY = 0; ///< where the arrow points
    QPolygon points;
    QString text;
    QString font;          ///< family; empty: the default one. Not stored in files
    double opacity = 1.0;  ///< 0 to 1
    int32_t mode = 0;      ///< 0 plain text, 1 outlined, 2 on a plate
    bool pointing = false; ///< the arrow is drawn
};
static_assert(sizeof(void *) != 8 || sizeof(Notation) == 64);
