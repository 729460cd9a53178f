// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "area/mask.h"
#include "area/pshape.h"

#include <cstdint>

/// A place in image samples.
struct AreaPoint {
    int32_t x, y;
    bool operator==(const AreaPoint &other) const = default;
};

constexpr int kPointEntries = 256032;     ///< of the point list
constexpr int kLastGrowingCount = 255999; ///< past it, appending overwrites the last entry

/// What the area tools of all windows share: the point list of the figure being drawn, the
/// remembered shape, the last selection. Flags and tolerances are settings of the workspace.
/// One instance at a time, which the constructor makes known; it outlives all windows.
class AreaState
{
public:
    AreaState();
    ~AreaState();
    AreaState(const AreaState &) = delete;
    AreaState &operator=(const AreaState &) = delete;

    /// Writes at pointCount, which moves on only while it is at most kLastGrowingCount.
    void appendPoint(int x, int y);
    void clearPoints() { pointCount = 0; }

    AreaPoint *points = nullptr; ///< kPointEntries, tracked; null if memory was short
    int pointCount = 0;
    int lastPointCount = 0; ///< of the list that was rasterised last

    PShape shape;

    Mask savedSelection; ///< the last selection of any image, for "Re-do"

    /// The last rectangle of tool 0, ordered and inclusive; only with rectKnown.
    int rectLeft = 0, rectTop = 0, rectRight = 0, rectBottom = 0;
    bool rectKnown = false;

    uint64_t tick = 0; ///< timer ticks since the start
};

/// The one instance, or null before it exists.
AreaState *areaState();
