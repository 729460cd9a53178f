// SPDX-License-Identifier: GPL-3.0-or-later
#include "layers/effects.h"

#include "core/fixture.h"
#include "core/layermodes.h"

#include <cmath>

namespace
{
/// Transparent, with an opaque rectangle of a colour in it; x and y are of its first sample.
ImagePtr shapeAt(int x0, int y0, int width, int height, int imageWidth = 60, int imageHeight = 40)
{
    ImagePtr img = plainImage(imageWidth, imageHeight, 9000, 9000, 9000, 0);
    img->name = QStringLiteral("p");
    img->xOffset = 100;
    img->yOffset = -50;
    for (int y = y0; y < y0 + height; ++y)
        std::fill_n(img->alpha + y * imageWidth + x0, width, uint16_t(65535));
    return img;
}

/// A sample of a plane by its place in the stack, 0 outside.
int at(const image &img, const uint16_t *plane, int x, int y)
{
    x -= img.xOffset;
    y -= img.yOffset;
    return x >= 0 && y >= 0 && x < img.width && y < img.height ? plane[y * img.width + x] : 0;
}

/// Three box averages of the alpha at one place, longhand, `half` wide to each side.
double boxed(const image &img, int x, int y, const int *half, int boxes)
{
    if (boxes == 0)
        return at(img, img.alpha, x, y);
    const int h = half[boxes - 1];
    double sum = 0;
    for (int dy = -h; dy <= h; ++dy)
        for (int dx = -h; dx <= h; ++dx)
            sum += boxed(img, x + dx, y + dy, half, boxes - 1);
    return sum / ((2 * h + 1) * (2 * h + 1));
}

using Maker = image *(*)(const image &);
image *shadow(const image &layer)
{
    return makeShadow(layer, {});
}
image *glow(const image &layer)
{
    return makeGlow(layer, {});
}
image *emboss(const image &layer)
{
    return makeEmboss(layer, {});
}
image *punch(const image &layer)
{
    return makePunch(layer, {});
}

class Effects : public WithWorkspace
{
};
} // namespace

TEST_F(Effects, EachIsNamedPlacedAndMadeForItsMode)
{
    struct Case {
        Maker make;
        const char *name;
        int mode, growth, shift;
    };
    for (const Case &one : {Case{shadow, "p[shadow]", kMultiplyMode, 12, 12},
                            Case{glow, "p[glow]", kMultiplyMode, 24, 0},
                            Case{emboss, "p[emboss]", kAddGreyMode, 0, 0},
                            Case{punch, "p[punch]", kAddGreyMode, 4, 0}}) {
        SCOPED_TRACE(one.name);
        const ImagePtr layer = shapeAt(20, 10, 8, 6), empty = shapeAt(0, 0, 0, 0);
        const ImagePtr made(one.make(*layer)), nothing(one.make(*empty));
        ASSERT_TRUE(made && nothing);
        EXPECT_EQ(made->name, one.name);
        EXPECT_TRUE(made->kind == 0 && made->serial == 0 && made->layerMode == one.mode);
        EXPECT_EQ(made->width, 60 + 2 * one.growth);
        EXPECT_EQ(made->xOffset, 100 - one.growth + one.shift);
        EXPECT_EQ(made->yOffset, -50 - one.growth + one.shift);
        const auto isZero = [](uint16_t a) { return a == 0; };
        EXPECT_TRUE(std::all_of(nothing->alpha, nothing->alpha + nothing->sampleCount(), isZero));
        EXPECT_FALSE(std::all_of(made->alpha, made->alpha + made->sampleCount(), isZero));

        const int64_t blocks = memRecord.currentBlocks;
        memFailAt(4);
        EXPECT_EQ(one.make(*layer), nullptr);
        memFailAt(0);
        EXPECT_EQ(memRecord.currentBlocks, blocks);
    }
}

TEST_F(Effects, AShadowIsTheShapeBlurredByThreeBoxes)
{
    const ImagePtr layer = randomImage(11, 7, 3); // as large as the blur, with every edge
    for (const int radius : {0, 1, 2, 4, 5}) {
        const int half[] = {radius / 3, (radius + 1) / 3, (radius + 2) / 3};
        const ImagePtr made(makeShadow(*layer, {3, -2, radius, 0.5, 1, 2, 3}));
        ASSERT_TRUE(made);
        for (int y = -radius; y < 7 + radius; ++y)
            for (int x = -radius; x < 11 + radius; ++x)
                ASSERT_NEAR(at(*made, made->alpha, x + 3, y - 2), boxed(*layer, x, y, half, 3) / 2,
                            3)
                    << radius << ": " << x << ',' << y;
        EXPECT_TRUE(made->red[0] == 1 && made->green[5] == 2 && made->blue[9] == 3);
    }
}

