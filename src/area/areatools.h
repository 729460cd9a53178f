// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class Workspace;

/// The area tools by the numbers that settings keep.
enum AreaTool {
    kToolRectangle = 0,
    kToolNumericRectangle = 1,
    kToolEllipse = 2,
    kToolEntire = 3,
    kToolMagnify = 4,
    kToolPolygon = 5,
    kToolPencil = 6,
    kToolUnused = 7,
    kToolRedo = 8,
    kToolWand = 9,
    kToolPolyspline = 10,
    kToolPShape = 11
};

/// Operators that the area tools know by their ids.
constexpr int kOpCenterSelection = 10;
constexpr int kOpCrop = 20;
constexpr int kOpMeasure = 55;

/// The setting that says whether a tool's selections are smoothed; null for a tool that has
/// no such switch, whose selections are crisp.
bool Workspace::*smoothingSwitch(int tool);
