// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/figurespans.h"

#include "area/areastate.h"
#include "core/rows.h"

#include <algorithm>
#include <array>
#include <bit>
#include <limits>

namespace
{
/// The node of everything that is connected with the plane around the figure.
constexpr uint32_t kOutside = 0;
/// What handling one span costs, in samples of a plain row operation.
constexpr int kSamplesPerSpan = 16;
/// Of a row, up to which sorting them costs less than going through the row's columns.
constexpr int kFewSpans = 12;

uint64_t distance(int64_t from, int64_t to)
{
    return uint64_t(from < to ? to - from : from - to);
}

/// The samples of a segment, row by row from its start to its end, as lineMask draws it: after
/// k steps of the longer axis the shorter one has moved by (k * rise + (length - 1) / 2) /
/// length. Here the k of each row come out of one division and then of additions.
class SegmentRows
{
public:
    SegmentRows(const AreaPoint &from, const AreaPoint &to)
        : width(distance(from.x, to.x)), height(distance(from.y, to.y)), x(from.x),
          step(to.x < from.x ? -1 : 1)
    {
        const uint64_t longer = std::max(width, height);
        const uint64_t half = longer > 0 ? (longer - 1) / 2 : 0;
        if (flat() && height > 0) {
            // The step at which row 1 begins, and how many more each later row takes.
            const uint64_t sum = longer - half + height - 1;
            next = sum / height;
            rest = sum % height;
            whole = width / height;
            part = width % height;
        } else {
            rest = half;
        }
    }
    uint64_t rowCount() const { return height + 1; }

    /// The span of the present row, after which the next one is the present row.
    Span take() { return flat() ? takeRun() : takeSample(); }

private:
    bool flat() const { return width > height; }
    Span takeRun()
    {
        const uint64_t end = row == height ? width + 1 : next;
        const int64_t a = x + step * int64_t(begun), b = x + step * int64_t(end - 1);
        begun = end;
        ++row;
        next += whole;
        rest += part;
        if (rest >= height && height > 0) {
            rest -= height;
            ++next;
        }
        return {int32_t(std::min(a, b)), int32_t(std::max(a, b))};
    }
    Span takeSample()
    {
        const Span one = {int32_t(x), int32_t(x)};
        rest += width;
        if (rest >= height && height > 0) {
            rest -= height;
            x += step;
        }
        return one;
    }

    uint64_t width, height;
    int64_t x;
    int step;
    uint64_t row = 0, begun = 0, next = 0;
    uint64_t whole = 0, part = 0, rest = 0;
};

/// The columns of a crowded row as bits, from the leftmost span on.
class RowBits
{
public:
    static constexpr int64_t kColumns = 1 << 16;

