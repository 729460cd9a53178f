// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/filter/exposure.h"

#include "core/colour_inline.h"
#include "core/image.h"
#include "core/rows.h"
#include "operators/pipeline/linearmix.h"

Exposure::Exposure(OperatorTable *table) : DeclaredOp(table)
{
    usageLine = QStringLiteral("exposure [Amount=-100...100] [Mode=0...1]");
    hotkeyKey = QStringLiteral("ExposureHotkey");
    declare({.field = &amount,
             .key = "Exposure",
             .low = -100,
             .high = 100,
             .control = ::slider(QT_TR_NOOP("Amount"))});
    declare({.field = &mode,
             .key = "ExposureMode",
             .low = 0,
             .high = 1,
             .control = choice(QT_TR_NOOP("Mode"), {QT_TR_NOOP("Raw RGB"), QT_TR_NOOP("Luma")}),
             .keptByReset = true});
}

namespace
{
/// Exposes the value of one pixel and mixes it in by the mask. A mask of 0 keeps the
/// pixel: every sample of the result is finite, so it would add a plain 0.
void exposeValue(image *target, size_t i, double k)
{
    if (target->gmask[i] == 0)
        return;
    const double m = target->gmask[i] / kWhite;
    const Rgb old{double(target->red[i]), double(target->green[i]), double(target->blue[i])};
    Hsv hsv = inlined::rgbToHsv(old);
    hsv.value = lesser(hsv.value * k, 100.0);
    const Rgb exposed = inlined::hsvToRgb(hsv);
    target->red[i] = uint16_t(int(mixLinear(old.red, exposed.red, m)));
    target->green[i] = uint16_t(int(mixLinear(old.green, exposed.green, m)));
    target->blue[i] = uint16_t(int(mixLinear(old.blue, exposed.blue, m)));
}
} // namespace

void Exposure::apply(image *target, image *)
{
    if (!target || !target->valid())
        return;
    const double k = (amount + 100) / 100.0;
    if (mode == RawRgb) {
        mixScaled(target, k);
        return;
    }
    parallelRows(target->height, target->width, [target, k](int first, int end) {
        const size_t stop = size_t(end) * size_t(target->width);
        for (size_t i = size_t(first) * size_t(target->width); i < stop; ++i)
            exposeValue(target, i, k);
    });
}
