// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/undo.h"

#include "core/image.h"
#include "core/layermodes.h"
#include "core/memory.h"
#include "core/rows.h"
#include "core/workspace.h"

#include <QCoreApplication>

#include <algorithm>
#include <atomic>
#include <memory>

namespace
{
constexpr uint16_t kOpaque = 65535;

using SnapshotList = QList<image *>;

/// One of the two lists of an image, as an undo or a redo sees it.
using ListMember = SnapshotList image::*;

void notify(image *img)
{
    if (Workspace *space = workspace())
        space->undoStateChanged(img);
}

/// What a snapshot keeps beside its planes and its size.
void copyFields(const image &from, image *to)
{
    to->changed = from.changed;
    to->copyMetadata(from);
    // A turn changes what these say of the orientation. Their data are shared, not copied.
    to->tagBlock = from.tagBlock;
    to->tagLines = from.tagLines;
    to->cameraOrientation = from.cameraOrientation;
    to->creationTime = from.creationTime;
    to->modificationTime = from.modificationTime;
    to->imageMode = from.imageMode;
    to->groupFlag = from.groupFlag;
    to->groupId = from.groupId;
    to->copyNotations(from);
}

/// The label of one of the five work planes in the memory report.
QByteArray planeLabel(size_t plane, const QString &name)
{
    static constexpr const char *kTexts[] = {
        "red channel: ", "green channel: ", "blue channel: ", "alpha channel: ", "gmask channel: "};
    return kTexts[plane] + name.toUtf8();
}

/// Turns the snapshot that is about to be dropped into the next one: its planes are in
/// use already, and fresh ones would cost twice the copy.
void renameSnapshot(image *snapshot, const QString &name)
{
    snapshot->name = name;
    const auto planes = snapshot->workPlanes();
    for (size_t i = 0; i < planes.size(); ++i)
        memRelabel(planes[i], planeLabel(i, name).constData());
}

bool reusable(const image *snapshot, const image *img)
{
    return snapshot->valid() && snapshot->lightweight && snapshot->width == img->width &&
           snapshot->height == img->height;
}

/// Makes room in a full list, then an unfilled snapshot; null if memory is short. The
/// test is equality: a list that is somehow longer is not trimmed.
std::unique_ptr<image> makeSnapshot(const image *img, SnapshotList *list, const QString &name)
{
    std::unique_ptr<image> snapshot;
    if (list->size() == img->undoLevels && !list->isEmpty())
        snapshot.reset(list->takeFirst());
    if (snapshot && reusable(snapshot.get(), img)) {
        renameSnapshot(snapshot.get(), name);
        return snapshot;
    }
    snapshot = nullptr; // before the next one is made, so that both never stand at once
    snapshot = std::make_unique<image>();
    snapshot->lightweight = true;
    if (!snapshot->allocate(img->width, img->height, name))
        return nullptr;
    return snapshot;
}

void pushSnapshot(image *img, SnapshotList *list, const QString &name, int32_t *serial)
{
    std::unique_ptr<image> snapshot = makeSnapshot(img, list, name);
    if (snapshot) {
        ++*serial;
        snapshot->copyWorkPlanes(*img);
        copyFields(*img, snapshot.get());
        list->append(snapshot.release());
    }
    notify(img);
}

bool hasEntry(const SnapshotList &list)
{
    return uint16_t(list.size()) != 0;
}

/// Restoring copies into the planes as they stand, so the sample count must be the same.
bool fits(const image *snapshot, const image *img)
{
    return snapshot->valid() && snapshot->sampleCount() == img->sampleCount();
}

void restore(image *img, const image &snapshot)
{
    img->copyWorkPlanes(snapshot);
    img->width = snapshot.width;
    img->height = snapshot.height;
    copyFields(snapshot, img);
}

void clearList(image *img, SnapshotList *list)
{
    if (list->isEmpty())
        return;
    qDeleteAll(*list);
    list->clear();
    notify(img);
}

bool takesPart(const image *layer)
{
    return layer && (layer->layerMode == kCopperMode || layer->layerMode == kDrillMode ||
                     layer->layerMode == kMaskMode);
}

enum class GroupState { Ready, OutOfSync, NoLayers };

/// Whether the newest entries of all layers that take part are marks of one act.
GroupState groupState(const image *master, ListMember list)
{
    bool inSync = true;
    const image *first = nullptr;
    bool seen = false;
    for (const image *layer : master->layers) {
        if (!takesPart(layer))
            continue;
        seen = true;
        const SnapshotList &entries = layer->*list;
        if (!hasEntry(entries) || !entries.last()->groupFlag) {
            inSync = false;
            continue;
        }
        if (!first)
            first = entries.last();
        inSync = inSync && entries.last()->groupId == first->groupId;
    }
    if (!seen)
        return GroupState::NoLayers;
    return inSync ? GroupState::Ready : GroupState::OutOfSync;
}

struct GroupTexts {
    const char *noLayers, *outOfSync;
};
constexpr GroupTexts kUndoTexts = {
    QT_TRANSLATE_NOOP("Undo", "Group undos can only be performed<br>on PCB layers."),
    QT_TRANSLATE_NOOP("Undo", "PCB group operations out of sync,<br>can't undo group. You probably "
                              "need<br>to undo an atomic action in another<br>layer")};
constexpr GroupTexts kRedoTexts = {
    QT_TRANSLATE_NOOP("Undo", "Group redos can only be performed<br>on PCB layers."),
    QT_TRANSLATE_NOOP("Undo", "PCB group operations out of sync,<br>can't redo group. You probably "
                              "need<br>to undo an atomic action in another<br>layer")};

/// One step of a layer, whose new entry in the other list stays part of the group act:
/// a step saves the live image, which carries no mark, and without one the act could not
/// be stepped back as a group.
void stepWithMark(image *layer, ListMember list, ListMember other, void (*step)(image *))
{
    const int32_t groupId = (layer->*list).constLast()->groupId;
    const int32_t serials = layer->undoSerial + layer->redoSerial;
    step(layer);
    if (layer->undoSerial + layer->redoSerial == serials)
        return; // memory did not allow an entry
    (layer->*other).last()->groupFlag = true;
    (layer->*other).last()->groupId = groupId;
}

GroupResult stepGroup(image *member, ListMember list, ListMember other, void (*step)(image *),
                      const GroupTexts &texts)
{
    image *master = masterOf(member);
    const GroupState state = master ? groupState(master, list) : GroupState::NoLayers;
    if (state != GroupState::Ready)
        return {false, QCoreApplication::translate("Undo", state == GroupState::NoLayers
                                                               ? texts.noLayers
                                                               : texts.outOfSync)};
    Workspace *space = workspace();
    for (image *layer : qAsConst(master->layers)) {
        if (!takesPart(layer))
            continue;
        stepWithMark(layer, list, other, step);
        if (space)
            space->refreshViews(layer);
    }
    master->needsRebuild = true;
    if (space)
        space->refreshViews(master);
    return {true, QString()};
}
} // namespace

