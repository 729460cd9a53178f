// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/fixture.h"
#include "core/undo.h"

#include <QDataStream>

#include <vector>

using Undo = WithWorkspace;
using GroupUndo = WithWorkspace;

namespace
{
/// Calls `act` with every field that an undo has to bring back beside planes, size and mark.
template <class Act>
void eachField(image *img, Act act)
{
    for (QString *text : {&img->copyright, &img->author, &img->annotation, &img->software,
                          &img->creationTime, &img->modificationTime})
        act(*text);
    for (double *value : {&img->latitude, &img->longitude, &img->altitude})
        act(*value);
    for (int *value : {&img->xDpi, &img->yDpi, &img->imageMode})
        act(*value);
    act(img->changed);
    for (Notation &note : img->notations)
        act(note.text);
}

/// All that an undo has to bring back, and the group mark.
using State = std::pair<QByteArray, std::pair<bool, int>>;
const std::pair<bool, int> kNoGroup = {false, -1};

State stateOf(image *img)
{
    State state{{}, {img->groupFlag, img->groupId}};
    QDataStream out(&state.first, QIODevice::WriteOnly);
    for (const uint16_t *plane : img->workPlanes())
        out.writeRawData(reinterpret_cast<const char *>(plane), int(img->sampleCount() * 2));
    out << img->width << img->height;
    eachField(img, [&out](const auto &field) { out << field; });
    return state;
}

/// Changes some of the samples and every field, and now and then turns the picture.
void changeAtRandom(image *img, std::mt19937 *random)
{
    for (uint16_t *plane : img->workPlanes())
        for (int i = 0; i < 5; ++i)
            plane[(*random)() % uint64_t(img->sampleCount())] = uint16_t((*random)());
    if ((*random)() % 3 == 0)
        std::swap(img->width, img->height);
    if ((*random)() % 2 == 0)
        img->notations << Notation();
    eachField(img, [random]<class Field>(Field &field) {
        const uint32_t value = (*random)() % 100;
        if constexpr (std::is_same_v<Field, QString>)
            field = QString::number(value);
        else
            field = Field(std::is_same_v<Field, bool> ? value % 2 : value);
    });
}
} // namespace

TEST_F(Undo, RandomActsComeBackWhole)
{
    for (const auto &[width, height, levels, steps] :
         {std::array{5, 7, 1, 200}, {5, 7, 4, 400}, {1, 1, 2, 100}, {301, 200, 3, 60}}) {
        std::mt19937 random(static_cast<uint32_t>(steps));
        const ImagePtr owner = randomImage(width, height, random());
        image *const img = owner.get();
        img->undoLevels = levels;
        std::vector<State> states = {stateOf(img)}; // one after the other
        int now = 0, first = 0;                     // first is the oldest that undo reaches
        for (int step = 0; step < steps; ++step) {
            const uint32_t act = random() % 6;
            if (act < 2) {
                undo(img);
                now -= now > first;
            } else if (act < 4) {
                redo(img);
                if (now + 1 < int(states.size()))
                    states[size_t(now++)].second = kNoGroup;
            } else {
                beginAct(img);
                states.resize(size_t(now) + 1);
                states.back().second = act == 5 ? std::pair(true, step) : kNoGroup;
                if (act == 5)
                    markNewestUndoAsGroup(img, step);
                changeAtRandom(img, &random);
                states.push_back(stateOf(img));
                first = std::max(first, ++now - levels);
            }
            ASSERT_TRUE(stateOf(img) == states[size_t(now)]) << steps << ", at " << step;
            ASSERT_EQ(img->undoList.size(), now - first);
            ASSERT_EQ(img->redoList.size(), int(states.size()) - 1 - now);
        }
    }
}

