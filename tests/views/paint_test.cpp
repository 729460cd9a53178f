// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/colour.h"
#include "core/cpu.h"
#include "core/warpfield.h"
#include "views/testhost.h"
#include "views/viewrender.h"
#include "views/warprender.h"

#include <QtTest>

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace
{
/// The square of the checker in which a pixel lies, counted from image position 0.
int square(int pixel, int offset, double step, int pan, int cell)
{
    return int(std::floor((pixel - offset + std::floor(pan / step + 0.5)) / cell));
}

uint32_t referencePixel(const image &img, const ViewGeometry &view, const ViewBackdrop &backdrop,
                        int px, int py)
{
    const double x = (px - view.offsetX) * view.xStep + view.panX;
    const double y = (py - view.offsetY) * view.yStep + view.panY;
    if (x < 0 || y < 0 || x >= img.width || y >= img.height)
        return backdrop.surround;
    const int64_t at = int64_t(y) * img.width + int64_t(x);
    Rgb rgb = {double(img.red[at]), double(img.green[at]), double(img.blue[at])};
    if (img.imageMode == 1)
        rgb = yrbToRgb({rgb.red, rgb.green, rgb.blue});
    const int across = square(px, view.offsetX, view.xStep, view.panX, backdrop.cell);
    const int down = square(py, view.offsetY, view.yStep, view.panY, backdrop.cell);
    const bool light = backdrop.checker && (across & 1) != (down & 1);
    const uint64_t grey = uint64_t(light ? backdrop.light : backdrop.dark) * 257;
    const uint64_t alpha = img.alpha[at];
    const auto byte = [=](double sample) {
        return uint32_t((uint64_t(sample) * alpha + grey * (65535 - alpha)) / 65535 / 256);
    };
    return 0xFF000000U | byte(rgb.red) << 16 | byte(rgb.green) << 8 | byte(rgb.blue);
}

bool equalsReference(const image &img, const ViewGeometry &view, const ViewBackdrop &backdrop)
{
    QImage got;
    bool equal = renderView(img, view, backdrop, &got);
    for (int i = 0; equal && i < view.width * view.height; ++i) {
        const int x = i % view.width, y = i / view.width;
        equal = got.pixel(x, y) == referencePixel(img, view, backdrop, x, y);
    }
    return equal;
}
} // namespace

TEST(Render, EqualsTheReferenceAtEveryLevel)
{
    const struct {
        const char *fault;
        ViewGeometry view;
        ViewBackdrop backdrop = {};
        int imageMode = 0;
    } rows[] = {{"whole image", {307 / 640.0, 211 / 423.0, 0, 0, 640, 423}},
                {"reduced", {3.7, 2.9, 0, 0, 83, 73}},
                {"zoomed in", {0.11, 0.13, 20, 30, 301, 277}},
                {"past the edges", {1.3, 1.7, -60, -40, 333, 222}},
                {"set off", {0.8, 0.9, -3, 5, 400, 300, 37, 11}},
                {"nothing inside", {1, 1, 400, 300, 50, 40}},
                {"plain grey", {1, 1, 3, 5, 257, 128}, {false, 118, 138, 8}},
                {"other greys", {0.5, 0.5, 3, 5, 99, 77}, {true, 0, 255, 16}},
                {"yrb", {0.7, 0.9, 0, 0, 300, 200}, {}, 1}};
    TestHost host;
    const auto img = randomImage(307, 211, 11);
    for (KernelLevel level : {KernelLevel::Baseline, KernelLevel::Avx2, KernelLevel::Avx512}) {
        limitKernels(level); // the last one, which limits nothing, stays
        for (const auto &row : rows) {
            img->imageMode = row.imageMode;
            EXPECT_TRUE(equalsReference(*img, row.view, row.backdrop)) << row.fault << int(level);
        }
    }
}

TEST(Render, AScrolledViewEqualsAFullRendering)
{
    TestHost host;
    const auto img = randomImage(500, 400, 12);
    std::mt19937 random(6);
    const double scales[] = {1.0, 4.0, 0.5, 0.125, 1.001, 0.2503, 1.37};
    int scrolled[std::size(scales)] = {};
    for (int turn = 0; turn < 700; ++turn) {
        const size_t scale = turn % std::size(scales);
        const auto pan = [&](int most) { return int(random() % (2 * most + 1)) - most; };
        ViewGeometry view{scales[scale], scales[scale] * 1.0005, pan(300), pan(300), 160, 120};
        view.offsetX = turn % 3 * 7;
        const ViewGeometry before = view;
        const int unit = std::max(1, int(scales[scale]));
        view.panX += pan(turn % 50) * unit;
        view.panY += pan(turn % 20) * unit;
        img->imageMode = turn % 2;
        QImage moved, full;
        ASSERT_TRUE(renderView(*img, before, {}, &moved) && renderView(*img, view, {}, &full));
        if (!scrollView(*img, before, view, {}, &moved))
            continue;
        ++scrolled[scale];
        ASSERT_EQ(moved, full) << turn;
    }
    EXPECT_GT(*std::min_element(scrolled, scrolled + 6), 20); // the last is no whole pixels
    QImage other;
    ASSERT_TRUE(renderView(*img, {1, 1, 0, 0, 50, 40}, {}, &other));
    EXPECT_FALSE(scrollView(*img, {1, 1, 0, 0, 50, 40}, {2, 1, 0, 0, 50, 40}, {}, &other));
    EXPECT_FALSE(scrollView(*img, {1, 1, 0, 0, 60, 40}, {1, 1, 0, 0, 60, 40}, {}, &other));
}

