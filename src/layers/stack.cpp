// SPDX-License-Identifier: GPL-3.0-or-later
#include "layers/stack.h"

#include "core/compose.h"
#include "core/image.h"
#include "core/layermodes.h"
#include "core/rows.h"
#include "core/undo.h"
#include "core/warpfield.h"
#include "core/workspace.h"

#include <algorithm>
#include <memory>

namespace
{
constexpr uint16_t kAtomic = 0, kMaster = 1, kLayer = 2;

bool isMaster(const image *img)
{
    return img && img->kind == kMaster;
}

bool isLayer(const image *img)
{
    return img && img->kind == kLayer && img->master &&
           img->master->layers.contains(const_cast<image *>(img));
}

void stackChanged(image *master)
{
    master->changed = true;
    master->needsRebuild = true;
    // A title says the layer's place from the top, so one move changes many of them.
    master->rebuildTitle();
    for (image *layer : qAsConst(master->layers))
        layer->rebuildTitle();
    if (Workspace *space = workspace()) {
        space->layersChanged(master);
        space->refreshViews(master);
    }
}

bool putIntoStack(image *master, int place, image *layer)
{
    if (!isMaster(master) || !layer || layer->kind != kAtomic)
        return false;
    layer->kind = kLayer;
    layer->master = master;
    master->layers.insert(place, layer);
    if (Workspace *space = workspace()) {
        space->images.removeAll(layer);
        if (layer->serial == 0)
            space->giveSerial(layer);
    }
    stackChanged(master);
    return true;
}

/// What travels with a picture besides its samples and notations.
void copyStory(const image &source, image *copy)
{
    copy->copyMetadata(source);
    copy->tagLines = source.tagLines;
    copy->tagBlock = source.tagBlock;
    copy->shutter = source.shutter;
    copy->aperture = source.aperture;
    copy->focalLength = source.focalLength;
    copy->iso = source.iso;
}

void copyLayerSettings(const image &from, image *to)
{
    to->imageMode = from.imageMode;
    to->quantised = from.quantised;
    to->paletteSource = from.paletteSource;
    to->globalMask = from.globalMask;
    to->visible = from.visible;
    to->localStack = from.localStack;
    to->lockStep = from.lockStep;
    to->xCenter = from.xCenter;
    to->yCenter = from.yCenter;
    to->factor = from.factor;
    to->layerMode = from.layerMode;
    to->opacity = from.opacity;
    to->rotation = from.rotation;
    to->xFraction = from.xFraction;
    to->yFraction = from.yFraction;
    to->xOffset = from.xOffset;
    to->yOffset = from.yOffset;
}

/// The settings that a lone layer must have for its master to look like it.
void resetLayerSettings(image *img)
{
    img->globalMask = img->localStack = img->lockStep = false;
    img->visible = true;
    img->layerMode = kNormalMode;
    img->opacity = img->factor = 1.0;
    img->rotation = img->xFraction = img->yFraction = 0;
    img->xOffset = img->yOffset = 0;
}

void copyColors(const image &from, image *to)
{
    const auto source = from.colorPlanes(), target = to->colorPlanes();
    parallelRows(to->height, to->width * int(target.size()), [&](int first, int end) {
        for (size_t p = 0; p < target.size(); ++p)
            std::copy(source[p] + int64_t(first) * to->width, source[p] + int64_t(end) * to->width,
                      target[p] + int64_t(first) * to->width);
    });
}

// --- Flipping ---------------------------------------------------------------------------

void mirrorRows(const image &img)
{
    const auto planes = img.workPlanes();
    parallelRows(img.height, img.width * int(planes.size()), [&](int first, int end) {
        for (uint16_t *plane : planes)
            for (int64_t y = first; y < end; ++y)
                std::reverse(plane + y * img.width, plane + (y + 1) * img.width);
    });
}

void mirrorColumns(const image &img)
{
    const auto planes = img.workPlanes();
    parallelRows(img.height / 2, img.width * int(planes.size()), [&](int first, int end) {
        for (uint16_t *plane : planes)
            for (int64_t y = first; y < end; ++y)
                std::swap_ranges(plane + y * img.width, plane + (y + 1) * img.width,
                                 plane + (img.height - 1 - y) * img.width);
    });
}

/// Reverses one component of a displacement field.
void negateField(image *field, bool horizontally)
{
    parallelRows(field->height, field->width * 2, [=](int first, int end) {
        const int64_t stop = int64_t(end) * field->width;
        for (int64_t i = int64_t(first) * field->width; i < stop; ++i) {
            const Displacement d = displacementAt(*field, i);
            if (horizontally)
                storeDisplacement(-d.x, field->red + i, field->green + i);
            else
                storeDisplacement(-d.y, field->blue + i, field->alpha + i);
        }
    });
}

/// Notes come from files, so a mirrored place may lie outside of what an int holds.
int mirrored(int value, int size)
{
    return int(std::clamp<int64_t>(int64_t(size) - 1 - value, INT32_MIN, INT32_MAX));
}

void mirrorNotation(Notation *note, int size, bool horizontally)
{
    for (QPoint &point : note->points) {
        int &coordinate = horizontally ? point.rx() : point.ry();
        coordinate = mirrored(coordinate, size);
    }
    for (int32_t *coordinate : horizontally ? std::array{&note->textX, &note->tailX, &note->headX}
                                            : std::array{&note->textY, &note->tailY, &note->headY})
        *coordinate = mirrored(*coordinate, size);
}
} // namespace

