// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPixmap>

class image;

/// A picture of the whole image in the middle of a square of `side` points, for a screen of
/// `ratio` pixels a point; what the image leaves free is transparent. Takes one sample for
/// each pixel, so its cost does not depend on the size of the image. With `checker`
/// transparency shows the two greys behind it. A warp layer shows its displacements: the
/// lightness is their length, against the longest.
QPixmap smallPicture(const image &img, int side, double ratio, bool checker);
