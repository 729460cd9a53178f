// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class image;

/// Composes the master that `member` is, or is a layer of, from its layers, bottom first;
/// with `refresh` the master's views are told to render again at the end. Nothing for an
/// atomic image or a null pointer. Clears needsRebuild.
///
/// Colours mix in the squared domain, a rough linear light:
///     sqrt(n * n * q + b * b * k), truncated, with q = 1 - k
/// and k the part of the old value that stays; alpha mixes plainly. Runs on the main
/// thread to completion, with rows in parallel. Temporaries that memory does not allow are
/// left out: that group, warp or accumulation does not take place.
void compose(image *member, bool refresh);
