// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/compose.h"

#include "core/composereference.h"
#include "core/composespan_inline.h"
#include "core/cpu.h"
#include "core/fixture.h"
#include "core/rows.h"

#include <bit>
#include <limits>
#include <random>
#include <set>
#include <sstream>

namespace
{
constexpr int kModes = 62;
constexpr int kMultiply = 5, kAlphaMask = 7, kAverage = 27, kMedian = 29;

using Four = std::array<int, 4>;

struct Layered {
    image *master;

    Layered(int width, int height) : master(plainImage(width, height, 0, 0, 0, 0).release())
    {
        master->kind = 1;
    }
    ~Layered() { destroyTree(&master); }
    Layered(const Layered &) = delete;
    Layered &operator=(const Layered &) = delete;

    image *add(int mode, ImagePtr made)
    {
        image *layer = made.release();
        layer->kind = 2;
        layer->master = master;
        layer->layerMode = mode;
        master->layers << layer;
        return layer;
    }
    image *add(int mode, const Four &rgba, int width, int height)
    {
        return add(mode, plainImage(width, height, uint16_t(rgba[0]), uint16_t(rgba[1]),
                                    uint16_t(rgba[2]), uint16_t(rgba[3])));
    }
    image *add(int mode, const Four &rgba)
    {
        return add(mode, rgba, master->width, master->height);
    }
    Four at(int x, int y) const
    {
        const int64_t i = int64_t(y) * master->width + x;
        return {master->red[i], master->green[i], master->blue[i], master->alpha[i]};
    }
    Four composedAt(int x, int y)
    {
        compose(master, false);
        return at(x, y);
    }
    std::vector<int> composedAlpha()
    {
        compose(master, false);
        return {master->alpha, master->alpha + master->sampleCount()};
    }
};

/// Makes stacks of which every rule has its share, repeatable from a seed.
class StackMaker
{
public:
    explicit StackMaker(uint32_t seed) : random(seed) {}

    std::unique_ptr<Layered> stack(int width, int height)
    {
        auto made = std::make_unique<Layered>(width, height);
        family = any();
        for (uint32_t count = 1 + any() % 7; count > 0; --count) {
            image *layer = made->add(mode(), picture(*made, any() % 2 ? width : side(width),
                                                     any() % 2 ? height : side(height)));
            if (layer->layerMode == kWarpMode)
                displace(layer);
            settings(layer);
            flags(layer);
        }
        return made;
    }

    /// An opaque base with one layer of a mode over it.
    std::unique_ptr<Layered> pair(int mode, int width, int height, uint32_t alphas, double opacity)
    {
        auto made = std::make_unique<Layered>(width, height);
        made->add(0, picture(*made, width, height, 2));
        image *over = made->add(mode, picture(*made, width, height, alphas));
        if (mode == kWarpMode)
            displace(over);
        settings(over);
        over->xOffset = over->yOffset = 0;
        over->opacity = opacity;
        // So that alpha below is not only full: a layer that mixes none leaves it
        // in view.
        made->add(kAlphaMask, picture(*made, (width + 1) / 2, height, 2));
        made->master->layers.move(2, 1);
        return made;
    }

private:
    uint32_t any() { return uint32_t(random()); }
    bool oneIn(uint32_t n) { return any() % n == 0; }
    double unit() { return any() / 4294967296.0; }
    template <size_t N>
    double oneOf(const double (&values)[N])
    {
        return values[any() % N];
    }
    int side(int of) { return 1 + int(any() % uint32_t(2 * of + 2)); }

    int mode()
    {
        constexpr int bound[] = {kAverage, kAverage, kMedian, kMedian, kWarpMode, 0};
        if (family % 3 == 0 && !oneIn(4)) // neighbours matter to these
            return bound[any() % 6];
        return oneIn(50) ? std::array{-1, kModes, 1 << 30}[any() % 3] : int(any() % kModes);
    }

