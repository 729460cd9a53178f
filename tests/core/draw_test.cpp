// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/image.h"
#include "core/memory.h"
#include "core/undo.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <vector>

TEST(Draw, SamplesBetweenAndAtTheEdges)
{
    RecordingWorkspace ws;
    const ImagePtr img = plainImage(2, 2, 0, 0, 0);
    const uint16_t red[] = {100, 200, 300, 65535};
    std::copy(red, red + 4, img->red);
    struct {
        const char *fault;
        double x, y, red;
    } const cases[] = {
        {"a whole place is the sample itself", 1, 1, 65535},
        {"halfway along a row", 0.5, 0, 150},
        {"weights of all four", 0.25, 0.5, 0.75 * 200 + 0.25 * (200 + 65535) / 2.0},
        {"the right edge repeats", 1.75, 0.5, (200 + 65535) / 2.0},
        {"the lower edge repeats", 0.5, 1.9, (300 + 65535) / 2.0},
        {"left of the planes", -0.5, 0.5, 0},
        {"right of the planes, though an index within them", 2, 0, 0},
        {"below", 0, 2, 0},
        {"no number", std::nan(""), 0, 0},
        {"far away", 1e300, 0, 0},
    };
    for (const auto &one : cases)
        EXPECT_NEAR(img->sampleAt(one.x, one.y).red, one.red, 1e-9) << one.fault;
    EXPECT_EQ(img->sampleAt(0.3, 0.7).alpha, 65535) << "flat planes stay flat";
}

TEST(Draw, LinesAreClippedPointByPoint)
{
    RecordingWorkspace ws;
    const int big = 90, small = 30, margin = 30;
    std::mt19937 random(21);
    for (int round = 0; round < 300; ++round) {
        const ImagePtr whole = plainImage(big, big, 0, 0, 0);
        const ImagePtr part = plainImage(small, small, 0, 0, 0);
        const int x1 = int(random() % big), y1 = int(random() % big);
        const int x2 = int(random() % big), y2 = int(random() % big);
        whole->line(whole->gmask, x1, y1, x2, y2);
        part->line(part->gmask, x1 - margin, y1 - margin, x2 - margin, y2 - margin);
        int points = 0;
        for (int y = 0; y < big; ++y)
            for (int x = 0; x < big; ++x) {
                points += whole->maskAt(x, y) == 65535;
                const bool inside =
                    x >= margin && x < margin + small && y >= margin && y < margin + small;
                ASSERT_TRUE(!inside || whole->maskAt(x, y) == part->maskAt(x - margin, y - margin))
                    << x1 << ' ' << y1 << ' ' << x2 << ' ' << y2;
            }
        EXPECT_EQ(points, std::max(std::abs(x2 - x1), std::abs(y2 - y1)) + 1);
        EXPECT_EQ(whole->maskAt(x1, y1) & whole->maskAt(x2, y2), 65535);
    }
    const ImagePtr img = plainImage(9, 9, 0, 0, 0);
    img->line(img->gmask, -2147483647, -2147483647, 2147483647, 2147483647, 3);
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(img->maskAt(i, i), 3) << "the widest diagonal there is";
}

namespace
{
/// Repeated sweeps until nothing changes: slow, and no stack to get wrong.
void slowFill(image &img, int x, int y, uint16_t boundary, uint16_t replacement)
{
    const auto open = [&](int64_t i) {
        return img.gmask[i] != boundary && img.gmask[i] != replacement;
    };
    std::vector<char> reached(size_t(img.sampleCount()));
    reached[size_t(y) * img.width + x] = open(int64_t(y) * img.width + x);
    for (bool changed = true; changed;) {
        changed = false;
        for (int64_t i = 0; i < img.sampleCount(); ++i) {
            const int64_t column = i % img.width;
            const bool touched = (column > 0 && reached[i - 1]) ||
                                 (column < img.width - 1 && reached[i + 1]) ||
                                 (i >= img.width && reached[i - img.width]) ||
                                 (i + img.width < img.sampleCount() && reached[i + img.width]);
            if (touched && !reached[i] && open(i)) {
                reached[i] = 1;
                changed = true;
            }
        }
    }
    for (int64_t i = 0; i < img.sampleCount(); ++i)
        if (reached[i])
            img.gmask[i] = replacement;
}
} // namespace

