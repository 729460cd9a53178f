// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class image;
struct TextStyle;

/// Text as an area selection: the coverage of glyphs, as renderText leaves it in alpha.

/// The leftmost column with any coverage, or -1 if there is none.
int firstInkColumn(const image &glyphs);
/// Whether any coverage falls into the image when the glyphs' first column and row lie at
/// (left, top), which may be anywhere.
bool glyphsMeet(const image &img, const image &glyphs, int left, int top);
/// Makes the coverage at that place the image's whole selection. Records no undo.
void selectGlyphs(image *img, const image &glyphs, int left, int top);

enum class TextResult {
    Done,
    Nothing,  ///< the text has no ink
    TooLarge, ///< to be rendered, or a style out of its ranges
    Outside,  ///< of the image, wholly
    NoMemory
};

/// Renders a text and makes it the image's whole selection, with its left top at (left, top).
/// Whatever is not Done leaves the selection as it was. Records no undo.
TextResult selectText(image *img, const QString &text, const TextStyle &style, int left, int top);

/// Renders a text that has ink. Null with the reason, which is neither Done nor Outside.
image *renderInk(const QString &text, const TextStyle &style, TextResult *reason);
