// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "formats/gif.h"

#include <memory>

/// Whether a layer becomes a frame of an animation: it is visible and holds a picture.
bool isFrame(const image *layer);

/// The places of a master's frames in its list of layers, the lowest first.
QList<int> frameLayers(const image &master);

/// One layer as a frame: alone on the master's size, in its place and with its opacity. The
/// settings of the layers are as before afterwards, and the master is marked for composing.
/// Null if memory is short.
std::unique_ptr<image> makeFrame(image *master, int layer);

/// Writes the visible layers of a master as the frames of a GIF, numbered from the lowest.
/// False with a reason, as writeGif.
bool writeLayerAnimation(image *master, const GifAnimation &animation, const QString &path,
                         QString *error);
