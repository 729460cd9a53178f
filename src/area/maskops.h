// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

class image;

/// Acts on a whole selection. None of them records undo; false, with the selection as it
/// was, if memory is short or the image has no planes for it.

/// Joins a new selection with an old one of as many samples: the sum up to 65535, or what
/// the old one has left of it down to 0.
void combineMasks(uint16_t *mask, const uint16_t *old, int width, int height, bool add);

bool selectFromAlpha(image *img);
/// By the brightness of each sample as the colour models define luma.
bool selectFromLuma(image *img);
/// Each sample becomes the largest (grow) or the smallest (shrink) of those no further than
/// `radius`, 1 to 500, in a circle. What lies outside of the image counts as unselected.
bool growSelection(image *img, int radius);
bool shrinkSelection(image *img, int radius);
/// Makes the selection a picture's luma, scaled to the image's size where it differs.
bool selectFromPicture(image *img, const image &picture);
