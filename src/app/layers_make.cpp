// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/busyguard.h"
#include "app/layers.h"
#include "app/mainwindow.h"
#include "app/parameterdialog.h"
#include "core/image.h"
#include "core/layermodes.h"
#include "layers/splits.h"
#include "layers/stack.h"
#include "layers/warp.h"

#include <QApplication>

#include <algorithm>

namespace
{
constexpr int kNameLength = 30;
constexpr int kTextPart = 8; ///< a first text is this part of the picture high
constexpr int kLeastText = 8, kMostText = 4000;

/// The hourglass while something large is computed.
class WaitCursor
{
public:
    WaitCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    ~WaitCursor() { QApplication::restoreOverrideCursor(); }
    WaitCursor(const WaitCursor &) = delete;
    WaitCursor &operator=(const WaitCursor &) = delete;
};

/// Keeps a local stack together that a new layer comes to lie in. Above a base it counts
/// from the base's corner, as the others there do.
void joinLocalStack(const image &beside, image *made, bool above)
{
    const QList<image *> &layers = beside.master->layers;
    const image *next = layers.value(layers.indexOf(const_cast<image *>(&beside)) + 1, nullptr);
    const bool besideIsBase = above && !beside.localStack && next && next->localStack;
    made->localStack = beside.localStack || besideIsBase;
    if (besideIsBase) {
        made->xOffset -= beside.xOffset;
        made->yOffset -= beside.yOffset;
    }
}

const ParameterDialog::Range kPercent = {0, 100, 0, QStringLiteral(" %"), 100};
const ParameterDialog::Range kRadius = {0, 500, 0, QString(), 1, 100};
} // namespace

/// The selected layer, if new ones may be made out of it.
image *Layers::sourceLayer(bool normalOnly) const
{
    image *layer = selected();
    if (!layer || (normalOnly ? layer->layerMode != kNormalMode : layer->layerMode == kWarpMode))
        return nullptr;
    return layer;
}

void Layers::insertMade(image *beside, image *made, bool above)
{
    if (!made) {
        tellNoMemory();
        return;
    }
    joinLocalStack(*beside, made, above);
    if (above ? insertAbove(beside, made) : ::insertBefore(beside, made))
        selectLayer(made);
    else
        delete made;
}

// --- Effects ----------------------------------------------------------------------------

void Layers::on_shadowEffect_clicked()
{
    log("on_shadowEffect_clicked");
    image *layer = sourceLayer(true);
    if (!layer)
        return;
    const BusyGuard guard(main->busyDepth());
    ParameterDialog dialog(tr("Shadow"), tr("A soft shadow of the layer's shape, below it."),
                           tr("Make Shadow"), this);
    const ParameterDialog::Range shift = {-2000, 2000, 0, QString(), 1, 100};
    dialog.whole("xShift", tr("To the right"), &shadow.xShift, shift,
                 tr("Samples; below zero to the left"));
    dialog.whole("yShift", tr("Down"), &shadow.yShift, shift, tr("Samples; below zero upwards"));
    dialog.whole("radius", tr("Softness"), &shadow.radius, kRadius, tr("Samples of blur"));
    dialog.number("strength", tr("Strength"), &shadow.strength, kPercent,
                  tr("Opacity of the darkest place"));
    dialog.colour("colour", tr("Colour"), &shadow.red, &shadow.green, &shadow.blue);
    if (!dialog.ask() || layer != selected())
        return;
    const WaitCursor wait;
    insertMade(layer, makeShadow(*layer, shadow), false);
}

