// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/colour.h"
#include "core/cpu.h"
#include "core/rows.h"
#include "views/testhost.h"
#include "views/viewrender.h"

#include <QtTest>

#include <gtest/gtest.h>

#include <random>

namespace
{
uint32_t referencePixel(const image &img, const ViewGeometry &view, const ViewBackdrop &backdrop,
                        int px, int py)
{
    const double x = px * view.xStep + view.panX, y = py * view.yStep + view.panY;
    if (x < 0 || y < 0 || x >= img.width || y >= img.height)
        return backdrop.surround;
    const int64_t at = int64_t(y) * img.width + int64_t(x);
    Rgb rgb = {double(img.red[at]), double(img.green[at]), double(img.blue[at])};
    if (img.imageMode == 1)
        rgb = yrbToRgb({rgb.red, rgb.green, rgb.blue});
    const bool light = backdrop.checker && ((px / backdrop.cell) & 1) != ((py / backdrop.cell) & 1);
    const uint64_t grey = uint64_t(light ? backdrop.light : backdrop.dark) * 257;
    const uint64_t alpha = img.alpha[at];
    const auto byte = [=](double sample) {
        return uint32_t((uint64_t(sample) * alpha + grey * (65535 - alpha)) / 65535 / 256);
    };
    return 0xFF000000U | byte(rgb.red) << 16 | byte(rgb.green) << 8 | byte(rgb.blue);
}

std::string firstDifference(const image &img, const ViewGeometry &view,
                            const ViewBackdrop &backdrop, const QImage &got)
{
    for (int y = 0; y < view.height; ++y)
        for (int x = 0; x < view.width; ++x)
            if (got.pixel(x, y) != referencePixel(img, view, backdrop, x, y))
                return "at " + std::to_string(x) + ", " + std::to_string(y);
    return {};
}
} // namespace

struct RenderCase {
    const char *fault;
    ViewGeometry view;
    ViewBackdrop backdrop;
    int imageMode;
};
class Render : public testing::TestWithParam<RenderCase>
{
};

TEST_P(Render, EqualsTheReferenceAtEveryLevel)
{
    TestHost host;
    const RenderCase &row = GetParam();
    const auto img = randomImage(307, 211, 11);
    img->imageMode = row.imageMode;
    for (KernelLevel level : {KernelLevel::Baseline, KernelLevel::Avx2, KernelLevel::Avx512}) {
        limitKernels(level);
        QImage out;
        ASSERT_TRUE(renderView(*img, row.view, row.backdrop, &out));
        EXPECT_EQ(firstDifference(*img, row.view, row.backdrop, out), "") << int(level);
    }
    limitKernels(KernelLevel::Avx512);
}
INSTANTIATE_TEST_SUITE_P(
    Views, Render,
    testing::Values(RenderCase{"WholeImage", {307 / 640.0, 211 / 423.0, 0, 0, 640, 423}, {}, 0},
                    RenderCase{"Reduced", {3.7, 2.9, 0, 0, 83, 73}, {}, 0},
                    RenderCase{"ZoomedIn", {0.11, 0.13, 20, 30, 301, 277}, {}, 0},
                    RenderCase{"PastTheEdges", {1.3, 1.7, -60, -40, 333, 222}, {}, 0},
                    RenderCase{"NothingInside", {1, 1, 400, 300, 50, 40}, {}, 0},
                    RenderCase{"PlainGrey", {1, 1, 3, 5, 257, 128}, {false, 118, 138, 8}, 0},
                    RenderCase{"OtherGreys", {0.5, 0.5, 3, 5, 99, 77}, {true, 0, 255, 16}, 0},
                    RenderCase{"Yrb", {0.7, 0.9, 0, 0, 300, 200}, {}, 1}),
    [](const auto &test) { return test.param.fault; });

TEST(Render, RefusesWhatCannotBeShown)
{
    TestHost host;
    const auto img = plainImage(4, 4, 0, 0, 0);
    QImage out;
    EXPECT_FALSE(renderView(*img, ViewGeometry{}, {}, &out));
    image empty;
    EXPECT_FALSE(renderView(empty, {1, 1, 0, 0, 9, 9}, {}, &out));
    EXPECT_FALSE(maskOutline(empty, {1, 1, 0, 0, 9, 9}, 4, &out));
}

struct OutlineCase {
    const char *fault;
    ViewGeometry view;
    uint32_t clearOf; ///< one in so many samples is not selected, 0 for none
};
class Outline : public testing::TestWithParam<OutlineCase>
{
};

