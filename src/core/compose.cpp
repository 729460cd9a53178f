// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/compose.h"

#include "core/compose_rows.h"
#include "core/image.h"
#include "core/layermodes.h"
#include "core/rows.h"
#include "core/warpfield.h"
#include "core/workspace.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

namespace
{
constexpr int kSentinelSide = 5;

/// Keeps one more image at the end of a master's list, so that the walk can always look
/// one layer ahead; it is hidden and stands in no group.
class Sentinel
{
public:
    explicit Sentinel(image *owner) : master(owner)
    {
        last.visible = false;
        if (last.allocate(kSentinelSide, kSentinelSide, QString()))
            master->layers.append(&last);
    }
    ~Sentinel() { master->layers.removeAll(&last); }
    Sentinel(const Sentinel &) = delete;
    Sentinel &operator=(const Sentinel &) = delete;

    explicit operator bool() const { return last.valid(); }

private:
    image *master;
    image last;
};

double limitedOpacity(double opacity)
{
    return opacity > 0.0 ? std::min(opacity, 1.0) : 0.0; // what is no number shows nothing
}

SpanFunctions spansOf(int mode)
{
    const SpanFunctions channels = KERNEL_DISPATCH(channelModeSpans, mode);
    return channels.planes ? channels : KERNEL_DISPATCH(pixelModeSpans, mode);
}

/// A destination with the steps that are still to be run on it.
struct Canvas {
    image *destination = nullptr;
    bool clearFirst = false;
    int64_t lockX = 0, lockY = 0;
    std::vector<ComposeStep> steps;
    std::vector<PlacedLayer> averaging; ///< the run of layers that is being averaged
    std::vector<PlacedLayer> medians;

    void flush()
    {
        if (!steps.empty() || clearFirst)
            runSteps(steps, destination, clearFirst);
        steps.clear();
        clearFirst = false;
    }
};

/// Walks a stack and turns it into steps.
class Composer
{
public:
    explicit Composer(image *master) : layers(master->layers)
    {
        outer.destination = master;
        outer.clearFirst = true;
        canvas = &outer;
    }

    /// Walks the list, whose last entry is the sentinel.
    void walk()
    {
        for (int i = 0; i + 1 < layers.size(); ++i)
            take(i);
        outer.flush();
    }

private:
    void take(int i)
    {
        image *layer = layers.at(i);
        if (isPcbMode(layer->layerMode)) { // boards are always in register
            layer->xOffset = layer->yOffset = 0;
            layer->xFraction = layer->yFraction = 0;
        }
        if (layer->layerMode == kMedianMode && layer->visible)
            setTurn(layer);
        const image *stepped = layer;
        if (!group && opensGroup(i) && openGroup(i)) {
            // The layer has become the base: it is not blended by itself.
        } else {
            blend(*layer, i);
            if (group && !layers.at(i + 1)->localStack)
                stepped = closeGroup(i);
        }
        finish(*stepped);
        endGroup();
    }

    /// Whether a layer is the base of a group, if none is open before it.
    bool opensGroup(int i) const
    {
        return i > 0 && layers.at(i + 1)->localStack && layers.at(i)->layerMode != kWarpMode;
    }

    /// False, and the layer is an ordinary one, if memory is short.
    bool openGroup(int i)
    {
        const image &base = *layers.at(i);
        auto made = std::make_unique<image>();
        made->lightweight = true; // it needs no masks of its own
        if (!made->allocateUnfilled(base.width, base.height,
                                    QStringLiteral("localbase:") + layers.at(i - 1)->name))
            return false;
        copyColors(base, made.get());
        made->xOffset = base.xOffset;
        made->yOffset = base.yOffset;
        made->factor = base.factor;
        made->opacity = base.opacity;
        made->layerMode = base.layerMode;
        made->lockStep = base.lockStep;
        group = std::move(made);
        inner = Canvas();
        inner.destination = group.get();
        canvas = &inner;
        return true;
    }

    /// Blends the group's image, as a layer of its own, where it stands outside.
    const image *closeGroup(int i)
    {
        inner.flush();
        canvas = &outer;
        closedGroup = std::move(group);
        blend(*closedGroup, i);
        return closedGroup.get();
    }

    /// The image of a closed group goes as soon as its step is done; one that is averaged,
    /// or sorted with others, is read by later steps too.
    void endGroup()
    {
        if (!closedGroup)
            return;
        const int mode = closedGroup->layerMode;
        if (mode == kAverageMode || mode == kMedianMode) {
            kept.push_back(std::move(closedGroup));
            return;
        }
        outer.flush();
        closedGroup.reset();
    }

