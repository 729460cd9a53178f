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
    QString font;
    uint32_t foreground = 0xFF000000; ///< ARGB
    uint32_t background = 0xC0FFFFFF; ///< ARGB
    uint16_t pointSize = 12;
    uint16_t style = 0;
    uint32_t flags = 0;
};
static_assert(sizeof(void *) != 8 || sizeof(Notation) == 64);
