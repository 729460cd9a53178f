// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/textgenerator.h"

#include "area/areastate.h"
#include "core/memory.h"
#include "text/textimage.h"
#include "text/textselect.h"
#include "views/testhost.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QSpinBox>
#include <QTest>

#include <gtest/gtest.h>

namespace
{
/// The rectangle of what is selected.
QRect selected(const image &img)
{
    const Bounds box = img.maskBounds();
    return img.anyMaskSet() ? QRect(QPoint(box.left, box.top), QPoint(box.right, box.bottom))
                            : QRect();
}

class TextGeneratorTest : public testing::Test
{
protected:
    void SetUp() override
    {
        host.textPoints = 20;
        img = host.keep(plainImage(200, 100, 0, 0, 0));
        img->fillGmask(0);
        window = host.show(img, {200, 100});
        dialog = std::make_unique<TextGenerator>();
        dialog->show();
    }
    void type(const QString &text)
    {
        auto *edit = dialog->findChild<QPlainTextEdit *>("text");
        edit->selectAll();
        QTest::keyClicks(edit, text);
    }
    /// Presses a button and returns what the dialog says.
    QString press(const char *button)
    {
        QTest::mouseClick(dialog->findChild<QAbstractButton *>(button), Qt::LeftButton);
        return dialog->findChild<QLabel *>("message")->text();
    }
    void place(int left, int top)
    {
        dialog->findChild<QRadioButton *>("atPlace")->click();
        dialog->findChild<QSpinBox *>("left")->setValue(left);
        dialog->findChild<QSpinBox *>("top")->setValue(top);
    }

    TestHost host;
    AreaState state;
    image *img = nullptr;
    imgWindow *window = nullptr;
    std::unique_ptr<TextGenerator> dialog;
};

TEST_F(TextGeneratorTest, SelectsAddsAndSubtractsUndoably)
{
    type("HH");
    EXPECT_FALSE(dialog->findChild<QLabel *>("preview")->pixmap(Qt::ReturnByValue).isNull());
    press("select");
    const QRect middle = selected(*img);
    EXPECT_LE((middle.center() - QPoint(100, 50)).manhattanLength(), 8) << "in the middle";
    ASSERT_EQ(img->undoList.size(), 1);
    EXPECT_FALSE(img->undoList[0]->anyMaskSet());
    EXPECT_EQ(state.savedSelection.size, img->sampleCount());

    place(5, 8);
    press("add");
    const QRect both = selected(*img);
    EXPECT_TRUE(both.left() >= 5 && both.left() < 10 && both.right() == middle.right());
    press("subtract");
    EXPECT_EQ(selected(*img), middle);
    press("select");
    EXPECT_LT(selected(*img).right(), middle.left());
    EXPECT_EQ(img->undoList.size(), 4);

    host.selectMode = true;
    press("select");
    EXPECT_EQ(host.operated, 1);
    EXPECT_EQ(img->undoList.size(), 4) << "the Apply makes its own";
}

TEST_F(TextGeneratorTest, RefusalsAreToldAndChangeNothing)
{
    img->fillGmask(7);
    EXPECT_EQ(press("select"), "Nothing to draw");
    type("   ");
    EXPECT_EQ(press("add"), "Nothing to draw");
    type("I");
    place(200, 0);
    EXPECT_EQ(press("subtract"), "The text lies outside of the picture");
    place(0, 0);
    const int64_t blocks = memRecord.currentBlocks;
    for (int n = 1; n <= 3; ++n) { // the glyphs' planes
        memFailAt(n);
        EXPECT_EQ(press("add"), "There is not enough memory");
        memFailAt(0);
        EXPECT_EQ(memRecord.currentBlocks, blocks);
    }
    EXPECT_EQ(img->maskAt(0, 0), 7);
    EXPECT_TRUE(img->undoList.isEmpty());
    EXPECT_NE(press("add"), "");
    EXPECT_EQ(img->undoList.size(), 1);
    host.currentWindow = nullptr;
    EXPECT_EQ(press("select"), "No picture is open");
}

TEST_F(TextGeneratorTest, AMasterHandsOverToItsTargetsWindow)
{
    image *layer = plainImage(100, 60, 0, 0, 0).release();
    layer->fillGmask(0);
    layer->kind = 2;
    layer->master = img;
    layer->xOffset = 90, layer->yOffset = 30;
    img->kind = 1;
    img->layers << layer;
    img->target = layer;
    type("H");
    place(100, 40);
    press("select");
    const QRect inMaster = selected(*img);
    ASSERT_FALSE(inMaster.isEmpty()) << "the layer has no window";
    host.show(layer, {100, 60});
    host.makeCurrent(window);
    host.selectMode = true; // no record for the layer to end with
    press("select");
    EXPECT_EQ(selected(*layer), inMaster.translated(-90, -30));
    EXPECT_EQ(host.validCurrent(), window);
    while (!host.windows.isEmpty())
        delete host.windows.constLast();
    destroyTree(&img);
    host.images.clear();
}

TEST_F(TextGeneratorTest, KeepsItsSettings)
{
    for (const char *box : {"bold", "italic", "smooth"})
        press(box);
    auto *align = dialog->findChild<QComboBox *>("align");
    QTest::keyClick(align, Qt::Key_End);
    dialog->findChild<QSpinBox *>("points")->setValue(33);
    EXPECT_TRUE(host.textBold && host.textItalic && !host.textaa);
    EXPECT_EQ(host.textAlign, 2);
    dialog = std::make_unique<TextGenerator>();
    EXPECT_EQ(dialog->findChild<QComboBox *>("align")->currentIndex(), 2);
    EXPECT_EQ(dialog->findChild<QSpinBox *>("points")->value(), 33);
    EXPECT_FALSE(dialog->findChild<QAbstractButton *>("smooth")->isChecked());
}

TEST_F(TextGeneratorTest, GlyphsAreCutAtTheImage)
{
    TextStyle style;
    style.pixels = 60;
    const ImagePtr glyphs(renderText("B", style));
    ASSERT_TRUE(glyphs);
    const int first = firstInkColumn(*glyphs);
    ASSERT_GE(first, 0);
    const auto expected = [&](int left, int top, int x, int y) {
        const int fromX = x - left, fromY = y - top;
        const bool inside =
            fromX >= 0 && fromY >= 0 && fromX < glyphs->width && fromY < glyphs->height;
        return inside ? glyphs->alpha[fromY * glyphs->width + fromX] : uint16_t(0);
    };
    for (const QPoint place : {QPoint(30, 20), QPoint(-20, -25), QPoint(180, 70)}) {
        img->fillGmask(9);
        ASSERT_EQ(selectText(img, "B", style, place.x(), place.y()), TextResult::Done);
        for (int y = 0; y < img->height; ++y)
            for (int x = 0; x < img->width; ++x)
                ASSERT_EQ(img->maskAt(x, y), expected(place.x(), place.y(), x, y));
    }
    EXPECT_EQ(selectText(img, "B", style, 200 - first, 0), TextResult::Outside);
    EXPECT_EQ(selectText(img, "B", style, 199 - first, 0), TextResult::Done);
    EXPECT_EQ(selectText(img, "B", style, INT32_MIN, INT32_MAX), TextResult::Outside);
    EXPECT_EQ(selectText(img, QString(100000, 'm'), style, 0, 0), TextResult::TooLarge);
}
} // namespace