TEST(Render, RefusesWhatCannotBeShown)
{
    TestHost host;
    const auto img = plainImage(4, 4, 0, 0, 0);
    QImage out;
    EXPECT_FALSE(renderView(*img, ViewGeometry{}, {}, &out));
    image empty;
    EXPECT_FALSE(renderView(empty, {1, 1, 0, 0, 9, 9}, {}, &out));
}

TEST(Render, WarpsShowWhereTheyFetchFrom)
{
    constexpr uint32_t surround = 0xFF010203;
    TestHost host;
    const auto field = plainImage(4 * kWarpSquare, 2 * kWarpSquare, 0, 0, 0, 0);
    const ViewGeometry view{1, 1, 0, 0, 4 * kWarpSquare + 5, 2 * kWarpSquare};
    QImage still, moved;
    ASSERT_TRUE(renderWarp(*field, view, surround, &still));
    const int middle = kWarpSquare / 2;
    EXPECT_NE(still.pixel(middle, middle), still.pixel(middle + kWarpSquare, middle));
    EXPECT_EQ(still.pixel(middle, middle), still.pixel(middle + 2 * kWarpSquare, middle));
    EXPECT_EQ(still.pixel(4 * kWarpSquare, 0), surround);
    for (int64_t i = 0; i < field->sampleCount(); ++i)
        setDisplacement(field.get(), i, {double(kWarpSquare), 0});
    ASSERT_TRUE(renderWarp(*field, view, surround, &moved));
    const auto green = [&](const QImage &of, int x) { return qGreen(of.pixel(x, middle)); };
    EXPECT_EQ(green(moved, middle), green(still, middle + kWarpSquare));
    EXPECT_GT(qRed(moved.pixel(middle, middle)), green(moved, middle)) << "tinted where it moves";
    EXPECT_FALSE(renderWarp(*field, {}, surround, &moved));
}

class Paint : public testing::Test
{
protected:
    TestHost host;
    image *img = host.keep(randomImage(64, 48, 3));
    imgWindow *window = host.show(img, {256, 192});
    int drawn() { return window->grab(), window->renderCount(); }
    QRgb shown(int x, int y) { return window->grab().toImage().pixel(x, y); }
};

TEST_F(Paint, CacheIsRenderedOnlyWhenTheViewOrImageChanges)
{
    const int first = drawn();
    EXPECT_EQ(drawn(), first);
    window->refreshOverlay();
    EXPECT_EQ(drawn(), first);
    QTest::mouseClick(window, Qt::LeftButton, {}, {20, 20});
    window->command(kCommandSelectEntire);
    window->command(kCommandGrid);
    EXPECT_EQ(drawn(), first);
    window->command(kCommandRight);
    window->command(kCommandUp);
    EXPECT_EQ(drawn(), first); // most of it was known
    EXPECT_EQ(window->scrollCount(), 1);
    QImage full;
    ASSERT_TRUE(renderView(*img, window->geometryShown(), {}, &full));
    EXPECT_EQ(window->cache, full);
    window->command(kCommandRight);
    img->fill(1, 1, 1, 65535);
    host.refreshViews(img); // a pan and a change: nothing is known
    EXPECT_EQ(drawn(), first + 1);
    window->resize(128, 96);
    EXPECT_EQ(drawn(), first + 2);
    window->command(kCommandChecker);
    EXPECT_EQ(drawn(), first + 3);
}

TEST_F(Paint, ShowsTheImageAndTheSelectionOverIt)
{
    const QRgb orange = qRgb(255, 128, 0);
    img->fill(65535, 32768, 0, 65535);
    window->command(kCommandSelectNone);
    host.refreshViews(img);
    EXPECT_EQ(shown(0, 100), orange);
    window->command(kCommandSelectEntire);
    EXPECT_NE(shown(0, 100), orange);
    EXPECT_EQ(shown(100, 100), orange);
}

TEST_F(Paint, GridNeedsLargeSamples)
{
    img->fill(32768, 32768, 32768, 65535);
    img->fillGmask(0);
    host.refreshViews(img);
    window->command(kCommandGrid); // 4 pixels a sample
    EXPECT_EQ(qGray(shown(32, 33)), 128);
    window->command(kCommandZoomIn); // 8 pixels a sample
    EXPECT_LT(qGray(shown(32, 33)), 128);
    window->command(kCommandGridColor);
    EXPECT_GT(qGray(shown(32, 33)), 128);
    window->command(kCommandGrid);
    EXPECT_EQ(qGray(shown(32, 33)), 128);
}