    uint16_t corner()
    {
        return std::array<uint16_t, 7>{0, 1, 2, 32767, 32768, 65534, 65535}[any() % 7];
    }

    /// The next sample of a plane: 0 any, 1 corners, 2 both, 3 runs of the same
    /// value.
    uint16_t sample(uint32_t pattern, uint16_t last)
    {
        if (pattern == 3)
            return oneIn(40) ? corner() : oneIn(40) ? uint16_t(any()) : last;
        return pattern == 1 || (pattern == 2 && oneIn(2)) ? corner() : uint16_t(any());
    }

    /// alphas: 0 none, 1 full, 2 any and corners, 3 runs.
    ImagePtr picture(const Layered &stack, int width, int height, uint32_t alphas)
    {
        ImagePtr img = plainImage(width, height, 0, 0, 0, alphas == 1 ? 65535 : 0);
        const uint32_t values = any() % 4;
        const bool grey = oneIn(5), likeBelow = oneIn(4) && !stack.master->layers.isEmpty();
        for (int64_t i = 0; i < img->sampleCount(); ++i) {
            for (uint16_t *plane : {img->red, img->green, img->blue})
                plane[i] = sample(values, i > 0 ? plane[i - 1] : 0);
            if (alphas > 1)
                img->alpha[i] = sample(alphas, i > 0 ? img->alpha[i - 1] : 0);
            if (grey)
                img->green[i] = img->blue[i] = img->red[i];
            if (likeBelow && !oneIn(3)) {
                const image &below = *stack.master->layers.last();
                const int64_t from = i % below.sampleCount();
                img->red[i] = below.red[from];
                img->green[i] = below.green[from];
                img->blue[i] = below.blue[from];
            }
        }
        return img;
    }
    ImagePtr picture(const Layered &stack, int width, int height)
    {
        return picture(stack, width, height, any() % 4);
    }

    void displace(image *field)
    {
        for (int64_t i = 0; i < field->sampleCount(); ++i)
            if (!oneIn(8)) // else what the planes hold: mostly far outside
                setDisplacement(field, i,
                                {std::round(unit() * 12 - 6) + (oneIn(2) ? unit() : 0),
                                 std::round(unit() * 12 - 6) + (oneIn(2) ? unit() : 0)});
    }

    void settings(image *layer)
    {
        constexpr double nan = std::numeric_limits<double>::quiet_NaN();
        constexpr double infinity = std::numeric_limits<double>::infinity();
        layer->opacity = oneIn(3) ? unit() : oneOf({0.0, 0.5, 1.0, 1.0, 1.0});
        layer->factor = oneIn(3) ? unit() * 3 - 1 : oneOf({0.0, 0.1, 0.5, 1.0, 1.0, -1.0, 100.0});
        if (oneIn(60))
            layer->opacity = oneOf({nan, -1.0, 2.0, infinity});
        if (oneIn(60))
            layer->factor = oneOf({nan, infinity, -infinity});
        if (oneIn(2))
            layer->rotation =
                oneIn(2) ? unit() * 800 - 400 : oneOf({90.0, 180.0, -270.0, 1e9, nan});
        if (oneIn(3)) {
            layer->xFraction = oneIn(2) ? unit() * 2 - 1 : oneOf({0.5, 1.0, -3.0, 1e300, nan});
            layer->yFraction = unit() * 2 - 1;
        }
        if (oneIn(4))
            layer->xCenter = int(any() % 50) - 10;
        if (oneIn(2)) {
            layer->xOffset = int(any() % uint32_t(4 * layer->width)) - 2 * layer->width;
            layer->yOffset = int(any() % uint32_t(2 * layer->height)) - layer->height;
        }
        if (oneIn(60))
            layer->yOffset = oneIn(2) ? std::numeric_limits<int32_t>::max()
                                      : std::numeric_limits<int32_t>::min();
        layer->imageMode = oneIn(6);
    }

