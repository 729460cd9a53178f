// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/outline.h"

#include "core/image.h"
#include "core/rows.h"
#include "core/workspace.h"

#include <algorithm>
#include <atomic>
#include <cstring>

namespace
{
constexpr uint16_t kSelected = 65535;
constexpr int kAlphaStep = 257; // of the threshold, which is of 8 bits

/// Sample (x, y) of a plane and its neighbours, none of which is outside of the plane.
struct Neighbourhood {
    const uint16_t *up, *here, *down;

    uint16_t greatest(int left, int x, int right, bool eightWay) const
    {
        uint16_t most = std::max({up[x], down[x], here[left], here[right]});
        if (eightWay)
            most = std::max({most, up[left], up[right], down[left], down[right]});
        return most;
    }
    bool anyZero(int x, bool eightWay) const
    {
        bool zero = !up[x] | !down[x] | !here[x - 1] | !here[x + 1];
        if (eightWay)
            zero |= !up[x - 1] | !up[x + 1] | !down[x - 1] | !down[x + 1];
        return zero;
    }
};

/// Calls `mark(x)` for the samples of row `y` that belong to the boundary.
template <class Mark>
void eachOfBoundary(const uint16_t *plane, int width, int height, int y, bool eightWay, Mark mark)
{
    const uint16_t *here = plane + size_t(y) * size_t(width);
    const bool edgeRow = y == 0 || y == height - 1;
    const Neighbourhood near = {here - (edgeRow ? 0 : width), here, here + (edgeRow ? 0 : width)};
    for (int x = 0; x < width; ++x)
        if (here[x] && (edgeRow || x == 0 || x == width - 1 || near.anyZero(x, eightWay)))
            mark(x);
}

/// Selects what lies outside of the object that alpha shows, next to it, and was selected.
/// Whether there is any.
bool markAlphaEdge(image *img, const uint16_t *selected, int threshold, bool eightWay)
{
    std::atomic<bool> any{false};
    const int width = img->width, height = img->height;
    parallelRows(height, width, [&](int first, int end) {
        bool found = false;
        for (int y = first; y < end; ++y) {
            const int64_t start = int64_t(y) * width;
            const uint16_t *here = img->alpha + start;
            // In place of a neighbour outside of the image stands one that cannot turn the
            // answer: the sample itself, which is below the threshold, or one of its others.
            const Neighbourhood near = {y > 0 ? here - width : here, here,
                                        y < height - 1 ? here + width : here};
            for (int x = 0; x < width; ++x) {
                const bool edge = selected[start + x] && here[x] < threshold &&
                                  near.greatest(std::max(x - 1, 0), x, std::min(x + 1, width - 1),
                                                eightWay) > threshold;
                img->gmask[start + x] = edge ? kSelected : uint16_t(0);
                found |= edge;
            }
        }
        if (found)
            any = true;
    });
    return any;
}

OutlineResult outlineOfAlpha(image *img, int threshold, bool eightWay)
{
    const size_t bytes = size_t(img->sampleCount()) * sizeof(uint16_t);
    auto *before = static_cast<uint16_t *>(umalloc(bytes, "tmp mask"));
    if (!before)
        return OutlineResult::NoMemory;
    std::memcpy(before, img->gmask, bytes);
    const bool any = markAlphaEdge(img, before, threshold * kAlphaStep, eightWay);
    if (!any)
        std::memcpy(img->gmask, before, bytes);
    upfree(&before);
    return any ? OutlineResult::Done : OutlineResult::Nothing;
}

OutlineResult outlineOfSelection(image *img, bool eightWay, bool edgeOnly)
{
    BoundaryPoints found;
    if (!traceBoundary(img->gmask, img->width, img->height, eightWay, &found))
        return OutlineResult::NoMemory;
    if (edgeOnly)
        img->fillGmask(0);
    for (size_t i = 0; i < found.count; ++i)
        img->gmask[int64_t(found.points[i].y) * img->width + found.points[i].x] = kSelected;
    return OutlineResult::Done;
}
} // namespace

bool traceBoundary(const uint16_t *plane, int width, int height, bool eightWay,
                   BoundaryPoints *found)
{
    upfree(&found->points);
    found->count = 0;
    // Counted first, so that each row knows where its points go and no list has to grow.
    const TrackedBuffer<size_t> starts(size_t(height) + 1, "boundary rows");
    if (!starts)
        return false;
    parallelRows(height, width, [&](int first, int end) {
        for (int y = first; y < end; ++y) {
            size_t count = 0;
            eachOfBoundary(plane, width, height, y, eightWay, [&count](int) { ++count; });
            starts[size_t(y) + 1] = count;
        }
    });
    for (int y = 0; y < height; ++y)
        starts[size_t(y) + 1] += starts[size_t(y)];
    const size_t count = starts[size_t(height)];
    if (count == 0)
        return true;
    found->points = static_cast<BoundaryPoints::Point *>(
        umalloc(count * sizeof(BoundaryPoints::Point), "boundary points"));
    if (!found->points)
        return false;
    found->count = count;
    parallelRows(height, width, [&](int first, int end) {
        for (int y = first; y < end; ++y) {
            BoundaryPoints::Point *next = found->points + starts[size_t(y)];
            eachOfBoundary(plane, width, height, y, eightWay, [&](int x) {
                *next++ = {uint16_t(x), uint16_t(y)};
            });
        }
    });
    return true;
}

OutlineResult outlineSelect(image *img)
{
    const Workspace *space = workspace();
    if (!img || !img->gmask || !space)
        return OutlineResult::NoMemory;
    return space->outlineExpand ? outlineOfSelection(img, space->outline8w, space->edgeOnly)
                                : outlineOfAlpha(img, space->outlinethresh, space->outline8w);
}
