// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/base/operatortable.h"

#include "core/undo.h"
#include "operators/base/opwrapper.h"
#include "operators/table/allops.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace
{
constexpr int kExposure = 29, kNegative = 62;

class NoticingWorkspace : public RecordingWorkspace
{
public:
    void undoStateChanged(image *) override { ++undoStates; }
    void previewOutdated() override { ++previews; }
    int undoStates = 0, previews = 0;
};

/// Looks at the flags while it runs.
class Witness : public OpWrapper
{
public:
    using OpWrapper::OpWrapper;
    void apply(image *target, image *brush) override
    {
        ++calls;
        targetInUse = target->inUse;
        brushInUse = brush && brush->inUse;
        originInUse = workspace()->originImage && workspace()->originImage->inUse;
        if (dropBrush)
            workspace()->assignBrush(nullptr);
    }
    int calls = 0;
    bool targetInUse = false, brushInUse = false, originInUse = false, dropBrush = false;
};

class Apply : public testing::Test
{
protected:
    Apply()
    {
        addAllOperators(&table);
        img = randomImage(13, 7, 3);
        img->fillGmask(65535);
        img->changed = false;
        img->modificationTime.clear();
        table.currentOp = kNegative;
    }
    Witness *witness(int id)
    {
        auto op = std::make_unique<Witness>(&table);
        Witness *seen = op.get();
        table.add(id, kGroupMeta, "witness", "Witness", "", std::move(op));
        table.currentOp = id;
        return seen;
    }

    NoticingWorkspace space;
    OperatorTable table;
    ImagePtr img;
};
} // namespace

TEST_F(Apply, RecordsUndoStampsAndTellsTheWindow)
{
    const auto before = randomImage(13, 7, 3);
    beginAct(img.get());
    undo(img.get());
    ASSERT_EQ(img->redoList.size(), 1);
    img->changed = false;
    space.undoStates = 0;
    table.apply(img.get(), true);
    EXPECT_EQ(img->redoList.size(), 0);
    ASSERT_EQ(img->undoList.size(), 1);
    EXPECT_TRUE(img->changed);
    EXPECT_EQ(table.lastOp, kNegative);
    EXPECT_TRUE(img->modificationTime.endsWith(QLatin1String(" UTC")));
    EXPECT_EQ(img->red[5], 65535 - before->red[5]);
    EXPECT_GE(space.undoStates, 1);
    EXPECT_EQ(space.previews, 1);
    EXPECT_GE(space.refreshes, 1);
    undo(img.get());
    EXPECT_TRUE(sameColors(*img, *before));
    EXPECT_FALSE(img->changed);
}

TEST_F(Apply, WhatIsNotToBeWorkedOnStaysAsItIs)
{
    const auto before = randomImage(13, 7, 3);
    img->kind = 1;
    table.apply(img.get(), true);
    img->kind = 0;
    table.currentOp = 0; // no operator
    table.apply(img.get(), true);
    table.apply(nullptr, true);
    table.prepareAndApply(nullptr, true);
    image dead;
    table.apply(&dead, false);
    EXPECT_TRUE(sameColors(*img, *before));
    EXPECT_TRUE(img->undoList.isEmpty());
    EXPECT_FALSE(img->changed);
    EXPECT_TRUE(img->modificationTime.isEmpty());
    EXPECT_EQ(table.lastOp, 0);
    table.currentOp = kNegative;
    table.byId(kNegative)->self = nullptr; // nothing to run: the frame of the act stays
    table.apply(img.get(), false);
    EXPECT_TRUE(sameColors(*img, *before));
    EXPECT_EQ(img->undoList.size(), 1);
}