    void flags(image *layer)
    {
        layer->visible = !oneIn(6);
        layer->localStack = family % 2 == 0 ? oneIn(2) : oneIn(8);
        layer->lockStep = oneIn(4);
        layer->globalMask = oneIn(8);
    }

    std::mt19937 random;
    uint32_t family = 0;
};

/// Where the colour planes of two composed stacks differ; empty if they do not.
std::string difference(const Layered &expected, const Layered &found)
{
    const image &one = *expected.master, &other = *found.master;
    for (size_t p = 0; p < 4; ++p)
        for (int64_t i = 0; i < one.sampleCount(); ++i)
            if (one.colorPlanes()[p][i] != other.colorPlanes()[p][i]) {
                std::ostringstream text;
                text << "plane " << p << " at (" << i % one.width << ", " << i / one.width
                     << ") of " << one.width << " x " << one.height << ": expected "
                     << one.colorPlanes()[p][i] << ", found " << other.colorPlanes()[p][i];
                for (const image *l : one.layers)
                    text << "\n  mode " << l->layerMode << ' ' << l->width << " x " << l->height
                         << " at " << l->xOffset << ", " << l->yOffset
                         << (l->visible ? "" : " hidden") << (l->localStack ? " local" : "")
                         << (l->lockStep ? " lock" : "") << (l->globalMask ? " global" : "")
                         << " opacity " << l->opacity << " factor " << l->factor << " rotation "
                         << l->rotation << " fraction " << l->xFraction << ", " << l->yFraction
                         << " mode " << l->imageMode;
                return text.str();
            }
    return {};
}

/// Holds compose() against the reference at every kernel level.
template <class Make>
void expectLikeTheReference(Make make)
{
    const auto expected = make();
    referenceCompose(expected->master);
    const auto found = make();
    for (int level = int(supportedKernels()); level >= 0; --level) {
        limitKernels(KernelLevel(level));
        compose(found->master, false);
        ASSERT_EQ(difference(*expected, *found), "") << "kernel level " << level;
    }
    limitKernels(KernelLevel::Avx512);
}
} // namespace

class Compose : public WithWorkspace
{
protected:
    void TearDown() override
    {
        limitKernels(KernelLevel::Avx512);
        setRowThreads(0);
        memFailAt(0);
    }
};

/// Shortcuts of the kernels, held against the plain operations that they stand for.
TEST_F(Compose, QuickArithmeticEqualsThePlainOne)
{
    for (int a = 0; a <= 65535; ++a)
        ASSERT_EQ(composespan::shareOf<uint16_t>(double(a)), a / 65535.0) << a;
    std::mt19937 any(77);
    for (int i = 0; i < 1000000; ++i) {
        const double over = any() % 65536, under = any() % 65536;
        ASSERT_EQ(composemodes::WholeOverlay::value(over, under, 0.0),
                  composemodes::Overlay::value(over, under, 0.0))
            << over << " " << under;
    }
    constexpr int steps = 3, kinds = 2 * steps + 1;
    for (int level = int(supportedKernels()); level >= 0; --level) {
        limitKernels(KernelLevel(level));
        for (int m = 0; m <= 65535; ++m) {
            double squares[kinds];
            uint16_t roots[kinds];
            for (int i = 0; i < kinds; ++i) { // m * m and the doubles around it
                const int64_t bits = std::bit_cast<int64_t>(double(m) * m) + i - steps;
                squares[i] =
                    std::min(std::bit_cast<double>(std::max<int64_t>(bits, 0)), 65535.0 * 65535.0);
            }
            KERNEL_DISPATCH(truncatedRoots, squares, kinds, roots);
            for (int i = 0; i < kinds; ++i)
                ASSERT_EQ(roots[i], uint16_t(std::sqrt(squares[i])))
                    << m << " " << i << " " << level;
        }
    }
    limitKernels(supportedKernels());
}

