// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/clipboardacts.h"

#include "core/undo.h"
#include "layers/stack.h"
#include "views/testhost.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QUrl>

#include <gtest/gtest.h>

namespace
{
/// Offscreen there is one clipboard for the whole test program: each test starts with none.
class ClipboardTest : public testing::Test
{
protected:
    ~ClipboardTest() override { QGuiApplication::clipboard()->clear(); }

    image *patterned(int width, int height)
    {
        image *img = host.keep(randomImage(width, height, 5));
        std::fill_n(img->alpha, img->sampleCount(), uint16_t(65535));
        img->fillGmask(0);
        return img;
    }

    TestHost host;
};
} // namespace

TEST_F(ClipboardTest, WithinTheProgramEverySampleSurvives)
{
    image *img = patterned(9, 7);
    EXPECT_FALSE(clipboardHasPicture());
    ASSERT_TRUE(copyToClipboard(img));
    EXPECT_TRUE(clipboardHasPicture());
    ASSERT_TRUE(pasteAsNew());
    const image *pasted = host.images.constLast();
    ASSERT_NE(pasted, img);
    EXPECT_TRUE(pasted->changed); // it is in no file
    EXPECT_TRUE(sameColors(*img, *pasted));
}

TEST_F(ClipboardTest, ACopyIsTheSelectionsBoxWithAlphaWeighed)
{
    image *img = patterned(9, 7);
    img->gmask[2 * 9 + 3] = 65535;
    img->gmask[4 * 9 + 6] = 32768;
    img->alpha[4 * 9 + 6] = 40000;
    ASSERT_TRUE(copyToClipboard(img));
    ASSERT_TRUE(pasteAsNew());
    const image *pasted = host.images.constLast();
    EXPECT_EQ(QSize(pasted->width, pasted->height), QSize(4, 3));
    EXPECT_EQ(pasted->red[0], img->red[2 * 9 + 3]);
    EXPECT_EQ(pasted->alpha[0], 65535);
    EXPECT_EQ(pasted->alpha[1], 0);
    EXPECT_EQ(pasted->alpha[11], 40000U * 32768U / 65535U);
}

TEST_F(ClipboardTest, APasteGoesThroughTheSelectionAndCanBeUndone)
{
    image *source = patterned(4, 4), *img = patterned(20, 10);
    img->fill(1000, 2000, 3000, 65535);
    ASSERT_TRUE(copyToClipboard(source));
    ASSERT_TRUE(pasteInto(img, {10, 5})); // nothing selected: whole, in the middle
    EXPECT_EQ(img->red[4 * 20 + 9], source->red[0]);
    EXPECT_EQ(img->red[3 * 20 + 9], 1000);
    undo(img);
    EXPECT_EQ(img->red[4 * 20 + 9], 1000);

    img->gmask[1 * 20 + 1] = 65535; // the middle of the selection is this sample
    img->gmask[1 * 20 + 2] = 16384;
    ASSERT_TRUE(pasteInto(img, {10, 5}));
    const QPoint corner(1 - 1, 1 - 1); // of a 4 x 4 picture around (1, 1)
    const auto from = [&](int x, int y) { return (y - corner.y()) * 4 + x - corner.x(); };
    EXPECT_EQ(img->red[21], source->red[from(1, 1)]);
    EXPECT_NEAR(img->red[22], source->red[from(2, 1)] * 0.25 + 1000 * 0.75, 2);
    EXPECT_EQ(img->red[23], 1000);
    EXPECT_EQ(img->red[10], 1000);
}

TEST_F(ClipboardTest, CuttingLowersAlphaAndRefusalsTouchNothing)
{
    image *img = patterned(6, 6);
    EXPECT_FALSE(cutToClipboard(img)); // nothing selected
    EXPECT_TRUE(img->undoList.isEmpty());
    img->gmask[7] = 65535;
    img->gmask[8] = 65535 / 4;
    ASSERT_TRUE(cutToClipboard(img));
    EXPECT_EQ(img->alpha[7], 0);
    EXPECT_EQ(img->alpha[8], 65535 - 65535 / 4);
    EXPECT_EQ(img->alpha[9], 65535);
    EXPECT_EQ(img->undoList.size(), 1);

    QGuiApplication::clipboard()->setText(QStringLiteral("words"));
    EXPECT_FALSE(clipboardHasPicture());
    EXPECT_FALSE(pasteInto(img, {}));
    EXPECT_FALSE(pasteAsNew());
    EXPECT_FALSE(pasteAsLayer(img));
    EXPECT_EQ(img->undoList.size(), 1);
    EXPECT_EQ(img->kind, 0);
}

TEST_F(ClipboardTest, ALayerIsPutOnTopOfAStackOrMakesOne)
{
    image *img = patterned(8, 8);
    ASSERT_TRUE(copyToClipboard(patterned(4, 2)));
    ASSERT_TRUE(pasteAsLayer(img));
    image *master = img->master;
    ASSERT_NE(master, nullptr);
    ASSERT_EQ(master->layers.size(), 2);
    EXPECT_EQ(master->layers.constLast()->xOffset, 2);
    EXPECT_EQ(master->layers.constLast()->yOffset, 3);
    ASSERT_TRUE(pasteAsLayer(master->layers.constFirst()));
    EXPECT_EQ(master->layers.size(), 3);
    EXPECT_FALSE(pasteInto(master, {})); // no target
    master->target = img;
    EXPECT_TRUE(pasteInto(master, {4, 4}));
    EXPECT_EQ(img->undoList.size(), 1);
}

TEST_F(ClipboardTest, OtherProgramsGiveAndTakeEightBits)
{
    image *img = patterned(5, 3);
    ASSERT_TRUE(copyToClipboard(img));
    const QImage given = QGuiApplication::clipboard()->image();
    ASSERT_EQ(given.size(), QSize(5, 3));
    EXPECT_EQ(qRed(given.pixel(4, 2)), img->red[14] >> 8);
    releaseClipboard(); // the program ends: what stays is a plain picture
    EXPECT_EQ(QGuiApplication::clipboard()->image().size(), QSize(5, 3));

    QImage foreign(3, 2, QImage::Format_ARGB32);
    foreign.fill(0x80FF0102U);
    QGuiApplication::clipboard()->setImage(foreign);
    ASSERT_TRUE(pasteAsNew());
    const image *pasted = host.images.constLast();
    EXPECT_EQ(pasted->red[0], 65535);
    EXPECT_EQ(pasted->blue[5], 2 * 257);
    EXPECT_EQ(pasted->alpha[0], 0x80 * 257);

    auto *files = new QMimeData;
    files->setUrls({QUrl::fromLocalFile(QStringLiteral("/a.png"))});
    QGuiApplication::clipboard()->setMimeData(files);
    EXPECT_TRUE(pasteAsNew()); // a file copied in a file manager
    EXPECT_EQ(host.dropped.size(), 1);
}
