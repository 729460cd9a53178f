// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/filters.h"
#include "core/image.h"
#include "core/memory.h"
#include "core/scale.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <set>

namespace
{
QString label(const uint16_t *plane)
{
    QString text;
    memGetInfo(&text, plane, -1);
    return text;
}

struct SizeCase {
    const char *fault;
    int width, height, widthMade, heightMade;
};
class ImageSize : public testing::TestWithParam<SizeCase>
{
};

/// A master named "top" with `count` layers, all without windows.
image *smallStack(int count)
{
    auto *top = new image;
    top->allocate(2, 2, QStringLiteral("top"));
    top->kind = 1;
    for (int i = 0; i < count; ++i) {
        auto *layer = new image;
        layer->allocate(2, 2, QStringLiteral("layer"));
        layer->kind = 2;
        layer->master = top;
        top->layers << layer;
    }
    return top;
}

class WindowCounter : public RecordingWorkspace
{
public:
    void closeWindowsOf(image *) override { ++closed; }
    int closed = 0;
};
} // namespace

TEST_P(ImageSize, IsTruncatedToSixteenBits)
{
    const SizeCase &size = GetParam();
    RecordingWorkspace ws;
    const int64_t blocks = memRecord.currentBlocks;
    image img;
    EXPECT_EQ(img.allocate(size.width, size.height, QString()), size.widthMade > 0);
    EXPECT_EQ(img.width, size.widthMade);
    EXPECT_EQ(img.height, size.heightMade);
    EXPECT_EQ(img.valid(), size.widthMade > 0);
    EXPECT_EQ(memRecord.currentBlocks - blocks, size.widthMade > 0 ? 7 : 0);
    EXPECT_EQ(memSize(img.red), (img.sampleCount() + 2 * img.width) * 2);
}

INSTANTIATE_TEST_SUITE_P(
    Sizes, ImageSize,
    testing::Values(SizeCase{"Smallest", 1, 1, 1, 1}, SizeCase{"Tallest", 1, 32767, 1, 32767},
                    SizeCase{"TooWide", 32768, 1, 0, 0}, SizeCase{"WrapsToZero", 3, 65536, 0, 0},
                    SizeCase{"WrapsToSmall", 65537, 2, 1, 2}, SizeCase{"Negative", -3, 4, 0, 0}),
    [](const auto &each) { return each.param.fault; });

TEST(Image, FreshAndLightweightOnes)
{
    RecordingWorkspace ws;
    image img;
    ASSERT_TRUE(img.allocate(5, 3, QStringLiteral("pic")));
    EXPECT_TRUE(label(img.alpha).contains(QLatin1String("alpha channel: pic -- 50 (25 x 2)")));
    EXPECT_TRUE(label(img.mask2).contains(QLatin1String("mask 2 channel: pic")));
    for (int i = 0; i < 15; ++i) {
        EXPECT_EQ(img.red[i], 36863);
        EXPECT_EQ(img.blue[i], 36863);
        EXPECT_EQ(img.alpha[i], 65535);
        EXPECT_EQ(img.gmask[i], 0);
    }
    EXPECT_EQ(img.red[15] | img.red[24], 0) << "the spare rows";
    EXPECT_EQ(img.colorCount24(), 1);
    EXPECT_EQ(img.xCenter, 2);
    EXPECT_EQ(img.iso, 1.0);

    image light;
    light.lightweight = true;
    light.serial = 7;
    ASSERT_TRUE(light.allocate(5, 3, QString()));
    EXPECT_EQ(light.name, QLatin1String("New Image 7"));
    EXPECT_EQ(light.red[0], 0);
    EXPECT_EQ(light.iso, 0.0);
    light.fillGmask(9);
    light.saveMask(); // there is nowhere to save it
    light.fillGmask(4);
    light.restoreMask();
    EXPECT_EQ(light.maskAt(4, 2), 4);
    EXPECT_FALSE(light.maskBackupValid);
    img.fillGmask(9);
    img.saveMask();
    img.invertMask();
    EXPECT_EQ(img.maskAt(0, 0), 65526);
    img.restoreMask();
    EXPECT_EQ(img.maskAt(0, 0), 9);
    EXPECT_EQ(img.maskAt(5, 0), 0);
}

