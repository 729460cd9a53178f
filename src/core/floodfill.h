// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/memory.h"

#include <cstddef>
#include <cstdint>

/// The stack of floodFill: room for the place of every word of a plane. It is made apart so
/// that a caller can have it before it changes anything.
class FloodStack
{
public:
    FloodStack(int width, int height);
    /// False if memory is short, or a side is too long for the 16 bits of a coordinate.
    bool usable() const { return capacity > 0 && words; }
    bool empty() const { return used == 0; }
    bool full() const;
    void push(int x, int y)
    {
        words[used++] = uint16_t(y);
        words[used++] = uint16_t(x);
    }
    void pop(int *x, int *y)
    {
        *x = words[--used];
        *y = words[--used];
    }

private:
    size_t capacity;
    size_t used = 0;
    TrackedBuffer<uint16_t> words;
};

/// Four-way fill of a plane from (x, y): every connected word that is neither `boundary` nor
/// `replacement` becomes `replacement`. `stack` is empty and was made for the plane's size.
/// False for a seed outside of the plane or a full stack.
bool floodFill(uint16_t *plane, int width, int height, int x, int y, uint16_t boundary,
               uint16_t replacement, FloodStack *stack);
