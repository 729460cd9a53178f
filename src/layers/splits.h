// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>

class image;

/// Splits of a layer (or picture) into pictures of its channels. Each part is a new atomic
/// image of the source's size and alpha, named after it with a tag in brackets, at its
/// place in a stack (offsets) and in the mode that it is meant for. The list is bottom
/// first; it is empty, with nothing kept, if memory is short. The caller owns the parts.
///
/// A stack of the parts in the order of the list shows the picture again: to the bit where
/// it is opaque, but for HSV, whose hue is steep, to about 16 of 65535. What lies below the
/// stack is hidden as the source would hide it. To that end the lowest part of the first
/// three splits is in mode "Normal".
///
/// A source in the YRB encoding is split by the RGB that it stands for.

/// "[red]", "[green]", "[blue]", each holding its channel alone, the others 0: "Add".
QList<image *> splitChannels(const image &source);
/// "[cyan]", "[magenta]", "[yellow]", each white but for the channel that its ink takes
/// away: "Multiply".
QList<image *> splitCMY(const image &source);
/// The same with "[black]": the grey of the greatest channel, which is the least ink of the
/// three; the other inks are what is left of them when it is taken out: "Multiply".
QList<image *> splitCMYK(const image &source);
/// Grey pictures "[value]", "[saturation]" and "[hue]", each component over its whole range:
/// "V", "S" and "H". The order matters: a grey has no hue to keep, and black keeps nothing.
QList<image *> splitHSV(const image &source);
