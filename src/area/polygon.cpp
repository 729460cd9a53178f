// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/polygon.h"

void lineMask(uint16_t *, int, int, int, int, int, int, uint16_t) {}

bool fillPolygon(const MaskPlane &, const AreaPoint *, int)
{
    return false;
}

bool polySelect(image *, const AreaPoint *, int, bool)
{
    return false;
}

void followSelectionCenter(image *) {}
