// SPDX-License-Identifier: GPL-3.0-or-later
#include "layers/stack.h"

#include "core/fixture.h"
#include "core/undo.h"
#include "core/warpfield.h"
#include "layers/warp.h"

namespace
{
/// Records what a stack tells, and as what it was told.
class StackWorkspace : public RecordingWorkspace
{
public:
    void layersChanged(image *master) override { changed << master; }
    void closeWindowsOf(image *img) override
    {
        EXPECT_TRUE(img->valid() && img->discard);
        closed << img->name;
    }
    QList<image *> changed;
    QStringList closed;
};

QString order(const image *master)
{
    QStringList names;
    for (const image *layer : master->layers)
        names << layer->name;
    return names.join(QLatin1Char(' '));
}

/// A master in the workspace's list with the layers a, b and c, bottom first.
class Stacks : public testing::Test
{
protected:
    StackWorkspace ws;
    image *master = listed("m");
    image *a = listed("a"), *b = listed("b"), *c = listed("c");

    image *listed(const char *name, int width = 6, int height = 4)
    {
        image *img = randomImage(width, height, 7).release();
        img->name = QString::fromLatin1(name);
        ws.images << img;
        ws.giveSerial(img);
        return img;
    }
    void SetUp() override
    {
        EXPECT_TRUE(makeMaster(master));
        for (image *layer : {a, b, c})
            EXPECT_TRUE(addLayer(master, layer));
        settle();
    }
    void TearDown() override
    {
        // A stack owns its layers, and whatever it does not own is in the list.
        for (image *one : QList<image *>(ws.images)) {
            EXPECT_NE(one->kind, 2);
            ws.images.removeAll(one);
            destroyTree(&one);
        }
    }
    void settle()
    {
        master->changed = master->needsRebuild = false;
        ws.changed.clear();
        ws.refreshes = 0;
    }
    /// What every change of the stack must have done.
    void expectTold(const char *names)
    {
        EXPECT_EQ(order(master).toStdString(), names);
        EXPECT_TRUE(master->changed && master->needsRebuild);
        EXPECT_EQ(ws.changed, QList<image *>{master});
        EXPECT_GT(ws.refreshes, 0);
        for (image *layer : qAsConst(master->layers)) {
            EXPECT_TRUE(layer->kind == 2 && layer->master == master);
            EXPECT_FALSE(ws.images.contains(layer));
            EXPECT_EQ(layer->title, QStringLiteral("[%1][L%2/M%3] %4")
                                        .arg(layer->serial)
                                        .arg(layer->layerIndex())
                                        .arg(master->serial)
                                        .arg(layer->name));
        }
        settle();
    }
    void expectNothing(bool result)
    {
        EXPECT_FALSE(result);
        EXPECT_FALSE(master->changed || master->needsRebuild);
        EXPECT_TRUE(ws.changed.isEmpty());
    }
};
} // namespace

TEST_F(Stacks, LayersComeMoveAndAreTold)
{
    image *fresh = randomImage(3, 3, 1).release(); // of another size, no serial, not listed
    fresh->name = QStringLiteral("x");
    EXPECT_TRUE(insertBefore(a, fresh));
    expectTold("x a b c");
    EXPECT_NE(fresh->serial, 0);
    EXPECT_TRUE(insertAbove(a, listed("y")));
    expectTold("x a y b c");
    EXPECT_TRUE(moveLayer(fresh, 99));
    expectTold("a y b c x");
    EXPECT_TRUE(moveLayer(b, -1));
    expectTold("b a y c x");
    expectNothing(moveLayer(b, 0));
}

