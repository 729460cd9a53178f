// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/pshape.h"

#include "area/areastate.h"
#include "area/pshapefile.h"
#include "core/memory.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace
{
const std::vector<AreaPoint> kCorners = {{10, 20}, {31, 20}, {10, 61}, {10, 20}};

void remember(PShape *shape, const std::vector<AreaPoint> &corners, bool open = false)
{
    shape->remember(corners.data(), int(corners.size()), "Polygonal", open);
}

void expectPoint(const ShapePoint &point, double x, double y)
{
    EXPECT_NEAR(point.x, x, 1e-9);
    EXPECT_NEAR(point.y, y, 1e-9);
}

TEST(PShape, IsNormalisedPlacedAndTurned)
{
    PShape shape;
    EXPECT_FALSE(shape.convert());
    shape.setRotation(1);
    remember(&shape, kCorners);
    EXPECT_FALSE(shape.usable()) << "remembered only";
    EXPECT_EQ(shape.rotation, 0);
    ASSERT_TRUE(shape.convert());
    EXPECT_EQ(shape.baseWidth, 21);
    EXPECT_EQ(shape.baseHeight, 41);
    EXPECT_EQ(shape.drawnCount(), 4);
    expectPoint(shape.placed(0), -10 / 21.0, -20 / 41.0); // the middle is 20, 40

    shape.xScale = 21, shape.yScale = 82, shape.xCenter = 100, shape.yCenter = 200;
    expectPoint(shape.placed(1), 111, 160);
    shape.setRotation(M_PI / 2); // scaled before it is turned, clockwise as y goes down
    expectPoint(shape.placed(1), 140, 211);
    remember(&shape, {{0, 0}, {0, 0}, {0, 0}}, true);
    EXPECT_EQ(shape.shapeName, "Polygonal");
    EXPECT_EQ(shape.baseWidth, 21) << "a new figure left the current shape alone";
    ASSERT_TRUE(shape.convert());
    expectPoint(shape.placed(2), 100, 200); // no width, no height
    EXPECT_EQ(shape.drawnCount(), 2);
    // Beyond the values that the search for the box starts from.
    remember(&shape, {{INT32_MAX, INT32_MIN}, {INT32_MIN, INT32_MAX}, {2000000, 2000000}});
    EXPECT_EQ(shape.lastBaseWidth, 4294967295.0);
    EXPECT_NEAR(shape.lastpolylist[0].x, 0.5, 1e-6);
}

TEST(PShape, StepsAreTwoTicksApart)
{
    PShape shape;
    const struct {
        int sign;
        uint64_t tick;
        bool turns;
    } steps[] = {
        {1, 100, true}, {1, 101, false}, {-1, 102, true}, {-1, 102, false}, {-1, 109, true}};
    double angle = 0;
    for (const auto &step : steps) {
        EXPECT_EQ(shape.rotateStep(step.sign, step.tick), step.turns) << step.tick;
        angle += step.turns ? step.sign * 0.017453292519943295 : 0;
        EXPECT_EQ(shape.rotation, angle);
    }
}

TEST(PShape, RefusedFiguresAndShortMemoryLeaveBothListsAlone)
{
    const int64_t blocks = memRecord.currentBlocks;
    {
        PShape shape;
        memFailAt(1);
        remember(&shape, kCorners);
        memFailAt(0);
        EXPECT_EQ(shape.lastCount, 0);
        remember(&shape, kCorners);
        memFailAt(1);
        EXPECT_FALSE(shape.convert());
        memFailAt(0);
        EXPECT_FALSE(shape.usable());
        EXPECT_EQ(shape.shapeName, "?");
        const std::vector<AreaPoint> most(kShapeEntries), more(kShapeEntries + 1);
        remember(&shape, more);
        remember(&shape, {});
        shape.remember(nullptr, 4, "", true);
        EXPECT_EQ(shape.lastCount, 4);
        remember(&shape, most);
        EXPECT_EQ(shape.lastCount, kShapeEntries);
    }
    EXPECT_EQ(memRecord.currentBlocks, blocks);
}

/// A file of three points, with one piece of it replaced.
QByteArray shapeText(const char *what = "", const char *by = "")
{
    QByteArray text = R"({"format":"Kestrane P-Shape","version":1,"name":"kite","kind":"Drawn",
        "baseWidth":30,"baseHeight":12.5,"open":true,"count":3,
        "points":[[-0.5,0],[0.5,0.25],[1e-3,-0.5]]})";
    EXPECT_TRUE(text.contains(what));
    return *what ? text.replace(what, by) : text;
}