TEST(Draw, FillReachesWhatASlowFloodReaches)
{
    RecordingWorkspace ws;
    std::mt19937 random(8);
    for (int round = 0; round < 60; ++round) {
        const int width = 1 + int(random() % 40), height = 1 + int(random() % 40);
        const ImagePtr fast = plainImage(width, height, 0, 0, 0);
        const uint32_t walls = round % 5;
        for (int64_t i = 0; i < fast->sampleCount(); ++i)
            fast->gmask[i] = random() % 8 < walls ? 65535 : uint16_t(random() % 3);
        const ImagePtr slow = plainImage(width, height, 0, 0, 0);
        slow->copyWorkPlanes(*fast);
        const int x = int(random() % width), y = int(random() % height);
        EXPECT_TRUE(fast->m4fill(x, y, 65535, 1));
        slowFill(*slow, x, y, 65535, 1);
        EXPECT_TRUE(samePlanes(*fast, *slow)) << round;
        EXPECT_FALSE(fast->m4fill(width, y, 65535, 1));
        EXPECT_FALSE(fast->m4fill(x, -1, 65535, 1));
    }
    const int64_t damaged = memRecord.overruns + memRecord.underruns;
    memSweep();
    EXPECT_EQ(memRecord.overruns + memRecord.underruns, damaged);
}

TEST(Draw, BoundsAgreeWithALookAtEverySample)
{
    RecordingWorkspace ws;
    std::mt19937 random(4);
    for (int round = 0; round < 200; ++round) {
        const int width = 1 + int(random() % 20), height = 1 + int(random() % 20);
        const ImagePtr img = plainImage(width, height, 0, 0, 0, 0);
        int left = width, top = height, right = 0, bottom = 0;
        for (uint32_t i = 0; i < random() % 4; ++i) {
            const int x = int(random() % width), y = int(random() % height);
            img->gmask[y * width + x] = 1;
            img->alpha[y * width + x] = 257 * 9;
            left = std::min(left, x);
            top = std::min(top, y);
            right = std::max(right, x);
            bottom = std::max(bottom, y);
        }
        int cx = 0, cy = 0;
        for (const Bounds &found : {img->maskBounds(&cx, &cy), img->alphaBoundsAbove(9)}) {
            EXPECT_EQ(found.left, left);
            EXPECT_EQ(found.top, top);
            EXPECT_EQ(found.right, right);
            EXPECT_EQ(found.bottom, bottom);
            EXPECT_EQ(found.width, right - left + 1);
            EXPECT_EQ(found.height, bottom - top + 1);
        }
        EXPECT_EQ(cx, left + (right - left + 1) / 2);
        EXPECT_EQ(cy, top + (bottom - top + 1) / 2);
        EXPECT_EQ(img->alphaBoundsAbove(10).left, width);
        EXPECT_EQ(img->alphaBoundsBelow(9).width, width);
    }
}

TEST(Draw, QuarterTurns)
{
    RecordingWorkspace ws;
    const int sizes[][2] = {{1, 1}, {2, 3}, {1, 9}, {8, 8}, {65, 7}, {150, 131}, {300, 257}};
    for (const auto &size : sizes) {
        const ImagePtr start = randomImage(size[0], size[1], 77),
                       img = randomImage(size[0], size[1], 77);
        EXPECT_TRUE(img->quarterTurn());
        ASSERT_EQ(img->width, start->height);
        ASSERT_EQ(img->height, start->width);
        for (int y = 0; y < start->height; ++y)
            for (int x = 0; x < start->width; ++x)
                for (int p = 0; p < 5; ++p)
                    ASSERT_EQ(img->workPlanes()[p][x * img->width + start->height - 1 - y],
                              start->workPlanes()[p][y * start->width + x]);
        undo(img.get());
        EXPECT_TRUE(samePlanes(*img, *start)) << "undone";
        for (int i = 0; i < 4; ++i)
            EXPECT_TRUE(img->quarterTurn());
        EXPECT_TRUE(samePlanes(*img, *start)) << "four are none";
    }
}

TEST(Draw, VerticalActivity)
{
    RecordingWorkspace ws;
    const ImagePtr img = plainImage(4, 3, 0, 0, 0);
    std::fill(img->green + 4, img->green + 8, 65535);
    EXPECT_DOUBLE_EQ(img->verticalActivity(0, false), 1.0);
    EXPECT_DOUBLE_EQ(img->verticalActivity(255, true), 1.0 / 3.0);
    EXPECT_EQ(img->verticalActivity(256, false), 0.0) << "below the threshold";
    EXPECT_EQ(plainImage(4, 1, 1, 2, 3)->verticalActivity(0, true), 0.0);
}
