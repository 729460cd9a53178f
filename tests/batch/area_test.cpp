// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/toolrun.h"

#include "core/memory.h"

#include <gtest/gtest.h>

namespace
{
constexpr int kWidth = 7, kHeight = 5;

/// What commands answer, and then the selection in rows of '#', '.' and '+' for parts.
std::string answersAndMask(const std::string &commands)
{
    std::string input = commands + "\n";
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            input += ".pixel " + std::to_string(x) + " " + std::to_string(y) + "\n";
    std::istringstream lines(runInProcess({"-i", "new:7x5"}, input).out);
    std::string line, result, mask;
    while (std::getline(lines, line)) {
        const std::string word = line.substr(line.rfind(' ') + 1);
        if (line.rfind("failed", 0) == 0)
            result += line + "\n";
        else
            mask += word == "0" ? '.' : word == "65535" ? '#' : '+';
    }
    for (int y = 0; y < kHeight; ++y)
        result += mask.substr(size_t(y) * kWidth, kWidth) + "\n";
    return result;
}

TEST(ConsoleArea, CommandsSelectTheirFigures)
{
    const struct {
        const char *fault, *commands, *mask;
    } cases[] = {
        {"CornersInAnyOrder", ".entire\n.rect 4 3 1 1",
         ".......\n.####..\n.####..\n.####..\n.......\n"},
        {"CutAtTheImage", ".rect -65534 2 65534 9",
         ".......\n.......\n#######\n#######\n#######\n"},
        {"Everything", ".entire", "#######\n#######\n#######\n#######\n#######\n"},
        {"RadiiNotCorners", ".ellipse 3 2 1.5 0", ".......\n.......\n..####.\n.......\n.......\n"},
        {"TheEllipseInABox", ".rellipse 5 4 1 0", "..###..\n.#####.\n.#####.\n.#####.\n..###..\n"},
        {"ClosedByItsFirstPoint", ".set FilledFigure 0\n.polygon 1 0 5 0 5 4 1 4",
         ".#####.\n.#...#.\n.#...#.\n.#...#.\n.#####.\n"},
        {"APolygonAfterAnother", ".polygon 0 0 6 0 6 4\n.polygon 1 1 3 1 3 3 1 3",
         ".......\n.###...\n.###...\n.###...\n.......\n"},
        {"ASplineIsClosed", ".spline 1 1 5 1 3 4", ".####..\n######.\n.####..\n..###..\n.......\n"},
        {"OfAnOpenSplineTheLastPointIsRepeated",
         ".set FilledFigure 0\n.set openFigure 1\n.spline 1 1 5 1 5 3 1 3",
         ".####..\n.#...#.\n.....#.\n.####..\n.......\n"},
        {"WandWithinTolerance",
         ".fill 0 0 0 65535\n.poke 1 1 9000 0 0 65535\n.poke 2 1 4000 0 0 65535\n.poke 6 4 9000 0 "
         "0 "
         "65535\n.set wandTolerance 90\n.wand 1 1 9",
         ".......\n.##....\n.......\n.......\n.......\n"},
        {"ToleranceNothingTakesOneColourEverywhere",
         ".poke 1 1 9000 0 0 65535\n.poke 6 4 9000 0 0 65535\n.wand 1 1 0",
         ".......\n.#.....\n.......\n.......\n......#\n"},
        {"Smoothing", ".rect 2 1 4 3\n.smooth 1 1",
         ".+++++.\n.+++++.\n.++#++.\n.+++++.\n.+++++.\n"},
        {"NoRecord", ".entire\n.rect 0 0 1 1\n.smooth 2 0.5\n.rect 0 0 1 1\n.apply negative\n.undo",
         "##.....\n##.....\n.......\n.......\n.......\n"}};
    for (const auto &one : cases) {
        EXPECT_EQ(answersAndMask(one.commands), one.mask) << one.fault;
        EXPECT_EQ(memRecord.currentBlocks, 0) << "left in memory";
    }
}

TEST(ConsoleArea, WhatCannotBeSelectedIsToldAndChangesNothing)
{
    std::string many = ".polygon";
    for (int i = 0; i < 256000; ++i)
        many += " 3 2";
    const struct {
        std::string command, answer;
    } cases[] = {{".rect 1 2 3", "usage: .rect L T R B"},
                 {".rect 1 2 3 1e3", "BOTTOM is -65534 to 65534, not \"1e3\""},
                 {".rellipse 99999999999 2 3 3", "LEFT is -65534 to 65534, not \"99999999999\""},
                 {".ellipse nan 1 1 1", "XC is -65534 to 65534, not \"nan\""},
                 {".ellipse 1 1 1 -1", "YR is 0 to 40743, not \"-1\""},
                 {".ellipse 3 2 0 0", "nothing to select"},
                 {".entire now", "usage: .entire"},
                 {".wand 7 0 5", "X is 0 to 6, not \"7\""},
                 {".wand 0 -1 5", "Y is 0 to 4, not \"-1\""},
                 {".wand 0 0 101", "TOL is 0 to 100, not \"101\""},
                 {".polygon", "usage: .polygon X1 Y1 X2 Y2..."},
                 {".polygon 1 1", "nothing to select"},
                 {".polygon 1 1 3 3", "nothing to select"},
                 {".spline 1 1", "nothing to select"},
                 {".spline 1 1 2 2 3", "each X needs a Y"},
                 {".polygon 1 1 2 2 70000 3", "X is -65534 to 65534, not \"70000\""},
                 {many, "more than 255999 corners"},
                 {".smooth 0 1", "RADIUS is 1 to 200, not \"0\""},
                 {".smooth 1 inf", "AMOUNT is -10 to 10, not \"inf\""}};
    for (const auto &one : cases)
        EXPECT_EQ(answersAndMask(".mask 2 1 65535\n" + one.command),
                  "failed: " + one.answer + "\n.......\n..#....\n.......\n.......\n.......\n");
    EXPECT_EQ(runInProcess({"-i"}, ".rect 0 0 1 1\n.wand 0 0 1\n").out,
              "failed: no image\nfailed: no image\n");
    many.resize(many.size() - 4); // as many as the list takes
    EXPECT_EQ(answersAndMask(many), ".......\n.......\n...#...\n.......\n.......\n");
}
} // namespace