TEST_F(Stacks, OtherKindsAreRefused)
{
    image *other = listed("other");
    expectNothing(addLayer(master, a) || addLayer(master, master) || addLayer(other, other));
    expectNothing(insertBefore(other, other) || insertAbove(a, a) || insertAbove(master, other));
    expectNothing(makeMaster(a) || makeMaster(master) || moveLayer(other, 1));
    expectNothing(detachLayer(other) || destroyLayer(other) || destroyLayer(master));
    expectNothing(makeLayered(a) || createLayer(other) || cloneLayer(other) || flattened(a));
    expectNothing(flipImage(master, true) || createWarp(a, nullptr) || scaleWarp(a, 2));
    EXPECT_EQ(other->kind, 0);
    EXPECT_TRUE(ws.images.contains(other));
}

TEST_F(Stacks, DetachedLayersAreListedAgainAndDestroyedOnesAreGone)
{
    master->target = b;
    b->layerMode = kWarpMode;
    const int serial = b->serial;
    EXPECT_TRUE(detachLayer(b));
    expectTold("a c");
    EXPECT_EQ(master->target, nullptr);
    EXPECT_TRUE(b->kind == 0 && !b->master && b->changed && b->layerMode == 0);
    EXPECT_EQ(b->title, QStringLiteral("[%1] ex-warp").arg(serial));
    EXPECT_EQ(ws.images.last(), b);

    c->inUse = true;
    expectNothing(destroyLayer(c));
    c->inUse = false;
    ws.assignBrush(c);
    EXPECT_TRUE(destroyLayer(c));
    expectTold("a");
    EXPECT_EQ(ws.closed, QStringList{"c"});
    EXPECT_EQ(ws.brushImage, nullptr);

    expectNothing(destroyLayer(a) || detachLayer(a)); // the last one
}

TEST_F(Stacks, AMasterTakesThePlaceOfItsPicture)
{
    image *picture = listed("p", 5, 3), *after = listed("q");
    picture->fullPath = QStringLiteral("/tmp/p.png");
    picture->opacity = 0.25;
    picture->xOffset = 3;
    picture->author = QStringLiteral("someone");
    const int place = int(ws.images.indexOf(picture));
    image *top = makeLayered(picture);
    ASSERT_TRUE(top);
    EXPECT_EQ(ws.images.indexOf(top), place);
    EXPECT_EQ(ws.images.indexOf(after), place + 1);
    EXPECT_EQ(top->title, QStringLiteral("[%1][M] p: master").arg(top->serial));
    EXPECT_TRUE(top->fullPath.isEmpty() && top->changed && top->author == picture->author);
    EXPECT_EQ(picture->title,
              QStringLiteral("[%1][L1/M%2] p").arg(picture->serial).arg(top->serial));
    EXPECT_TRUE(picture->opacity == 1.0 && picture->xOffset == 0);
}

TEST_F(Stacks, NewAndClonedLayers)
{
    image *made = createLayer(master);
    ASSERT_TRUE(made);
    expectTold("a b c new layer");
    EXPECT_TRUE(made->width == 6 && made->height == 4 && made->red[5] == 65535 && !made->alpha[5]);
    b->layerMode = 5;
    b->opacity = 0.5;
    b->lockStep = true;
    b->xOffset = -7;
    b->imageMode = 1;
    b->notations << Notation();
    image *copy = cloneLayer(b);
    ASSERT_TRUE(copy);
    expectTold("a b b[clone] c new layer");
    EXPECT_TRUE(samePlanes(*copy, *b));
    EXPECT_TRUE(copy->layerMode == 5 && copy->opacity == 0.5 && copy->lockStep);
    EXPECT_TRUE(copy->xOffset == -7 && copy->imageMode == 1 && copy->notations.size() == 1);
    EXPECT_NE(copy->serial, b->serial);
    for (image *(*make)(image *) : {createLayer, cloneLayer}) {
        memFailAt(3);
        EXPECT_EQ(make(make == createLayer ? master : b), nullptr);
        memFailAt(0);
    }
    EXPECT_EQ(master->layers.size(), 5);
}

