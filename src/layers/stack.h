// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class image;

/// Building and reordering stacks of layers. Each function that changes a stack marks its
/// master as changed and for composing, rebuilds the titles that say a layer's place, and
/// tells the workspace (layersChanged, refreshViews), so that whoever shows the stack
/// follows. All work without a workspace too.

/// Turns an atomic image into a master; false, with nothing changed, for anything else.
/// Its planes are the composition's from now on, so its undo and redo lists are emptied.
bool makeMaster(image *img);

/// Puts an atomic image on top of a master's stack, as a layer of it. False for other
/// kinds. An image that was in the workspace's list leaves it: its master owns it now.
/// Its windows, settings and assignments stay; one without a serial gets one.
bool addLayer(image *master, image *layer);

/// As addLayer, below the layer `target` of its master.
bool insertBefore(image *target, image *layer);
/// As addLayer, above the layer `target` of its master.
bool insertAbove(image *target, image *layer);

/// Moves a layer to another place in its stack, counted from the bottom from 0 and
/// limited to what there is. False if it is no layer or already there.
bool moveLayer(image *layer, int place);

/// Takes a layer out of its stack and makes it an atomic image at the end of the
/// workspace's list; its windows and its serial stay, and opening a window for one without
/// is the caller's. A warp layer is named "ex-warp" and becomes an ordinary picture. A
/// master's target that it was is cleared. False, with nothing changed, if it is no layer
/// or its master's only one.
bool detachLayer(image *layer);

/// Takes a layer out of its stack and deletes it, its windows first. False, with nothing
/// changed, if it is no layer, its master's only one, or an operator is at work on it.
bool destroyLayer(image *layer);

/// Makes an atomic image the only layer of a new master of its size, named after it with
/// ": master" added and with its metadata; returns the master, which is in the workspace's
/// list in the image's place, has a serial and no file, and has no window yet. Settings
/// left over from an earlier stack are reset, so that the master shows the picture as it
/// was. Null if memory is short or the image is not atomic.
image *makeLayered(image *img);

/// A new layer of the master's size, white with alpha 0, named "new layer", on top of the
/// stack; null if memory is short or `master` is none.
image *createLayer(image *master);

/// A copy of a layer with all its settings, named with "[clone]" added, right above it;
/// null if memory is short or `layer` is none.
image *cloneLayer(image *layer);

/// Turns an image left to right (`horizontally`) or upside down, selection included, with
/// an undo record; notations and the centre of rotation follow; a warp layer's
/// displacements change sign with it. False for a master, which is flipped by its layers.
bool flipImage(image *img, bool horizontally);

/// A picture of the master as composed, an atomic image with its name, metadata and
/// notations; composes first if that is due. Null if memory is short or `master` is none.
image *flattened(image *master);

/// What every change of an image's samples ends with: marks it as changed now, its master
/// for composing, and has the views rendered again.
void samplesChanged(image *img);