TEST(Image, DefaultsComeFromTheWorkspace)
{
    {
        RecordingWorkspace ws;
        ws.maxUndos = 3;
        ws.xDpi = 72;
        ws.mainAuthor = QStringLiteral("A");
        const image img;
        EXPECT_EQ(img.undoLevels, 3);
        EXPECT_EQ(img.dpiAspect(), 72.0 / 300.0);
        EXPECT_EQ(img.author, QLatin1String("A"));
        EXPECT_TRUE(QRegExp(QStringLiteral("\\d{8}:\\d{6} UTC")).exactMatch(img.creationTime));
    }
    image alone; // before any workspace there are the stated defaults
    EXPECT_EQ(alone.undoLevels, 10);
    EXPECT_EQ(alone.yDpi, 300);
    EXPECT_TRUE(alone.allocate(2, 2, QString()));
}

TEST(Image, EndsItsAssignmentsAndItsTree)
{
    WindowCounter ws;
    const int64_t blocks = memRecord.currentBlocks;
    image *top = smallStack(3);
    ws.assignBrush(top);
    ws.assignOrigin(top->layers[1]);
    destroyTree(&top);
    EXPECT_EQ(top, nullptr);
    EXPECT_EQ(ws.brushImage, nullptr);
    EXPECT_EQ(ws.originImage, nullptr);
    EXPECT_EQ(memRecord.currentBlocks, blocks);

    for (const bool closing : {false, true}) {
        image *stack = smallStack(2);
        ws.images << stack;
        discardMasterAndLayers(stack->layers[0], closing);
        EXPECT_EQ(ws.closed, closing ? 3 : 0);
        EXPECT_TRUE(ws.images.isEmpty());
        EXPECT_EQ(memRecord.currentBlocks, blocks);
    }
}

TEST(Image, StandingAmongOthers)
{
    RecordingWorkspace ws;
    image *top = smallStack(3);
    ws.images << top << new image;
    image *low = top->layers[0], *high = top->layers[2];
    top->serial = 4;
    low->serial = 6;
    low->rebuildTitle();
    top->rebuildTitle();
    EXPECT_EQ(low->title, QLatin1String("[6][L3/M4] layer"));
    EXPECT_EQ(top->title, QLatin1String("[4][M] top"));
    EXPECT_EQ(high->layerIndex(), 1);
    EXPECT_EQ(top->layerIndex(), -1);
    EXPECT_EQ(findAnotherMaster(nullptr), top);
    EXPECT_EQ(findAnotherMaster(top), nullptr);
    EXPECT_EQ(countAtomicImages(), 1);

    high->changed = true;
    EXPECT_FALSE(low->layeredChanged());
    high->viewCount = 1;
    EXPECT_TRUE(low->layeredChanged());
    high->viewCount = 2;
    EXPECT_FALSE(top->layeredChanged());
    top->changed = true;
    EXPECT_TRUE(low->layeredChanged());
    ws.images[1]->changed = true;
    EXPECT_FALSE(ws.images[1]->layeredChanged());
    EXPECT_TRUE(ws.images[1]->hasUnsavedChanges());

    low->markMasterForRebuild();
    EXPECT_TRUE(top->needsRebuild);
    EXPECT_EQ(ws.refreshes, 1);
    top->layers << low; // a second place in the list: the one nearer to the top counts
    EXPECT_EQ(low->layerIndex(), 1);
    top->removeLayer(low);
    EXPECT_EQ(low->layerIndex(), -1);
    delete low;
    ws.images.removeAll(top);
    destroyTree(&top);
}

TEST(Image, NotationsScaleAndRound)
{
    image from, to;
    Notation note;
    note.textX = 5;
    note.headY = 7;
    note.tailY = -3;
    note.points << QPoint(3, 3);
    note.text = QStringLiteral("n");
    from.notations << note;
    to.copyNotations(from, 10, 10, 15, 25);
    EXPECT_EQ(to.notations[0].textX, 8);
    EXPECT_EQ(to.notations[0].headY, 18);
    EXPECT_EQ(to.notations[0].tailY, qRound(-7.5));
    EXPECT_EQ(to.notations[0].points[0], QPoint(5, 8));
    EXPECT_EQ(from.notations[0].points[0], QPoint(3, 3)) << "a deep copy";
    to.copyNotations(from, 10, 10, 10, 20);
    EXPECT_EQ(to.notations[0].points[0], QPoint(3, 6));
}

