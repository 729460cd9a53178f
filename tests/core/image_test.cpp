// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/filters.h"
#include "core/fixture.h"
#include "core/scale.h"

#include <functional>
#include <set>

using Image = WithWorkspace;

namespace
{
class WindowCounter : public RecordingWorkspace
{
public:
    void closeWindowsOf(image *) override { ++closed; }
    int closed = 0;
};
} // namespace

TEST_F(Image, SizeIsTruncatedToSixteenBits)
{
    const int cases[][4] = {// wanted and made; some wrap
                            {1, 32767, 1, 32767},
                            {32768, 1, 0, 0},
                            {3, 65536, 0, 0},
                            {65537, 2, 1, 2},
                            {-3, 4, 0, 0}};
    const int64_t blocks = memRecord.currentBlocks;
    for (const auto &[width, height, widthMade, heightMade] : cases) {
        SCOPED_TRACE(width);
        image img;
        EXPECT_EQ(img.allocate(width, height, QString()), widthMade > 0);
        EXPECT_EQ(std::pair(img.width, img.height), std::pair(widthMade, heightMade));
        EXPECT_EQ(memRecord.currentBlocks - blocks, img.valid() ? 7 : 0);
        EXPECT_EQ(memSize(img.red), (img.sampleCount() + 2 * img.width) * 2);
    }
}

TEST(ImageAlone, FreshAndLightweightOnes)
{
    const image alone; // before any workspace there are the stated defaults
    EXPECT_EQ(alone.undoLevels + alone.yDpi, 310);
    RecordingWorkspace ws;
    ws.xDpi = 72;
    ws.mainAuthor = QStringLiteral("A");
    image img, light;
    EXPECT_EQ(img.dpiAspect(), 72.0 / 300.0);
    EXPECT_EQ(img.author, "A");
    EXPECT_TRUE(QRegExp("\\d{8}:\\d{6} UTC").exactMatch(img.creationTime));
    ASSERT_TRUE(img.allocate(5, 3, QStringLiteral("pic")));
    const std::array<uint16_t, 5> fresh = {36863, 36863, 36863, 65535, 0};
    for (size_t p = 0; p < 5; ++p) {
        EXPECT_EQ(std::count(img.workPlanes()[p], img.workPlanes()[p] + 15, fresh[p]), 15);
        EXPECT_EQ(std::count(img.workPlanes()[p] + 15, img.workPlanes()[p] + 25, 0), 10);
    }
    QString label;
    memGetInfo(&label, img.mask2, -1);
    EXPECT_TRUE(label.contains(QLatin1String("mask 2 channel: pic -- 50 (25 x 2)")));
    EXPECT_EQ(img.xCenter, 2);

    light.lightweight = true;
    light.serial = 7;
    ASSERT_TRUE(light.allocate(5, 3, QString()));
    EXPECT_EQ(light.name, QLatin1String("New Image 7"));
    EXPECT_EQ(light.red[0], 0);
    for (image *one : {&img, &light}) {
        EXPECT_FALSE(one->anyMaskSet());
        one->gmask[14] = 1;
        EXPECT_TRUE(one->anyMaskSet());
        one->fillGmask(9);
        one->saveMask(); // a lightweight one has nowhere to save it
        one->invertMask();
        EXPECT_EQ(one->maskAt(4, 2), 65526);
        one->restoreMask();
        EXPECT_EQ(one->maskAt(4, 2), one == &img ? 9 : 65526);
        EXPECT_EQ(one->maskAt(5, 0), 0);
    }
}

TEST(ImageTree, EndsWhole)
{
    WindowCounter ws;
    const int64_t blocks = memRecord.currentBlocks;
    for (const bool closing : {false, true}) {
        Stack stack;
        ws.images << stack.add(0)->master;
        discardMasterAndLayers(stack.add(0), closing);
        stack.master = nullptr;
        EXPECT_EQ(ws.closed, closing ? 3 : 0);
        EXPECT_TRUE(ws.images.isEmpty());
    }
    EXPECT_EQ(memRecord.currentBlocks, blocks);
}