TEST_F(Undo, MemoryIsInBalance)
{
    constexpr int width = 300, height = 200;
    constexpr int64_t plane = (width * height + 2 * width) * 2;
    const char *channels[] = {"red", "green", "blue", "alpha", "gmask"};
    const int64_t bytes = memRecord.currentBytes, blocks = memRecord.currentBlocks;
    {
        ImagePtr img = plainImage(width, height, 1, 2, 3);
        img->name = "pic%1";
        img->undoLevels = 2;
        for (int acts = 1; acts <= 4; ++acts) { // the third and fourth reuse the oldest planes
            beginAct(img.get());
            EXPECT_EQ(memRecord.currentBytes - bytes, (7 + 5 * std::min(acts, 2)) * plane);
            const image &newest = *img->undoList.last();
            EXPECT_EQ(newest.name, QString("undo %1: ").arg(acts) + img->name);
            for (size_t p = 0; p < 5; ++p) {
                QString line;
                memGetInfo(&line, newest.workPlanes()[p], -1);
                EXPECT_TRUE(line.contains(channels[p] + (" channel: " + newest.name) + " -- "));
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

TEST_F(Undo, GoesOnWithoutASnapshotWhenMemoryIsShort)
{
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
    for (const bool withAlpha : {false, true}) {
        const ImagePtr copy(undoMakeCopy(plainImage(8, 8, 1, 2, 3, 4).get(), withAlpha));
        EXPECT_TRUE(sameColors(*copy, *plainImage(8, 8, 1, 2, 3, withAlpha ? 4 : 65535)));
    }
    beginAct(img.get());
    img->fill(9, 9, 9, 9);
    memFailAt(1); // no room for the redo record: the undo is done all the same
    undo(img.get());
    memFailAt(0);
    EXPECT_EQ(img->red[0], 1);
    EXPECT_TRUE(img->redoList.isEmpty());
}

TEST_F(Undo, BoundsAndRefusals)
{
    ImagePtr img = plainImage(4, 3, 0, 0, 0);
    img->undoLevels = 2;
    saveUndo(img.get(), true);
    saveUndo(img.get(), true);
    img->undoLevels = 1; // the list is longer now: equality fails, nothing is trimmed
    img->red[0] = 2;
    saveUndo(img.get(), true);
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
    EXPECT_EQ(img->width, 4);

    image withoutPlanes;
    for (image *none : {static_cast<image *>(nullptr), &withoutPlanes})
        for (const auto act : {saveRedo, undo, redo, beginAct, dropLastUndo})
            act(none);
    EXPECT_TRUE(withoutPlanes.undoList.isEmpty() && !undoMakeCopy(&withoutPlanes, true));
}

const char kNoLayers[] = "Group %1s can only be performed<br>on PCB layers.";
const char kOutOfSync[] = "PCB group operations out of sync,<br>can't %1 group. You probably "
                          "need<br>to undo an atomic action in another<br>layer";

TEST_F(GroupUndo, StepsAllLayersOfOneActOrNone)
{
    const struct {
        const char *fault;
        /// Per layer its mode and the entry on its list: '-' none, 'p' plain, else a group.
        std::vector<std::pair<int, char>> layers;
        const char *refusal; ///< the text without "undo" or "redo"; null if the group steps
    } cases[] = {
        {"other modes only", {{56, 'a'}, {58, 'a'}, {0, 'a'}}, kNoLayers},
        {"one act", {{55, 'a'}, {56, 'p'}, {57, 'a'}, {59, 'a'}}, nullptr},
        {"empty list", {{55, 'a'}, {57, '-'}}, kOutOfSync},
        {"flag clear", {{55, 'p'}, {57, 'a'}}, kOutOfSync},
        {"only an empty list", {{59, '-'}}, kOutOfSync},
        {"two acts", {{55, 'a'}, {57, 'b'}, {59, 'a'}}, kOutOfSync},
    };
    for (const auto &[fault, layers, refusal] : cases)
        for (const QString verb : {"undo", "redo"}) {
            SCOPED_TRACE(fault + verb.toStdString());
            Stack stack;
            for (const auto &[mode, entry] : layers) {
                image *layer = stack.add(mode);
                layer->groupFlag = entry != 'p';
                layer->groupId = entry;
                if (entry != '-')
                    verb == "undo" ? saveUndo(layer, false) : saveRedo(layer);
                layer->red[0] = 2;
            }
            image *member = stack.master->layers.last();
            const auto step = verb == "undo" ? groupUndo : groupRedo;
            const GroupResult result = step(member);
            EXPECT_EQ(result.done, !refusal);
            EXPECT_EQ(result.refusal, refusal ? QString(refusal).arg(verb) : QString());
            EXPECT_EQ(stack.master->needsRebuild, result.done);
            for (const image *layer : qAsConst(stack.master->layers))
                EXPECT_EQ(layer->red[0], result.done && layer->layerMode != 56 ? 1 : 2);
            EXPECT_EQ((step == groupUndo ? groupRedo : groupUndo)(member).done, result.done);
            EXPECT_EQ(member->red[0], 2) << "it goes back as a group";
        }
    EXPECT_NE(nextGroupId(), nextGroupId());
    const ImagePtr atomic = plainImage(4, 4, 0, 0, 0);
    EXPECT_EQ(groupUndo(atomic.get()).refusal, QString(kNoLayers).arg("undo"));
    atomic->kind = 2; // a layer without a master
    for (image *none : {static_cast<image *>(nullptr), atomic.get()})
        EXPECT_EQ(groupRedo(none).refusal, QString(kNoLayers).arg("redo"));
}