    explicit RowBits(int64_t columns) : used(size_t(columns + 63) / 64)
    {
        std::fill_n(bits.begin(), used, 0);
    }
    void set(int64_t first, int64_t last)
    {
        const size_t begin = size_t(first) / 64, end = size_t(last) / 64;
        const uint64_t head = ~uint64_t(0) << (first % 64), tail = ~uint64_t(0) >> (63 - last % 64);
        if (begin == end) {
            bits[begin] |= head & tail;
            return;
        }
        bits[begin] |= head;
        std::fill(bits.begin() + begin + 1, bits.begin() + end, ~uint64_t(0));
        bits[end] |= tail;
    }
    /// The first column from `column` on whose bit is `value`; beyond the last one if none is.
    int64_t find(bool value, int64_t column) const
    {
        const uint64_t flip = value ? 0 : ~uint64_t(0);
        uint64_t from = ~uint64_t(0) << (column % 64);
        for (size_t word = size_t(column) / 64; word < used; ++word) {
            const uint64_t found = (bits[word] ^ flip) & from;
            if (found != 0)
                return int64_t(word) * 64 + std::countr_zero(found);
            from = ~uint64_t(0);
        }
        return int64_t(used) * 64;
    }
    int64_t end() const { return int64_t(used) * 64; }

private:
    std::array<uint64_t, kColumns / 64> bits;
    size_t used;
};

/// Sorts spans and joins those without a sample between them; returns the end of what is left.
Span *mergeBySorting(Span *begin, Span *end)
{
    std::sort(begin, end, [](const Span &a, const Span &b) { return a.first < b.first; });
    Span *kept = begin;
    for (const Span *at = begin + 1; at < end; ++at) {
        if (at->first <= int64_t(kept->last) + 1)
            kept->last = std::max(kept->last, at->last);
        else
            *++kept = *at;
    }
    return kept + 1;
}

/// The same for many spans in not too many columns, several times as fast.
Span *mergeByBits(Span *begin, Span *end, int64_t left, int64_t columns)
{
    RowBits bits(columns);
    for (const Span *at = begin; at < end; ++at)
        bits.set(at->first - left, at->last - left);
    for (int64_t column = bits.find(true, 0); column < bits.end();) {
        const int64_t after = bits.find(false, column);
        *begin++ = {int32_t(left + column), int32_t(left + after - 1)};
        column = after < bits.end() ? bits.find(true, after) : after;
    }
    return begin;
}

/// Root of a node. Roots are the smallest nodes of their sets, so kOutside stays one.
uint32_t rootOf(uint32_t *parents, uint32_t node)
{
    while (parents[node] != node) {
        parents[node] = parents[parents[node]];
        node = parents[node];
    }
    return node;
}

void unite(uint32_t *parents, uint32_t one, uint32_t other)
{
    one = rootOf(parents, one);
    other = rootOf(parents, other);
    parents[std::max(one, other)] = std::min(one, other);
}

/// The gaps of one row from left to right: before the first span, between spans, after the
/// last one. The gap between two spans is a node with the number of the second one, which is
/// never 0.
class RowGaps
{
public:
    RowGaps(const Span *allSpans, uint32_t firstSpan, uint32_t endSpan)
        : spans(allSpans), begin(firstSpan), end(endSpan), at(firstSpan)
    {
    }
    bool done() const { return at > end; }
    void next() { ++at; }
    uint32_t node() const { return at == begin || at == end ? kOutside : at; }
    int64_t first() const { return at == begin ? kFarLeft : int64_t(spans[at - 1].last) + 1; }
    int64_t last() const { return at == end ? kFarRight : int64_t(spans[at].first) - 1; }

private:
    static constexpr int64_t kFarLeft = std::numeric_limits<int64_t>::min();
    static constexpr int64_t kFarRight = std::numeric_limits<int64_t>::max();
    const Span *spans;
    uint32_t begin, end, at;
};
} // namespace

bool FigureSpans::build(const AreaPoint *pts, int count, bool filled)
{
    if (!measure(pts, count))
        return false;
    starts = std::make_unique<TrackedBuffer<uint32_t>>(size_t(rows) + 1, "figure rows");
    ends = std::make_unique<TrackedBuffer<uint32_t>>(size_t(rows), "figure rows");
    spans = std::make_unique<TrackedBuffer<Span>>(size_t(total), "figure spans");
    if (!*starts || !*ends || !*spans)
        return false;
    countPerRow(pts, count);
    for (int i = 1; i < count; ++i)
        addSegment(pts[i - 1], pts[i]);
    eachRow([this](int row) { mergeRow(row); });
    if (!filled)
        return true;

    TrackedBuffer<uint32_t> parents(size_t(total), "figure gaps");
    if (!parents)
        return false;
    for (uint32_t i = 0; i < uint32_t(total); ++i)
        parents[i] = i;
    for (int row = 0; row <= rows; ++row)
        joinGaps(row, parents.get());
    // A parent is never larger than its node, so one pass upwards makes each one a root.
    for (uint32_t i = 0; i < uint32_t(total); ++i)
        parents[i] = parents[parents[i]];
    eachRow([&](int row) { closeGaps(row, parents.get()); });
    return true;
}

FigureSpans::Row FigureSpans::row(int y) const
{
    const int64_t at = y - top;
    if (at < 0 || at >= rows)
        return {nullptr, 0};
    const uint32_t first = (*starts)[size_t(at)];
    return {spans->get() + first, int((*ends)[size_t(at)] - first)};
}

