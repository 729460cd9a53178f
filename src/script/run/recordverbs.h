// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// A figure of the verb `area`.
struct FigureWord {
    const char *word;
    int tool; ///< area/areatools.h
    bool constrained;
    int numbers; ///< kPairs: two for each point
};
constexpr int kPairs = -1;

/// Null for a word that is no figure.
const FigureWord *findFigure(const QString &word);
/// Null for a tool whose figures have no word.
const FigureWord *findFigure(int tool, bool constrained);

/// What `area` does to the whole selection.
enum class AreaWord { None, All, Invert, Alpha, Luma, Grow, Shrink, Feather, Unknown };
AreaWord areaWord(const QString &word);

/// Figures reach no further, which is far off every picture.
constexpr int kFurthestFigure = 1000000;
/// Characters of a written selection.
constexpr int kLongestMaskText = 8 << 20;
