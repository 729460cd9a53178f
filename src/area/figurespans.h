// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/memory.h"

#include <cstdint>
#include <functional>
#include <memory>

struct AreaPoint;

/// Samples of one row from `first` to `last`, both included.
struct Span {
    int32_t first, last;
};

/// A figure as sorted, separate spans of its rows: its line, and what the line cuts off from
/// the plane around it when it is filled. Time and memory go with the line's length in rows,
/// not with the area, and the figure may lie anywhere in the plane of 32-bit coordinates.
class FigureSpans
{
public:
    /// The figure's line goes from point to point. False for fewer than 2 points, more than
    /// kMostSpans crossings of rows, or no memory.
    bool build(const AreaPoint *pts, int count, bool filled);

    struct Row {
        const Span *spans;
        int count;
        const Span *begin() const { return spans; }
        const Span *end() const { return spans + count; }
    };
    /// The spans of row y; none outside of the figure.
    Row row(int y) const;

    /// At most 320 MiB. Enough for a rectangle 8 million samples high, or for 4000 lines
    /// through 4000 rows.
    static constexpr int64_t kMostSpans = 1 << 24;

private:
    bool measure(const AreaPoint *pts, int count);
    void countPerRow(const AreaPoint *pts, int count);
    void addSegment(const AreaPoint &from, const AreaPoint &to);
    void mergeRow(int row);
    void joinGaps(int row, uint32_t *parents) const;
    void closeGaps(int row, const uint32_t *parents);
    void eachRow(const std::function<void(int)> &work) const;

    int64_t top = 0;
    int rows = 0;
    int64_t total = 0;
    // Of row r: spans[starts[r]] up to, but not with, spans[ends[r]].
    std::unique_ptr<TrackedBuffer<uint32_t>> starts, ends;
    std::unique_ptr<TrackedBuffer<Span>> spans;
};