TEST_P(Outline, SurroundsTheSelectionAndNothingElse)
{
    TestHost host;
    const auto img = plainImage(60, 50, 0, 0, 0);
    const OutlineCase &row = GetParam();
    const ViewGeometry &view = row.view;
    std::mt19937 random(5);
    img->fillGmask(9);
    for (int64_t i = 0; row.clearOf && i < img->sampleCount(); ++i)
        img->gmask[i] = random() % row.clearOf ? 65535 : 0;
    const auto selected = [&](int px, int py) {
        const double x = px * view.xStep + view.panX, y = py * view.yStep + view.panY;
        return x >= 0 && y >= 0 && img->maskAt(int(x), int(y)) != 0;
    };
    QImage outline;
    ASSERT_TRUE(maskOutline(*img, view, 4, &outline));
    int wrong = 0;
    for (int y = 0; y < view.height; ++y)
        for (int x = 0; x < view.width; ++x) {
            const bool edge = selected(x, y) && !(selected(x - 1, y) && selected(x + 1, y) &&
                                                  selected(x, y - 1) && selected(x, y + 1));
            wrong += edge != (qAlpha(outline.pixel(x, y)) != 0);
        }
    EXPECT_EQ(wrong, 0);
    img->fillGmask(0);
    EXPECT_FALSE(maskOutline(*img, view, 4, &outline));
}
INSTANTIATE_TEST_SUITE_P(
    Selections, Outline,
    testing::Values(OutlineCase{"Ragged", {0.4, 0.6, -3, 7, 200, 90}, 4},
                    OutlineCase{"RowsOfOnePiece", {0.4, 0.6, -3, 7, 200, 90}, 80},
                    OutlineCase{"WholeAtItsEdges", {0.6, 0.5, 0, 0, 100, 100}, 0},
                    OutlineCase{"WholeWithin", {0.3, 0.5, -9, -9, 250, 150}, 0},
                    OutlineCase{"OneColumn", {100, 0.5, 0, 0, 1, 100}, 0}),
    [](const auto &test) { return test.param.fault; });

class Paint : public testing::Test
{
protected:
    TestHost host;
    image *img = host.keep(randomImage(64, 48, 3));
    imgWindow *window = host.show(img, {256, 192});
    int drawn()
    {
        window->grab();
        return window->renderCount();
    }
};

TEST_F(Paint, CacheIsRenderedOnlyWhenTheViewOrImageChanges)
{
    const int first = drawn();
    EXPECT_EQ(drawn(), first);
    window->refreshOverlay();
    EXPECT_EQ(drawn(), first);
    QTest::mousePress(window, Qt::LeftButton, {}, {20, 20});
    QTest::mouseMove(window, {40, 30});
    QTest::mouseRelease(window, Qt::LeftButton, {}, {40, 30});
    window->command(kCommandSelectEntire);
    window->command(kCommandGrid);
    EXPECT_EQ(drawn(), first);
    window->command(kCommandRight);
    EXPECT_EQ(drawn(), first + 1);
    host.refreshViews(img);
    EXPECT_EQ(drawn(), first + 2);
    window->resize(128, 96);
    EXPECT_EQ(drawn(), first + 3);
}

TEST_F(Paint, ShowsTheImageAndTheSelectionOverIt)
{
    img->fill(65535, 32768, 0, 65535);
    img->fillGmask(0);
    host.refreshViews(img);
    EXPECT_EQ(window->grab().toImage().pixel(100, 100), qRgb(255, 128, 0));
    window->command(kCommandSelectEntire);
    const QImage shown = window->grab().toImage();
    EXPECT_NE(shown.pixel(0, 100), qRgb(255, 128, 0));
    EXPECT_EQ(shown.pixel(100, 100), qRgb(255, 128, 0));
    window->command(kCommandSelectNone);
    EXPECT_EQ(window->grab().toImage().pixel(0, 100), qRgb(255, 128, 0));
}

TEST_F(Paint, GridNeedsLargeSamples)
{
    img->fill(32768, 32768, 32768, 65535);
    img->fillGmask(0);
    host.refreshViews(img);
    window->command(kCommandGrid); // 4 pixels a sample
    const QRgb plain = qRgb(128, 128, 128);
    EXPECT_EQ(window->grab().toImage().pixel(32, 33), plain);
    window->command(kCommandZoomIn); // 8 pixels a sample
    const QRgb dark = window->grab().toImage().pixel(32, 33);
    EXPECT_LT(qGray(dark), 128);
    window->command(kCommandGridColor);
    EXPECT_GT(qGray(window->grab().toImage().pixel(32, 33)), 128);
    window->command(kCommandGrid);
    EXPECT_EQ(window->grab().toImage().pixel(32, 33), plain);
}
