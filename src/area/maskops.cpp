// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/maskops.h"

void combineMasks(uint16_t *, const uint16_t *, int, int, bool) {}
bool selectFromAlpha(image *)
{
    return false;
}
bool selectFromLuma(image *)
{
    return false;
}
bool growSelection(image *, int)
{
    return false;
}
bool shrinkSelection(image *, int)
{
    return false;
}
bool selectFromPicture(image *, const image &)
{
    return false;
}