/// The rows that the figure takes and the spans of its segments, which are one a row.
bool FigureSpans::measure(const AreaPoint *pts, int count)
{
    if (count < 2)
        return false;
    int64_t low = pts[0].y, high = pts[0].y;
    for (int i = 1; i < count; ++i) {
        low = std::min<int64_t>(low, pts[i].y);
        high = std::max<int64_t>(high, pts[i].y);
        total += int64_t(distance(pts[i - 1].y, pts[i].y)) + 1;
    }
    if (total > kMostSpans)
        return false;
    top = low;
    rows = int(high - low + 1); // the line is connected, so there is a span in each row
    return true;
}

/// Makes room in each row: a segment adds one span to every row from end to end.
void FigureSpans::countPerRow(const AreaPoint *pts, int count)
{
    uint32_t *change = starts->get();
    for (int i = 1; i < count; ++i) {
        ++change[std::min(pts[i - 1].y, pts[i].y) - top];
        --change[std::max(pts[i - 1].y, pts[i].y) - top + 1];
    }
    uint32_t inRow = 0, before = 0;
    for (int row = 0; row < rows; ++row) {
        inRow += change[row];
        change[row] = before;
        (*ends)[size_t(row)] = before;
        before += inRow;
    }
    change[rows] = before;
}

void FigureSpans::addSegment(const AreaPoint &from, const AreaPoint &to)
{
    SegmentRows segment(from, to);
    uint32_t *end = ends->get() + (from.y - top);
    const int down = to.y < from.y ? -1 : 1;
    for (uint64_t left = segment.rowCount(); left > 0; --left, end += down)
        (*spans)[(*end)++] = segment.take();
}

void FigureSpans::mergeRow(int row)
{
    Span *const begin = spans->get() + (*starts)[size_t(row)];
    Span *const end = spans->get() + (*ends)[size_t(row)];
    int64_t left = begin->first, right = begin->last;
    for (const Span *at = begin + 1; at < end; ++at) {
        left = std::min<int64_t>(left, at->first);
        right = std::max<int64_t>(right, at->last);
    }
    const int64_t columns = right - left + 1;
    const bool crowded = end - begin > kFewSpans && columns <= RowBits::kColumns;
    Span *const kept =
        crowded ? mergeByBits(begin, end, left, columns) : mergeBySorting(begin, end);
    (*ends)[size_t(row)] = uint32_t(kept - spans->get());
}

/// Unites the gaps of a row with those of the row above that they touch. Above the first row
/// and below the last one lies a row without spans, which is a single gap.
void FigureSpans::joinGaps(int row, uint32_t *parents) const
{
    const auto gapsOf = [this](int r) {
        return r < 0 || r >= rows ? RowGaps(spans->get(), 0, 0)
                                  : RowGaps(spans->get(), (*starts)[size_t(r)], (*ends)[size_t(r)]);
    };
    RowGaps above = gapsOf(row - 1), here = gapsOf(row);
    while (!above.done() && !here.done()) {
        if (std::max(above.first(), here.first()) <= std::min(above.last(), here.last()))
            unite(parents, above.node(), here.node());
        if (above.last() < here.last())
            above.next();
        else
            here.next();
    }
}

/// Joins the spans of a row over gaps that are not connected with the outside.
void FigureSpans::closeGaps(int row, const uint32_t *parents)
{
    const uint32_t begin = (*starts)[size_t(row)], end = (*ends)[size_t(row)];
    uint32_t kept = begin;
    for (uint32_t at = begin + 1; at < end; ++at) {
        if (parents[at] == kOutside)
            (*spans)[++kept] = (*spans)[at];
        else
            (*spans)[kept].last = (*spans)[at].last;
    }
    (*ends)[size_t(row)] = kept + 1;
}

void FigureSpans::eachRow(const std::function<void(int)> &work) const
{
    const int64_t perRow = std::min<int64_t>(total / rows * kSamplesPerSpan, kMostSpans);
    parallelRows(rows, int(perRow), [&work](int first, int end) {
        for (int row = first; row < end; ++row)
            work(row);
    });
}
