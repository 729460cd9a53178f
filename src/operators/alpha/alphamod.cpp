// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/alpha/alphamod.h"

#include "core/filters.h"
#include "core/image.h"
#include "core/memory.h"
#include "core/rows.h"
#include "operators/alpha/alphamod_kernels.h"
#include "operators/pipeline/blendspan.h"
#include "operators/pipeline/linearmix.h"

#include <algorithm>
#include <iterator>

namespace
{
/// Amount per full pass of the smoothing kernel.
constexpr double kAmountPerPass = 16.0;

/// The rule of each mode that works on a pixel by itself; the others have places of their own.
constexpr AlphaRule kRules[] = {AlphaRule::Set,       AlphaRule::Invert,   AlphaRule::Set,
                                AlphaRule::Average,   AlphaRule::Luma,     AlphaRule::FromRed,
                                AlphaRule::FromGreen, AlphaRule::FromBlue, AlphaRule::Harden};

/// (w, 1 - 2w, w) across times the same down. A w of a quarter is the binomial kernel.
Convolution33 smoothing(double w)
{
    const double line[] = {w, 1.0 - 2.0 * w, w};
    Convolution33 kernel;
    for (int i = 0; i < 9; ++i)
        kernel.cells[i] = line[i / 3] * line[i % 3];
    kernel.bias = 0.5; // rounds: without it each pass would darken a little
    return kernel;
}

/// False if memory is short.
bool smooth(const image *owner, uint16_t *plane, double passes)
{
    for (; passes > 0.0; passes -= 1.0)
        if (!convolveChannel(owner, plane, smoothing(std::min(passes, 1.0) / 4.0)))
            return false;
    return true;
}
} // namespace

AlphaMod::AlphaMod(OperatorTable *table) : DeclaredOp(table)
{
    hotkeyKey = QStringLiteral("AlphaModHotkey");
    declare({.field = &amount,
             .key = "AlphaModAmount",
             .low = 0,
             .high = 255,
             .initial = 255,
             .control = ::slider(QT_TR_NOOP("Amount"))});
    declare({.field = &mode,
             .key = "AlphaModMode",
             .low = 0,
             .high = 9,
             .control = choice(QT_TR_NOOP("Mode"),
                               {QT_TR_NOOP("Set Alpha"), QT_TR_NOOP("Invert Alpha"),
                                QT_TR_NOOP("Alpha to RGB"), QT_TR_NOOP("RGB to Alpha (average)"),
                                QT_TR_NOOP("RGB to Alpha (luma)"), QT_TR_NOOP("Red to Alpha"),
                                QT_TR_NOOP("Green to Alpha"), QT_TR_NOOP("Blue to Alpha"),
                                QT_TR_NOOP("Harden Alpha"), QT_TR_NOOP("Soften Alpha")})});
}

void AlphaMod::apply(image *target, image *)
{
    if (mode == ToRgb) {
        const BlendPass pass = blendPass(BlendOrder::OldFirst);
        overBlendSpans(target, pass, [&pass](const MixSpan &span) {
            KERNEL_DISPATCH(alphaToRgbSpan, span, pass);
        });
    } else if (mode == Soften) {
        soften(target);
    } else if (mode >= 0 && mode < int(std::size(kRules))) {
        overSpans(target, [this](const MixSpan &span) {
            KERNEL_DISPATCH(mixAlphaSpan, span, kRules[mode], amount);
        });
    }
}

/// Alpha as it is where its neighbours are like it; an edge becomes a slope as wide as the
/// amount says.
void AlphaMod::soften(image *target) const
{
    if (!target || !target->valid())
        return;
    const TrackedBuffer<uint16_t> softened(size_t(target->sampleCount()), "alpha soften");
    if (!softened)
        return;
    copyPlane(target->alpha, softened.get(), target->width, target->height);
    if (!smooth(target, softened.get(), amount / kAmountPerPass))
        return;
    parallelRows(target->height, target->width, [&](int first, int end) {
        const ptrdiff_t start = ptrdiff_t(first) * target->width;
        uint16_t *from = softened.get() + start;
        const MixSpan span{from,
                           from,
                           from,
                           target->gmask + start,
                           ptrdiff_t(end - first) * target->width,
                           target->alpha + start};
        KERNEL_DISPATCH(mixAlphaSpan, span, AlphaRule::FromRed, 0);
    });
}
