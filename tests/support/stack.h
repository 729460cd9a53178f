// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/workspace.h"
#include "support/pictures.h"

/// A master whose layers are all 1; everything goes with it.
struct Stack {
    image *master = plainImage(4, 4, 0, 0, 0).release();

    Stack() { master->kind = 1; }
    ~Stack()
    {
        if (workspace())
            workspace()->images.removeAll(master);
        destroyTree(&master);
    }
    image *add(int mode)
    {
        image *layer = plainImage(4, 4, 1, 1, 1).release();
        master->layers << layer;
        layer->kind = 2;
        layer->master = master;
        layer->layerMode = mode;
        return layer;
    }
};
