// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/filter/rgbrotate.h"

#include "core/image.h"
#include "core/memory.h"
#include "core/rows.h"
#include "operators/filter/rgbrotate_kernels.h"

#include <algorithm>
#include <cstring>

namespace
{
/// Each band of rows has row buffers of its own, so that bands can run side by side.
constexpr int kBands = 16;
constexpr int kRowsInBuffer = 3; ///< a row and its two neighbours, which are the row again

/// One plane on its way: rows of `in` repeat, so that a shifted row is a run of them.
struct ShiftJob {
    uint16_t *plane;
    const uint16_t *mask;
    int width;
    int shift; ///< to the right, above -width and below width

    void row(ptrdiff_t y, uint16_t *in, uint16_t *out) const
    {
        const size_t bytes = size_t(width) * sizeof *plane;
        uint16_t *samples = plane + y * width;
        for (int copy = 0; copy < kRowsInBuffer; ++copy)
            std::memcpy(in + ptrdiff_t(copy) * width, samples, bytes);
        KERNEL_DISPATCH(mixShifted, samples, in + width - shift, mask + y * width, out, width);
        std::memcpy(samples, out, bytes);
    }
};
} // namespace

RgbRotate::RgbRotate(OperatorTable *table) : DeclaredOp(table)
{
    hotkeyKey = QStringLiteral("RGBShiftHotkey");
    declare({.field = &shift,
             .key = "RGBShift",
             .low = 1,
             .high = 200,
             .initial = 1,
             .control = ::slider(QT_TR_NOOP("Shift"))});
    declare({.field = &channel,
             .key = "RGBShiftChannel",
             .low = 0,
             .high = 2,
             .control = choice(QT_TR_NOOP("Channel"),
                               {QT_TR_NOOP("Red"), QT_TR_NOOP("Green"), QT_TR_NOOP("Blue")})});
    declare({.field = &right,
             .key = "RGBShiftRight",
             .low = 0,
             .high = 1,
             .control = check(QT_TR_NOOP("To the right"))});
}

void RgbRotate::apply(image *target, image *)
{
    if (!target || !target->valid() || channel < 0 || channel > 2)
        return;
    const int width = target->width, height = target->height;
    const int bands = std::min(kBands, height);
    const size_t perBand = size_t(kRowsInBuffer) * size_t(width);
    const TrackedBuffer<uint16_t> in(perBand * size_t(bands), "shift-array-in");
    const TrackedBuffer<uint16_t> out(perBand * size_t(bands), "shift-array-out");
    if (!in || !out)
        return;
    const int distance = shift % width;
    const ShiftJob job{target->colorPlanes()[size_t(channel)], target->gmask, width,
                       right ? distance : -distance};
    parallelRows(bands, height / bands * width, [&](int first, int end) {
        for (int band = first; band < end; ++band) {
            const ptrdiff_t last = ptrdiff_t(height) * (band + 1) / bands;
            for (ptrdiff_t y = ptrdiff_t(height) * band / bands; y < last; ++y)
                job.row(y, in.get() + size_t(band) * perBand, out.get() + size_t(band) * perBand);
        }
    });
}