    /// One layer, or a closed group, into the present destination; `i` is the place in the
    /// list from which the next one is looked for.
    void blend(const image &layer, int i)
    {
        if (!layer.visible || !layer.valid())
            return;
        const PlacedLayer placed = place(layer);
        if (layer.layerMode == kMedianMode)
            canvas->medians.push_back(placed);
        if (layer.layerMode == kAverageMode) {
            canvas->averaging.push_back(placed);
            if (nextVisibleMode(i) == kAverageMode)
                return;
        }
        ComposeStep step;
        step.layer = placed;
        step.mode = layer.layerMode;
        step.opacity = limitedOpacity(layer.opacity);
        step.factor = layer.factor;
        if (step.mode == kPlusKeyMode || step.mode == kMinusKeyMode)
            step.tolerance = layer.factor * layer.factor * kWhite;
        step.blend = spansOf(step.mode);
        if (step.mode == kAverageMode) {
            step.kind = ComposeStep::Kind::Average;
            step.sources.swap(canvas->averaging);
        } else if (step.mode == kMedianMode) {
            step.kind = ComposeStep::Kind::Median;
            step.sources = canvas->medians;
        }
        if (step.opacity == 0.0)
            return;
        if (step.mode == kWarpMode)
            warp(placed);
        else if (step.blend.planes)
            canvas->steps.push_back(std::move(step));
    }

    /// A warp moves everything beneath it, so all of that has to be there.
    void warp(const PlacedLayer &field)
    {
        canvas->flush();
        image before;
        before.lightweight = true;
        const image &now = *canvas->destination;
        if (!before.allocateUnfilled(now.width, now.height, QStringLiteral("warp working image")))
            return;
        copyColors(now, &before);
        warpRows(field, before, canvas->destination);
    }

    /// The global mask and the lock-step of a layer whose turn is over.
    void finish(const image &layer)
    {
        if (layer.globalMask) {
            ComposeStep step;
            step.kind = ComposeStep::Kind::ClearOutside;
            step.layer = place(layer);
            canvas->steps.push_back(std::move(step));
        }
        if (layer.lockStep) {
            canvas->lockX += layer.xOffset;
            canvas->lockY += layer.yOffset;
        } else {
            canvas->lockX = canvas->lockY = 0;
        }
    }

    PlacedLayer place(const image &layer) const
    {
        PlacedLayer placed;
        placed.img = &layer;
        if (!isPcbMode(layer.layerMode)) {
            placed.left = layer.xOffset + canvas->lockX;
            placed.top = layer.yOffset + canvas->lockY;
        }
        placed.yrb = layer.imageMode == 1;
        placed.moved = modeTurns(layer.layerMode) &&
                       (layer.rotation != 0.0 || layer.xFraction != 0.0 || layer.yFraction != 0.0);
        const double angle = layer.rotation * M_PI / 180.0;
        placed.cosine = std::cos(angle);
        placed.sine = std::sin(-angle);
        return placed;
    }

    static void setTurn(image *layer)
    {
        const double angle = layer->rotation * M_PI / 180.0;
        layer->rotationCos = std::cos(angle);
        layer->rotationSin = std::sin(-angle);
    }

    /// The mode of the next visible thing that goes into the present destination: a layer,
    /// or outside of groups a whole group, which shows even if its base is hidden. -1 if
    /// there is none.
    int nextVisibleMode(int i) const
    {
        for (int j = i + 1; j + 1 < layers.size(); ++j) {
            const image *layer = layers.at(j);
            if (group && !layer->localStack)
                return -1;
            const bool isBase = !group && opensGroup(j);
            if (layer->visible || isBase)
                return layer->layerMode;
        }
        return -1;
    }

    static void copyColors(const image &from, image *to)
    {
        const auto in = from.colorPlanes();
        const auto out = to->colorPlanes();
        const int64_t width = from.width;
        parallelRows(from.height, from.width * 4, [&](int first, int end) {
            for (size_t c = 0; c < in.size(); ++c)
                std::copy(in[c] + first * width, in[c] + end * width, out[c] + first * width);
        });
    }

    const QList<image *> &layers;
    Canvas outer, inner;
    Canvas *canvas;
    std::unique_ptr<image> group;       ///< while a group is open
    std::unique_ptr<image> closedGroup; ///< until its turn is over
    std::vector<std::unique_ptr<image>> kept;
};
} // namespace

void compose(image *member, bool refresh)
{
    image *master = masterOf(member);
    if (!master || !master->valid())
        return;
    {
        const Sentinel sentinel(master);
        if (!sentinel)
            return;
        Composer(master).walk();
    }
    master->needsRebuild = false;
    if (refresh && workspace())
        workspace()->refreshViews(master);
}
