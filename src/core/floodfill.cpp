// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/floodfill.h"

namespace
{
/// Words that the fill keeps free at the top of its stack.
constexpr size_t kFillReserve = 32;
constexpr int kLongestSide = 65535;

size_t stackWords(int width, int height)
{
    if (width <= 0 || height <= 0 || width > kLongestSide || height > kLongestSide)
        return 0;
    return size_t(2) * size_t(width) * size_t(height) + 64;
}
} // namespace

FloodStack::FloodStack(int width, int height)
    : capacity(stackWords(width, height)), words(capacity, "m4fill heap")
{
}

bool FloodStack::full() const
{
    return used > capacity - kFillReserve;
}

bool floodFill(uint16_t *plane, int width, int height, int x, int y, uint16_t boundary,
               uint16_t replacement, FloodStack *stack)
{
    if (!plane || x < 0 || y < 0 || x >= width || y >= height || !stack->usable())
        return false;
    // A word is replaced when it is pushed, so each one is pushed at most once and a pair for
    // every word is enough.
    const auto claim = [=](int atX, int atY) {
        if (atX < 0 || atY < 0 || atX >= width || atY >= height)
            return;
        uint16_t &word = plane[int64_t(atY) * width + atX];
        if (word == boundary || word == replacement)
            return;
        word = replacement;
        stack->push(atX, atY);
    };
    claim(x, y);
    while (!stack->empty()) {
        if (stack->full())
            return false;
        stack->pop(&x, &y);
        claim(x, y - 1);
        claim(x - 1, y);
        claim(x + 1, y);
        claim(x, y + 1);
    }
    return true;
}
