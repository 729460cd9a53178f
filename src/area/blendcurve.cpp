// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/blendcurve.h"

#include "area/blendcurve_kernels.h"
#include "area/rescale_inline.h"
#include "core/image.h"
#include "core/memory.h"
#include "core/rows.h"
#include "core/workspace.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace
{
enum CurveMode { kConical, kFlat, kMaximumAxis, kSine };

constexpr double kPi = 3.14159265358979323846;

void buildConical(double *out, int length, const CurveMap &map)
{
    const int half = length / 2;
    if (half == 0) {
        // The step is infinite here: a curve of any height falls below 0 at once, and one
        // without height lies at its floor.
        const bool level = map.amplitude * (1.0 - map.floorValue) == 0.0;
        out[0] = map(level ? 0.0 : -std::numeric_limits<double>::infinity());
        return;
    }
    const double step = 1.0 / half;
    double v = 0.0;
    for (int i = 0; i < half; ++i) {
        out[i] = map(v);
        v += step;
    }
    for (int i = half; i < length; ++i) {
        v -= step;
        out[i] = map(v);
    }
}

void buildSine(double *out, int length, const CurveMap &map)
{
    for (int i = 0; i < length; ++i)
        out[i] = map(std::sin(i * kPi / length));
}

void buildMaximumAxis(double *out, int length, const CurveMap &map)
{
    const double step = 2.0 / length;
    double x = -1.0;
    out[0] = map(0.0);
    for (int i = 1; i < length; ++i) {
        x += step;
        out[i] = map(std::sqrt(1.0 - x * x));
    }
}
} // namespace

double factorValue(int index)
{
    constexpr double values[] = {1, 2, 3, 5, 10, 25, 50, 100};
    return index >= 1 && index <= 7 ? values[index] : 1.0;
}

void buildCurve(double *out, int length, int mode, double amplitude, double floorValue)
{
    if (!out || length <= 0)
        return;
    const CurveMap map{amplitude, floorValue};
    if (mode == kFlat)
        std::fill_n(out, length, CurveMap::clampUnit(floorValue + (1.0 - floorValue) * amplitude));
    else if (mode == kConical)
        buildConical(out, length, map);
    else if (mode == kSine)
        buildSine(out, length, map);
    else if (mode == kMaximumAxis)
        buildMaximumAxis(out, length, map);
}

dmask::~dmask()
{
    upfree(&mask);
    upfree(&row);
    upfree(&col);
}

bool dmask::init(int newWidth, int newHeight)
{
    upfree(&mask);
    width = height = size = 0;
    if (newWidth <= 0 || newHeight <= 0 || newWidth > std::numeric_limits<int>::max() / newHeight)
        return false;
    if (!ucalloc(reinterpret_cast<void **>(&mask), size_t(newWidth) * size_t(newHeight),
                 sizeof(double), "dmask init*( mask"))
        return false;
    width = newWidth;
    height = newHeight;
    size = width * height;
    return true;
}

bool dmask::makeProfiles()
{
    upfree(&row);
    upfree(&col);
    row =
        static_cast<double *>(ucalloc(size_t(boxWidth), sizeof(double), "dmask createmask() row"));
    col =
        static_cast<double *>(ucalloc(size_t(boxHeight), sizeof(double), "dmask createmask() col"));
    if (!row || !col)
        return false;
    buildCurve(row, boxWidth, mode, heightFactor, floorValue);
    buildCurve(col, boxHeight, mode, heightFactor, floorValue);
    return true;
}

bool dmask::prepare(const image *source)
{
    const Workspace *space = workspace();
    if (!source || !source->gmask || !space)
        return false;
    mode = space->curveMode;
    floorValue = space->curveFloor;
    heightFactor = space->curveAmplitude * factorValue(space->curveFactor);
    // The factor is left out of this test: a low amplitude that a factor lifts to 1 is
    // still built.
    if (mode == kFlat && !((1.0 - floorValue) * space->curveAmplitude + floorValue < 1.0))
        return false;
    if (mode < kConical || mode > kSine)
        return false;
    const Bounds box = source->maskBounds();
    if (box.right < box.left || box.bottom < box.top)
        return false;
    left = box.left;
    top = box.top;
    right = box.right + 1;
    bottom = box.bottom + 1;
    boxWidth = box.width + 1;
    boxHeight = box.height + 1;
    centerX = left + boxWidth / 2;
    centerY = top + boxHeight / 2;
    return makeProfiles();
}

void dmask::factorRow(int y, int x, int count, double *out) const
{
    if (mode == kFlat) {
        std::copy_n(row + x, count, out);
        return;
    }
    if (mode != kMaximumAxis) {
        const double down = col[y];
        for (int i = 0; i < count; ++i)
            out[i] = row[x + i] * down;
        return;
    }
    // The centre lies on a sample, so the distances are whole numbers.
    const HillRow hill{left + x - int(centerX),
                       top + y - int(centerY),
                       double(std::max(boxHeight / 2, boxWidth / 2)),
                       {heightFactor, floorValue}};
    KERNEL_DISPATCH(hillRow, hill, count, out);
}

bool dmask::createmask(const image *source)
{
    if (!prepare(source) || !init(boxWidth, boxHeight))
        return false;
    parallelRows(height, width, [this](int first, int end) {
        for (int y = first; y < end; ++y)
            factorRow(y, 0, width, mask + size_t(y) * size_t(width));
    });
    return true;
}

void dmask::rescale(const dmask *source, dmask *target)
{
    if (source && target && source->mask && target->mask && source != target)
        rescalePlane(source->mask, source->width, source->height, target->mask, target->width,
                     target->height);
}

void diffuseMask(image *source)
{
    dmask factors;
    if (!factors.prepare(source))
        return;
    // The box was raised by one to the right and below; what of it lies outside of the
    // image, or past the selection, holds nothing to shape.
    const int columns = std::min(factors.right, source->width - 1) - factors.left + 1;
    const int rows = std::min(factors.bottom, source->height - 1) - factors.top + 1;
    parallelRows(rows, columns, [&](int first, int end) {
        constexpr int kChunk = 256;
        double factor[kChunk];
        for (int y = first; y < end; ++y) {
            uint16_t *words =
                source->gmask + size_t(factors.top + y) * size_t(source->width) + factors.left;
            for (int x = 0; x < columns; x += kChunk) {
                const int count = std::min(kChunk, columns - x);
                factors.factorRow(y, x, count, factor);
                KERNEL_DISPATCH(shapeWords, words + x, factor, count);
            }
        }
    });
}
