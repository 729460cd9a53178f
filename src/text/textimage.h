// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>

class image;

/// What a text looks like when it is drawn into an image.
struct TextStyle {
    QString family = QStringLiteral("Times");
    double pixels = 48;       ///< height of the font, 1 to 4000
    bool bold = false, italic = false, underline = false;
    bool antialias = true;
    int align = 0;            ///< of lines to each other: 0 left, 1 centre, 2 right
    double leading = 1.0;     ///< distance of base lines, in line heights
    uint16_t red = 0, green = 0, blue = 0;
};

/// Measures of a rendered text, in samples.
struct TextMetrics {
    int width, height;        ///< of all lines together
    int lineHeight, ascent, descent, leading;
};

/// The text as an atomic image, cut to its size: the colour everywhere, coverage in alpha.
/// Lines are separated by '\n'. Null for an empty text, one too large, or if memory is short.
image *renderText(const QString &text, const TextStyle &style, TextMetrics *metrics = nullptr);
/// The measures alone.
TextMetrics measureText(const QString &text, const TextStyle &style);
