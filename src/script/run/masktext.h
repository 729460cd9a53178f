// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>

class Mask;
class QSize;

/// A selection as one word of letters, digits, "+", "/" and "=": its words, each less the one
/// before it, compressed. Null if memory is short or the word would be longer than `most`.
QString maskText(const uint16_t *mask, int width, int height, int most);
/// Reads it back into a mask of that size. False, with nothing allocated for sizes that the
/// text cannot fill, if the text is none of such a mask or memory is short.
bool maskFromText(const QString &text, const QSize &size, Mask *mask);
