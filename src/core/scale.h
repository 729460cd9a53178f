// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class image;

/// A new image of the given size named after the source with ": reduceBy2" appended;
/// each sample is a quarter of the sum of up to four neighbours at the floored source
/// position: itself, the right one except in the last column, the lower one, and the
/// lower right one except in the last row. The lower one of the last row is read from
/// the spare rows, so the bottom comes out darker: that is intended.
/// Null if memory is short or the size is impossible.
image *reduce(const image *source, int targetWidth, int targetHeight);

/// A new image of half the size, each sample the average of a 2 x 2 block; null unless
/// both sides are even and at least 2.
image *reduceBy2(const image *source);

/// Scales all four colour planes of the source into the whole of the target. With
/// keepAspect the picture is fitted and centred and the rest becomes white at alpha 0.
/// False for a null argument, for one image in both places, or if memory is short.
///
/// Output row y reads source row y * (source height / target height), the columns
/// likewise, in doubles; the whole part is the upper left neighbour, the fraction is
/// the share of the next one. Neighbours past the last row or column are the last.
/// core/bilinear_inline.h states the mix; its result is truncated.
bool scaleBilinear(const image *source, image *target, bool keepAspect);
/// The same frame, taking the sample at the whole part.
bool scaleNearest(const image *source, image *target, bool keepAspect);

/// Bilinear scale that halves large sources first, for thumbnails without sparkle.
bool smartReduce(const image *source, image *target);