TEST_F(Compose, ModesGiveTheNumbersWorkedOutByHand)
{
    const Four under = {10000, 20000, 40000, 65535}, over = {30000, 50000, 60000, 65535};
    const Four red = {65535, 0, 0, 65535}, blue = {0, 0, 65535, 65535};
    const Four white = {65535, 65535, 65535, 65535}, black = {0, 0, 0, 65535};
    const Four thin = {30000, 50000, 60000, 16384};
    const struct {
        int mode;
        Four under, over, expected;
        double opacity = 1.0, factor = 1.0;
    } cases[] = {
        {0, under, over, over},
        {0, under, over, {22360, 38078, 50990, 65535}, 0.5},
        {0, under, thin, {14142, 25739, 43011, 59391}, 0.5},
        {0, under, {30000, 50000, 60000, 0}, under},
        {1, under, over, {40000, 65535, 65535, 65535}},
        {2, under, over, {20000, 30000, 20000, 65535}},
        {3, under, {3000, 50000, 60000, 65535}, {7000, 0, 0, 65535}},
        {4, under, over, {7232, 37232, 65535, 65535}},
        {5, under, over, {4577, 15259, 36621, 65535}},
        {8, {10000, 0, 40000, 65535}, {30000, 50000, 0, 65535}, {40000, 0, 40000, 65535}},
        {9, under, {65535, 60000, 20000, 65535}, {10000, 14465, 0, 65535}},
        {11, under, over, over},
        {12, under, over, under},
        {13, under, over, {46666, 46666, 46666, 65535}},
        {16, under, over, {10000, 50000, 40000, 65535}},
        {18, under, over, {55000, 20000, 40000, 65535}},
        {21, under, over, {56666, 65535, 65535, 65535}},
        {22, under, over, {17366, 34732, 65535, 65535}},
        {22,
         {50000, 60000, 65000, 65535},
         {10000, 40000, 40000, 65535},
         {48566, 59489, 64950, 65535}},
        {23, under, over, {35422, 54740, 63378, 65535}},
        {24, under, over, {10000, 20000, 40000, 46666}},
        {25, under, over, {10000, 20000, 40000, 65535}, 1.0, 0.5},
        {26, under, over, {10000, 20000, 40000, 0}, 1.0, 0.5},
        {26, under, over, {10000, 20000, 40000, 65535}, 1.0, 0.7},
        {28, under, over, under},
        {30, red, blue, blue},
        {31, red, black, white},
        {33, red, white, {65535, 39321, 0, 65535}},
        {33, red, black, {65535, 0, 39321, 65535}},
        {34, red, black, white},
        {35, red, black, black},
        {36, under, over, {9155, 30518, 63378, 65535}},
        {38, under, over, {15422, 24740, 43378, 65535}},
        {39, under, over, {9155, 30518, 65535, 65535}},
        {40, under, over, {11922, 13285, 46010, 65535}},
        {42, under, {30000, 10000, 60000, 65535}, {30000, 20000, 60000, 65535}},
        {43, under, {30000, 10000, 60000, 65535}, {10000, 10000, 40000, 65535}},
        {45, under, {255, 65535, 0, 0}, {65519, 45535, 65535, 65535}, 0.25},
        {48, under, {10000, 65535, 0, 0}, {0, 45535, 40000, 65535}, 0.25},
        {50, under, over, {13845, 6570, 52020, 65535}, 1.0, 0.5},
        {51, red, {65535, 65535, 0, 65535}, blue},
        {54, under, over, {12768, 2768, 12768, 65535}},
        {55, under, {30000, 50000, 60000, 0}, {22360, 38078, 50990, 65535}, 0.5},
        {55, under, white, under},
        {58, under, over, over, 0.5},
        {58, under, {32768, 40000, 50000, 9}, white},
        {60, under, over, {10000, 20000, 40000, 0}},
        {61, under, under, {10000, 20000, 40000, 0}},
    };
    for (const auto &one : cases) {
        Layered stack(3, 2);
        stack.add(0, one.under);
        image *layer = stack.add(one.mode, one.over);
        layer->opacity = one.opacity;
        layer->factor = one.factor;
        EXPECT_EQ(stack.composedAt(2, 1), one.expected) << "mode " << one.mode;
    }
}