TEST_F(Apply, ListsOfSpecialOperators)
{
    const int onMaster[] = {2, 3, 19, 20, 26, 38, 49, 55, 63, 65, 80, 91};
    const int withoutUndo[] = {10, 20, 49, 55, 65, 80, 91};
    const int unstamped[] = {10, 20, 55, 80};
    for (int id = 1; id <= 96; ++id) {
        EXPECT_EQ(OperatorTable::allowedOnMaster(id), std::count(onMaster, onMaster + 12, id) > 0);
        const bool records = std::count(withoutUndo, withoutUndo + 7, id) == 0;
        EXPECT_EQ(OperatorTable::recordsUndo(id), records);
        if (table.byId(id))
            continue;
        img = plainImage(2, 2, 1, 2, 3);
        img->modificationTime.clear();
        img->changed = false;
        witness(id);
        space.previews = 0;
        table.apply(img.get(), true);
        EXPECT_EQ(img->undoList.size(), records) << id;
        EXPECT_EQ(img->changed, records) << id;
        EXPECT_EQ(img->modificationTime.isEmpty(), std::count(unstamped, unstamped + 4, id) > 0);
        EXPECT_EQ(space.previews, id != 80 && id != 10) << id;
    }
}

TEST_F(Apply, ImagesAreMarkedAsInUseForTheCall)
{
    Witness *seen = witness(7);
    auto brush = plainImage(2, 2, 0, 0, 0);
    auto origin = plainImage(2, 2, 0, 0, 0);
    space.assignBrush(brush.get());
    space.assignOrigin(origin.get());
    table.apply(img.get(), false);
    EXPECT_TRUE(seen->targetInUse && seen->brushInUse && seen->originInUse);
    EXPECT_FALSE(img->inUse || brush->inUse || origin->inUse);
    seen->dropBrush = true; // an assigned image may go away while events are let through
    table.apply(img.get(), false);
    EXPECT_FALSE(img->inUse || origin->inUse);
    space.assignOrigin(nullptr);
}

TEST_F(Apply, InternalImagesAreNoActOfTheUser)
{
    table.preview = img.get();
    table.inPreview = true;
    table.lastOp = 5;
    img->noUndo = true;
    table.apply(img.get(), false);
    EXPECT_EQ(table.lastOp, 5);
    EXPECT_TRUE(img->undoList.isEmpty());
    EXPECT_TRUE(img->modificationTime.isEmpty());
    EXPECT_EQ(space.previews, 0);
    for (int id : {55, 80}) {
        Witness *seen = witness(id);
        table.apply(img.get(), false);
        EXPECT_EQ(seen->calls, 0);
    }
}

TEST_F(Apply, TheStampIsLeftOutOnceAfterAScript)
{
    table.suppressOnce = true;
    table.apply(img.get(), false);
    EXPECT_TRUE(table.suppressOnce);
    EXPECT_TRUE(img->modificationTime.isEmpty());
    witness(82);
    table.apply(img.get(), false);
    EXPECT_FALSE(table.suppressOnce);
    EXPECT_TRUE(img->modificationTime.isEmpty());
    table.apply(img.get(), false);
    EXPECT_FALSE(img->modificationTime.isEmpty());
}

TEST_F(Apply, ALayerMarksItsMaster)
{
    auto master = plainImage(2, 2, 0, 0, 0);
    master->kind = 1;
    img->kind = 2;
    img->master = master.get();
    table.apply(img.get(), true);
    EXPECT_TRUE(master->parentDirty);
    EXPECT_TRUE(master->needsRebuild);
}

TEST_F(Apply, TheMaskIsShapedAndInvertedEveryTime)
{
    space.curveAmplitude = 0.5;
    table.prepareAndApply(img.get(), true);
    EXPECT_EQ(img->gmask[0], 32767);
    table.prepareAndApply(img.get(), true);
    EXPECT_EQ(img->gmask[0], 16383);
    space.curveAmplitude = 1.0;
    space.invertSelection = true;
    const uint16_t soft = img->gmask[0];
    table.prepareAndApply(img.get(), true);
    EXPECT_EQ(img->gmask[0], uint16_t(~soft));
    table.prepareAndApply(img.get(), true);
    EXPECT_EQ(img->gmask[0], soft);
    table.apply(img.get(), true); // as it stands
    EXPECT_EQ(img->gmask[0], soft);
}

TEST_F(Apply, TheBlendModeLeavesTheLinearMixAlone)
{
    for (int id : {kExposure, kNegative}) {
        table.currentOp = id;
        auto plain = randomImage(13, 7, 3), other = randomImage(13, 7, 3);
        space.blendMode = 0;
        table.apply(plain.get(), false);
        space.blendMode = 4;
        table.apply(other.get(), false);
        EXPECT_TRUE(samePlanes(*plain, *other));
    }
}
