// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/memory.h"
#include "formats/load.h"
#include "formats/mcai.h"
#include "formats/save.h"
#include "support/dng.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace
{
class McaiTest : public testing::Test
{
protected:
    QByteArray save(const image &img)
    {
        QString error;
        EXPECT_TRUE(writeMcai(&img, path, &error)) << qPrintable(error);
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void put(const QByteArray &bytes)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }
    ImagePtr load(bool alone = false)
    {
        return ImagePtr(loadImageFile(path, {}, nullptr, false, alone));
    }

    QTemporaryDir folder;
    QString path = folder.filePath("a.mcai");
    RecordingWorkspace ws;
};

using Fill = void (*)(image &img, int64_t i, uint32_t noise);

/// Planes of one value, of few, of up to 256, of most; equal and unrelated ones; sides that make
/// one block, several, and a row to a block.
TEST_F(McaiTest, EverySampleComesBack)
{
    struct Case {
        const char *fault;
        int width, height;
        Fill fill;
    };
    const Fill bytes = [](image &img, int64_t i, uint32_t noise) {
        img.green[i] = uint16_t(i % 37 * 6 * 257);
        img.red[i] = img.blue[i] = uint16_t((i % 37 * 6 + noise % 3) * 257);
        img.gmask[i] = uint16_t(noise >> 31);
    };
    const Fill wild = [](image &img, int64_t, uint32_t) { img.gmask[0] = 0; };
    const Case cases[] = {
        {"Random", 61, 43, wild},
        {"OneSample", 1, 1, wild},
        {"OneColumn", 1, 700, wild},
        {"SeveralBlocks", 1201, 460, bytes},
        {"RowsOfOneSide", 32767, 9, bytes},
        {"AllAlike", 300, 300,
         [](image &img, int64_t i, uint32_t) {
             for (uint16_t *plane : img.workPlanes())
                 plane[i] = 65535;
         }},
        {"TwoBytePlaces", 99, 57,
         [](image &img, int64_t i, uint32_t noise) {
             img.red[i] = uint16_t(i * 11);
             img.green[i] = uint16_t(65535 - i * 11);
             img.blue[i] = uint16_t(noise >> 27);
             img.alpha[i] = uint16_t(i / 99 * 1000);
         }},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.fault);
        const ImagePtr img = randomImage(c.width, c.height, 3);
        uint32_t noise = 1;
        for (int64_t i = 0; i < img->sampleCount(); ++i) {
            noise = noise * 1664525U + 1013904223U;
            c.fill(*img, i, noise);
        }
        save(*img);
        const ImagePtr back = load();
        ASSERT_TRUE(back);
        EXPECT_TRUE(samePlanes(*img, *back));
    }
    EXPECT_TRUE(ws.boxes.isEmpty());
}

TEST_F(McaiTest, KeepsWhatThePictureSaysUnlessAloneIsAsked)
{
    const ImagePtr img = randomImage(9, 7, 4);
    img->author = QString::fromUtf8("Änn");
    img->modificationTime = "20260101:000000 UTC";
    img->longitude = 11.25;
    img->iso = 400;
    img->xDpi = 72;
    img->imageMode = 1;
    img->opacity = 0.5;
    img->tagBlock = syntheticExif();
    Notation note;
    note.text = "here";
    note.points = QPolygon(QVector<QPoint>{{1, 2}, {3, 4}});
    img->notations << note;
    save(*img);

    const ImagePtr back = load();
    ASSERT_TRUE(back);
    EXPECT_EQ(back->author, img->author);
    EXPECT_EQ(back->modificationTime, img->modificationTime);
    EXPECT_EQ(back->longitude + back->iso + back->xDpi + back->imageMode + back->opacity,
              11.25 + 400 + 72 + 1 + 0.5);
    EXPECT_EQ(back->tagBlock, img->tagBlock);
    EXPECT_TRUE(back->tagLines.contains("Manufacturer: Nobody"));
    ASSERT_EQ(back->notations.size(), 1);
    EXPECT_EQ(back->notations[0].points, note.points);

    ws.mainAuthor = "Own";
    const ImagePtr alone = load(true);
    ASSERT_TRUE(alone);
    EXPECT_TRUE(sameColors(*alone, *img));
    EXPECT_FALSE(alone->anyMaskSet());
    EXPECT_EQ(alone->author, "Own");
    EXPECT_TRUE(alone->tagBlock.isEmpty() && alone->notations.isEmpty());
}

TEST_F(McaiTest, DamageCostsItsRowsAlone)
{
    const ImagePtr img = randomImage(1000, 700, 5);
    const int rows = mcaiBlockRows(1000);
    ASSERT_EQ(mcaiBlockCount(1000, 700), 3);
    const QByteArray whole = save(*img);
    for (const bool cut : {false, true}) {
        SCOPED_TRACE(cut);
        QByteArray bytes = whole;
        if (cut)
            bytes.chop(1000); // the last block
        else
            bytes[bytes.size() / 2] = char(~bytes[bytes.size() / 2]); // the middle one
        put(bytes);
        ws.boxes.clear();
        const ImagePtr back = load();
        ASSERT_TRUE(back);
        EXPECT_EQ(ws.boxes.size(), 1);
        const int firstLost = cut ? 2 * rows : rows, endLost = cut ? 700 : 2 * rows;
        EXPECT_TRUE(ws.boxes[0].contains(QString("%1 of 700 rows").arg(endLost - firstLost)));
        for (int y = 0; y < 700; y += 9) {
            const bool lost = y >= firstLost && y < endLost;
            for (size_t p = 0; p < 5; ++p)
                ASSERT_EQ(back->workPlanes()[p][y * 1000],
                          lost ? 0 : img->workPlanes()[p][y * 1000]);
        }
    }
    QByteArray newer = whole;
    newer[kMcaiMagicBytes + 3] = 2;
    QByteArray headless = whole;
    headless[kMcaiStartBytes + 5] = 1;
    const int64_t before = memRecord.currentBytes;
    for (const QByteArray &bytes : {newer, headless, whole.left(30)}) {
        put(bytes);
        ws.boxes.clear();
        EXPECT_FALSE(load());
        EXPECT_EQ(ws.boxes.size(), 1) << "the person is told";
    }
    EXPECT_EQ(memRecord.currentBytes, before);
}
} // namespace
