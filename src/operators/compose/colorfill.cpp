// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/compose/colorfill.h"

#include "core/workspace.h"
#include "operators/base/oppage.h"
#include "operators/compose/colorfill_kernels.h"
#include "operators/pipeline/blendspan.h"

ColorFill::ColorFill(OperatorTable *table) : DeclaredOp(table)
{
    hotkeyKey = QStringLiteral("ColorFillHotkey");
    const auto colour = [this](int32_t *field, const char *key, const char *label) {
        declare({.field = field, .key = key, .low = 0, .high = 255, .control = ::slider(label)});
    };
    colour(&red, "ColorFillRed", QT_TR_NOOP("Red"));
    colour(&green, "ColorFillGreen", QT_TR_NOOP("Green"));
    colour(&blue, "ColorFillBlue", QT_TR_NOOP("Blue"));
    declareWell(QT_TR_NOOP("Color"), &red, &green, &blue);
}

void ColorFill::apply(image *target, image *)
{
    const Rgb colour{red * 257.0, green * 257.0, blue * 257.0};
    BlendPass pass = blendPass(BlendOrder::OldFirst);
    const Workspace *space = workspace();
    pass.throughAlpha = space && space->maskWithTargetAlpha;
    overBlendSpans(target, pass,
                   [&](const MixSpan &span) { KERNEL_DISPATCH(fillSpan, span, pass, colour); });
}

void ColorFill::build(OpPage *page)
{
    DeclaredOp::build(page);
    if (page)
        page->addButton(tr("Foreground"), true);
}

/// Takes the foreground colour.
int ColorFill::button(int index)
{
    const Workspace *space = workspace();
    if (index != 0 || !space)
        return 0;
    red = space->foreRed / 257;
    green = space->foreGreen / 257;
    blue = space->foreBlue / 257;
    showFields();
    return 1;
}
