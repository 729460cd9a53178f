// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/dialog/dialogfixture.h"

#include "core/scale.h"
#include "operators/dialog/histogramview.h"
#include "operators/dialog/oppreview.h"

#include <QComboBox>
#include <QMouseEvent>
#include <QPushButton>

#include <algorithm>
#include <numeric>

namespace
{
/// The preview's sample computed apart: that of the picture, exposed, or white outside.
uint16_t expectedRed(const image &picture, int x, int y, int amount)
{
    if (x < 0 || y < 0 || x >= picture.width || y >= picture.height)
        return 65535;
    const double k = (amount + 100) / 100.0;
    return uint16_t(std::min(k * picture.red[y * picture.width + x], 65535.0));
}

bool isCrop(const image &crop, const image &picture, int left, int top, int amount)
{
    for (int y = 0; y < crop.height; ++y)
        for (int x = 0; x < crop.width; ++x) {
            const int i = y * crop.width + x;
            const bool inside = x + left >= 0 && y + top >= 0 && x + left < picture.width &&
                                y + top < picture.height;
            if (!inside && (crop.alpha[i] != 0 || crop.gmask[i] != 0))
                return false;
            if (inside && (crop.gmask[i] != 65535 ||
                           crop.alpha[i] != picture.alpha[(y + top) * picture.width + x + left] ||
                           crop.red[i] != expectedRed(picture, x + left, y + top, amount)))
                return false;
            if (!inside && (crop.red[i] != 65535 || crop.blue[i] != 65535))
                return false;
        }
    return true;
}
/// QTest's own move carries no button.
void moveTo(QWidget *widget, const QPoint &place)
{
    QMouseEvent move(QEvent::MouseMove, place, Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(widget, &move);
}
} // namespace

class Preview : public DialogTest
{
protected:
    void showType(int row) { child<QComboBox>("comboBox")->setCurrentIndex(row); }
};

struct SizeCase {
    const char *fault;
    int width, height, type;
    bool thumbnail;
    int originX, originY; ///< after a start at (500, 500)
};
class PreviewSize : public Preview, public testing::WithParamInterface<SizeCase>
{
};

TEST_P(PreviewSize, ShowsThumbnailOrCrop)
{
    const SizeCase &c = GetParam();
    open(c.width, c.height);
    showType(c.type);
    window->previewX = window->previewY = 500;
    dialog->refreshPreview();
    EXPECT_EQ(dialog->thumbnailUsed, c.thumbnail);
    EXPECT_EQ(ws.thumbnail, c.type == 0) << "the flag is only lent to the preview";
    if (c.thumbnail) {
        image fitted;
        ASSERT_TRUE(fitted.allocate(100, 100, QStringLiteral("fitted")));
        ASSERT_TRUE(scaleBilinear(picture.get(), &fitted, true));
        EXPECT_TRUE(sameColors(*table.preview, fitted));
        EXPECT_TRUE(sameColors(*table.previewThumb, fitted));
        return;
    }
    EXPECT_EQ(window->previewX, c.originX);
    EXPECT_EQ(window->previewY, c.originY);
    const image &crop = c.type == 2 ? *table.previewHalf : *table.preview;
    EXPECT_TRUE(isCrop(crop, *picture, c.originX, c.originY, 0));
}

INSTANTIATE_TEST_SUITE_P(Sizes, PreviewSize,
                         testing::Values(SizeCase{"LargeAsThumb", 300, 120, 0, true, 0, 0},
                                         SizeCase{"BelowTheViewOnBothSides", 99, 99, 1, true, 0, 0},
                                         SizeCase{"AsWideAsTheView", 100, 99, 1, false, 0, -1},
                                         SizeCase{"Narrow", 20, 300, 1, false, -80, 200},
                                         SizeCase{"Large", 333, 222, 1, false, 233, 122},
                                         SizeCase{"BelowTheHalfView", 49, 49, 2, true, 0, 0},
                                         SizeCase{"BetweenTheViews", 99, 99, 2, false, 49, 49},
                                         SizeCase{"LargeTwice", 333, 222, 2, false, 283, 172}),
                         [](const auto &row) { return row.param.fault; });

TEST_F(Preview, BeforeShowsTheOriginalWhileItIsDown)
{
    open(150, 120);
    dialog->selectOperator(kNegative);
    showType(1);
    auto *before = child<QPushButton>("before");
    EXPECT_FALSE(isCrop(*table.preview, *picture, 0, 0, 0));
    QTest::mousePress(before, Qt::LeftButton);
    EXPECT_TRUE(isCrop(*table.preview, *picture, 0, 0, 0));
    QTest::mouseRelease(before, Qt::LeftButton);
    EXPECT_EQ(table.preview->red[0], 65535 - picture->red[0]);
    EXPECT_TRUE(picture->undoList.isEmpty());
    EXPECT_TRUE(table.preview->undoList.isEmpty());
    EXPECT_EQ(table.lastOp, 0) << "a preview is no act";
}

TEST_F(Preview, DraggingMovesTheCropAndEndsAtTheEdges)
{
    open(180, 130);
    showType(1);
    auto *view = child<OpPreview>("oppreview");
    QTest::mousePress(view, Qt::LeftButton, {}, QPoint(10, 10));
    moveTo(view, QPoint(40, 25));
    EXPECT_EQ(QPoint(window->previewX, window->previewY), QPoint(30, 15));
    moveTo(view, QPoint(35, 25));
    EXPECT_EQ(QPoint(window->previewX, window->previewY), QPoint(25, 15));
    EXPECT_TRUE(isCrop(*table.preview, *picture, 25, 15, 0));
    moveTo(view, QPoint(99, 99));
    EXPECT_EQ(QPoint(window->previewX, window->previewY), QPoint(80, 30));
    QTest::mouseRelease(view, Qt::LeftButton, {}, QPoint(99, 99));
    moveTo(view, QPoint(0, 0));
    EXPECT_EQ(QPoint(window->previewX, window->previewY), QPoint(80, 30)) << "no button is down";
}

TEST_F(Preview, KeysMoveTheCrop)
{
    open(500, 400);
    showType(1);
    struct Step {
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
        QPoint origin;
    };
    const Step steps[] = {
        {Qt::Key_Right, Qt::NoModifier, {1, 0}},
        {Qt::Key_Down, Qt::ShiftModifier, {1, 10}},
        {Qt::Key_Down, Qt::AltModifier, {1, 110}},
        {Qt::Key_Right, Qt::ShiftModifier | Qt::AltModifier, {11, 110}},
        {Qt::Key_Left, Qt::NoModifier, {10, 110}},
        {Qt::Key_Up, Qt::ShiftModifier, {10, 100}},
        {Qt::Key_Home, Qt::ShiftModifier, {200, 150}},
        {Qt::Key_Home, Qt::MetaModifier, {400, 300}},
        {Qt::Key_Right, Qt::NoModifier, {400, 300}},
        {Qt::Key_Home, Qt::NoModifier, {0, 0}},
    };
    for (const Step &step : steps) {
        QTest::keyClick(dialog.get(), step.key, step.modifiers);
        EXPECT_EQ(QPoint(window->previewX, window->previewY), step.origin);
        EXPECT_TRUE(isCrop(*table.preview, *picture, step.origin.x(), step.origin.y(), 0));
    }
    host.takesKeys = true;
    QTest::keyClick(dialog.get(), Qt::Key_Right);
    EXPECT_EQ(window->previewX, 0) << "the global dispatcher comes first";
}

TEST_F(Preview, IsClearedWithItsWindow)
{
    open(120, 120);
    EXPECT_FALSE(child<OpPreview>("oppreview")->shown().isNull());
    close();
    dialog->timetopreview();
    EXPECT_TRUE(child<OpPreview>("oppreview")->shown().isNull());
    EXPECT_FALSE(child<QPushButton>("operate")->isEnabled());
    dialog->prod(5, 5);
    QTest::keyClick(dialog.get(), Qt::Key_Home);
}

TEST_F(Preview, DrawsHighBytesOverTheBackground)
{
    const ImagePtr picture50 = plainImage(50, 50, 0xFF00, 0x8000, 0, 65535);
    picture50->alpha[0] = 0;
    picture50->alpha[1] = 32768;
    OpPreview view;
    ws.checkerOn = true;
    view.setPicture(picture50.get(), true);
    const QImage shown = view.shown();
    ASSERT_EQ(shown.size(), QSize(100, 100));
    for (const QPoint block : {QPoint(0, 0), QPoint(1, 0), QPoint(0, 1), QPoint(1, 1)})
        EXPECT_EQ(shown.pixel(block), qRgb(118, 118, 118));
    EXPECT_EQ(shown.pixel(2, 1), qRgb((255 + 118) / 2, (128 + 118) / 2, 58)) << "truncated";
    EXPECT_EQ(shown.pixel(4, 0), qRgb(255, 128, 0));

    const ImagePtr clear = plainImage(100, 100, 65535, 65535, 65535, 0);
    view.setPicture(clear.get(), false);
    EXPECT_EQ(view.shown().pixel(7, 7), qRgb(118, 118, 118));
    EXPECT_EQ(view.shown().pixel(8, 7), qRgb(138, 138, 138));
    EXPECT_EQ(view.shown().pixel(8, 8), qRgb(118, 118, 118));
    ws.checkerOn = false;
    view.setPicture(clear.get(), false);
    EXPECT_EQ(view.shown().pixel(8, 7), view.palette().color(QPalette::Window).rgb());
}

TEST_F(Preview, HistogramCountsWhatTheOperatorMade)
{
    open(120, 120);
    std::fill_n(picture->alpha, picture->sampleCount(), uint16_t(65535));
    std::fill_n(picture->red, picture->sampleCount(), uint16_t(0x10FF));
    picture->alpha[3] = 0;
    showType(1);
    dialog->selectOperator(kNegative);
    const auto &red = child<HistogramView>("histogram")->counts(0);
    EXPECT_EQ(red[0xEF], 100 * 100 - 1);
    const auto &blue = child<HistogramView>("histogram")->counts(2);
    EXPECT_EQ(std::accumulate(blue.begin(), blue.end(), 0), 100 * 100 - 1);
}
