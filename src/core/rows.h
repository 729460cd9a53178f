// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <functional>

/// Calls `body(firstRow, endRow)` for bands that together cover rows 0 to `rows` - 1
/// exactly once, on all cores when `rows` x `samplesPerRow` is worth it, and returns
/// when all bands are done. The body must be stateless, must not allocate in its loops, and
/// writes only the rows of its band; it may run on any thread.
void parallelRows(int rows, int samplesPerRow, const std::function<void(int, int)> &body);

/// Copies a plane of samples on all cores; the two must not overlap.
void copyPlane(const uint16_t *from, uint16_t *to, int width, int height);

/// For tests and benchmarks: 0 uses every core, 1 runs everything on the caller.
void setRowThreads(int count);
