// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/pipeline/lookup.h"

#include "core/colour.h"
#include "core/memory.h"
#include "core/workspace.h"
#include "operators/pipeline/blendspan.h"

#include <algorithm>

namespace
{
constexpr int kEntries = 65536;

bool haveTables()
{
    const Workspace *space = workspace();
    return space && space->colorMapRed && space->colorMapGreen && space->colorMapBlue;
}
/// Single loads through a table stand between the vectors here: the wider instructions put
/// them together more slowly than AVX2 does.
void lookUpSpan(const MixSpan &span, const LookupTables &tables, const BlendPass &pass)
{
#if KESTRANE_X86_KERNELS
    if (kernelLevel() != KernelLevel::Baseline) {
        kernels_avx2::lookupSpan(span, tables, pass);
        return;
    }
#endif
    kernels_baseline::lookupSpan(span, tables, pass);
}
} // namespace

void resetLut()
{
    if (!haveTables())
        return;
    for (uint16_t *table :
         {workspace()->colorMapRed, workspace()->colorMapGreen, workspace()->colorMapBlue})
        for (int i = 0; i < kEntries; ++i)
            table[i] = uint16_t(i);
}

int clampSample(int64_t value)
{
    return int(std::clamp<int64_t>(value, 0, kEntries - 1));
}

uint16_t lutEntry(double value)
{
    return uint16_t(clampSampleValue(value));
}

void applyLut(image *target)
{
    if (!haveTables())
        return;
    const Workspace &space = *workspace();
    LookupTables tables{space.colorMapRed, space.colorMapGreen, space.colorMapBlue};
    for (const uint16_t **table : {&tables.green, &tables.blue})
        if (std::equal(tables.red, tables.red + kEntries, *table))
            *table = tables.red; // one table stays nearer to the processor than three
    const BlendPass pass = blendPass(BlendOrder::ResultFirst);
    overBlendSpans(target, pass, [&](const MixSpan &span) { lookUpSpan(span, tables, pass); });
}

void applyLumaLut(image *target)
{
    if (!haveTables())
        return;
    // A pixel's value comes from its largest channel alone. So the way from that channel to
    // the entry of its value is one table, made once.
    const TrackedBuffer<uint16_t> byChannel(kEntries, "luma lut");
    if (!byChannel)
        return;
    const uint16_t *green = workspace()->colorMapGreen;
    for (int most = 0; most < kEntries; ++most) {
        const double value = rgbToHsv({double(most), double(most), double(most)}).value;
        byChannel.get()[most] = green[clampSample(int64_t(value * kWhite / 100.0))];
    }
    const BlendPass pass = blendPass(BlendOrder::ResultFirst);
    overBlendSpans(target, pass, [&](const MixSpan &span) {
        KERNEL_DISPATCH(lookupValueSpan, span, byChannel.get(), pass);
    });
}
