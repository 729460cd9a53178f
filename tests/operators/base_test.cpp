// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/base/declaredop.h"
#include "operators/base/operatortable.h"

#include "core/undo.h"
#include "operators/filter/exposure.h"
#include "operators/table/allops.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <QRegularExpression>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <set>

namespace
{
constexpr int kNegative = 62;

class NoticingWorkspace : public RecordingWorkspace
{
public:
    void previewOutdated() override { ++previews; }
    int previews = 0;
};

/// Looks at the marks while it runs.
class Witness : public OpWrapper
{
public:
    using OpWrapper::OpWrapper;
    void apply(image *target, image *brush) override
    {
        ++calls;
        allInUse = brush && target->inUse && brush->inUse && workspace()->originImage->inUse;
        if (dropBrush)
            workspace()->assignBrush(nullptr);
    }
    int calls = 0;
    bool allInUse = false, dropBrush = false;
};

class OpBase : public testing::Test
{
protected:
    OpBase()
    {
        addAllOperators(&table);
        exposure = static_cast<Exposure *>(table.byScriptName("exposure"));
        img = randomImage(13, 7, 3);
        img->fillGmask(65535);
        img->changed = false;
        img->modificationTime.clear();
        table.currentOp = kNegative;
    }
    int call(OpWrapper *op, const char *line, image *target)
    {
        QStringList args = QString(line).split(' ', Qt::SkipEmptyParts);
        return op->scriptCall(args.size(), &args, target, &usage);
    }
    QString lineOf(OpWrapper *op)
    {
        QString line;
        op->scriptLine(&line);
        return line;
    }
    Witness *witness(int id)
    {
        auto op = std::make_unique<Witness>(&bare);
        Witness *seen = op.get();
        bare.add({id, kGroupMeta, "witness", "Witness", "", "", nullptr}, std::move(op));
        bare.currentOp = id;
        return seen;
    }

    NoticingWorkspace space;
    OperatorTable table, bare; ///< all operators; witnesses alone
    Exposure *exposure;
    ImagePtr img;
    QString usage;
};
} // namespace

