// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/functions.h"

#include "core/image.h"
#include "core/rows.h"
#include "core/workspace.h"
#include "script/engine/blending.h"
#include "script/engine/numbers.h"
#include "script/engine/textexpression.h"

#include <QCoreApplication>

#include <algorithm>

namespace
{
constexpr int kBlock = 64;
constexpr int64_t kTapsPerLook = int64_t(1) << 29; ///< between two looks at the Cancel button
constexpr int kTag = 13;

/// What a channel, or all of them, take from a place of the source.
struct PlaneSample {
    const uint16_t *plane;
    double operator()(int64_t at) const { return plane[at]; }
};

struct MeanSample {
    const image &source;
    double operator()(int64_t at) const
    {
        return (source.red[at] + source.green[at] + source.blue[at]) / 3.0;
    }
};

struct LumaSample {
    const image &source;
    double operator()(int64_t at) const
    {
        return 0.33 * source.red[at] + 0.59 * source.green[at] + 0.11 * source.blue[at];
    }
};

/// A matrix over a picture. Each sum takes its terms row by row from the left, and a block of
/// neighbouring samples is summed at once.
class Convolution
{
public:
    /// Both are borrowed. `side` is odd, and there are side x side weights.
    Convolution(const image &from, const double *matrix, int matrixSide, int channelMode)
        : source(from), weights(matrix), side(matrixSide), radius(matrixSide / 2), mode(channelMode)
    {
        for (int i = 0; i < side * side; ++i)
            wholeWeight += weights[i];
    }

    /// Samples `first` to `end` - 1 of the result, not yet blended, into the planes of `out`.
    void filter(int64_t first, int64_t end, image *out) const
    {
        for (int64_t at = first; at < end;) {
            const int x = int(at % source.width), y = int(at / source.width);
            const int count = int(std::min<int64_t>({kBlock, source.width - x, end - at}));
            filterBlock(x, y, count, out);
            at += count;
        }
    }

    /// Blends what filter made with the source by the selection of `out`.
    void blend(int64_t first, int64_t end, colorblending *blending, image *out) const
    {
        for (int64_t i = first; i < end; ++i) {
            const Rgb over = {double(out->red[i]), double(out->green[i]), double(out->blue[i])};
            const Rgb mixed = blendPixel(blending, centre(i), over, out->gmask[i] / kWhite);
            out->red[i] = sampleNumber(mixed.red);
            out->green[i] = sampleNumber(mixed.green);
            out->blue[i] = sampleNumber(mixed.blue);
        }
    }

private:
    void filterBlock(int x, int y, int count, image *out) const
    {
        double usedWeights[kBlock];
        for (int i = 0; i < count; ++i)
            usedWeights[i] = usedWeight(x + i, y);
        const int64_t at = int64_t(y) * source.width + x;
        const auto run = [&](const auto &sample, uint16_t *words) {
            double sums[kBlock] = {};
            sumBlock(sample, x, y, count, sums);
            // Weights that cancel out divide by zero: black or white, as the sum's sign has it.
            for (int i = 0; i < count; ++i)
                words[i] = sampleNumber(sums[i] / usedWeights[i]);
        };
        if (mode < 1 || mode > 5) {
            run(PlaneSample{source.red}, out->red + at);
            run(PlaneSample{source.green}, out->green + at);
            run(PlaneSample{source.blue}, out->blue + at);
            return;
        }
        if (mode == 1)
            run(MeanSample{source}, out->red + at);
        else if (mode == 2)
            run(LumaSample{source}, out->red + at);
        else
            run(PlaneSample{pickedPlane()}, out->red + at);
        std::copy_n(out->red + at, count, out->green + at);
        std::copy_n(out->red + at, count, out->blue + at);
    }

    /// Adds weight x sample over the part of the window that lies on the picture.
    template <class Sample>
    void sumBlock(const Sample &sample, int x, int y, int count, double *sums) const
    {
        const int firstRow = std::max(y - radius, 0);
        const int lastRow = std::min(y + radius, source.height - 1);
        const int firstTap = std::max(-radius, -(x + count - 1));
        const int lastTap = std::min(radius, source.width - 1 - x);
        for (int row = firstRow; row <= lastRow; ++row) {
            const double *rowWeights = weights + int64_t(row - y + radius) * side;
            const int64_t rowStart = int64_t(row) * source.width;
            for (int dx = firstTap; dx <= lastTap; ++dx) {
                const double weight = rowWeights[dx + radius];
                const int begin = std::max(0, -(x + dx));
                const int end = std::min(count, source.width - (x + dx));
                for (int i = begin; i < end; ++i)
                    sums[i] += weight * sample(rowStart + x + dx + i);
            }
        }
    }

