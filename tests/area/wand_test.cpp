// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/wand.h"

#include "area/areatools.h"
#include "area/outline.h"
#include "core/cpu.h"
#include "core/memory.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace
{
using Words = std::vector<uint16_t>;

struct Click {
    int x, y, tolerance;
    bool globally, skipTransparent;
};

/// A picture of two or three colours in patches that hang together or hardly do.
ImagePtr maze(int width, int height, std::mt19937 &random)
{
    auto img = plainImage(width, height, 20000, 20000, 20000);
    const unsigned share = 2 + random() % 5;
    for (int64_t i = 0; i < img->sampleCount(); ++i) {
        if (random() % share == 0)
            img->colorPlanes()[random() % 3][i] = uint16_t(random() % 3 * 30000);
        if (random() % 9 == 0)
            img->alpha[i] = uint16_t(random() % 2);
    }
    return img;
}

/// Sample by sample, with a stack of places.
Words plainWand(const image &img, const Click &click)
{
    const int width = img.width, clicked = click.y * width + click.x;
    const bool connected = click.tolerance > 0 && !click.globally;
    const double reach =
        65535 * (connected ? (click.tolerance - 1) / 99.0 : click.tolerance / 100.0);
    const auto qualifies = [&](int at) {
        bool within = !click.skipTransparent || img.alpha[at] > 0;
        for (int c = 0; c < 3; ++c) {
            const uint16_t *plane = img.colorPlanes()[size_t(c)];
            within = within && plane[at] >= int(std::max(plane[clicked] - reach, 0.0)) &&
                     plane[at] <= int(std::min(plane[clicked] + reach, 65535.0));
        }
        return within;
    };
    Words mask(size_t(img.sampleCount()), 0);
    if (click.skipTransparent && img.alpha[clicked] == 0)
        return mask;
    std::vector<int> stack = {clicked};
    if (!connected)
        for (int at = 0; at < int(mask.size()); ++at)
            stack.push_back(at);
    while (!stack.empty()) {
        const int at = stack.back(), x = at % width;
        stack.pop_back();
        if (mask[size_t(at)] || !qualifies(at))
            continue;
        mask[size_t(at)] = 65535;
        if (!connected)
            continue;
        if (x > 0)
            stack.push_back(at - 1);
        if (x < width - 1)
            stack.push_back(at + 1);
        if (at >= width)
            stack.push_back(at - width);
        if (at + width < int(mask.size()))
            stack.push_back(at + width);
    }
    return mask;
}

/// Whether `is` holds of one of the neighbours; `outside` stands for those that are not there.
template <class Is>
bool anyNeighbour(const image &img, int x, int y, bool eightWay, bool outside, Is is)
{
    for (int dy = -1; dy <= 1; ++dy)
        for (int dx = -1; dx <= 1; ++dx) {
            const int px = x + dx, py = y + dy;
            if ((dx == 0 && dy == 0) || (dx != 0 && dy != 0 && !eightWay))
                continue;
            const bool inside = px >= 0 && py >= 0 && px < img.width && py < img.height;
            if (inside ? is(py * img.width + px) : outside)
                return true;
        }
    return false;
}

Words plainOutline(const image &img, const Workspace &space)
{
    const Words before(img.gmask, img.gmask + img.sampleCount());
    Words after = space.outlineExpand && !space.edgeOnly ? before : Words(before.size(), 0);
    const int threshold = space.outlinethresh * 257;
    for (int y = 0; y < img.height; ++y)
        for (int x = 0; x < img.width; ++x) {
            const int at = y * img.width + x;
            const bool edge = space.outlineExpand
                                  ? anyNeighbour(img, x, y, space.outline8w, true,
                                                 [&](int n) { return before[size_t(n)] == 0; })
                                  : img.alpha[at] < threshold &&
                                        anyNeighbour(img, x, y, space.outline8w, false, [&](int n) {
                                            return img.alpha[n] > threshold;
                                        });
            if (edge && before[size_t(at)])
                after[size_t(at)] = 65535;
        }
    return after;
}
} // namespace

