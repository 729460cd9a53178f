// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class image;

/// A new image of the given size named after the source with ": reduceBy2" appended;
/// each sample averages four neighbours at the floored source position. Null if memory
/// is short. The bottom row reads the spare rows and comes out darker: that is intended.
image *reduce(const image *source, int targetWidth, int targetHeight);

/// A new image of half the size, each sample the average of a 2 x 2 block; null unless
/// both sides are even and at least 2.
image *reduceBy2(const image *source);

/// Scales all four colour planes of the source into the whole of the target. With
/// keepAspect the picture is fitted and centred and the rest becomes white at alpha 0.
/// False for a null argument or if memory is short.
bool scaleBilinear(const image *source, image *target, bool keepAspect);
bool scaleNearest(const image *source, image *target, bool keepAspect);

/// Bilinear scale that halves large sources first, for thumbnails without sparkle.
bool smartReduce(const image *source, image *target);