void Layers::on_glowEffect_clicked()
{
    log("on_glowEffect_clicked");
    image *layer = sourceLayer(true);
    if (!layer)
        return;
    const BusyGuard guard(main->busyDepth());
    ParameterDialog dialog(tr("Glow"), tr("A glow around the layer's shape, below it."),
                           tr("Make Glow"), this);
    dialog.whole("radius", tr("Width"), &glow.radius, kRadius,
                 tr("Samples that the glow reaches out"));
    dialog.number("strength", tr("Strength"), &glow.strength, kPercent,
                  tr("Opacity of the strongest place"));
    dialog.colour("colour", tr("Colour"), &glow.red, &glow.green, &glow.blue);
    if (!dialog.ask() || layer != selected())
        return;
    const WaitCursor wait;
    insertMade(layer, makeGlow(*layer, glow), false);
}

void Layers::askRelief(const QString &title, const QString &explanation,
                       image *(*make)(const image &, const ReliefSettings &),
                       ReliefSettings *reliefSettings)
{
    image *layer = sourceLayer(true);
    if (!layer)
        return;
    const BusyGuard guard(main->busyDepth());
    ParameterDialog dialog(title, explanation, tr("Make %1").arg(title), this);
    dialog.number("angle", tr("Light from"), &reliefSettings->angle,
                  {0, 360, 1, QStringLiteral("°"), 1},
                  tr("0 is from the right, 90 from above, 180 from the left"));
    dialog.whole("depth", tr("Depth"), &reliefSettings->depth, {1, 100, 0, QString(), 1},
                 tr("Samples between the two heights that are compared"));
    dialog.number("strength", tr("Strength"), &reliefSettings->strength,
                  {0, 400, 0, QStringLiteral(" %"), 100}, tr("How strong light and shade are"));
    if (!dialog.ask() || layer != selected())
        return;
    const WaitCursor wait;
    insertMade(layer, make(*layer, *reliefSettings), true);
}

void Layers::on_embossEffect_clicked()
{
    log("on_embossEffect_clicked");
    askRelief(tr("Emboss"), tr("Light and shade of the layer's relief, above it: bright is high."),
              makeEmboss, &emboss);
}

void Layers::on_punchEffect_clicked()
{
    log("on_punchEffect_clicked");
    askRelief(tr("Punch"),
              tr("Light and shade along the rim of the layer's shape, above it, as if the shape "
                 "were cut into what lies below."),
              makePunch, &punch);
}

// --- Warp -------------------------------------------------------------------------------

void Layers::on_createWarp_clicked()
{
    log("on_createWarp_clicked");
    image *of = master();
    if (!of)
        return;
    if (image *made = createWarp(of, selected()))
        selectLayer(made);
    else
        tellNoMemory();
}

void Layers::on_resetWarp_clicked()
{
    log("on_resetWarp_clicked");
    if (image *layer = selected())
        resetWarp(layer);
}

void Layers::on_scaleWarp_clicked()
{
    log("on_scaleWarp_clicked");
    image *layer = selected();
    if (!layer || layer->layerMode != kWarpMode)
        return;
    const BusyGuard guard(main->busyDepth());
    ParameterDialog dialog(tr("Scale Warp"),
                           tr("100 % keeps the warp, 0 % flattens it, below zero reverses it."),
                           tr("Scale"), this);
    double factor = 1.0;
    dialog.number("factor", tr("Strength"), &factor, {-1000, 1000, 1, QStringLiteral(" %"), 100},
                  tr("What every displacement is multiplied by"));
    if (dialog.ask() && layer == selected())
        scaleWarp(layer, factor);
}

void Layers::on_rotateWarp_clicked()
{
    log("on_rotateWarp_clicked");
    image *layer = selected();
    if (!layer || layer->layerMode != kWarpMode)
        return;
    const BusyGuard guard(main->busyDepth());
    ParameterDialog dialog(tr("Rotate Warp"), tr("Turns the direction of every displacement."),
                           tr("Rotate"), this);
    double degrees = 90;
    dialog.number("degrees", tr("Angle"), &degrees, {-360, 360, 1, QStringLiteral("°"), 1},
                  tr("Counter-clockwise"));
    if (dialog.ask() && layer == selected())
        rotateWarp(layer, degrees);
}