TEST(Image, QImagesThereAndBack)
{
    RecordingWorkspace ws;
    QImage picture(67, 41, QImage::Format_ARGB32);
    std::mt19937 random(3);
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            picture.setPixel(x, y, random());
    picture.setPixel(0, 0, qRgba(128, 255, 0, 1));
    const ImagePtr img(imgFromQImage(picture));
    ASSERT_TRUE(img);
    EXPECT_EQ(img->name, QLatin1String("imgFromQImage()"));
    EXPECT_EQ(img->red[0], 32896);
    EXPECT_EQ(img->green[0], 65535);
    EXPECT_EQ(img->alpha[0], 257);
    EXPECT_EQ(img->toQImage(), picture);
    EXPECT_EQ(imgFromQImage(QImage()), nullptr);
    EXPECT_EQ(imgFromQImage(QImage(65600, 1, QImage::Format_Mono)), nullptr)
        << "64 samples wide after truncation";
}

TEST(Image, CountsColors)
{
    RecordingWorkspace ws;
    const ImagePtr img = randomImage(120, 90, 11);
    std::set<uint64_t> coarse, fine;
    for (int64_t i = 0; i < img->sampleCount(); ++i) {
        img->green[i] = uint16_t(img->green[i] & 0x0303);
        img->blue[i] = uint16_t(img->red[i] & 1);
        coarse.insert(uint64_t(img->red[i] >> 8) << 8 | img->green[i] >> 8);
        fine.insert(uint64_t(img->red[i]) << 32 | uint64_t(img->green[i]) << 16 | img->blue[i]);
    }
    EXPECT_EQ(img->colorCount24(), int64_t(coarse.size()));
    EXPECT_EQ(img->colorCount48(), int64_t(fine.size()));
}

// --- Memory short at every single allocation ---------------------------------------------

struct ShortCase {
    const char *name;
    std::function<bool(image &)> act; ///< true once nothing was refused
};
class MemoryShort : public testing::TestWithParam<ShortCase>
{
};

TEST_P(MemoryShort, LeavesNoLeakAndThePictureAlone)
{
    RecordingWorkspace ws;
    const ImagePtr before = randomImage(23, 17, 5), img = randomImage(23, 17, 5);
    img->noUndo = true;
    const int64_t blocks = memRecord.currentBlocks;
    bool done = false;
    for (int n = 1; n < 60 && !done; ++n) {
        EXPECT_TRUE(samePlanes(*before, *img)) << "allocation " << n - 1;
        memFailAt(n);
        done = GetParam().act(*img);
        memFailAt(0);
        EXPECT_EQ(memRecord.currentBlocks, blocks) << "allocation " << n;
    }
    EXPECT_TRUE(done);
}

namespace
{
bool keptAndDeleted(image *made)
{
    const bool done = made != nullptr;
    delete made;
    return done;
}

bool smartReduced(image &img)
{
    image target;
    return target.allocate(2, 2, QString()) && smartReduce(&img, &target);
}

bool fitted(image &img)
{
    image target;
    return target.allocate(9, 40, QString()) && scaleBilinear(&img, &target, true);
}
} // namespace

INSTANTIATE_TEST_SUITE_P(
    Acts, MemoryShort,
    testing::Values(
        ShortCase{"Allocate", [](image &) { return image().allocate(4, 4, QString()); }},
        ShortCase{"QuarterTurn", [](image &img) { return img.quarterTurn(); }},
        ShortCase{"Fill", [](image &img) { return img.m4fill(3, 3, 1, 2); }},
        ShortCase{"ColorCount", [](image &img) { return img.colorCount48() > 0; }},
        ShortCase{"FromQImage",
                  [](image &) {
                      QImage blank(3, 3, QImage::Format_RGB32);
                      blank.fill(0);
                      return keptAndDeleted(imgFromQImage(blank));
                  }},
        ShortCase{"Reduce", [](image &img) { return keptAndDeleted(reduce(&img, 5, 5)); }},
        ShortCase{"SmartReduce", smartReduced}, ShortCase{"FitInto", fitted},
        ShortCase{"Minimum", [](image &img) { return minimumFilter(&img, NeighbourKey::Luma); }},
        ShortCase{"Convolve",
                  [](image &img) {
                      return convolveChannel(&img, img.red, {{0, 0, 0, 0, 2, 0, 0, 0, 0}});
                  }},
        ShortCase{"Rip", [](image &img) { return ripChannelDouble(&img, img.red, 9); }}),
    [](const auto &each) { return each.param.name; });
