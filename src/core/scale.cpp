// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/scale.h"

#include "core/image.h"
#include "core/memory.h"
#include "core/rows.h"
#include "core/scale_kernels.h"

#include <algorithm>
#include <memory>

namespace
{
using ImagePtr = std::unique_ptr<image>;

/// An image for work in between: no masks, planes zeroed. Null if memory is short.
ImagePtr workImage(int width, int height, const QString &name)
{
    auto made = std::make_unique<image>();
    made->lightweight = true;
    return made->allocateUnfilled(width, height, name) ? std::move(made) : nullptr;
}

ImagePtr fullImage(int width, int height, const QString &name)
{
    auto made = std::make_unique<image>();
    return made->allocateUnfilled(width, height, name) ? std::move(made) : nullptr;
}

/// Runs `row(plane index, y)` for every row of every colour plane of the target.
template <class Row>
void eachPlaneRow(const image &target, Row row)
{
    parallelRows(target.height, target.width * 4, [&](int first, int end) {
        for (size_t p = 0; p < 4; ++p)
            for (int y = first; y < end; ++y)
                row(p, y);
    });
}

/// The source positions of one axis: the whole part, and the share of the next sample,
/// which is 0 at the last one because that has no next.
class ScaleAxis
{
public:
    ScaleAxis(int source, int target)
        : low(size_t(target), "scale axis"), share(size_t(target), "scale axis")
    {
        const double step = double(source) / double(target);
        for (size_t i = 0; usable() && i < size_t(target); ++i) {
            const double at = double(i) * step;
            low[i] = std::min(int(at), source - 1);
            share[i] = low[i] < source - 1 ? at - low[i] : 0.0;
        }
    }
    bool usable() const { return low && share; }

    TrackedBuffer<int32_t> low;
    TrackedBuffer<double> share;
};

bool stretchBilinear(const image &source, image &target)
{
    const ScaleAxis x(source.width, target.width), y(source.height, target.height);
    if (!x.usable() || !y.usable())
        return false;
    const ScaleColumns columns = {x.low.get(), x.share.get(), target.width};
    const auto from = source.colorPlanes(), to = target.colorPlanes();
    eachPlaneRow(target, [&](size_t p, int row) {
        const size_t at = size_t(row);
        const uint16_t *upper = from[p] + int64_t(y.low[at]) * source.width;
        const uint16_t *lower = y.low[at] < source.height - 1 ? upper + source.width : upper;
        KERNEL_DISPATCH(bilinearRow, upper, lower, columns, y.share[at],
                        to[p] + int64_t(row) * target.width);
    });
    return true;
}

bool stretchNearest(const image &source, image &target)
{
    const ScaleAxis x(source.width, target.width), y(source.height, target.height);
    if (!x.usable() || !y.usable())
        return false;
    const auto from = source.colorPlanes(), to = target.colorPlanes();
    const int32_t *columns = x.low.get();
    eachPlaneRow(target, [&](size_t p, int row) {
        const uint16_t *in = from[p] + int64_t(y.low[size_t(row)]) * source.width;
        uint16_t *out = to[p] + int64_t(row) * target.width;
        for (int i = 0; i < target.width; ++i)
            out[i] = in[columns[i]];
    });
    return true;
}

/// White at alpha 0 everywhere, then the picture at its margins.
void placeInside(const image &picture, image &target)
{
    target.fill(65535, 65535, 65535, 0);
    const int left = (target.width - picture.width) / 2;
    const int top = (target.height - picture.height) / 2;
    const auto from = picture.colorPlanes(), to = target.colorPlanes();
    eachPlaneRow(picture, [&](size_t p, int row) {
        const uint16_t *in = from[p] + int64_t(row) * picture.width;
        std::copy(in, in + picture.width, to[p] + int64_t(top + row) * target.width + left);
    });
}

using Stretch = bool (*)(const image &, image &);

bool scaleWith(Stretch stretch, const image *source, image *target, bool keepAspect)
{
    if (!source || !target || source == target || !source->valid() || !target->valid())
        return false;
    const double sourceAspect = double(source->width) / double(source->height);
    const double targetAspect = double(target->width) / double(target->height);
    if (!keepAspect || sourceAspect == targetAspect)
        return stretch(*source, *target);
    int width = target->width, height = target->height;
    if (targetAspect > sourceAspect)
        width = std::max(1, int(width / (targetAspect / sourceAspect)));
    else
        height = std::max(1, int(height / (sourceAspect / targetAspect)));
    const ImagePtr fitted = workImage(width, height, QStringLiteral("fitrect"));
    if (!fitted || !stretch(*source, *fitted))
        return false;
    placeInside(*fitted, *target);
    return true;
}

/// Half the size of `source`, or null if memory is short.
ImagePtr halved(const image &source)
{
    if (source.width % 2 == 0 && source.height % 2 == 0)
        return ImagePtr(reduceBy2(&source));
    ImagePtr half =
        workImage(source.width / 2, source.height / 2, QStringLiteral("scale intermediate image"));
    return half && stretchBilinear(source, *half) ? std::move(half) : nullptr;
}

/// The averaging of reduce() for one output row; `below` is null where the next row is
/// the spare one, whose samples are 0.
struct ReduceRow {
    const uint16_t *at, *below, *afterBelow;
    bool lastRow;
    int width;

