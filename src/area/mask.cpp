// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/mask.h"

#include "core/image.h"
#include "core/memory.h"

Mask::~Mask()
{
    free();
}

void Mask::free()
{
    upfree(&mask);
    width = height = size = 0;
}

bool Mask::init(int, int)
{
    return false;
}

bool Mask::copyFrom(const image &)
{
    return false;
}

void Mask::rescale(const Mask *, Mask *) {}
