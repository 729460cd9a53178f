// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class image;

/// Warp layers, whose planes hold displacements (core/warpfield.h).

/// A new warp layer named "warp" of the master's size, without displacement, on top of the
/// stack or right above `above` if that is one of its layers; null if memory is short or
/// `master` is none.
image *createWarp(image *master, image *above);

/// These change the field of a warp layer, with an undo record; false, with nothing
/// changed, if it is none or a number is not finite. Components are rounded to the nearest
/// 1 / 65536 of a sample and limited to what the field can hold.
bool resetWarp(image *layer);
/// Multiplies every displacement: 0 flattens, 1 keeps, -1 reverses the warp.
bool scaleWarp(image *layer, double factor);
/// Turns the direction of every displacement by degrees, counter-clockwise as seen.
bool rotateWarp(image *layer, double degrees);
