// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>

class image;

/// Splits of a layer (or picture) into pictures of its channels. Each part is a new atomic
/// image of the same size with the source's alpha, named after it with a tag in brackets.
/// The list is bottom first; it is empty, with nothing kept, if memory is short.
///
/// A stack of the parts in their modes, on white, shows the picture again: parts of the
/// subtractive splits carry ink as darkness and are meant for mode "Multiply".

/// Grey pictures of red, green, blue: "[red]", "[green]", "[blue]", each holding its
/// channel alone in colour, for mode "Add".
QList<image *> splitChannels(const image &source);
/// "[cyan]", "[magenta]", "[yellow]".
QList<image *> splitCMY(const image &source);
/// The same with "[black]": black is the least ink of the three, taken out of them.
QList<image *> splitCMYK(const image &source);
/// Grey pictures "[hue]", "[saturation]", "[value]": each component over its whole range,
/// made for the modes "H", "S" and "V".
QList<image *> splitHSV(const image &source);
