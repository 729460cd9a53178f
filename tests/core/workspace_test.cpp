// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/fixture.h"

#include <set>

using Tables = WithWorkspace;
using Images = WithWorkspace;

TEST(Workspace, OwnsItsTablesForItsLifetime)
{
    const int64_t bytes = memRecord.currentBytes;
    {
        const RecordingWorkspace ws;
        EXPECT_EQ(ws.colorCount[0xB5], 5);
        EXPECT_EQ(ws.cvt8to32[0xA7], 0xA7A7A7A7U);
        EXPECT_EQ(memRecord.currentBytes - bytes, 256 + 256 * 4 + 3 * 131072);
    }
    EXPECT_EQ(memRecord.currentBytes, bytes);
    memFailAt(2);
    const RecordingWorkspace ws; // a table that memory refuses stays null, quietly
    EXPECT_EQ(ws.cvt8to32, nullptr);
    memFailAt(0);
}

TEST_F(Tables, TakeValuesWithinTheirRangeOnly)
{
    const QStringList taken =
        QString("maxUndos=50|tMode=3|tAmplitude=0.1|saveEXIF=0|mainOpIndex=96|"
                "rgbaDepth=32|mainAuthor=\xC3\xA9 %1|mainAuthor=")
            .split('|');
    const QString refused = "maxUndos=0|maxUndos=51|maxUndos=7.5|maxUndos=|maxUndos=9999999999|"
                            "tMode=-1|tFactor=8|tAmplitude=nan|tFloor=inf|tFloor=1e300|tFloor=0,5|"
                            "mainOpIndex=97|backBlue=65536|rgbaDepth=48|saveEXIF=2|noSuchKey=1";
    for (const QString &line : taken + refused.split('|')) {
        const QString key = line.section('=', 0, 0), value = line.section('=', 1);
        const QString before = ws.settingText(key);
        QString error;
        const bool stored = ws.setSetting(key, value, &error);
        EXPECT_EQ(stored, taken.contains(line)) << qPrintable(line);
        EXPECT_EQ(error.contains(key), !stored) << qPrintable(error);
        EXPECT_EQ(ws.settingText(key), stored ? value : before) << qPrintable(line);
    }
    EXPECT_TRUE(ws.setSetting("saveEXIF", "True", nullptr) && ws.saveEXIF);
}

TEST_F(Tables, HoldEachKeyOnceAndTakeTheirOwnDefaults)
{
    std::set<QString> keys;
    std::set<void *> fields;
    for (const LayerModeEntry &mode : layerModeTable())
        EXPECT_TRUE(keys.insert(QString::number(mode.id)).second) << mode.name;
    for (const Workspace::Setting &setting : ws.settings()) {
        EXPECT_TRUE(keys.insert(setting.key).second) << setting.key;
        EXPECT_TRUE(fields.insert(setting.field).second) << setting.key;
        EXPECT_TRUE(ws.setSetting(setting.key, ws.settingText(setting.key), nullptr))
            << setting.key;
    }
}

TEST_F(Images, BrushAndOriginEndWithTheirImage)
{
    ImagePtr img = plainImage(2, 2, 0, 0, 0);
    image withoutPlanes;
    ws.assignBrush(img.get());
    ws.assignOrigin(img.get());
    ws.forgetImage(&withoutPlanes);
    EXPECT_EQ(ws.brushImage, img.get());
    img.reset();
    EXPECT_TRUE(!ws.brushImage && !ws.originImage);
    EXPECT_EQ(ws.brushClears * ws.originClears, 1);
    ws.assignBrush(&withoutPlanes);
    EXPECT_EQ(ws.brushImage, nullptr);
}

TEST_F(Images, AreKnownWithoutReadingAskedPointers)
{
    image *listed = plainImage(2, 2, 0, 0, 0).release();
    const ImagePtr layer = plainImage(2, 2, 0, 0, 0), other = plainImage(2, 2, 0, 0, 0);
    listed->layers << layer.get();
    for (int twice = 0; twice < 2; ++twice) {
        ws.Workspace::showImage(listed, FileRecord());
        ws.giveSerial(listed);
    }
    EXPECT_EQ(ws.images.size(), 1);
    EXPECT_EQ(listed->title, "[2] plain");
    EXPECT_TRUE(ws.ownsImage(listed) && ws.ownsImage(layer.get()));
    EXPECT_FALSE(ws.ownsImage(other.get()) || ws.ownsImage(nullptr));
    EXPECT_FALSE(ws.ownsImage(reinterpret_cast<const image *>(uintptr_t(8))));
    listed->layers.clear();
}

TEST(FileRecord, SplitsAtTheLastSlash)
{
    for (const QString path : {"/a/b/c.png", "/c.png", "c.png"}) {
        const FileRecord record = FileRecord::fromPath(path);
        EXPECT_EQ(record.fullPath, path);
        EXPECT_EQ(record.name, "c.png");
        EXPECT_EQ(record.folder, path.size() > 6 ? "/a/b" : "") << qPrintable(path);
    }
}
