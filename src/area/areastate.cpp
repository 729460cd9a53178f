// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/areastate.h"

#include "core/memory.h"

namespace
{
AreaState *theState = nullptr;
}

AreaState *areaState()
{
    return theState;
}

AreaState::AreaState()
{
    ucalloc(&points, kPointEntries, sizeof(AreaPoint), "primary poly list");
    theState = this;
}

AreaState::~AreaState()
{
    if (theState == this)
        theState = nullptr;
    upfree(&points);
}

void AreaState::appendPoint(int x, int y)
{
    if (!points)
        return;
    points[pointCount] = {x, y};
    if (pointCount <= kLastGrowingCount)
        ++pointCount;
}