    double usedWeight(int x, int y) const
    {
        const int left = std::min(x, radius), right = std::min(source.width - 1 - x, radius);
        const int above = std::min(y, radius), below = std::min(source.height - 1 - y, radius);
        if (left == radius && right == radius && above == radius && below == radius)
            return wholeWeight;
        double sum = 0.0;
        for (int dy = -above; dy <= below; ++dy)
            for (int dx = -left; dx <= right; ++dx)
                sum += weights[int64_t(dy + radius) * side + dx + radius];
        return sum;
    }

    const uint16_t *pickedPlane() const
    {
        return mode == 3 ? source.red : mode == 4 ? source.green : source.blue;
    }

    Rgb centre(int64_t at) const
    {
        if (mode < 1 || mode > 5)
            return {double(source.red[at]), double(source.green[at]), double(source.blue[at])};
        const double grey = mode == 1   ? MeanSample{source}(at)
                            : mode == 2 ? LumaSample{source}(at)
                                        : PlaneSample{pickedPlane()}(at);
        return {grey, grey, grey};
    }

    const image &source;
    const double *weights;
    const int side, radius, mode;
    double wholeWeight = 0.0;
};

/// Filters and blends the whole picture. False if the person or the run's end stopped it.
bool convolveImage(const Convolution &convolution, int side, exParser &parser, image *out)
{
    const int64_t total = out->sampleCount();
    const int64_t step = std::clamp(kTapsPerLook / (int64_t(side) * side), int64_t(1), total);
    colorblending *blending = parser.blending;
    Workspace *space = workspace();
    bool stopped = false;
    for (int64_t first = 0; first < total && !stopped; first += step) {
        const int count = int(std::min(step, total - first));
        const auto blend = [&](int begin, int end) {
            convolution.blend(first + begin, first + end, blending, out);
        };
        parallelRows(count, side * side, [&](int begin, int end) {
            convolution.filter(first + begin, first + end, out);
        });
        if (blendsInOrder(blending))
            blend(0, count);
        else
            parallelRows(count, 1, blend);
        if (step == total)
            break;
        if (space)
            space->progress(QCoreApplication::translate("exParser", "convolving image"), first,
                            total);
        stopped = (space && space->cancelRequested()) ||
                  (parser.dispatcher && !parser.dispatcher->keepRunning());
    }
    if (space && step < total)
        space->progress({}, 0, 0);
    return !stopped;
}
} // namespace

double fnConvolve(FunctionCall &call)
{
    exParser &parser = call.parser;
    if (call.names.isEmpty() || call.count < 1)
        return parser.badParameters(call.opCode, kTag);
    const QString name = namedParameter(parser, call.names[0]);
    const ScriptArray *matrix = parser.arrays.find(name);
    if (!matrix) {
        parser.report(QStringLiteral("e: matrix \"R%1ER\" does not exist").arg(name));
        return 0;
    }
    const int side = roundedNumber(call.a[0]);
    if (side != matrix->rows || side != matrix->cols)
        parser.report(QStringLiteral("w: Array %1 does not match size %2").arg(name).arg(side));
    if (side < 3 || side % 2 == 0) {
        parser.report(
            QStringLiteral("e: Array %1 must be at least 3x3 BandEB odd row/col size").arg(name));
        return 0;
    }
    image *out = parser.images.target;
    image *source = parser.images.source;
    // The undo entry of the run's start can be gone by now, or of another size.
    const bool stands = out && out->valid() && source && out->undoList.contains(source) &&
                        source->width == out->width && source->height == out->height;
    if (int64_t(side) * side != matrix->count() || !stands)
        return parser.badParameters(call.opCode, kTag);
    const int mode = call.count > 1 ? wholeNumber(call.a[1]) : 0;
    convolveImage(Convolution(*source, matrix->values.data(), side, mode), side, parser, out);
    return 0;
}