TEST_F(Image, StandingAmongOthers)
{
    Stack stack;
    image atomic, *const top = stack.master;
    image *const low = stack.add(0), *const high = stack.add(0);
    ws.images << top << &atomic;
    top->serial = 4;
    low->serial = 6;
    for (image *one : {top, low})
        one->rebuildTitle();
    EXPECT_EQ(low->title, QLatin1String("[6][L2/M4] plain"));
    EXPECT_EQ(top->title, QLatin1String("[4][M] plain"));
    EXPECT_EQ(findAnotherMaster(nullptr), top);
    EXPECT_EQ(findAnotherMaster(top), nullptr);
    EXPECT_EQ(countAtomicImages(), 1);

    high->changed = atomic.changed = true;
    for (const int views : {0, 1, 2}) { // a layer counts if it has exactly one
        high->viewCount = views;
        EXPECT_EQ(low->layeredChanged(), views == 1);
    }
    top->changed = true;
    EXPECT_TRUE(low->layeredChanged());
    EXPECT_TRUE(atomic.hasUnsavedChanges() && !atomic.layeredChanged());

    low->markMasterForRebuild();
    EXPECT_TRUE(top->needsRebuild);
    EXPECT_EQ(ws.refreshes, 1);
    top->layers << low; // a second place in the list: the one nearer to the top counts
    EXPECT_EQ(low->layerIndex(), 1);
    top->removeLayer(low);
    EXPECT_EQ(low->layerIndex(), -1);
    delete low;
    ws.images.removeAll(&atomic);
}

TEST_F(Image, NotationsScaleAndRound)
{
    image from, to;
    Notation given;
    given.textX = 5;
    given.tailY = -3;
    given.headY = 7;
    given.points << QPoint(3, 3);
    from.notations << given;
    to.copyNotations(from, 10, 10, 15, 25);
    const Notation &note = to.notations[0];
    EXPECT_EQ((std::array{note.textX, note.tailY, note.headY}), (std::array{8, qRound(-7.5), 18}));
    EXPECT_EQ(note.points[0], QPoint(5, 8));
    EXPECT_EQ(from.notations[0].points[0], QPoint(3, 3)) << "a deep copy";
}

TEST_F(Image, QImagesThereAndBackAndColors)
{
    QImage picture = randomImage(67, 41, 3)->toQImage();
    picture.setPixel(0, 0, qRgba(128, 255, 0, 1));
    const ImagePtr img(imgFromQImage(picture));
    EXPECT_EQ(img->name, QLatin1String("imgFromQImage()"));
    EXPECT_EQ(img->red[0], 32896);
    EXPECT_EQ(img->green[0], 65535);
    EXPECT_EQ(img->alpha[0], 257);
    EXPECT_EQ(img->toQImage(), picture);
    EXPECT_EQ(imgFromQImage(QImage()), nullptr);
    EXPECT_EQ(imgFromQImage(QImage(65600, 1, QImage::Format_Mono)), nullptr) << "would be cut off";

    std::set<std::array<int, 3>> coarse, fine;
    for (int64_t i = 0; i < img->sampleCount(); ++i) {
        const int red = img->red[i], green = img->green[i] = uint16_t(i % 7 * 100);
        const int blue = img->blue[i] = uint16_t(red & 1);
        coarse.insert({red >> 8, green >> 8, blue >> 8});
        fine.insert({red, green, blue});
    }
    EXPECT_EQ(img->colorCount24(), int64_t(coarse.size()));
    EXPECT_EQ(img->colorCount48(), int64_t(fine.size()));
}

TEST_F(Image, MemoryShortAnywhereLeaksNothingAndLeavesThePicture)
{
    /// Each is true once nothing was refused.
    const std::function<bool(image *)> acts[] = {
        [](image *) { return image().allocate(4, 4, QString()); },
        [](image *img) { return img->quarterTurn(); },
        [](image *img) { return img->m4fill(3, 3, 1, 2); },
        [](image *img) { return img->colorCount48() > 0; },
        [](image *img) { return ImagePtr(imgFromQImage(img->toQImage())) != nullptr; },
        [](image *img) { return ImagePtr(reduce(img, 5, 5)) != nullptr; },
        [](image *img) { return smartReduce(img, plainImage(2, 2, 0, 0, 0).get()); },
        [](image *img) { return scaleBilinear(img, plainImage(9, 40, 0, 0, 0).get(), true); },
        [](image *img) { return minimumFilter(img, NeighbourKey::Luma); },
        [](image *img) {
            return convolveChannel(img, img->red, {{0, 0, 0, 0, 2}});
        },
        [](image *img) { return ripChannelDouble(img, img->red, 9); },
    };
    for (size_t act = 0; act < std::size(acts); ++act) {
        const ImagePtr before = randomImage(23, 17, 5), img = randomImage(23, 17, 5);
        img->noUndo = true;
        const int64_t blocks = memRecord.currentBlocks;
        bool done = false;
        for (int n = 1; n < 60 && !done; ++n) {
            SCOPED_TRACE(testing::Message() << "act " << act << ", allocation " << n);
            EXPECT_TRUE(samePlanes(*before, *img));
            memFailAt(n);
            done = acts[act](img.get());
            memFailAt(0);
            EXPECT_EQ(memRecord.currentBlocks, blocks);
        }
        EXPECT_TRUE(done) << "act " << act;
    }
}
