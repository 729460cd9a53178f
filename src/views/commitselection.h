// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class imgWindow;

/// The end of every gesture of an area tool: makes the selection that the window's gesture
/// state and the shared point list describe, smooths and outlines it as the settings say,
/// remembers it, and joins it with the one before or applies the current operator through it.
void commitSelection(imgWindow *window);