TEST_F(Effects, AWideShadowReachesItsRadiusAndIsFullInside)
{
    // Wider than one block of columns, and tall enough to be shared between threads.
    const ImagePtr layer = shapeAt(100, 100, 500, 300, 700, 500);
    const ImagePtr made(makeShadow(*layer, {0, 0, 90, 1.0, 0, 0, 0}));
    ASSERT_TRUE(made);
    const auto alpha = [&](int x, int y) { return at(*made, made->alpha, x + 100, y - 50); };
    EXPECT_EQ(alpha(190, 190), 65535); // 90 inside of the corner
    EXPECT_LT(alpha(180, 250), 65535);
    EXPECT_NEAR(alpha(100, 250) + alpha(99, 250), 65535, 4); // half at the rim
    EXPECT_EQ(alpha(9, 250), 0);
    for (int x = 10; x < 190; ++x) {
        EXPECT_LE(alpha(x, 250), alpha(x + 1, 250));
        EXPECT_NEAR(alpha(x, 250), alpha(699 - x, 250), 4);
        EXPECT_NEAR(alpha(x, 250), alpha(350, x), 4); // down as across
    }
}

TEST_F(Effects, HugeImagesGrowOnlyAsFarAsTheyCan)
{
    const ImagePtr layer = plainImage(kMaxImageSide - 10, 3, 0, 0, 0);
    layer->xOffset = INT32_MIN;
    const ImagePtr made(makeShadow(*layer, {-9999, 9999, 9999, NAN, 0, 0, 0}));
    ASSERT_TRUE(made);
    EXPECT_EQ(made->width, kMaxImageSide);
    EXPECT_EQ(made->height, 13);
    EXPECT_EQ(made->xOffset, INT32_MIN);
    EXPECT_EQ(made->yOffset, 2000 - 5);
}

TEST_F(Effects, ReliefIsLitFromTheAngle)
{
    // A raised block of luma within an opaque layer, and a shape cut into what is below.
    const ImagePtr raised = plainImage(60, 40, 20000, 20000, 20000);
    const ImagePtr cut = shapeAt(20, 10, 20, 20);
    for (int i = 0; i < 2400; ++i)
        for (uint16_t *plane : {raised->red, raised->green, raised->blue})
            plane[i] = cut->alpha[i] ? 30000 : 20000;
    struct Case {
        double angle;
        int litX, litY, darkX, darkY; ///< places just outside of the block's rims
    };
    for (const Case &one :
         {Case{0, 41, 20, 18, 20}, Case{90, 30, 8, 30, 31}, Case{180, 18, 20, 41, 20},
          Case{-90, 30, 31, 30, 8}, Case{135, 18, 8, 41, 31}}) {
        const ImagePtr relief(makeEmboss(*raised, {one.angle, 3, 2.0}));
        const ImagePtr hole(makePunch(*cut, {one.angle, 3, 0.25}));
        ASSERT_TRUE(relief && hole);
        const auto grey = [](const ImagePtr &img, int x, int y, int dx, int dy) {
            return at(*img, img->green, x + dx, y + dy) - 32768;
        };
        EXPECT_EQ(grey(relief, one.litX, one.litY, 0, 0), 20000) << one.angle;
        EXPECT_EQ(grey(relief, one.darkX, one.darkY, 0, 0), -20000) << one.angle;
        EXPECT_EQ(grey(relief, 30, 20, 0, 0), 0);
        EXPECT_EQ(grey(hole, one.litX, one.litY, 100, -50), -16384) << one.angle;
        EXPECT_EQ(grey(hole, one.darkX, one.darkY, 100, -50), 16384) << one.angle;
        EXPECT_EQ(at(*hole, hole->alpha, one.litX + 100, one.litY - 50), 65535);
        EXPECT_EQ(at(*hole, hole->alpha, 30 + 100, 20 - 50), 65535);
        EXPECT_EQ(at(*hole, hole->alpha, 5 + 100, 5 - 50), 0);
    }
    // What transparency hides casts nothing.
    std::transform(raised->red, raised->red + 2400, raised->alpha,
                   [](uint16_t v) { return uint16_t(v == 30000 ? 65535 : 0); });
    const ImagePtr still(makeEmboss(*raised, {0, 3, 4.0}));
    for (int x = 20; x < 40; ++x)
        EXPECT_EQ(at(*still, still->red, x, 20), 32768);
}
