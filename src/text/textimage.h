// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>

class image;

/// What a text looks like when it is drawn into an image.
struct TextStyle {
    QString family = QStringLiteral("Times");
    double pixels = 48; ///< height of the font, 1 to 4000
    bool bold = false, italic = false, underline = false;
    bool antialias = true;
    int align = 0;        ///< of lines to each other: 0 left, 1 centre, 2 right
    double leading = 1.0; ///< distance of base lines, in line heights, 0 to 100
    uint16_t red = 0, green = 0, blue = 0;
};

/// Measures of a rendered text, in samples.
struct TextMetrics {
    int width, height;            ///< of all lines together
    int lineHeight;               ///< distance of base lines at leading 1.0
    int ascent, descent, leading; ///< of the font
};

/// The text as an atomic image, cut to its size: the colour everywhere, coverage in alpha.
/// Lines are separated by '\n'. A family that is missing is replaced by what Qt finds near
/// it. Null for an empty text, a style out of its ranges, a picture of more than 2^28
/// samples or kMaxImageSide, or if memory is short. Needs a QGuiApplication, no display.
image *renderText(const QString &text, const TextStyle &style, TextMetrics *metrics = nullptr);
/// The measures alone; all 0 where renderText would refuse the text.
TextMetrics measureText(const QString &text, const TextStyle &style);
