// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/compose.h"

#include "core/image.h"
#include "core/workspace.h"

void compose(image *member, bool refresh)
{
    image *master = masterOf(member);
    if (!master)
        return;
    master->fill(0, 0, 0, 0);
    master->needsRebuild = false;
    if (refresh && workspace())
        workspace()->refreshViews(master);
}
