// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

/// One row of the layer mode table, in the order of the layer dialog's combo box.
struct LayerModeEntry {
    const char *name;
    int id;
    bool useFactor;    ///< the result depends on the layer's factor
    bool opaqueSource; ///< the mode treats its source as opaque
};
/// All 62 layer modes.
const std::vector<LayerModeEntry> &layerModeTable();

/// Ids of modes that the program names; files and scripts use the same numbers.
enum LayerModeId {
    kNormalMode = 0,
    kAddMode = 1,
    kAddGreyMode = 4,
    kMultiplyMode = 5,
    kWarpMode = 6, ///< the planes hold displacements: core/warpfield.h
    kPlusKeyMode = 25,
    kMinusKeyMode = 26,
    kAverageMode = 27,
    kMedianMode = 29,
    kHueMode = 51,
    kSaturationMode = 52,
    kValueMode = 53,
    kCopperMode = 55,
    kLegendMode = 56,
    kDrillMode = 57,
    kProfileMode = 58,
    kMaskMode = 59
};

/// Whether a mode is one of the layers of a circuit board.
constexpr bool isPcbMode(int mode)
{
    return mode >= kCopperMode && mode <= kMaskMode;
}

/// Whether layers of a mode are sampled through their rotation and fractions.
constexpr bool modeTurns(int mode)
{
    return mode == 2 || mode == 3 || mode == kAverageMode || mode == kMedianMode;
}
