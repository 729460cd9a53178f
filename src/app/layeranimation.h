// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "formats/gif.h"

/// Whether a layer becomes a frame of an animation: it is visible and holds a picture.
bool isFrame(const image *layer);

/// Writes the visible layers of a master as the frames of a GIF, the lowest first: each
/// alone on the master's size, in its place and with its opacity. The settings of the
/// layers are as before afterwards, and the master is marked for composing. False with a
/// reason, as writeGif.
bool writeLayerAnimation(image *master, const GifAnimation &animation, const QString &path,
                         QString *error);
