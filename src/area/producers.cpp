// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/producers.h"

bool rectSelect(image *, int, int, int, int, bool, bool)
{
    return false;
}
bool ellipseSelect(image *, double, double, double, double, bool, bool)
{
    return false;
}
bool ellipseInBox(image *, int, int, int, int, bool)
{
    return false;
}
bool entireSelect(image *, bool)
{
    return false;
}
bool splineSelect(image *, bool)
{
    return false;
}
CurvePoints splinePoints(const AreaPoint *, int)
{
    return {};
}
bool polygonSelect(image *, bool)
{
    return false;
}
bool pshapeSelect(image *, bool)
{
    return false;
}
bool redoSelect(image *)
{
    return false;
}