// --- Splits -----------------------------------------------------------------------------

/// Gives the parts the place of the source in the stack. They stack on the lowest of them,
/// which meets what lies below as the source did. A source that stacks itself already
/// leaves no room for that: its parts stack along with it.
void Layers::arrangeParts(const image &source, const QList<image *> &parts)
{
    for (image *part : parts) {
        part->localStack = source.localStack || part != parts.constFirst();
        if (part->localStack && !source.localStack)
            part->xOffset = part->yOffset = 0; // from the lowest part on
    }
    if (source.localStack)
        return;
    image *lowest = parts.constFirst();
    lowest->layerMode = source.layerMode;
    lowest->opacity = source.opacity;
    lowest->factor = source.factor;
    lowest->lockStep = source.lockStep;
    if (source.lockStep) // hidden as it is, the source still moves what is above it
        lowest->xOffset = lowest->yOffset = 0;
}

void Layers::split(QList<image *> (*make)(const image &))
{
    image *source = sourceLayer(false);
    if (!source)
        return;
    const WaitCursor wait;
    const QList<image *> parts = make(*source);
    if (parts.isEmpty()) {
        tellNoMemory();
        return;
    }
    arrangeParts(*source, parts);
    image *below = source;
    for (image *part : parts) {
        insertAbove(below, part);
        below = part;
    }
    source->visible = false;
    settingChanged(source);
    selectLayer(below);
    main->statusText(tr("%1 parts above %2, which is hidden").arg(parts.size()).arg(source->name));
}

void Layers::on_toChans_clicked()
{
    log("on_toChans_clicked");
    split(splitChannels);
}

void Layers::on_rgbToHSV_clicked()
{
    log("on_rgbToHSV_clicked");
    split(splitHSV);
}

void Layers::on_rgbToCMY_clicked()
{
    log("on_rgbToCMY_clicked");
    split(splitCMY);
}

void Layers::on_rgbToCMYK_clicked()
{
    log("on_rgbToCMYK_clicked");
    split(splitCMYK);
}

// --- Text and animation -----------------------------------------------------------------

void Layers::on_gentext_clicked()
{
    log("on_gentext_clicked");
    image *of = master();
    if (!of)
        return;
    const BusyGuard guard(main->busyDepth());
    ParameterDialog dialog(tr("Text Layer"), QString(), tr("Write"), this);
    QString text = tr("Text");
    if (textStyle.pixels <= 0)
        textStyle.pixels = std::clamp(of->height / kTextPart, kLeastText, kMostText);
    dialog.text("text", tr("Text"), &text);
    dialog.fontFamily("family", tr("Font"), &textStyle.family);
    dialog.number("pixels", tr("Height"), &textStyle.pixels, {1, 4000, 0, QString(), 1, 400},
                  tr("Height of the font in samples"));
    dialog.check("bold", tr("Bold"), &textStyle.bold, QString());
    dialog.check("italic", tr("Italic"), &textStyle.italic, QString());
    dialog.choice("align", tr("Lines"), &textStyle.align,
                  {tr("At the left"), tr("Centred"), tr("At the right")});
    dialog.colour("colour", tr("Colour"), &textStyle.red, &textStyle.green, &textStyle.blue);
    if (!dialog.ask() || of != master())
        return;
    const WaitCursor wait;
    image *layer = renderText(text, textStyle);
    if (!layer) {
        main->messageBox(tr("Text Layer"), tr("A text of that size cannot be drawn."));
        return;
    }
    layer->name = text.simplified().left(kNameLength);
    layer->xOffset = (of->width - layer->width) / 2;
    layer->yOffset = (of->height - layer->height) / 2;
    if (image *below = selected())
        insertMade(below, layer, true);
    else
        addLayer(of, layer);
}

void Layers::on_gifAnim_clicked()
{
    log("on_gifAnim_clicked");
    if (image *of = master())
        main->exportAnimation(of, this);
}
