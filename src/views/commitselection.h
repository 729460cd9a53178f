// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QPoint;
class imgWindow;

/// The end of every gesture of an area tool: makes the selection that the window's gesture
/// state and the shared point list describe, smooths and outlines it as the settings say,
/// remembers it, and joins it with the one before (addToMask, subtractFromMask of the window)
/// or, in selectMode, applies the current operator through it. The mask stays as it was if
/// there is nothing to select or memory is short. An operator may close the window.
///
/// With `tool` -1 it is the active one. `dragged` completes what mask jobs showed of a drag
/// of the wand: undo record and back copy were made when it began.
void commitSelection(imgWindow *window, int tool = -1, bool dragged = false);

/// The window whose image takes the selections made in this one: that of a master's target
/// layer if it is shown, with the layer's place in the master; else the window itself.
imgWindow *selectionTaker(imgWindow *window, QPoint *offset = nullptr);
