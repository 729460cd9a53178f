// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPoint>

class image;

/// Copy and paste. The clipboard carries pictures at 16 bits within this program and at
/// 8 bits, as a PNG among others, to and from other programs. Refusals and failures are
/// told through the workspace.

/// Whether the clipboard holds a picture.
bool clipboardHasPicture();
/// Leaves other programs the clipboard's picture at 8 bits and lets go of our own: the
/// program is about to end.
void releaseClipboard();
/// Puts the selected part of an image on the clipboard, its alpha weighed by the
/// selection; the whole image if nothing is selected. Of a master, as composed.
/// False, told, if there is nothing to copy or memory is short.
bool copyToClipboard(image *img);
/// The same, then takes the selected part away: alpha falls by the selection. Undoable.
bool cutToClipboard(image *img);
/// Lays the clipboard's picture over the image, through the selection and in its middle;
/// if nothing is selected, around `centre` (image samples). Undoable. Of a master, into
/// its target.
bool pasteInto(image *img, QPoint centre);
/// A new atomic image of the clipboard's picture, shown.
bool pasteAsNew();
/// A new layer on top of the image's stack, which is made if there is none.
bool pasteAsLayer(image *img);
