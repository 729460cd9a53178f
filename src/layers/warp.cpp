// SPDX-License-Identifier: GPL-3.0-or-later
#include "layers/warp.h"

#include "core/image.h"
#include "core/rows.h"
#include "core/undo.h"
#include "core/warpfield.h"
#include "layers/stack.h"

#include <cmath>
#include <memory>

namespace
{
constexpr uint16_t kMaster = 1, kLayer = 2;
constexpr double kFractions = 65536.0;

bool isWarp(const image *img)
{
    return img && img->valid() && img->kind == kLayer && img->layerMode == kWarpMode;
}

/// The field stores by rounding down, which would let every turn pull it up and left.
double toNearest(double value)
{
    return std::floor(value * kFractions + 0.5) / kFractions;
}

template <class Change>
void changeField(image *field, Change change)
{
    beginAct(field);
    parallelRows(field->height, field->width * 4, [&](int first, int end) {
        const int64_t stop = int64_t(end) * field->width;
        for (int64_t i = int64_t(first) * field->width; i < stop; ++i) {
            const Displacement d = change(displacementAt(*field, i));
            setDisplacement(field, i, {toNearest(d.x), toNearest(d.y)});
        }
    });
    samplesChanged(field);
}
} // namespace

image *createWarp(image *master, image *above)
{
    if (!master || master->kind != kMaster)
        return nullptr;
    auto warp = std::make_unique<image>();
    if (!warp->allocateUnfilled(master->width, master->height, QStringLiteral("warp")))
        return nullptr; // fresh planes are zero: no displacement
    warp->layerMode = kWarpMode;
    warp->changed = true;
    if (above && master->layers.contains(above))
        insertAbove(above, warp.get());
    else
        addLayer(master, warp.get());
    return warp.release();
}

bool resetWarp(image *layer)
{
    if (!isWarp(layer))
        return false;
    beginAct(layer);
    layer->fill(0, 0, 0, 0);
    samplesChanged(layer);
    return true;
}

bool scaleWarp(image *layer, double factor)
{
    if (!isWarp(layer) || !std::isfinite(factor))
        return false;
    changeField(layer, [factor](Displacement d) {
        return Displacement{d.x * factor, d.y * factor};
    });
    return true;
}

bool rotateWarp(image *layer, double degrees)
{
    if (!isWarp(layer) || !std::isfinite(degrees))
        return false;
    const double radians = degrees * M_PI / 180.0;
    const double c = std::cos(radians), s = std::sin(radians);
    // Rows run downward, so what is seen as counter-clockwise turns y against the sign.
    changeField(layer, [c, s](Displacement d) {
        return Displacement{c * d.x + s * d.y, c * d.y - s * d.x};
    });
    return true;
}