TEST_F(OpBase, ScriptCallsOfExposure)
{
    struct {
        const char *fault, *line;
        int result;
        const char *lineAfter;
    } const cases[] = {{"tokens are expressions", "50+50 0", 1, "exposure 100 0\n"},
                       {"lower limit is inside", "-100 (1)", 1, "exposure -100 1\n"},
                       {"one short", "10", 0, "exposure 7 1\n"},
                       {"one too many", "10 0 0", 0, "exposure 7 1\n"},
                       {"first out of range", "101 0", 0, "exposure 7 1\n"},
                       {"second out of range", "10 2", 0, "exposure 7 1\n"},
                       {"second no number", "10 x", 0, "exposure 7 1\n"}};
    for (const auto &one : cases) {
        const auto before = randomImage(5, 5, 1);
        img = randomImage(5, 5, 1);
        exposure->amount = 7;
        exposure->mode = 1;
        usage.clear();
        EXPECT_EQ(call(exposure, one.line, img.get()), one.result) << one.fault;
        EXPECT_EQ(lineOf(exposure), one.lineAfter) << one.fault;
        EXPECT_EQ(usage, QLatin1String("exposure [Amount=-100...100] [Mode=0...1]"));
        EXPECT_EQ(samePlanes(*img, *before), one.result == 0) << one.fault;
        EXPECT_TRUE(img->undoList.isEmpty()) << one.fault;
    }
    QStringList one{"1"}; // fewer than announced
    EXPECT_EQ(exposure->scriptCall(2, &one, nullptr, &usage), 0);
    EXPECT_EQ(exposure->scriptCall(2, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(call(exposure, "1 0", nullptr), 1);
}

TEST_F(OpBase, ScriptLinesAndTheUnscriptable)
{
    EXPECT_EQ(lineOf(table.byId(kNegative)), QLatin1String("negative\n"));
    EXPECT_EQ(call(table.byId(kNegative), "", nullptr), 1);
    EXPECT_EQ(call(table.byId(kNegative), "1", nullptr), 0);
    EXPECT_EQ(usage, QLatin1String("negative has no parameters"));
    OpWrapper plain(&table);
    plain.menuName = QStringLiteral("Brushstroke");
    EXPECT_EQ(lineOf(&plain), QLatin1String("# No script operator for \"Brushstroke\"\n"));
    EXPECT_EQ(call(&plain, "1", nullptr), -1);
    EXPECT_FALSE(plain.readArguments(0, {}, &usage));
    EXPECT_TRUE(usage.isEmpty());
}

TEST_F(OpBase, SettingsComeBackAndHostileOnesAreIgnored)
{
    QTemporaryDir folder;
    exposure->amount = -33;
    exposure->mode = 1;
    exposure->hotkey = QStringLiteral("e");
    table.settings(true); // no store: nothing happens
    QSettings store(folder.filePath("settings.ini"), QSettings::IniFormat);
    table.store = &store;
    table.settings(true);
    for (const char *key : {"operatorExposure", "operatorExposureMode", "operatorExposureHotkey"})
        EXPECT_TRUE(store.contains(key)) << key;
    int keys = 0; // each operator's are its own, one of them for its hotkey
    for (OpWrapper *op : table.operators()) {
        QSettings alone(folder.filePath(op->scriptName), QSettings::IniFormat);
        table.store = &alone;
        op->settings(true);
        keys += alone.allKeys().size();
        const QStringList hotkeys = alone.allKeys().filter("otkey");
        EXPECT_EQ(hotkeys.size(), op->self ? 1 : 0) << qPrintable(op->scriptName);
    }
    table.store = &store;
    EXPECT_EQ(store.allKeys().size(), keys);
    EXPECT_EQ(store.allKeys().filter(QRegularExpression("^operator")).size(), keys);
    OperatorTable other;
    addAllOperators(&other);
    other.store = &store;
    other.settings(false);
    auto *read = static_cast<Exposure *>(other.byScriptName("exposure"));
    EXPECT_TRUE(read->amount == -33 && read->mode == 1);
    EXPECT_EQ(read->hotkey, QLatin1String("e"));
    for (const char *text : {"-32", "1e300", "nan", "101", "x", ""}) {
        store.setValue("operatorExposure", text);
        other.settings(false);
        EXPECT_EQ(read->amount, -32) << text;
    }
    bare.add({63, kGroupMeta, "notations", "Notations", "", "", nullptr}, nullptr); // no memory
    EXPECT_EQ(bare.byId(63), nullptr);
}

TEST_F(OpBase, ApplyRecordsUndoStampsAndTellsTheWindow)
{
    const auto before = randomImage(13, 7, 3);
    beginAct(img.get());
    undo(img.get());
    img->changed = false;
    table.apply(img.get(), true);
    EXPECT_TRUE(img->changed && img->redoList.isEmpty());
    ASSERT_EQ(img->undoList.size(), 1);
    EXPECT_EQ(table.lastOp, kNegative);
    EXPECT_TRUE(img->modificationTime.endsWith(QLatin1String(" UTC")));
    EXPECT_EQ(img->red[5], 65535 - before->red[5]);
    EXPECT_GE(space.refreshes, 1);
    undo(img.get());
    EXPECT_TRUE(sameColors(*img, *before) && !img->changed);
}

TEST_F(OpBase, WhatIsNotToBeWorkedOnStaysAsItIs)
{
    const auto before = randomImage(13, 7, 3);
    image dead;
    for (image *target : {&dead, static_cast<image *>(nullptr)})
        table.prepareAndApply(target, true);
    img->kind = 1;
    table.apply(img.get(), true);
    img->kind = 0;
    table.currentOp = 0; // no operator
    table.apply(img.get(), true);
    EXPECT_TRUE(img->undoList.isEmpty() && img->modificationTime.isEmpty() && !img->changed);
    EXPECT_EQ(table.lastOp, 0);
    table.currentOp = kNegative;
    table.byId(kNegative)->self = nullptr; // nothing to run: the frame of the act stays
    table.apply(img.get(), false);
    EXPECT_TRUE(sameColors(*img, *before));
    EXPECT_EQ(img->undoList.size(), 1);
}

TEST_F(OpBase, ListsOfSpecialOperators)
{
    const std::set<int> onMaster{2, 3, 19, 20, 26, 38, 49, 55, 63, 65, 80, 91};
    const std::set<int> withoutUndo{10, 20, 49, 55, 65, 80, 91}, unstamped{10, 20, 55, 80};
    for (int id = 1; id <= 96; ++id) {
        const bool records = !withoutUndo.contains(id);
        EXPECT_EQ(OperatorTable::allowedOnMaster(id), onMaster.contains(id)) << id;
        img = plainImage(2, 2, 1, 2, 3);
        img->modificationTime.clear();
        img->changed = false;
        witness(id);
        space.previews = 0;
        bare.apply(img.get(), true);
        EXPECT_EQ(img->undoList.size(), records) << id;
        EXPECT_EQ(img->changed, records) << id;
        EXPECT_EQ(img->modificationTime.isEmpty(), unstamped.contains(id)) << id;
        EXPECT_EQ(space.previews, id != 80 && id != 10) << id;
    }
}

TEST_F(OpBase, ImagesAreMarkedAsInUseForTheCallAndALayerMarksItsMaster)
{
    Witness *seen = witness(7);
    const ImagePtr brush = plainImage(2, 2, 0, 0, 0), origin = plainImage(2, 2, 0, 0, 0);
    const ImagePtr master = plainImage(2, 2, 0, 0, 0);
    space.assignBrush(brush.get());
    space.assignOrigin(origin.get());
    master->kind = 1;
    img->kind = 2;
    img->master = master.get();
    bare.apply(img.get(), true);
    EXPECT_TRUE(seen->allInUse);
    EXPECT_TRUE(master->parentDirty && master->needsRebuild);
    EXPECT_FALSE(img->inUse || brush->inUse || origin->inUse);
    seen->dropBrush = true; // it may be freed while events are let through
    bare.apply(img.get(), false);
    EXPECT_TRUE(brush->inUse && !origin->inUse) << "what is dropped is not touched again";
    space.assignOrigin(nullptr);
}

TEST_F(OpBase, InternalImagesAreNoActOfTheUser)
{
    table.preview = img.get();
    table.inPreview = true;
    img->noUndo = true;
    table.apply(img.get(), false);
    EXPECT_EQ(table.lastOp, 0);
    EXPECT_TRUE(img->undoList.isEmpty() && img->modificationTime.isEmpty());
    EXPECT_EQ(space.previews, 0);
    bare.preview = img.get();
    for (int id : {55, 80}) {
        Witness *seen = witness(id);
        bare.apply(img.get(), false);
        EXPECT_EQ(seen->calls, 0);
    }
}

TEST_F(OpBase, TheStampIsLeftOutOnceAfterAScript)
{
    bare.suppressOnce = true;
    witness(kNegative);
    bare.apply(img.get(), false);
    EXPECT_TRUE(bare.suppressOnce);
    witness(82);
    bare.apply(img.get(), false);
    EXPECT_FALSE(bare.suppressOnce);
    EXPECT_TRUE(img->modificationTime.isEmpty());
    bare.apply(img.get(), false);
    EXPECT_FALSE(img->modificationTime.isEmpty());
}

TEST_F(OpBase, TheMaskIsShapedAndInvertedEveryTime)
{
    space.curveAmplitude = 0.5;
    for (int expected : {32767, 16383}) {
        table.prepareAndApply(img.get(), true);
        EXPECT_EQ(img->gmask[0], expected);
    }
    space.curveAmplitude = 1.0;
    space.invertSelection = true;
    for (int expected : {65535 - 16383, 16383}) {
        table.prepareAndApply(img.get(), true);
        EXPECT_EQ(img->gmask[0], expected);
    }
    table.apply(img.get(), true); // as it stands
    EXPECT_EQ(img->gmask[0], 16383);
}