TEST_F(Compose, WhereAlphaIsLow)
{
    Layered stack(1, 1); // its alpha comes from a mask
    stack.add(0, {10000, 20000, 40000, 65535});
    image *mask = stack.add(kAlphaMask, {0, 0, 0, 32768});
    mask->factor = 0.5;
    EXPECT_EQ(stack.composedAt(0, 0), (Four{10000, 20000, 40000, 16384}));

    image *behind = stack.add(37, {30000, 50000, 60000, 65535});
    behind->opacity = 0.5;
    EXPECT_EQ(stack.composedAt(0, 0), (Four{26457, 44440, 55677, 28671}));

    behind->layerMode = 10; // "InvMask" times a factor beyond the range
    behind->alpha[0] = 30000;
    behind->factor = 2.0;
    EXPECT_EQ(stack.composedAt(0, 0), (Four{10000, 20000, 40000, 65535}));
}

TEST_F(Compose, MasksAndLockStepsKeepToTheirRectangles)
{
    Layered stack(3, 2);
    stack.add(0, {1, 2, 3, 65535})->lockStep = true;
    image *mask = stack.add(kAlphaMask, {0, 0, 0, 500}, 1, 1);
    mask->xOffset = 1;
    EXPECT_EQ(stack.composedAlpha(), (std::vector{65535, 500, 65535, 65535, 65535, 65535}));
    mask->globalMask = true;
    EXPECT_EQ(stack.composedAlpha(), (std::vector{0, 500, 0, 0, 0, 0}));

    stack.master->layers[0]->yOffset = 1; // moves the mask along
    EXPECT_EQ(stack.composedAlpha(), (std::vector{0, 0, 0, 0, 500, 0}));
    mask->opacity = 0.0; // clears all the same
    EXPECT_EQ(stack.composedAlpha(), (std::vector{0, 0, 0, 0, 65535, 0}));
    mask->lockStep = true;
    image *top = stack.add(0, {9, 9, 9, 65535}, 1, 1);
    top->xOffset = 1;
    EXPECT_EQ(stack.composedAlpha(), (std::vector{0, 0, 0, 0, 65535, 65535}));
    mask->lockStep = false; // and the run is broken
    EXPECT_EQ(stack.composedAlpha(), (std::vector{0, 65535, 0, 0, 65535, 0}));
}

TEST_F(Compose, OnlySomeModesTurnAndCircuitLayersStayInRegister)
{
    Layered stack(3, 3);
    stack.add(0, {0, 0, 0, 65535});
    image *layer = stack.add(0, {0, 0, 0, 65535});
    layer->red[2] = 40000; // the upper right corner
    layer->rotation = 90;
    EXPECT_EQ(stack.composedAt(2, 0)[0], 40000);
    layer->layerMode = 2; // AbsSub. over black shows the layer itself
    EXPECT_EQ(stack.composedAt(2, 0)[0], 0);
    EXPECT_NEAR(stack.at(2, 2)[0], 40000, 1);

    layer->layerMode = 55;
    layer->xOffset = layer->yOffset = 1;
    layer->xFraction = 0.5;
    stack.master->layers[0]->lockStep = true;
    stack.master->layers[0]->xOffset = -1;
    EXPECT_EQ(stack.composedAt(2, 0)[0], 40000);
    EXPECT_EQ(layer->xOffset + layer->yOffset, 0);
    EXPECT_EQ(layer->xFraction, 0.0);
}