class ShapeFile : public testing::Test
{
protected:
    bool load(const QByteArray &bytes)
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
        file.close();
        return loadPShape(path, &shape, &error);
    }

    QTemporaryDir folder;
    QString path = folder.filePath("my kite.json"), error;
    PShape shape;
};

TEST_F(ShapeFile, KeepsEveryDigit)
{
    EXPECT_FALSE(savePShape(path, shape, &error)) << "nothing to save";
    std::vector<AreaPoint> corners;
    for (int i = 0; i < 1000; ++i)
        corners.push_back({i * i % 1013, i * 7919 % 30011});
    remember(&shape, corners, true);
    ASSERT_TRUE(savePShape(path, shape, &error)) << qPrintable(error);
    PShape again;
    ASSERT_TRUE(loadPShape(path, &again, &error)) << qPrintable(error);
    EXPECT_EQ(again.shapeName, "my kite");
    EXPECT_TRUE(again.closed);
    EXPECT_EQ(again.aspect(), shape.lastBaseWidth / shape.lastBaseHeight);
    ASSERT_EQ(again.count, 1000);
    for (int i = 0; i < again.count; ++i) {
        ASSERT_EQ(again.polylist[i].x, shape.lastpolylist[i].x);
        ASSERT_EQ(again.polylist[i].y, shape.lastpolylist[i].y);
    }
    EXPECT_FALSE(loadPShape(folder.filePath("none/x.json"), &again, &error));
    memFailAt(1);
    EXPECT_FALSE(loadPShape(path, &again, &error));
    memFailAt(0);
    EXPECT_EQ(error, "There is not enough memory.");
}

TEST_F(ShapeFile, DamagedAndForeignFilesAreRefused)
{
    ASSERT_TRUE(load(shapeText())) << qPrintable(error);
    const struct {
        const char *what, *by, *found; ///< `found` stands in the message
    } faults[] = {{"\"format\"", "\"f\"", "match format \"Kestrane"},
                  {"Kestrane P", "Other P", "format \"Other P-Shape\" does match \"Kestrane"},
                  {"1,\"name", "2,\"name", "version 2 does match 1"},
                  {"\"kite\"", "7", "name 7 does match"},
                  {"30", "0", "baseWidth 0 does match 1 to 4294967295"},
                  {"12.5", "1e999", ""},
                  {"true", "0", "open 0"},
                  {"\"count\":3", "\"count\":4", "points a list of 3 does match a list of 4"},
                  {"\"count\":3", "\"count\":3.5", "count 3.5 does match a whole number"},
                  {"\"count\":3", "\"count\":256033", "count 256033 does match 3 to 256032"},
                  {"1e-3", "\"1\"", "point 3 \"1\", -0.5"},
                  {"1e-3", "1001", "point 3 1001, -0.5"},
                  {"]]}", "]]", ""}};
    for (const auto &fault : faults) {
        EXPECT_FALSE(load(shapeText(fault.what, fault.by))) << fault.by;
        EXPECT_TRUE(error.startsWith("P-Shape file data out of order: ")) << qPrintable(error);
        EXPECT_TRUE(error.contains(fault.found)) << qPrintable(error);
    }
    for (const QByteArray &bytes :
         {QByteArray(), QByteArray("\x89PNG\r\n\x1a\n\0\0", 10), QByteArray("[1]"),
          QByteArray(100000, '['), shapeText() + QByteArray(17 << 20, ' ')}) {
        EXPECT_FALSE(load(bytes)) << bytes.left(20).constData();
        EXPECT_TRUE(error.startsWith("P-Shape file data out of order: ")) << qPrintable(error);
        EXPECT_LT(error.size(), 200);
    }
    EXPECT_EQ(shape.shapeName, "kite") << "as it was";
    EXPECT_EQ(shape.count, 3);
    EXPECT_EQ(shape.polylist[1].y, 0.25);
    EXPECT_TRUE(load(shapeText("\"kite\"", "\"\"")));
    EXPECT_EQ(shape.shapeName, "Drawn");
}
} // namespace
