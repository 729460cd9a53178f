// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/image.h"

#include "core/colour.h"
#include "core/workspace.h"

#include <algorithm>

namespace
{
constexpr uint16_t kAtomic = 0, kMaster = 1, kLayer = 2;

/// Scales notation coordinates from one size to another.
class NotationScale
{
public:
    NotationScale(int oldWidth, int oldHeight, int newWidth, int newHeight)
        : xScale(ratio(oldWidth, newWidth)), yScale(ratio(oldHeight, newHeight))
    {
    }
    void apply(Notation *note) const
    {
        for (QPoint &point : note->points)
            point = {scaled(point.x(), xScale), scaled(point.y(), yScale)};
        for (int32_t *x : {&note->textX, &note->tailX, &note->headX})
            *x = scaled(*x, xScale);
        for (int32_t *y : {&note->textY, &note->tailY, &note->headY})
            *y = scaled(*y, yScale);
    }

private:
    static double ratio(int from, int to)
    {
        return from == to || from <= 0 ? 1.0 : double(to) / double(from);
    }
    static int scaled(int value, double scale)
    {
        // Coordinates come from files, so a product may lie outside of what an int holds.
        return qRound(clampRange(value * scale, -2147483000.0, 2147483000.0));
    }

    double xScale, yScale;
};
} // namespace

int image::layerIndex() const
{
    if (kind != kLayer || !master)
        return -1;
    // The list runs from the bottom: its last entry is number 1.
    const int place = master->layers.lastIndexOf(const_cast<image *>(this));
    return place < 0 ? -1 : int(master->layers.size()) - place;
}

void image::removeLayer(image *layer)
{
    layers.removeAll(layer);
    if (target == layer)
        target = nullptr;
}

bool image::layeredChanged() const
{
    if (kind == kLayer)
        return master && master->layeredChanged();
    if (kind != kMaster)
        return false;
    return changed || std::any_of(layers.begin(), layers.end(), [](const image *layer) {
               return layer->changed && layer->viewCount == 1;
           });
}

bool image::hasUnsavedChanges() const
{
    const bool layered = kind == kMaster || (kind == kLayer && master);
    return layered ? layeredChanged() : changed;
}

void image::copyNotations(const image &source)
{
    notations = source.notations;
}

void image::copyNotations(const image &source, int oldWidth, int oldHeight, int newWidth,
                          int newHeight)
{
    const NotationScale scale(oldWidth, oldHeight, newWidth, newHeight);
    notations = source.notations;
    for (Notation &note : notations)
        scale.apply(&note);
}

void image::markMasterForRebuild()
{
    if (kind != kLayer || !master)
        return;
    master->needsRebuild = true;
    if (Workspace *space = workspace())
        space->refreshViews(master);
}

void image::rebuildTitle()
{
    title = QStringLiteral("[%1]").arg(serial);
    if (kind == kMaster)
        title += QLatin1String("[M]");
    else if (kind == kLayer)
        title += QStringLiteral("[L%1/M%2]").arg(layerIndex()).arg(master ? master->serial : 0);
    title += QLatin1Char(' ') + name;
}

image *masterOf(image *member)
{
    if (!member)
        return nullptr;
    return member->kind == kMaster ? member : member->kind == kLayer ? member->master : nullptr;
}

void destroyTree(image **tree)
{
    if (!tree || !*tree)
        return;
    while (!(*tree)->layers.isEmpty())
        delete (*tree)->layers.takeLast();
    delete *tree;
    *tree = nullptr;
}

void discardMasterAndLayers(image *member, bool closeWindows)
{
    image *top = member && member->kind == kLayer ? member->master : member;
    if (!top || top->kind != kMaster)
        return;
    QList<image *> all = top->layers;
    all << top;
    for (image *one : all) {
        one->kind = kAtomic;
        one->discard = true;
        one->changed = false;
    }
    top->layers.clear();
    top->target = nullptr;
    Workspace *space = workspace();
    for (image *one : all) {
        if (space && closeWindows)
            space->closeWindowsOf(one);
        if (space)
            space->images.removeAll(one);
        delete one;
    }
}

image *findAnotherMaster(const image *except)
{
    const Workspace *space = workspace();
    for (image *one : space ? space->images : QList<image *>())
        if (one->kind == kMaster && one != except)
            return one;
    return nullptr;
}

int countAtomicImages()
{
    const Workspace *space = workspace();
    const QList<image *> all = space ? space->images : QList<image *>();
    return int(std::count_if(all.begin(), all.end(),
                             [](const image *one) { return one->kind == kAtomic; }));
}
