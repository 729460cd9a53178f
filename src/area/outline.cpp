// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/outline.h"

OutlineResult outlineSelect(image *)
{
    return OutlineResult::NoMemory;
}