TEST(Wand, TakesWhatAPlainFloodTakes)
{
    std::mt19937 random(11);
    memSweep();
    const int64_t broken = memRecord.overruns + memRecord.underruns;
    const KernelLevel levels[] = {KernelLevel::Baseline, KernelLevel::Avx2, KernelLevel::Avx512};
    const int tolerances[] = {0, 1, 2, 10, 31, 46, 99, 100};
    for (int i = 0; i < 4000; ++i) {
        const bool wide = i % 100 == 0; // as wide as several cells and threads
        const int width = 1 + int(random() % (wide ? 700U : 90U)), height = 1 + int(random() % 60);
        const auto img = maze(width, height, random);
        const Click click = {int(random() % unsigned(width)), int(random() % unsigned(height)),
                             tolerances[random() % 8], random() % 4 == 0, random() % 2 == 0};
        limitKernels(levels[i % 3]);
        std::fill_n(img->gmask, img->sampleCount(), uint16_t(4711));
        ASSERT_TRUE(wandMask(*img, click.x, click.y, click.tolerance, click.globally,
                             click.skipTransparent, img->gmask));
        ASSERT_EQ(Words(img->gmask, img->gmask + img->sampleCount()), plainWand(*img, click))
            << i << ": " << width << ' ' << height;
        memSweep();
    }
    limitKernels(KernelLevel::Avx512);
    EXPECT_EQ(memRecord.overruns + memRecord.underruns, broken);
}

TEST(Wand, FollowsTheSettingsAndLeavesTheRestAlone)
{
    RecordingWorkspace space;
    auto img = plainImage(8, 4, 100, 100, 100);
    for (int y = 0; y < 4; ++y)
        img->red[y * 8 + 4] = 60000; // a wall
    img->fillGmask(7);
    for (const auto &[x, y] : {std::pair(-1, 0), std::pair(8, 0), std::pair(0, 4)})
        EXPECT_FALSE(wandSelect(img.get(), x, y, 10));
    EXPECT_EQ(img->maskAt(0, 0), 7);
    space.mainOpIndex = kOpCenterSelection;
    ASSERT_TRUE(wandSelect(img.get(), 6, 1, 1));
    EXPECT_EQ(img->maskAt(0, 0), 0);
    EXPECT_EQ(img->xCenter, 6);
    space.globalPick = true;
    ASSERT_TRUE(wandSelect(img.get(), 6, 1, 1));
    EXPECT_EQ(img->maskAt(0, 0), 65535);
    space.maskWithTargetAlpha = true;
    img->alpha[14] = 0;
    ASSERT_TRUE(wandSelect(img.get(), 6, 1, 1));
    EXPECT_FALSE(img->anyMaskSet());
    EXPECT_EQ(wandStatus(12, false), QStringLiteral("Magic Wand: 12"));
    EXPECT_EQ(wandStatus(0, false), QStringLiteral("Magic Wand: <b>global pick</b>"));
}

TEST(Wand, TheStackStaysWithinItsBound)
{
    const auto img = plainImage(3, 5000, 1, 1, 1);
    const int64_t bytes = memRecord.peakBytes = memRecord.currentBytes;
    ASSERT_TRUE(wandMask(*img, 1, 1, 50, false, false, img->gmask));
    EXPECT_EQ(std::count(img->gmask, img->gmask + 15000, 65535), 15000);
    // Two bit planes, a byte for each cell and the stack.
    EXPECT_LE(memRecord.peakBytes - bytes, 5000 * 17 + (2 * 3 + 2 * 15000) * 2);
}

TEST(Outline, OfAlphaAndOfTheSelection)
{
    std::mt19937 random(5);
    RecordingWorkspace space;
    int marked = 0;
    for (int i = 0; i < 1000; ++i) {
        const int width = 1 + int(random() % 30), height = 1 + int(random() % 30);
        const auto img = plainImage(width, height, 0, 0, 0);
        const unsigned share = 1 + random() % 12;
        space.outlinethresh = int(random() % 256);
        for (int64_t at = 0; at < img->sampleCount(); ++at) {
            img->gmask[at] = random() % share ? uint16_t(random()) : 0;
            img->alpha[at] = random() % share ? uint16_t(random()) : uint16_t(128 * 257);
        }
        space.outlineExpand = random() % 2;
        space.outline8w = random() % 2;
        space.edgeOnly = random() % 2;
        const Words before(img->gmask, img->gmask + img->sampleCount());
        Words wanted = plainOutline(*img, space);
        const bool nothing = !space.outlineExpand && wanted == Words(wanted.size(), 0);
        EXPECT_EQ(outlineSelect(img.get()), nothing ? OutlineResult::Nothing : OutlineResult::Done);
        ASSERT_EQ(Words(img->gmask, img->gmask + img->sampleCount()), nothing ? before : wanted);
        marked += !nothing;
    }
    EXPECT_GT(marked, 500);
}
