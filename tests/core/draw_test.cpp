// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/fixture.h"
#include "core/undo.h"

#include <bit>
#include <cmath>

using Draw = WithWorkspace;

TEST_F(Draw, SamplesBetweenAndAtTheEdges)
{
    const ImagePtr img = plainImage(2, 2, 0, 0, 0);
    const uint16_t red[] = {100, 200, 300, 65535};
    std::copy(red, red + 4, img->red);
    const double right = (200 + 65535) / 2.0, below = (300 + 65535) / 2.0; // the edges repeat
    const double cases[][3] = {{0.25, 0.5, 0.75 * 200 + 0.25 * right},
                               {1.75, 0.5, right},
                               {0.5, 1.9, below},
                               {-0.5, 0.5, 0},
                               {2, 0, 0},
                               {0, 2, 0},
                               {std::nan(""), 0, 0},
                               {1e300, 0, 0}};
    for (const auto &[x, y, wanted] : cases)
        EXPECT_NEAR(img->sampleAt(x, y).red, wanted, 1e-9) << x << ' ' << y;
}

TEST_F(Draw, LinesAreClippedPointByPoint)
{
    constexpr int big = 90, small = 30, margin = 30;
    std::mt19937 random(21);
    for (int round = 0; round < 300; ++round) {
        const ImagePtr whole = plainImage(big, big, 0, 0, 0);
        const ImagePtr part = plainImage(small, small, 0, 0, 0);
        const int x1 = int(random() % big), y1 = int(random() % big);
        const int x2 = int(random() % big), y2 = int(random() % big);
        whole->line(whole->gmask, x1, y1, x2, y2);
        part->line(part->gmask, x1 - margin, y1 - margin, x2 - margin, y2 - margin);
        for (int i = 0; i < small * small; ++i)
            ASSERT_EQ(whole->maskAt(i % small + margin, i / small + margin), part->gmask[i]);
        EXPECT_EQ(std::count(whole->gmask, whole->gmask + big * big, 65535),
                  std::max(std::abs(x2 - x1), std::abs(y2 - y1)) + 1);
        EXPECT_EQ(whole->maskAt(x1, y1) & whole->maskAt(x2, y2), 65535);
    }
    const ImagePtr img = plainImage(9, 9, 0, 0, 0);
    img->line(img->gmask, -2147483647, -2147483647, 2147483647, 2147483647, 3);
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(img->maskAt(i, i), 3) << "the widest diagonal there is";
    img->line(img->gmask, 0, 7, 4, 8, 4);
    EXPECT_EQ(img->maskAt(1, 7) + img->maskAt(2, 8), 8) << "the error starts at one half";
}

namespace
{
/// Sample by sample in recursion: slow, and without a stack of its own to get wrong.
void slowFill(image &img, int x, int y, uint16_t boundary, uint16_t replacement)
{
    if (x < 0 || x >= img.width || y < 0 || y >= img.height)
        return;
    uint16_t &sample = img.gmask[y * img.width + x];
    if (sample == boundary || sample == replacement)
        return;
    sample = replacement;
    for (const auto &[dx, dy] : {std::pair{1, 0}, {-1, 0}, {0, 1}, {0, -1}})
        slowFill(img, x + dx, y + dy, boundary, replacement);
}
} // namespace

TEST_F(Draw, FillReachesWhatASlowFloodReaches)
{
    std::mt19937 random(8);
    const int64_t damaged = memRecord.overruns + memRecord.underruns;
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
    } // each image took its guards along
    EXPECT_EQ(memRecord.overruns + memRecord.underruns, damaged);
}

TEST_F(Draw, BoundsAgreeWithALookAtEverySample)
{
    using Numbers = std::array<int, 6>;
    std::mt19937 random(4);
    for (int round = 0; round < 200; ++round) {
        const int width = 1 + int(random() % 20), height = 1 + int(random() % 20);
        const ImagePtr img = plainImage(width, height, 0, 0, 0, 0);
        Numbers box = {width, height, 0, 0, 0, 0}; // in the order of Bounds
        for (uint32_t i = 0; i < random() % 4; ++i) {
            const int x = int(random() % width), y = int(random() % height);
            img->gmask[y * width + x] = 1;
            img->alpha[y * width + x] = 257 * 9;
            box = {std::min(box[0], x), std::min(box[1], y), std::max(box[2], x),
                   std::max(box[3], y)};
        }
        const int wide = box[4] = box[2] - box[0] + 1, high = box[5] = box[3] - box[1] + 1;
        int cx = 0, cy = 0;
        for (const Bounds &found : {img->maskBounds(&cx, &cy), img->alphaBoundsAbove(9)})
            EXPECT_EQ(std::bit_cast<Numbers>(found), box);
        EXPECT_EQ(std::pair(cx, cy), std::pair(box[0] + wide / 2, box[1] + high / 2));
        EXPECT_EQ(img->alphaBoundsAbove(10).left, width);
        EXPECT_EQ(img->alphaBoundsBelow(9).width, width);
    }
}

TEST_F(Draw, QuarterTurns)
{
    for (const auto &[width, height] :
         {std::pair{1, 1}, {2, 3}, {1, 9}, {8, 8}, {65, 7}, {150, 131}, {300, 257}}) {
        const ImagePtr start = randomImage(width, height, 77), img = randomImage(width, height, 77);
        EXPECT_TRUE(img->quarterTurn());
        ASSERT_EQ(img->width, height);
        for (int i = 0; i < width * height; ++i)
            for (size_t p = 0; p < 5; ++p)
                ASSERT_EQ(img->workPlanes()[p][i % width * height + height - 1 - i / width],
                          start->workPlanes()[p][i]);
        undo(img.get());
        EXPECT_TRUE(samePlanes(*img, *start)) << "undone";
        for (int turn = 0; turn < 4; ++turn)
            EXPECT_TRUE(img->quarterTurn());
        EXPECT_TRUE(samePlanes(*img, *start)) << "four are none";
    }
}

TEST_F(Draw, VerticalActivity)
{
    const ImagePtr img = plainImage(4, 3, 0, 0, 0);
    std::fill(img->green + 4, img->green + 8, 65535);
    EXPECT_DOUBLE_EQ(img->verticalActivity(0, false), 1.0);
    EXPECT_DOUBLE_EQ(img->verticalActivity(255, true), 1.0 / 3.0);
    EXPECT_EQ(img->verticalActivity(256, false), 0.0);
}
