// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/load.h"
#include "samplefiles.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace
{
class IffTest : public testing::Test
{
protected:
    ImagePtr load(const QByteArray &bytes, const char *name = "a.iff")
    {
        QFile file(folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(bytes), bytes.size());
        file.close();
        return ImagePtr(loadImageFile(file.fileName(), {}, nullptr, false));
    }
    void expectPixels(const image &img, QRgb (*expected)(int x, int y))
    {
        for (int y = 0; y < img.height; ++y)
            for (int x = 0; x < img.width; ++x) {
                const int64_t i = int64_t(y) * img.width + x;
                const QRgb got =
                    qRgba(img.red[i] >> 8, img.green[i] >> 8, img.blue[i] >> 8, img.alpha[i] >> 8);
                ASSERT_EQ(got, expected(x, y)) << x << ' ' << y;
                ASSERT_EQ(img.red[i] % 257, 0);
            }
    }

    QTemporaryDir folder;
    RecordingWorkspace ws;
};

/// Entry i is 3 i, 255 - i, i ^ 1; the low nibbles say that it has 8 bits a channel.
QByteArray palette(int colors)
{
    QByteArray bytes;
    for (int i = 0; i < colors; ++i)
        bytes.append(char(3 * i)).append(char(255 - i)).append(char(i ^ 1));
    return bytes;
}

QRgb entry(int i)
{
    return qRgb(3 * i & 255, 255 - i, i ^ 1);
}

uint32_t six(int x, int y)
{
    return uint32_t(x * 3 + y) & 63;
}

TEST_F(IffTest, EveryKindOfPicture)
{
    struct Case {
        const char *fault;
        IffSample sample;
        QRgb (*expected)(int x, int y);
    };
    IffSample plain, masked, transparent, half, guessedHalf, greys, fourBits, held6, held8, deep,
        deepAlpha, chunky;
    plain.palette = palette(16);
    plain.code = [](int x, int y) { return uint32_t(x + 7 * y) & 15; };
    masked = transparent = fourBits = plain;
    masked.masking = 1;
    transparent.masking = 2;
    transparent.transparent = 7;
    fourBits.palette = QByteArray(48, '\x70');
    half.planes = 6;
    half.palette = palette(32);
    half.code = six;
    guessedHalf = half;
    half.viewMode = 0x80;
    greys.planes = 3;
    greys.code = [](int x, int) { return uint32_t(x) & 7; };
    held6.planes = 6;
    held6.viewMode = 0x800;
    held6.palette = palette(16);
    held6.code = [](int x, int) { return uint32_t(x % 4) << 4 | uint32_t(x % 16); };
    held8 = held6;
    held8.planes = 8;
    held8.palette = palette(64);
    held8.code = [](int x, int) { return uint32_t(x % 4) << 6 | uint32_t(x % 16 + 48); };
    deep.planes = 24;
    deep.width = 33;
    deep.code = [](int x, int y) { return uint32_t(x * 7 | y << 8 | (255 - x) << 16); };
    deepAlpha = deep;
    deepAlpha.planes = 32;
    deepAlpha.packed = false;
    deepAlpha.code = [](int x, int y) { return uint32_t(x | y << 16) | uint32_t(200 - x) << 24; };
    chunky.type = "PBM ";
    chunky.planes = 8;
    chunky.palette = palette(256);
    chunky.code = [](int x, int y) { return uint32_t(x * 11 + y) & 255; };
    // Red and blue of the entry with one channel replaced by each pixel of a group of four.
    const auto held = [](int x, int bits, int offset) {
        QRgb color = entry(0);
        for (int i = 0; i <= x; ++i) {
            const int data = i % 16 + offset;
            const int value = bits == 4 ? data * 17 : data << 2 | data >> 4;
            color = i % 4 == 0   ? entry(data)
                    : i % 4 == 1 ? qRgb(qRed(color), qGreen(color), value)
                    : i % 4 == 2 ? qRgb(value, qGreen(color), qBlue(color))
                                 : qRgb(qRed(color), value, qBlue(color));
        }
        return color;
    };
    static const auto heldColor = held;
    const auto halved = [](int x, int y) {
        const int code = int(six(x, y));
        const QRgb full = entry(code & 31);
        return code < 32 ? full : qRgb(qRed(full) / 2, qGreen(full) / 2, qBlue(full) / 2);
    };
    const Case cases[] = {
        {"Palette", plain, [](int x, int y) { return entry((x + 7 * y) & 15); }},
        {"MaskPlane", masked,
         [](int x, int y) { return entry((x + 7 * y) & 15) & (x % 3 ? ~0U : 0xFFFFFFU); }},
        {"TransparentColor", transparent,
         [](int x, int y) {
             const int i = (x + 7 * y) & 15;
             return entry(i) & (i == 7 ? 0xFFFFFFU : ~0U);
         }},
        {"FourBitPalette", fourBits, [](int, int) { return qRgb(0x77, 0x77, 0x77); }},
        {"HalfBrite", half, halved},
        {"HalfBriteWithoutMode", guessedHalf, halved},
        {"GreysWithoutPalette", greys,
         [](int x, int) { return qRgb((x & 7) * 255 / 7, (x & 7) * 255 / 7, (x & 7) * 255 / 7); }},
        {"Ham6", held6, [](int x, int) { return heldColor(x, 4, 0); }},
        {"Ham8", held8, [](int x, int) { return heldColor(x, 6, 48); }},
        {"Deep", deep, [](int x, int y) { return qRgb(x * 7 & 255, y, 255 - x); }},
        {"DeepAlpha", deepAlpha, [](int x, int y) { return qRgba(x, 0, y, 200 - x); }},
        {"Chunky", chunky, [](int x, int y) { return entry((x * 11 + y) & 255); }},
    };
    for (const Case &c : cases)
        for (const bool packed : {true, false}) {
            SCOPED_TRACE(testing::Message() << c.fault << packed);
            IffSample sample = c.sample;
            sample.packed = packed;
            const ImagePtr img = load(iffFile(sample));
            ASSERT_TRUE(img);
            expectPixels(*img, c.expected);
        }
    EXPECT_TRUE(ws.boxes.isEmpty());
}

/// A frame of the lasso's colour around one pixel of another, within which it stays opaque.
TEST_F(IffTest, ALassoLeavesOutWhatIsConnectedWithTheEdge)
{
    IffSample sample;
    sample.width = sample.height = 7;
    sample.masking = 3;
    sample.transparent = 2;
    sample.code = [](int x, int y) {
        const int far = std::max(std::abs(x - 3), std::abs(y - 3));
        return far == 2 ? 5U : 2U;
    };
    const ImagePtr img = load(iffFile(sample));
    ASSERT_TRUE(img);
    EXPECT_EQ(img->alpha[0] | img->alpha[6 * 7 + 3], 0);
    EXPECT_EQ(img->alpha[3 * 7 + 3] & img->alpha[3 * 7 + 1], 65535);
}

TEST_F(IffTest, TextsAspectAndNamesThatSayNothing)
{
    IffSample sample;
    sample.otherChunks = iffChunk("NAME", "Title") + iffChunk("ANNO", "one") +
                         iffChunk("ANNO", "two\xE9") + iffChunk("AUTH", "Ann") +
                         iffChunk("(c) ", "\xC2\xA9 me");
    ws.mainAuthor = "Own";
    ws.yDpi = 100;
    const ImagePtr img = load(iffFile(sample), "unknown");
    ASSERT_TRUE(img);
    EXPECT_EQ(img->annotation, QString::fromUtf8("Title\none\ntwo\xC3\xA9"));
    EXPECT_EQ(img->author, "Ann");
    EXPECT_EQ(img->copyright, QString::fromUtf8("\xC2\xA9 me"));
    EXPECT_EQ(img->xDpi, 50) << "pixels twice as wide as high";
    EXPECT_EQ(img->yDpi, 100);
}

TEST_F(IffTest, WhatIsMissingIsBlackAndOtherFormsAreNoPictures)
{
    IffSample sample;
    sample.packed = false;
    sample.palette = QByteArray(48, '\x55');
    const QByteArray whole = iffFile(sample);
    const ImagePtr img = load(whole.left(whole.size() - 5)); // within the third row
    ASSERT_TRUE(img);
    EXPECT_EQ(ws.boxes.size(), 1);
    EXPECT_EQ(img->red[0], 0x55 * 257);
    const ImagePtr less = load(whole.left(whole.size() - 16)); // without the third row
    ASSERT_TRUE(less);
    EXPECT_EQ(less->red[2 * 21], 0);
    EXPECT_EQ(less->alpha[2 * 21], 65535);

    const QByteArray sound = iffChunk("FORM", "8SVX" + iffChunk("BODY", QByteArray(100, 1)));
    IffSample strange;
    strange.planes = 11;
    for (const QByteArray &bytes : {sound, iffFile(strange), QByteArray("FORM")}) {
        ws.statusTexts.clear();
        EXPECT_FALSE(load(bytes));
        EXPECT_EQ(ws.statusTexts.join('|'), "Unknown Image Format");
    }
    // What the reader refuses may be of the form that is told by its size alone.
    EXPECT_TRUE(load(sound.leftJustified(8200, '\0'), "unknown"));
}
} // namespace