TEST_F(Compose, AveragesRunsAndTakesMedians)
{
    Layered stack(2, 1);
    stack.add(0, {0, 0, 0, 30000});
    image *first = stack.add(kAverage, {100, 0, 0, 65535});
    image *hidden = stack.add(kAverage, {60000, 60000, 60000, 65535});
    hidden->visible = false;
    image *second = stack.add(kAverage, {200, 0, 900, 0});
    second->opacity = 0.0; // counts, being visible
    image *third = stack.add(kAverage, {600, 3, 0, 65535});
    EXPECT_EQ(stack.composedAt(0, 0), (Four{300, 1, 300, 13733}));
    second->width = 1; // counts where it does not reach as well
    EXPECT_EQ(stack.composedAt(1, 0), (Four{233, 1, 0, 13733}));
    second->width = 2;
    third->opacity = 0.0; // drops the sum
    EXPECT_EQ(stack.composedAt(0, 0), (Four{0, 0, 0, 13733}));

    for (image *layer : {first, hidden, second, third})
        layer->layerMode = kMedian;
    third->opacity = 1.0; // the middle one by mean is the first: 33, 366, 201
    EXPECT_EQ(stack.composedAt(0, 0), (Four{600, 3, 0, 65535}));
    third->visible = false;
    second->opacity = 1.0; // of two the mean: 150, 0, 450 and alpha 32767.5
    EXPECT_EQ(stack.composedAt(0, 0), (Four{127, 0, 318, 49151}));
    second->visible = false;
    first->xFraction = 50; // covers nothing: its own sample
    EXPECT_EQ(stack.composedAt(0, 0), (Four{100, 0, 0, 65535}));
}

TEST_F(Compose, WarpsWhatLiesBeneath)
{
    Layered stack(4, 1);
    image *below = stack.add(0, {0, 0, 0, 65535});
    for (int x = 0; x < 4; ++x)
        below->red[x] = uint16_t(1000 * x);
    image *field = stack.add(kWarpMode, {0, 0, 0, 0}, 2, 1);
    field->xOffset = 1;
    setDisplacement(field, 0, {1.5, 0.0});
    setDisplacement(field, 1, {2.0, 0.0}); // from outside: kept
    compose(stack.master, false);
    EXPECT_EQ((std::vector<int>{stack.master->red, stack.master->red + 4}),
              (std::vector{0, 2500, 2000, 3000}));
    field->opacity = 0.0;
    EXPECT_EQ(stack.composedAt(1, 0)[0], 1000);
}

TEST_F(Compose, LocalStacksComposeOnTheirBase)
{
    Layered stack(3, 1);
    stack.add(0, {65535, 65535, 65535, 65535});
    image *base = stack.add(kMultiply, {65535, 65535, 65535, 65535}, 2, 1);
    base->xOffset = 1;
    base->visible = false; // carries its group all the same
    image *member = stack.add(0, {30000, 30000, 30000, 65535}, 3, 1);
    member->localStack = true;
    member->xOffset = 1;
    const auto reds = [&] {
        compose(stack.master, false);
        return std::vector<int>{stack.master->red, stack.master->red + 3};
    };
    EXPECT_EQ(reds(), (std::vector{65535, 65535, 30000}));
    base->opacity = 0.0;
    EXPECT_EQ(reds(), (std::vector{65535, 65535, 65535}));
    delete stack.master->layers.takeFirst(); // the first layer cannot be a base
    EXPECT_EQ(reds(), (std::vector{0, 30000, 30000}));
}