    uint16_t sample(int x) const
    {
        int sum = at[x];
        if (x < width - 1)
            sum += at[x + 1];
        sum += below ? below[x] : 0;
        if (!lastRow)
            sum += x < width - 1 ? below[x + 1] : afterBelow ? *afterBelow : 0;
        return uint16_t(sum >> 2);
    }
};

ReduceRow reduceRow(const image &source, const uint16_t *plane, int y)
{
    const uint16_t *row = plane + int64_t(y) * source.width;
    const bool last = y == source.height - 1;
    // The lower right neighbour of the last column is the first sample one row further.
    const bool lastButOne = y == source.height - 2;
    return {row, last ? nullptr : row + source.width,
            last || lastButOne ? nullptr : row + int64_t(2) * source.width, last, source.width};
}
} // namespace

image *reduce(const image *source, int targetWidth, int targetHeight)
{
    if (!source || !source->valid())
        return nullptr;
    ImagePtr made =
        fullImage(targetWidth, targetHeight, source->name + QStringLiteral(": reduceBy2"));
    if (!made)
        return nullptr;
    const auto from = source->colorPlanes(), to = made->colorPlanes();
    const image &target = *made;
    eachPlaneRow(target, [&](size_t p, int y) {
        const int sourceY = int(int64_t(y) * source->height / target.height);
        const ReduceRow row = reduceRow(*source, from[p], sourceY);
        uint16_t *out = to[p] + int64_t(y) * target.width;
        for (int x = 0; x < target.width; ++x)
            out[x] = row.sample(int(int64_t(x) * source->width / target.width));
    });
    return made.release();
}

image *reduceBy2(const image *source)
{
    if (!source || !source->valid() || source->width % 2 != 0 || source->height % 2 != 0)
        return nullptr;
    ImagePtr made = fullImage(source->width / 2, source->height / 2, QStringLiteral("reduce by 2"));
    if (!made)
        return nullptr;
    const auto from = source->colorPlanes(), to = made->colorPlanes();
    const int width = made->width;
    eachPlaneRow(*made, [&](size_t p, int y) {
        const uint16_t *upper = from[p] + int64_t(y) * 2 * source->width;
        const uint16_t *lower = upper + source->width;
        uint16_t *out = to[p] + int64_t(y) * width;
        for (int x = 0; x < width; ++x)
            out[x] =
                uint16_t((upper[2 * x] + upper[2 * x + 1] + lower[2 * x] + lower[2 * x + 1]) >> 2);
    });
    return made.release();
}

bool scaleBilinear(const image *source, image *target, bool keepAspect)
{
    return scaleWith(stretchBilinear, source, target, keepAspect);
}

bool scaleNearest(const image *source, image *target, bool keepAspect)
{
    return scaleWith(stretchNearest, source, target, keepAspect);
}

bool smartReduce(const image *source, image *target)
{
    if (!source || !target || source == target || !source->valid() || !target->valid())
        return false;
    const int64_t twiceWidth = int64_t(2) * target->width;
    const int64_t twiceHeight = int64_t(2) * target->height;
    if (source->width < twiceWidth || source->height < twiceHeight)
        return stretchBilinear(*source, *target);
    ImagePtr work = workImage(source->width, source->height, QStringLiteral("tmp scale source"));
    if (!work)
        return false;
    work->copyWorkPlanes(*source);
    while (work->width > twiceWidth && work->height > twiceHeight) {
        work = halved(*work);
        if (!work)
            return false;
    }
    return stretchBilinear(*work, *target);
}