void saveUndo(image *img, bool clearGroup)
{
    if (!img || !img->valid() || img->noUndo)
        return;
    if (clearGroup) {
        img->groupFlag = false;
        img->groupId = -1;
    }
    pushSnapshot(
        img, &img->undoList,
        QStringLiteral("undo %1: %2").arg(QString::number(int64_t(img->undoSerial) + 1), img->name),
        &img->undoSerial);
}

void saveRedo(image *img)
{
    if (!img || !img->valid())
        return;
    pushSnapshot(img, &img->redoList, QStringLiteral("redo %1").arg(int64_t(img->redoSerial) + 1),
                 &img->redoSerial);
}

void undo(image *img)
{
    if (!img || !img->valid() || !hasEntry(img->undoList))
        return;
    if (fits(img->undoList.last(), img)) {
        saveRedo(img);
        restore(img, *img->undoList.last());
    }
    delete img->undoList.takeLast();
    notify(img);
}

void redo(image *img)
{
    if (!img || !img->valid() || !hasEntry(img->redoList))
        return;
    if (fits(img->redoList.last(), img)) {
        saveUndo(img, true);
        restore(img, *img->redoList.last());
    }
    delete img->redoList.takeLast();
    notify(img);
}

void beginAct(image *img)
{
    clearRedoList(img);
    saveUndo(img, true);
}

void dropLastUndo(image *img)
{
    if (!img || img->undoList.isEmpty())
        return;
    delete img->undoList.takeLast();
    notify(img);
}

void clearUndoList(image *img)
{
    if (img)
        clearList(img, &img->undoList);
}

void clearRedoList(image *img)
{
    if (img)
        clearList(img, &img->redoList);
}

image *undoMakeCopy(const image *img, bool withAlpha)
{
    if (!img || !img->valid())
        return nullptr;
    auto copy = std::make_unique<image>();
    if (!copy->allocateUnfilled(img->width, img->height, QStringLiteral("undoMakeCopy")))
        return nullptr;
    const auto from = img->colorPlanes();
    const auto to = copy->colorPlanes();
    const int64_t width = img->width;
    parallelRows(img->height, img->width * 4, [&](int first, int end) {
        for (size_t p = 0; p < (withAlpha ? 4 : 3); ++p)
            std::copy(from[p] + first * width, from[p] + end * width, to[p] + first * width);
        if (!withAlpha)
            std::fill(to[3] + first * width, to[3] + end * width, kOpaque);
    });
    return copy.release();
}

void markNewestUndoAsGroup(image *img, int groupId)
{
    if (!img || img->undoList.isEmpty())
        return;
    img->undoList.last()->groupFlag = true;
    img->undoList.last()->groupId = groupId;
}

int nextGroupId()
{
    static std::atomic<int> last{0};
    return ++last;
}

GroupResult groupUndo(image *member)
{
    return stepGroup(member, &image::undoList, &image::redoList, undo, kUndoTexts);
}

GroupResult groupRedo(image *member)
{
    return stepGroup(member, &image::redoList, &image::undoList, redo, kRedoTexts);
}
