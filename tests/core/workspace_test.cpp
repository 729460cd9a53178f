// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/memory.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <gtest/gtest.h>

#include <set>

namespace
{
TEST(Workspace, OwnsItsTablesForItsLifetime)
{
    const int64_t bytes = memRecord.currentBytes;
    {
        RecordingWorkspace ws;
        EXPECT_EQ(workspace(), &ws);
        EXPECT_EQ(ws.colorCount[0xB5], 5);
        EXPECT_EQ(ws.colorCount[255], 8);
        EXPECT_EQ(ws.cvt8to32[0xA7], 0xA7A7A7A7U);
        EXPECT_EQ(memRecord.currentBytes - bytes, 256 + 256 * 4 + 3 * 131072);
        EXPECT_TRUE(memReport(true).contains(": color map red -- 131,072 (65,536 x 2)"));
    }
    EXPECT_EQ(workspace(), nullptr);
    EXPECT_EQ(memRecord.currentBytes, bytes);
    memFailAt(2);
    RecordingWorkspace ws; // a table that memory refuses stays null, quietly
    EXPECT_EQ(ws.cvt8to32, nullptr);
    memFailAt(0);
}

TEST(Settings, TakeValuesWithinTheirRangeOnly)
{
    const char *taken[] = {
        "maxUndos=50",   "zoomSteps=32", "tMode=3",     "tAmplitude=0.1",         "mainOpIndex=96",
        "foreRed=65535", "rgbaDepth=32", "gridState=1", "mainAuthor=\xC3\xA9 %1", "mainAuthor="};
    const char *refused[] = {
        "maxUndos=0",   "maxUndos=51", "maxUndos=7.5", "maxUndos=",      "maxUndos=9999999999",
        "zoomSteps=33", "tMode=-1",    "tFactor=8",    "tAmplitude=nan", "tFloor=inf",
        "tFloor=1e300", "tFloor=0,5",  "blendMode=11", "mainOpIndex=97", "backBlue=65536",
        "rgbaDepth=48", "saveEXIF=2",  "noSuchKey=1"};
    RecordingWorkspace ws;
    for (const char *line : taken) {
        const QString key = QString(line).section('=', 0, 0), value = QString(line).section('=', 1);
        EXPECT_TRUE(ws.setSetting(key, value, nullptr)) << line;
        EXPECT_EQ(ws.settingText(key), value) << line;
    }
    for (const char *line : refused) {
        const QString key = QString(line).section('=', 0, 0), before = ws.settingText(key);
        QString error;
        EXPECT_FALSE(ws.setSetting(key, QString(line).section('=', 1), &error)) << line;
        EXPECT_TRUE(error.contains(key)) << line;
        EXPECT_EQ(ws.settingText(key), before) << line;
    }
    EXPECT_TRUE(ws.setSetting("saveEXIF", "False", nullptr));
    EXPECT_FALSE(ws.saveEXIF);
}

TEST(Settings, EveryOneStoresAndReadsBackItsDefault)
{
    RecordingWorkspace ws;
    std::set<QString> keys;
    std::set<void *> fields;
    for (const Workspace::Setting &setting : ws.settings()) {
        EXPECT_TRUE(keys.insert(setting.key).second) << setting.key;
        EXPECT_TRUE(fields.insert(setting.field).second) << setting.key;
        EXPECT_TRUE(ws.setSetting(setting.key, ws.settingText(setting.key), nullptr))
            << setting.key << ": the default lies outside of the range";
        EXPECT_EQ(setting.stored,
                  QString(setting.key) != "blendMode" && QString(setting.key) != "rgbaDepth");
    }
    ws.setSetting("maxUndos", "3", nullptr);
    EXPECT_EQ(image().undoLevels, 3) << "images take the bound that holds when they are made";
}

TEST(Workspace, BrushAndOriginEndWithTheirImage)
{
    RecordingWorkspace ws;
    ImagePtr img = plainImage(2, 2, 0, 0, 0);
    image withoutPlanes;
    ws.assignBrush(img.get());
    ws.assignOrigin(img.get());
    EXPECT_EQ(ws.brushClears + ws.originClears, 0);
    ws.forgetImage(&withoutPlanes);
    EXPECT_EQ(ws.brushImage, img.get());
    img.reset();
    EXPECT_EQ(ws.brushImage, nullptr);
    EXPECT_EQ(ws.originImage, nullptr);
    EXPECT_EQ(ws.brushClears, 1);
    EXPECT_EQ(ws.originClears, 1);
    ws.assignBrush(&withoutPlanes);
    EXPECT_EQ(ws.brushImage, nullptr);
}

TEST(Workspace, KnowsItsImagesWithoutReadingAskedPointers)
{
    RecordingWorkspace ws;
    image *listed = plainImage(2, 2, 0, 0, 0).release();
    ImagePtr layer = plainImage(2, 2, 0, 0, 0), other = plainImage(2, 2, 0, 0, 0);
    listed->layers << layer.get();
    ws.Workspace::showImage(listed, FileRecord());
    ws.Workspace::showImage(listed, FileRecord());
    EXPECT_EQ(ws.images.size(), 1);
    EXPECT_TRUE(ws.ownsImage(listed));
    EXPECT_TRUE(ws.ownsImage(layer.get()));
    EXPECT_FALSE(ws.ownsImage(other.get()));
    EXPECT_FALSE(ws.ownsImage(nullptr));
    EXPECT_FALSE(ws.ownsImage(reinterpret_cast<const image *>(uintptr_t(8))));
    listed->layers.clear();
    ws.giveSerial(listed);
    ws.giveSerial(listed);
    EXPECT_EQ(listed->serial, 2);
    EXPECT_EQ(listed->title, "[2] plain");
}

TEST(LayerModes, EachIdOnceInTheOrderOfTheComboBox)
{
    const auto &table = layerModeTable();
    std::set<int> ids;
    int factors = 0, opaque = 0;
    for (const LayerModeEntry &entry : table) {
        ids.insert(entry.id);
        factors += entry.useFactor;
        opaque += entry.opaqueSource;
    }
    EXPECT_EQ(table.size(), 62U);
    EXPECT_EQ(ids.size(), 62U);
    EXPECT_EQ(factors, 3);
    EXPECT_EQ(opaque, 33);
    EXPECT_STREQ(table[34].name, "No Match");
    EXPECT_EQ(table[57].id, 59);
}

TEST(FileRecord, SplitsAtTheLastSlash)
{
    const char *cases[][3] = {{"/a/b/c.png", "/a/b", "c.png"},
                              {"c.png", "", "c.png"},
                              {"/c.png", "", "c.png"},
                              {"a/", "a", ""},
                              {"", "", ""}};
    for (const auto &[path, folder, name] : cases) {
        const FileRecord record = FileRecord::fromPath(path);
        EXPECT_EQ(record.fullPath, path);
        EXPECT_EQ(record.folder, folder) << path;
        EXPECT_EQ(record.name, name) << path;
    }
}
} // namespace