TEST_F(Stacks, AFlattenedPictureIsTheComposition)
{
    master->needsRebuild = true;
    master->annotation = QStringLiteral("note");
    const ImagePtr flat(flattened(master));
    ASSERT_TRUE(flat);
    EXPECT_FALSE(master->needsRebuild);
    EXPECT_TRUE(sameColors(*flat, *master));
    EXPECT_TRUE(flat->kind == 0 && flat->name == master->name && flat->annotation == "note");
}

TEST_F(Stacks, AFlipMovesEverySampleAndTwoAreNone)
{
    for (const bool horizontally : {true, false})
        for (const int mode : {0, int(kWarpMode)}) {
            image *layer = listed("flip", 5, 3); // the middle line stays where it is
            addLayer(master, layer);
            layer->layerMode = mode;
            layer->xCenter = 1;
            layer->notations << Notation();
            layer->notations[0].headY = INT32_MIN;
            // -32768 is the one displacement that has no opposite.
            for (uint16_t *plane : {layer->red, layer->blue})
                std::replace(plane, plane + 15, uint16_t(32768), uint16_t(5));
            const ImagePtr before(undoMakeCopy(layer, true));
            std::copy_n(layer->gmask, 15, before->gmask);
            settle();
            EXPECT_TRUE(flipImage(layer, horizontally));
            EXPECT_TRUE(master->needsRebuild && layer->changed && ws.refreshes);
            const int moved = horizontally ? 4 : 10; // where sample 0 went
            EXPECT_EQ(layer->gmask[moved], before->gmask[0]);
            const Displacement was = displacementAt(*before, 0);
            const Displacement is = displacementAt(*layer, moved);
            EXPECT_EQ(is.x, mode && horizontally ? -was.x : was.x);
            EXPECT_EQ(is.y, mode && !horizontally ? -was.y : was.y);
            EXPECT_EQ(layer->xCenter, horizontally ? 3 : 1);
            EXPECT_EQ(layer->notations[0].textX, horizontally ? 4 : 0);
            EXPECT_TRUE(flipImage(layer, horizontally));
            EXPECT_TRUE(samePlanes(*layer, *before));
            EXPECT_EQ(layer->undoList.size(), 2);
            EXPECT_EQ(layer->xCenter, 1);
        }
}

TEST_F(Stacks, WarpFieldsScaleTurnAndReset)
{
    image *warp = createWarp(master, a);
    ASSERT_TRUE(warp);
    expectTold("a warp b c");
    struct Case {
        const char *fault;
        Displacement before;
        double factor, degrees;
        Displacement after;
    };
    for (const Case &one : {
             Case{"fresh fields are still", {0, 0}, 3, 45, {0, 0}},
             Case{"counter-clockwise, y down", {2, 0}, 1, 90, {0, -2}},
             Case{"rounded down", {0, -3}, 1, -90, {3, 0}},
             Case{"fractions", {1.25, -0.5}, -2, 0, {-2.5, 1}},
             Case{"limits", {30000, -30000}, 2, 0, {32768 - 1 / 65536.0, -32768}},
         }) {
        for (int64_t i = 0; i < warp->sampleCount(); ++i)
            setDisplacement(warp, i, one.before);
        EXPECT_TRUE(scaleWarp(warp, one.factor) && rotateWarp(warp, one.degrees));
        const Displacement d = displacementAt(*warp, warp->sampleCount() - 1);
        EXPECT_TRUE(d.x == one.after.x && d.y == one.after.y) << one.fault << d.x << ' ' << d.y;
    }
    settle();
    expectNothing(scaleWarp(warp, NAN) || rotateWarp(warp, INFINITY) || resetWarp(b));
    EXPECT_TRUE(resetWarp(warp));
    EXPECT_TRUE(master->needsRebuild);
    EXPECT_EQ(displacementAt(*warp, 3).x, 0);
    undo(warp);
    EXPECT_NE(displacementAt(*warp, 3).x, 0);
}