bool makeMaster(image *img)
{
    if (!img || img->kind != kAtomic)
        return false;
    img->kind = kMaster;
    img->target = nullptr;
    clearUndoList(img);
    clearRedoList(img);
    stackChanged(img);
    return true;
}

bool addLayer(image *master, image *layer)
{
    return isMaster(master) && putIntoStack(master, int(master->layers.size()), layer);
}

bool insertBefore(image *target, image *layer)
{
    return isLayer(target) &&
           putIntoStack(target->master, int(target->master->layers.indexOf(target)), layer);
}

bool insertAbove(image *target, image *layer)
{
    return isLayer(target) &&
           putIntoStack(target->master, int(target->master->layers.indexOf(target)) + 1, layer);
}

bool moveLayer(image *layer, int place)
{
    if (!isLayer(layer))
        return false;
    QList<image *> &layers = layer->master->layers;
    const int from = int(layers.indexOf(layer));
    const int to = std::clamp(place, 0, int(layers.size()) - 1);
    if (from == to)
        return false;
    layers.move(from, to);
    stackChanged(layer->master);
    return true;
}

bool detachLayer(image *layer)
{
    if (!isLayer(layer) || layer->master->layers.size() < 2)
        return false;
    image *master = layer->master;
    master->removeLayer(layer);
    layer->kind = kAtomic;
    layer->master = nullptr;
    layer->changed = true;
    if (layer->layerMode == kWarpMode) {
        layer->layerMode = kNormalMode;
        layer->name = QStringLiteral("ex-warp");
    }
    layer->rebuildTitle();
    if (Workspace *space = workspace()) {
        space->images.append(layer);
        space->refreshViews(layer);
    }
    stackChanged(master);
    return true;
}

bool destroyLayer(image *layer)
{
    if (!isLayer(layer) || layer->master->layers.size() < 2 || layer->inUse)
        return false;
    image *master = layer->master;
    master->removeLayer(layer);
    layer->kind = kAtomic;
    layer->master = nullptr;
    layer->discard = true;
    layer->changed = false;
    if (Workspace *space = workspace())
        space->closeWindowsOf(layer);
    stackChanged(master); // before the end of the layer, so that nobody shows it any more
    delete layer;
    return true;
}

image *makeLayered(image *img)
{
    if (!img || img->kind != kAtomic)
        return nullptr;
    auto master = std::make_unique<image>();
    if (!master->allocateUnfilled(img->width, img->height, img->name + QLatin1String(": master")))
        return nullptr;
    master->kind = kMaster;
    copyStory(*img, master.get());
    if (Workspace *space = workspace()) {
        const int place = int(space->images.indexOf(img));
        space->images.insert(place < 0 ? int(space->images.size()) : place, master.get());
        space->giveSerial(master.get());
    }
    resetLayerSettings(img);
    addLayer(master.get(), img);
    return master.release();
}

image *createLayer(image *master)
{
    if (!isMaster(master))
        return nullptr;
    auto layer = std::make_unique<image>();
    if (!layer->allocateUnfilled(master->width, master->height, QStringLiteral("new layer")))
        return nullptr;
    layer->clearToTransparentWhite();
    layer->copyMetadata(*master);
    addLayer(master, layer.get());
    return layer.release();
}

image *cloneLayer(image *layer)
{
    if (!isLayer(layer))
        return nullptr;
    auto copy = std::make_unique<image>();
    const QString name = layer->name + QLatin1String("[clone]");
    if (!copy->allocateUnfilled(layer->width, layer->height, name))
        return nullptr;
    copy->copyWorkPlanes(*layer);
    copyStory(*layer, copy.get());
    copyLayerSettings(*layer, copy.get());
    copy->copyNotations(*layer);
    copy->changed = true;
    insertAbove(layer, copy.get());
    return copy.release();
}

bool flipImage(image *img, bool horizontally)
{
    if (!img || !img->valid() || img->kind == kMaster)
        return false;
    beginAct(img);
    if (horizontally)
        mirrorRows(*img);
    else
        mirrorColumns(*img);
    if (img->kind == kLayer && img->layerMode == kWarpMode)
        negateField(img, horizontally);
    img->maskBackupValid = false; // it is of the selection as it lay before
    const int size = horizontally ? img->width : img->height;
    int32_t &center = horizontally ? img->xCenter : img->yCenter;
    center = mirrored(center, size);
    for (Notation &note : img->notations)
        mirrorNotation(&note, size, horizontally);
    samplesChanged(img);
    return true;
}

image *flattened(image *master)
{
    if (!isMaster(master))
        return nullptr;
    if (master->needsRebuild)
        compose(master, false);
    auto picture = std::make_unique<image>();
    if (!picture->allocateUnfilled(master->width, master->height, master->name))
        return nullptr;
    copyColors(*master, picture.get());
    copyStory(*master, picture.get());
    picture->copyNotations(*master);
    picture->changed = true;
    return picture.release();
}

void samplesChanged(image *img)
{
    img->changed = true;
    img->stampModification();
    img->markMasterForRebuild();
    if (Workspace *space = workspace())
        space->refreshViews(img);
}