TEST_F(Compose, TakesMastersAndLayersAndLeavesTheRestAlone)
{
    compose(nullptr, true);
    const ImagePtr atomic = randomImage(3, 3, 1), before = randomImage(3, 3, 1);
    compose(atomic.get(), true);
    EXPECT_TRUE(samePlanes(*atomic, *before));
    EXPECT_EQ(ws.refreshes, 0);

    Layered stack(3, 3);
    stack.master->fillGmask(7);
    stack.master->fill(1, 2, 3, 4);
    EXPECT_EQ(stack.composedAt(1, 1), (Four{0, 0, 0, 0}));
    image *layer = stack.add(0, randomImage(3, 3, 2));
    std::fill_n(layer->alpha, 9, uint16_t(65535));
    stack.master->needsRebuild = true;
    compose(layer, true);
    EXPECT_TRUE(sameColors(*stack.master, *layer));
    EXPECT_FALSE(stack.master->needsRebuild);
    EXPECT_EQ(ws.refreshes, 1);
    EXPECT_EQ(stack.master->layers, QList<image *>{layer});
    EXPECT_EQ(stack.master->gmask[4], 7);

    layer->imageMode = 1;
    const Rgb rgb =
        yrbToRgb({double(layer->red[0]), double(layer->green[0]), double(layer->blue[0])});
    EXPECT_EQ(stack.composedAt(0, 0), (Four{int(rgb.red), int(rgb.green), int(rgb.blue), 65535}));
}

TEST_F(Compose, EachModeEqualsTheReference)
{
    uint32_t seed = 0;
    for (int mode = 0; mode < kModes; ++mode)
        for (uint32_t alphas = 0; alphas < 4; ++alphas)
            for (const double opacity : {1.0, 0.5, 0.37, 0.0}) {
                const int width = seed % 4 == 0 ? 1061 : 67, height = seed % 4 == 0 ? 1 : 13;
                ++seed;
                SCOPED_TRACE(testing::Message() << "mode " << mode << ", seed " << seed);
                ASSERT_NO_FATAL_FAILURE(expectLikeTheReference(
                    [&] { return StackMaker(seed).pair(mode, width, height, alphas, opacity); }));
            }
}

TEST_F(Compose, StacksOfEveryKindEqualTheReference)
{
    const struct {
        int width, height, stacks;
    } sizes[] = {{1, 1, 300}, {7, 5, 2500}, {37, 23, 600}, {130, 9, 350}, {531, 7, 120}};
    for (const auto &size : sizes)
        for (int seed = 1; seed <= size.stacks; ++seed) {
            SCOPED_TRACE(testing::Message() << "seed " << seed);
            ASSERT_NO_FATAL_FAILURE(expectLikeTheReference(
                [&] { return StackMaker(uint32_t(seed)).stack(size.width, size.height); }));
        }
}

TEST_F(Compose, RowsInParallelGiveTheSame)
{
    for (int threads = 1; threads <= 2; ++threads) {
        setRowThreads(threads);
        for (uint32_t seed = 1; seed <= 12; ++seed) {
            SCOPED_TRACE(testing::Message() << threads << " threads, seed " << seed);
            ASSERT_NO_FATAL_FAILURE(
                expectLikeTheReference([&] { return StackMaker(seed).stack(531, 64); }));
        }
    }
}

TEST_F(Compose, GoesOnWithoutTheTemporariesThatMemoryRefuses)
{
    Layered stack(9, 9);
    stack.add(0, randomImage(9, 9, 1));
    stack.add(0, randomImage(9, 9, 2));
    stack.add(0, randomImage(9, 9, 3))->localStack = true;
    stack.add(kWarpMode, randomImage(9, 9, 4));
    stack.add(kAverage, randomImage(9, 9, 5));
    stack.add(kMedian, randomImage(9, 9, 6));
    stack.add(0, {1, 2, 3, 65535});
    const int64_t blocks = memRecord.currentBlocks;
    const std::set<Four> allowed = {{7, 7, 7, 7}, {1, 2, 3, 65535}}; // nothing, or to the end
    for (int n = 1; n <= 30; ++n) {
        stack.master->fill(7, 7, 7, 7);
        memFailAt(n);
        compose(stack.master, false);
        memFailAt(0);
        EXPECT_EQ(allowed.count(stack.at(4, 4)), 1U) << n;
        EXPECT_EQ(stack.master->layers.size(), 7);
        EXPECT_EQ(memRecord.currentBlocks, blocks);
    }
}
