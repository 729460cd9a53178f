// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/undo.h"

#include "core/memory.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <QDataStream>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace
{
/// Everything that an undo has to bring back.
struct State {
    QByteArray rest;
    bool groupFlag = false;
    int groupId = -1;
    bool operator==(const State &) const = default;
};

State stateOf(const image &img)
{
    State state{{}, img.groupFlag, img.groupId};
    QDataStream out(&state.rest, QIODevice::WriteOnly);
    for (const uint16_t *plane : img.workPlanes())
        out.writeRawData(reinterpret_cast<const char *>(plane), int(img.sampleCount() * 2));
    out << img.width << img.height << img.xDpi << img.yDpi << img.imageMode << img.changed
        << img.latitude << img.longitude << img.altitude << img.copyright << img.author
        << img.annotation << img.software << img.creationTime << img.modificationTime;
    for (const Notation &note : img.notations)
        out << note.text << note.points;
    return state;
}

/// Changes some of the samples and every field, and now and then turns the picture.
void changeAtRandom(image *img, std::mt19937 *random)
{
    auto number = [random] { return int((*random)() % 30000); };
    for (uint16_t *plane : img->workPlanes())
        for (int i = 0; i < 5; ++i)
            plane[(*random)() % uint64_t(img->sampleCount())] = uint16_t((*random)());
    for (QString *text : {&img->copyright, &img->author, &img->annotation, &img->software,
                          &img->creationTime, &img->modificationTime})
        *text = QString::number(number());
    for (double *value : {&img->latitude, &img->longitude, &img->altitude})
        *value = number();
    for (int *value : {&img->xDpi, &img->yDpi, &img->imageMode})
        *value = number();
    img->changed = number() % 2 == 0;
    if (number() % 3 == 0)
        std::swap(img->width, img->height);
    if (number() % 2 == 0)
        img->notations << Notation();
    for (Notation &note : img->notations) {
        note.text = QString::number(number());
        note.points << QPoint(number(), number());
    }
}

/// Two bounded stacks of whole states, in the simplest way.
struct Model {
    State now;
    size_t levels;
    std::vector<State> undos = {}, redos = {};

    void push(std::vector<State> *list) const
    {
        if (list->size() == levels)
            list->erase(list->begin());
        list->push_back(now);
    }
    void step(std::vector<State> *from, std::vector<State> *to, bool clearGroup)
    {
        if (from->empty())
            return;
        if (clearGroup)
            now = {now.rest};
        push(to);
        now = from->back();
        from->pop_back();
    }
};

struct Walk {
    int width, height, levels, steps;
};

TEST(Undo, RandomActsComeBackWhole)
{
    RecordingWorkspace ws;
    for (const Walk &walk : {Walk{5, 7, 1, 200}, Walk{5, 7, 4, 400}, Walk{1, 1, 2, 100},
                             Walk{301, 200, 3, 60}}) { // the last one in several bands
        const uint32_t seed = uint32_t(walk.steps);
        std::mt19937 random(seed);
        ImagePtr img = randomImage(walk.width, walk.height, seed);
        img->undoLevels = walk.levels;
        Model model{stateOf(*img), size_t(walk.levels)};
        for (int step = 0; step < walk.steps; ++step) {
            const uint32_t act = random() % 6;
            if (act < 2) {
                undo(img.get());
                model.step(&model.undos, &model.redos, false);
            } else if (act < 4) {
                redo(img.get());
                model.step(&model.redos, &model.undos, true);
            } else {
                beginAct(img.get());
                model.redos.clear();
                model.now = {model.now.rest};
                model.push(&model.undos);
                if (act == 5) {
                    markNewestUndoAsGroup(img.get(), step);
                    model.undos.back() = {model.undos.back().rest, true, step};
                }
                changeAtRandom(img.get(), &random);
                model.now = stateOf(*img);
            }
            ASSERT_TRUE(stateOf(*img) == model.now) << "seed " << seed << " step " << step;
            ASSERT_EQ(size_t(img->undoList.size()), model.undos.size());
            ASSERT_EQ(size_t(img->redoList.size()), model.redos.size());
        }
    }
}

/// "label" of a plane's block, as the memory report has it.
QString labelOf(const uint16_t *plane)
{
    QString line;
    memGetInfo(&line, plane, -1);
    return line.section(": ", 1).section(" -- ", 0, 0);
}

TEST(Undo, MemoryIsInBalance)
{
    constexpr int width = 300, height = 200;
    constexpr int64_t plane = (width * height + 2 * width) * 2;
    RecordingWorkspace ws;
    const int64_t bytes = memRecord.currentBytes, blocks = memRecord.currentBlocks;
    {
        ImagePtr img = plainImage(width, height, 1, 2, 3);
        img->name = "pic%1";
        img->undoLevels = 2;
        EXPECT_EQ(memRecord.currentBytes - bytes, 7 * plane);
        for (int acts = 1; acts <= 4; ++acts) { // the third and fourth reuse the oldest planes
            beginAct(img.get());
            const int held = std::min(acts, 2);
            EXPECT_EQ(memRecord.currentBytes - bytes, (7 + 5 * held) * plane);
            EXPECT_EQ(memRecord.currentBlocks - blocks, 7 + 5 * held);
            EXPECT_EQ(img->undoSerial, acts);
            const image &newest = *img->undoList.last();
            const QString name = QString("undo %1: ").arg(acts) + img->name;
            const char *channels[] = {"red", "green", "blue", "alpha", "gmask"};
            EXPECT_EQ(newest.name, name);
            EXPECT_EQ(newest.mask2, nullptr);
            for (size_t p = 0; p < 5; ++p) {
                const uint16_t *samples = newest.workPlanes()[p];
                EXPECT_EQ(labelOf(samples), channels[p] + (" channel: " + name));
                const uint16_t *spare = samples + newest.sampleCount();
                EXPECT_EQ(std::count(spare, spare + 2 * width, 0), 2 * width);
            }
        }
        undo(img.get());
        EXPECT_EQ(img->redoList.last()->name, "redo 1");
        EXPECT_EQ(memRecord.currentBytes - bytes, 17 * plane);
        clearUndoList(img.get());
        clearRedoList(img.get());
        EXPECT_EQ(memRecord.currentBytes - bytes, 7 * plane);
        beginAct(img.get()); // its snapshot goes with the image
    }
    EXPECT_EQ(memRecord.currentBytes, bytes);
    EXPECT_EQ(memRecord.currentBlocks, blocks);
}

TEST(Undo, GoesOnWithoutASnapshotWhenMemoryIsShort)
{
    RecordingWorkspace ws;
    ImagePtr img = plainImage(8, 8, 1, 2, 3);
    const int64_t blocks = memRecord.currentBlocks;
    for (int plane = 1; plane <= 5; ++plane) {
        memFailAt(plane);
        saveUndo(img.get(), true);
        EXPECT_EQ(img->undoList.size() + img->undoSerial, 0);
        memFailAt(plane);
        EXPECT_EQ(undoMakeCopy(img.get(), true), nullptr);
        EXPECT_EQ(memRecord.currentBlocks, blocks);
    }
    memFailAt(0);
    beginAct(img.get());
    img->fill(9, 9, 9, 9);
    memFailAt(1); // no room for the redo record: the undo is done all the same
    undo(img.get());
    memFailAt(0);
    EXPECT_EQ(img->red[0], 1);
    EXPECT_TRUE(img->redoList.isEmpty());
}

TEST(Undo, BoundsAndRefusals)
{
    RecordingWorkspace ws;
    ImagePtr img = plainImage(4, 3, 0, 0, 0);
    img->undoLevels = 2;
    for (int i = 0; i < 3; ++i) {
        img->red[0] = uint16_t(i);
        saveUndo(img.get(), true);
    }
    EXPECT_EQ(img->undoList.first()->red[0], 1) << "the oldest went";
    img->undoLevels = 1; // the list is longer now: equality fails, nothing is trimmed
    saveUndo(img.get(), true);
    EXPECT_EQ(img->undoList.size(), 3);
    dropLastUndo(img.get());
    EXPECT_EQ(img->undoList.size(), 2);
    img->noUndo = img->groupFlag = true;
    saveUndo(img.get(), true);
    saveRedo(img.get());
    EXPECT_TRUE(img->groupFlag) << "noUndo does nothing at all";
    EXPECT_EQ(img->undoList.size(), 2);
    EXPECT_EQ(img->redoList.size(), 1) << "only saveUndo asks noUndo";

    // A snapshot of another sample count must never be copied over the planes.
    img->undoList << plainImage(40, 30, 7, 7, 7).release();
    undo(img.get());
    EXPECT_EQ(img->red[0], 2);
    EXPECT_EQ(img->undoList.size(), 2);
    EXPECT_EQ(img->redoList.size(), 1);

    image withoutPlanes;
    for (image *none : {static_cast<image *>(nullptr), &withoutPlanes}) {
        saveUndo(none, true);
        saveRedo(none);
        undo(none);
        redo(none);
        beginAct(none);
        dropLastUndo(none);
        clearUndoList(none);
        markNewestUndoAsGroup(none, 1);
        EXPECT_EQ(undoMakeCopy(none, true), nullptr);
    }
    EXPECT_TRUE(withoutPlanes.undoList.isEmpty());
}

TEST(Undo, MakeCopyCopiesColours)
{
    RecordingWorkspace ws;
    ImagePtr img = randomImage(9, 5, 3);
    for (const bool withAlpha : {true, false}) {
        ImagePtr copy(undoMakeCopy(img.get(), withAlpha));
        ASSERT_TRUE(copy);
        EXPECT_EQ(copy->name, "undoMakeCopy");
        EXPECT_TRUE(copy->mask3);
        EXPECT_FALSE(copy->anyMaskSet());
        if (!withAlpha) {
            EXPECT_EQ(std::count(copy->alpha, copy->alpha + 45, 65535), 45);
            std::copy(img->alpha, img->alpha + 45, copy->alpha);
        }
        EXPECT_TRUE(sameColors(*img, *copy));
    }
}

struct GroupCase {
    const char *fault;
    /// Per layer its mode and the entry on its list: '-' none, 'p' plain, else a group.
    std::vector<std::pair<int, char>> layers;
    const char *refusal; ///< the text without "undo" or "redo"; null if the group steps
};

const char kNoLayers[] = "Group %1s can only be performed<br>on PCB layers.";
const char kOutOfSync[] = "PCB group operations out of sync,<br>can't %1 group. You probably "
                          "need<br>to undo an atomic action in another<br>layer";

TEST(GroupUndo, StepsAllLayersOfOneActOrNone)
{
    const GroupCase cases[] = {
        {"NoLayersAtAll", {}, kNoLayers},
        {"OtherModesOnly", {{56, 'a'}, {58, 'a'}, {0, 'a'}}, kNoLayers},
        {"OneAct", {{55, 'a'}, {56, 'p'}, {57, 'a'}, {59, 'a'}}, nullptr},
        {"EmptyList", {{55, 'a'}, {57, '-'}}, kOutOfSync},
        {"FlagClear", {{55, 'p'}, {57, 'a'}}, kOutOfSync},
        {"OnlyAnEmptyList", {{59, '-'}}, kOutOfSync},
        {"TwoActs", {{55, 'a'}, {57, 'b'}, {59, 'a'}}, kOutOfSync},
    };
    RecordingWorkspace ws;
    for (const GroupCase &c : cases) {
        for (const bool backward : {true, false}) {
            SCOPED_TRACE(std::string(c.fault) + (backward ? " undo" : " redo"));
            ImagePtr master = plainImage(4, 4, 0, 0, 0);
            master->kind = 1;
            for (const auto &[mode, entry] : c.layers) {
                image *layer = plainImage(4, 4, 1, 1, 1).release();
                master->layers << layer;
                layer->kind = 2;
                layer->master = master.get();
                layer->layerMode = mode;
                layer->groupFlag = entry != 'p';
                layer->groupId = entry;
                if (entry != '-' && backward)
                    saveUndo(layer, false);
                else if (entry != '-')
                    saveRedo(layer);
                layer->red[0] = 2;
            }
            image *member = master->layers.isEmpty() ? master.get() : master->layers.last();
            const GroupResult result = backward ? groupUndo(member) : groupRedo(member);
            EXPECT_EQ(result.done, !c.refusal);
            EXPECT_EQ(result.refusal,
                      c.refusal ? QString(c.refusal).arg(backward ? "undo" : "redo") : QString());
            EXPECT_EQ(master->needsRebuild, result.done);
            for (const image *layer : qAsConst(master->layers)) {
                const bool stepped = result.done && layer->layerMode != 56;
                EXPECT_EQ(layer->red[0], stepped ? 1 : 2);
            }
            image *tree = master.release();
            destroyTree(&tree);
        }
    }
    EXPECT_FALSE(groupUndo(nullptr).done);
    ImagePtr atomic = plainImage(4, 4, 0, 0, 0);
    EXPECT_EQ(groupUndo(atomic.get()).refusal, QString(kNoLayers).arg("undo"));
    atomic->kind = 2; // a layer without a master
    EXPECT_EQ(groupRedo(atomic.get()).refusal, QString(kNoLayers).arg("redo"));
}

TEST(GroupUndo, OneActGoesBackAndForthAsAGroup)
{
    RecordingWorkspace ws;
    ImagePtr master = plainImage(4, 4, 0, 0, 0);
    master->kind = 1;
    const int id = nextGroupId();
    for (const int mode : {55, 59}) {
        image *layer = plainImage(4, 4, 1, 1, 1).release();
        master->layers << layer;
        layer->kind = 2;
        layer->master = master.get();
        layer->layerMode = mode;
        beginAct(layer);
        markNewestUndoAsGroup(layer, id);
        layer->red[0] = 2;
    }
    for (int round = 0; round < 2; ++round) {
        EXPECT_TRUE(groupUndo(master.get()).done);
        EXPECT_EQ(master->layers.first()->red[0], 1);
        EXPECT_TRUE(groupRedo(master.get()).done);
        EXPECT_EQ(master->layers.last()->red[0], 2);
    }
    image *tree = master.release();
    destroyTree(&tree);
}
} // namespace
