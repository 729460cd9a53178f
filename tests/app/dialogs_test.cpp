// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/memreport.h"
#include "app/newimage.h"
#include "app/setquality.h"
#include "app/undolevels.h"
#include "core/memory.h"
#include "support/debuglog.h"
#include "support/recordingworkspace.h"
#include "support/widgets.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>
#include <QTest>

#include <gtest/gtest.h>

namespace
{
void press(const QDialog &dialog, QDialogButtonBox::StandardButton which)
{
    QTest::mouseClick(child<QDialogButtonBox>(dialog, "buttonBox")->button(which), Qt::LeftButton);
}
} // namespace

TEST(MemReportDialog, ReportsSweepsAndPacks)
{
    void *low = umalloc(100, "low block");
    auto *high = static_cast<uint8_t *>(ucalloc(3, 7, "over-run <b>block</b>"));
    const uint8_t guard = high[21];
    takeDebugLines();
    high[21] = 0;
    MemReport dialog;
    high[21] = guard;
    EXPECT_TRUE(takeDebugLines().join(QString()).contains(QLatin1String("over-run")));

    auto *text = child<QPlainTextEdit>(dialog, "report");
    EXPECT_EQ(text->toPlainText(), memReport(false));
    QTest::mouseClick(child<QCheckBox>(dialog, "showDetails"), Qt::LeftButton, {}, QPoint(8, 8));
    EXPECT_EQ(text->toPlainText(), memReport(true));
    EXPECT_TRUE(text->toPlainText().contains(QLatin1String("over-run <b>block</b> -- 21 (3 x 7)")));

    QTest::keyClick(text, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(text, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), memReport(true));

    ufree(low); // leaves a gap
    const int64_t blocks = memRecord.currentBlocks;
    QTest::mouseClick(child<QPushButton>(dialog, "pack"), Qt::LeftButton);
    const QString result = child<QLabel>(dialog, "packResult")->text();
    EXPECT_TRUE(result.startsWith(QLatin1String("Packed: "))) << result.toStdString();
    EXPECT_TRUE(result.endsWith(QStringLiteral("\u2192%1").arg(blocks)));
    EXPECT_EQ(text->toPlainText(), memReport(true));
    ufree(high);
}

TEST(UndoLevelsDialog, StoresOnlyWithOk)
{
    RecordingWorkspace ws;
    UndoLevels dialog;
    EXPECT_EQ(dialog.windowTitle(), QLatin1String("Set Undo Levels"));
    EXPECT_EQ(child<QLabel>(dialog, "caption")->text(), QLatin1String("Undo Levels"));
    EXPECT_EQ(child<QLabel>(dialog, "explanation")->text(),
              QLatin1String("The value you set here applies only to images created <i>after</i> "
                            "the change is made. Undo buffers take considerable memory; use only "
                            "what you need."));
    auto *levels = child<QSpinBox>(dialog, "levels");
    EXPECT_EQ(levels->value(), 10);
    QTest::keyClicks(levels, "23");
    press(dialog, QDialogButtonBox::Cancel);
    EXPECT_EQ(ws.maxUndos, 10);
    press(dialog, QDialogButtonBox::Ok);
    EXPECT_EQ(ws.maxUndos, 23);
    levels->setValue(0);
    EXPECT_EQ(levels->value(), 1);
    levels->setValue(51);
    EXPECT_EQ(levels->value(), 50);
}

TEST(SetQualityDialog, KeysMoveTheSlider)
{
    SetQuality dialog(90, false);
    auto *slider = child<QSlider>(dialog, "slider");
    QTest::keyClick(slider, Qt::Key_Left);
    EXPECT_EQ(dialog.quality(), 89);
    EXPECT_EQ(child<QLabel>(dialog, "value")->text(), QLatin1String("89"));
    QTest::keyClick(slider, Qt::Key_Home);
    EXPECT_EQ(dialog.quality(), 1);
    QTest::keyClick(slider, Qt::Key_End);
    EXPECT_EQ(dialog.quality(), 100);
    press(dialog, QDialogButtonBox::Save);
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_NE(child<QLabel>(SetQuality(90, true), "explanation")->text(),
              child<QLabel>(dialog, "explanation")->text());
}

TEST(NewImageDialog, MakesTheImageThatWasAskedFor)
{
    RecordingWorkspace ws;
    ws.backRed = 0x8012;
    {
        NewImage dialog;
        auto *width = child<QSpinBox>(dialog, "imageWidth");
        QTest::keyClicks(width, "7");
        child<QSpinBox>(dialog, "imageHeight")->setValue(5);
        child<QSpinBox>(dialog, "dpi")->setValue(72);
        EXPECT_EQ(NewImage::bytesNeeded(7, 5), 7 * 7 * 7 * 2) << "seven planes, two spare rows";
        EXPECT_EQ(child<QLabel>(dialog, "memory")->text(), QLocale().formattedDataSize(686));
        const int64_t before = memRecord.currentBytes;
        press(dialog, QDialogButtonBox::Ok);
        EXPECT_EQ(memRecord.currentBytes - before, 686);
    }
    {
        NewImage dialog;
        QTest::mouseClick(child<QCheckBox>(dialog, "transparent"), Qt::LeftButton, {}, {8, 8});
        EXPECT_FALSE(child<QWidget>(dialog, "fillColor")->isEnabled());
        press(dialog, QDialogButtonBox::Cancel);
        EXPECT_EQ(ws.images.size(), 1);
        press(dialog, QDialogButtonBox::Ok);
    }
    ASSERT_EQ(ws.images.size(), 2);
    const image &first = *ws.images.at(0);
    EXPECT_EQ(first.width, 7);
    EXPECT_EQ(first.height, 5);
    EXPECT_EQ(first.xDpi, 72);
    EXPECT_EQ(first.name, QLatin1String("New Image 1"));
    EXPECT_FALSE(first.changed);
    EXPECT_EQ(first.red[34], 0x8080);
    EXPECT_EQ(first.green[34], 65535);
    EXPECT_EQ(first.alpha[34], 65535);
    EXPECT_EQ(ws.images.at(1)->alpha[0], 0);
    EXPECT_EQ(ws.images.at(1)->red[0], 65535);
}

TEST(NewImageDialog, RefusesWhatMemoryCannotHold)
{
    RecordingWorkspace ws;
    NewImage dialog;
    memFailAt(3);
    press(dialog, QDialogButtonBox::Ok);
    memFailAt(0);
    EXPECT_TRUE(ws.images.isEmpty());
    EXPECT_EQ(ws.boxes, QStringList{QStringLiteral("New Image: Image Allocation Failed")});
    EXPECT_NE(dialog.result(), QDialog::Accepted);
}
