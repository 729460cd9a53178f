// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>

class image;

/// Selects what has the colour at (x, y): connected to it, or with tolerance 0 or the setting
/// globalPick anywhere in the image. `tolerance` is 0 to 100. With the setting
/// maskWithTargetAlpha fully transparent samples are not taken, and one clicked on selects
/// nothing new. Sets the image's centre while the operator is Center Selection. False, with
/// the selection as it was, for a place outside of the image or without memory.
bool wandSelect(image *img, int x, int y, int tolerance);

/// The same into a plane of as many samples, which it writes whole; only reads the image, so
/// it may run beside the main thread. `globally` and `skipTransparent` stand for the settings.
bool wandMask(const image &img, int x, int y, int tolerance, bool globally, bool skipTransparent,
              uint16_t *mask);

/// What the status line says of it.
QString wandStatus(int tolerance, bool globally);
