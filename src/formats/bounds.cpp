// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/bounds.h"

#include "core/image.h"

#include <unistd.h>

namespace
{
/// A lie about so few pixels costs next to nothing.
constexpr int64_t kHarmlessPixels = 1 << 20;
/// Seven planes of 16 bits.
constexpr int64_t kImageBytes = 14;

int64_t physicalMemory()
{
    const int64_t pages = sysconf(_SC_PHYS_PAGES);
    const int64_t pageBytes = sysconf(_SC_PAGESIZE);
    constexpr int64_t whenUnknown = int64_t(4) << 30;
    return pages > 0 && pageBytes > 0 ? pages * pageBytes : whenUnknown;
}
} // namespace

bool sidesInRange(int64_t width, int64_t height)
{
    return width >= 1 && height >= 1 && width <= kMaxImageSide && height <= kMaxImageSide;
}

bool fileCanHold(int64_t pixels, int64_t fileBytes, int64_t pixelsPerByte)
{
    return pixels <= kHarmlessPixels || pixels / pixelsPerByte <= fileBytes;
}

bool memoryCanHold(int64_t pixels, int64_t readerBytes)
{
    return pixels <= physicalMemory() / (kImageBytes + readerBytes);
}
