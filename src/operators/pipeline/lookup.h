// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/image.h"

// The three look-up tables are the workspace's (colorMapRed, colorMapGreen, colorMapBlue);
// without them, for want of memory, none of these does anything.

/// Sets every entry of the three tables to its own index.
void resetLut();

/// Limits a whole number to 0 to 65535.
int clampSample(int64_t value);

/// A table entry: truncated and limited to 0 to 65535. What is no number becomes 0.
uint16_t lutEntry(double value);

/// Replaces red, green and blue by what their tables hold for them: blend(table[old], old,
/// 1 - m) for each.
void applyLut(image *target);

/// The same for the value of each pixel by the green table: value, on the scale of 65535 and
/// truncated, is the index, hue and saturation stay.
void applyLumaLut(image *target);
