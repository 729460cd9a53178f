// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "views/viewrender.h"

/// Renders what a warp layer does instead of its planes, which hold displacements and no
/// picture: a checker of squares of kWarpSquare samples as the warp would show it, tinted
/// where it moves anything. Rendered at the client size; only the samples shown are read.
/// False if memory is short or nothing can be shown.
constexpr int kWarpSquare = 32;
bool renderWarp(const image &field, const ViewGeometry &view, uint32_t surround, QImage *out);
