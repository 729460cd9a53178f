// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/adjustment/colorize.h"

#include "operators/adjustment/colourmodel_kernels.h"
#include "operators/pipeline/blendspan.h"

Colorize::Colorize(OperatorTable *table) : DeclaredOp(table)
{
    hotkeyKey = QStringLiteral("ColorizeHotkey");
    const auto colour = [this](int32_t *field, const char *key, int initial, const char *label) {
        declare({.field = field,
                 .key = key,
                 .low = 0,
                 .high = 255,
                 .initial = double(initial),
                 .control = ::slider(label)});
    };
    // A brown of old photographs: something that shows what the operator does.
    colour(&red, "ColorizeRed", 150, QT_TR_NOOP("Red"));
    colour(&green, "ColorizeGreen", 110, QT_TR_NOOP("Green"));
    colour(&blue, "ColorizeBlue", 70, QT_TR_NOOP("Blue"));
    declare({.field = &mixture,
             .key = "ColorizeMixture",
             .low = 0,
             .high = 100,
             .initial = 100,
             .control = ::slider(QT_TR_NOOP("Mixture"))});
    declare({.field = &applySaturation,
             .key = "ColorizeSaturation",
             .low = 0,
             .high = 1,
             .initial = 1,
             .control = check(QT_TR_NOOP("Apply Saturation"))});
    declareWell(QT_TR_NOOP("Color"), &red, &green, &blue);
}

void Colorize::apply(image *target, image *)
{
    if (red == green && green == blue)
        return;
    const Hsv colour = rgbToHsv({red * 257.0, green * 257.0, blue * 257.0});
    const Tint tint{colour.hue, colour.saturation, applySaturation, mixture / 100.0};
    const BlendPass pass = blendPass(BlendOrder::OldFirst, true);
    overBlendSpans(target, pass,
                   [&](const MixSpan &span) { KERNEL_DISPATCH(tintSpan, span, pass, tint); });
}
