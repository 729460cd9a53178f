// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/smoothing.h"

bool SmoothingKernel::twoGet(int)
{
    return false;
}

bool antialiasMask(const SmoothingKernel &, const image &, double, uint16_t *)
{
    return false;
}

bool smoothSelection(image *, int, double)
{
    return false;
}
