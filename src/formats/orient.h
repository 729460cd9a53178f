// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

class image;

/// Orientation as EXIF counts it: 1 upright; 2 mirrored left to right; 3 turned by 180
/// degrees; 4 mirrored top to bottom; 5 to 8 with sides swapped. It tells what has to be
/// done to the samples, as they are stored, to see the picture upright: 6 a quarter turn
/// clockwise, 8 one counterclockwise, 5 and 7 a mirroring along a diagonal.

/// The orientation in an EXIF block that begins with "Exif\0\0"; 0 if it names none.
int exifOrientation(const QByteArray &block);

/// Writes another orientation over the one in a block, which keeps its length. False, with
/// nothing changed, if the block names none or the orientation is not 1 to 8.
bool setExifOrientation(QByteArray *block, int orientation);

/// Turns or mirrors the planes of an atomic image or a layer by an orientation, with one
/// undo record. Notations, guides, the centre and the resolutions of the two axes follow, and so
/// do the displacements of a warp layer. 1 does nothing. False, with nothing changed, for a
/// master, another orientation, or if memory is short.
bool orientImage(image *img, int orientation);

/// Turns the picture by the orientation in its EXIF block, which then says 1. False if
/// there is nothing to turn by, or orientImage failed.
bool turnUpright(image *img);

/// To be called within an act that turned or mirrored the samples by itself, after its undo
/// record was made: the orientations that came with the picture hold no more, so the EXIF
/// block, its line for people and that of a camera RAW say upright.
void forgetOrientation(image *img);
