// SPDX-License-Identifier: GPL-3.0-or-later
#include "text/textimage.h"

#include "core/fixture.h"
#include "support/pictures.h"

#include <QtGlobal>

#include <cmath>
#include <limits>

namespace
{
using Text = WithWorkspace;

/// The columns of the ink within some rows: first and last, -1 where there is none.
struct Ink {
    int left = -1, right = -1;
};

Ink inkOf(const image &img, int top, int bottom)
{
    Ink ink;
    for (int x = 0; x < img.width; ++x)
        for (int y = top; y < bottom; ++y)
            if (img.alpha[int64_t(y) * img.width + x] != 0) {
                ink.left = ink.left < 0 ? x : ink.left;
                ink.right = x;
            }
    return ink;
}

TEST_F(Text, ColourIsEverywhereAndCoverageInAlpha)
{
    for (const double pixels : {14.0, 300.0}) // from the glyph cache, and as outlines
        for (const bool antialias : {true, false}) {
            SCOPED_TRACE(testing::Message() << pixels << " " << antialias);
            TextStyle style;
            style.pixels = pixels;
            style.antialias = antialias;
            style.red = 257, style.green = 40000, style.blue = 65535;
            TextMetrics metrics;
            const ImagePtr img(renderText(QStringLiteral("Sø8"), style, &metrics));
            ASSERT_TRUE(img);
            EXPECT_EQ(img->width, metrics.width);
            EXPECT_EQ(img->height, metrics.height);
            int64_t between = 0, dense = 0, empty = 0;
            for (int64_t i = 0; i < img->sampleCount(); ++i) {
                ASSERT_TRUE(img->red[i] == 257 && img->green[i] == 40000 && img->blue[i] == 65535);
                ASSERT_EQ(img->alpha[i] % 257, 0);
                between += img->alpha[i] % 65535 != 0;
                dense += img->alpha[i] > 32767;
                empty += img->alpha[i] == 0;
            }
            EXPECT_EQ(between > 0, antialias);
            EXPECT_GT(dense, img->sampleCount() / 20);
            EXPECT_GT(empty, img->sampleCount() / 4);
        }
}

TEST_F(Text, LinesStandBelowEachOtherAsAligned)
{
    TextStyle style;
    style.pixels = 40;
    const TextMetrics one = measureText(QStringLiteral("mmmm"), style);
    for (const int align : {0, 1, 2}) {
        style.align = align;
        style.leading = 1.5;
        const ImagePtr img(renderText(QStringLiteral("mmmm\r\n\ni"), style));
        ASSERT_TRUE(img);
        EXPECT_EQ(img->width, one.width);
        EXPECT_EQ(img->height, one.height + 3 * one.lineHeight);
        const Ink ink = inkOf(*img, 3 * one.lineHeight, img->height);
        ASSERT_GE(ink.left, 0);
        const int middle = (ink.left + ink.right) / 2;
        EXPECT_EQ(middle * 3 / img->width, align);
        EXPECT_EQ(inkOf(*img, one.height, 3 * one.lineHeight).left, -1) << "the empty line";
    }
}

TEST_F(Text, NoInkIsCutOff)
{
    // A letter between others overhangs freely; alone it must show as many covered samples.
    TextStyle style;
    style.italic = true;
    style.pixels = 120;
    for (const char *letter : {"f", "j", "W"}) {
        const ImagePtr img(renderText(QString::fromLatin1(letter), style));
        const ImagePtr wide(renderText(QStringLiteral(" %1 ").arg(QLatin1String(letter)), style));
        ASSERT_TRUE(img && wide);
        const auto covered = [](const image &of) {
            return std::count_if(of.alpha, of.alpha + of.sampleCount(),
                                 [](uint16_t a) { return a > 32767; });
        };
        EXPECT_NEAR(double(covered(*img)), double(covered(*wide)), 0.01 * double(covered(*wide)))
            << letter;
    }
}

TEST_F(Text, WhatIsTooLargeIsRefused)
{
    struct Case {
        const char *fault;
        QString text;
        double pixels, leading;
    };
    const Case cases[] = {
        {"Empty", {}, 48, 1},
        {"NoExtent", QStringLiteral("\n"), 48, 0},
        {"FontOfNoSize", QStringLiteral("a"), 0, 1},
        {"FontIsNaN", QStringLiteral("a"), std::nan(""), 1},
        {"FontTooLarge", QStringLiteral("a"), 4001, 1},
        {"LineTooLong", QString(3000, 'm'), 48, 1},
        {"WidthWouldWrapRound", QString(16778, 'm'), 4000, 1}, // 2^26 samples
        {"TooManyLines", QStringLiteral("a\n").repeated(2000), 48, 1},
        {"LinesTooFarApart", QStringLiteral("a\nb"), 48, std::numeric_limits<double>::infinity()},
        {"TooManySamples", QStringLiteral("mmmmmmm\n").repeated(7), 4000, 1},
    };
    for (const Case &c : cases) {
        TextStyle style;
        style.pixels = c.pixels;
        style.leading = c.leading;
        TextMetrics metrics;
        EXPECT_FALSE(ImagePtr(renderText(c.text, style, &metrics))) << c.fault;
        EXPECT_EQ(metrics.width + metrics.height + measureText(c.text, style).lineHeight, 0)
            << c.fault;
    }
}
} // namespace
