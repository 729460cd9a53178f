// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/memory.h"
#include "entries.h"
#include "formats/load.h"
#include "support/debuglog.h"
#include "support/dng.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

namespace
{
class LoadTest : public testing::Test
{
protected:
    QString write(const QString &name, const QByteArray &bytes)
    {
        QFile file(folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(bytes), bytes.size());
        return file.fileName();
    }
    ImagePtr load(const QString &path) { return ImagePtr(loadImageFile(path, {}, nullptr, false)); }

    QTemporaryDir folder;
    RecordingWorkspace ws;
};

QByteArray rgbaBytes(const char *magic, const char *width, const char *height, int pixelBytes)
{
    const auto field = [](const char *text) { return QByteArray(text).leftJustified(8, '\0'); };
    QByteArray bytes = field(magic) + field(width) + field(height);
    for (int i = 0; i < pixelBytes; ++i)
        bytes.append(char(i * 7));
    return bytes;
}

/// A picture in one of the pixel formats that readers yield, with alpha and colours.
QImage sampleOf(QImage::Format format)
{
    QImage picture(37, 5, QImage::Format_RGBA64);
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            picture.setPixelColor(
                x, y,
                QColor::fromRgba64(
                    qRgba64(x * 1771, y * 13107, (x * y * 331) & 65535, 65535 - x * 900)));
    return picture.convertToFormat(format);
}

struct PictureFile {
    QImage::Format format;
    const char *form, *name;
};

/// Every format that decoding yields, and names that say another kind or none.
TEST_F(LoadTest, EveryKindOfPictureEqualsThePixelLoop)
{
    const PictureFile files[] = {
        {QImage::Format_ARGB32, "png", "a.png"},     {QImage::Format_RGB32, "png", "a.png"},
        {QImage::Format_Indexed8, "png", "a.png"},   {QImage::Format_Mono, "png", "a.png"},
        {QImage::Format_Grayscale8, "png", "a.png"}, {QImage::Format_Grayscale16, "png", "a.png"},
        {QImage::Format_RGBA64, "png", "a.png"},     {QImage::Format_RGBX64, "png", "a.png"},
        {QImage::Format_RGB32, "jpeg", "a.jpeg"},    {QImage::Format_Grayscale8, "jpeg", "a.JPG"},
        {QImage::Format_Indexed8, "xpm", "a.xpm"},   {QImage::Format_ARGB32, "xpm", "a.xpm"},
        {QImage::Format_MonoLSB, "xbm", "a.xbm"},    {QImage::Format_Mono, "pbm", "a.pbm"},
        {QImage::Format_Grayscale8, "pgm", "a.pgm"}, {QImage::Format_RGB32, "ppm", "a.ppm"},
        {QImage::Format_ARGB32, "png", "a.jpg"},     {QImage::Format_ARGB32, "png", "a.bmp"},
        {QImage::Format_RGB32, "jpeg", "a"},
    };
    for (const PictureFile &c : files) {
        SCOPED_TRACE(testing::Message() << c.name << " of format " << c.format);
        const QString path = folder.filePath(c.name);
        ASSERT_TRUE(sampleOf(c.format).save(path, c.form));
        const QImage read(path);
        const ImagePtr img = load(path);
        ASSERT_TRUE(img);
        ASSERT_EQ(QSize(img->width, img->height), read.size());
        for (int y = 0; y < read.height(); ++y)
            for (int x = 0; x < read.width(); ++x) {
                const QRgb pixel = read.pixel(x, y);
                const int64_t i = int64_t(y) * img->width + x;
                ASSERT_EQ(img->red[i], qRed(pixel) * 257);
                ASSERT_EQ(img->green[i], qGreen(pixel) * 257);
                ASSERT_EQ(img->blue[i], qBlue(pixel) * 257);
                ASSERT_EQ(img->alpha[i], qAlpha(pixel) * 257);
            }
    }
}

/// Large files are decoded into tracked memory, which has to be given back, also by a cut file.
TEST_F(LoadTest, LargePicturesAreWholeAndLeaveNothing)
{
    const int64_t before = memRecord.currentBytes;
    for (const char *name : {"a.jpg", "a.png"}) {
        SCOPED_TRACE(name);
        const QString path = folder.filePath(name);
        ASSERT_TRUE(sampleOf(QImage::Format_RGB32).scaled(1300, 1000).save(path));
        const ImagePtr img = load(path);
        ASSERT_TRUE(img);
        EXPECT_EQ(img->toQImage(), QImage(path).convertToFormat(QImage::Format_ARGB32));
        QFile file(path);
        ASSERT_TRUE(file.resize(file.size() / 2));
        load(path);
    }
    EXPECT_EQ(memRecord.currentBytes, before);
}

TEST_F(LoadTest, JpegBringsItsExifLinesAndBlock)
{
    const QString path = folder.filePath("a.jpg");
    ASSERT_TRUE(sampleOf(QImage::Format_RGB32).save(path));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray plain = file.readAll(), block = syntheticExif();
    const QByteArray start = QByteArray("\xFF\xD8\xFF\xE1\0", 5) + char(block.size() + 2);
    ASSERT_LT(block.size(), 254);

    const ImagePtr img = load(write("b.jpg", start + block + plain.mid(2)));
    ASSERT_TRUE(img);
    EXPECT_EQ(img->tagBlock, block);
    EXPECT_TRUE(img->tagLines.contains("Manufacturer: Nobody"))
        << qPrintable(img->tagLines.join('|'));
    EXPECT_TRUE(img->tagLines.contains("Exposure Time: 1/125 s"));
    const ImagePtr cut = load(write("c.jpg", start + block.left(40) + plain.mid(2)));
    EXPECT_TRUE(!cut || cut->tagBlock != block);
}

TEST_F(LoadTest, TextKeysFollowTheirChain)
{
    struct Case {
        const char *fault;
        QMap<QString, QString> keys;
        const char *author, *created, *software;
    };
    const Case cases[] = {
        {"NoKeysClearDefaults", {}, "", "", "Kestrane"},
        {"AnyCase", {{"AUTHOR", "Ann"}}, "Ann", "", "Kestrane"},
        {"OtherProgram", {{"Software", "Other 1"}}, "", "", "Other 1 and Kestrane"},
        {"OwnProgramOnce", {{"Software", "Other 1 and Kestrane"}}, "", "", "Other 1 and Kestrane"},
        {"ModificationAloneIsCleared", {{"Modification Time", "later"}}, "", "", "Kestrane"},
        {"ModificationAfterCreation",
         {{"Creation Time", "first"}, {"Modification Time", "later"}},
         "",
         "later",
         "Kestrane"},
    };
    ws.mainAuthor = "Default";
    for (const Case &c : cases) {
        SCOPED_TRACE(c.fault);
        QImage picture(2, 2, QImage::Format_RGB32);
        picture.fill(Qt::red);
        picture.setDotsPerMeterX(11811);
        for (auto key = c.keys.begin(); key != c.keys.end(); ++key)
            picture.setText(key.key(), key.value());
        const QString path = folder.filePath("keys.png");
        ASSERT_TRUE(picture.save(path));
        const ImagePtr img = load(path);
        ASSERT_TRUE(img);
        EXPECT_EQ(img->author, c.author);
        EXPECT_EQ(img->creationTime, c.created);
        EXPECT_EQ(img->software, c.software);
        EXPECT_EQ(img->xDpi, 300);
        EXPECT_EQ(img->name, "keys.png");
        EXPECT_EQ(img->fullPath, path);
        EXPECT_EQ(img->folder, folder.path());
    }
}

TEST_F(LoadTest, RawFormsHoldTheirSamples)
{
    const ImagePtr low = load(write("a.RGBA", rgbaBytes("RAW32XY", "3", "2", 24)));
    ASSERT_TRUE(low);
    EXPECT_EQ(low->green[1], 5 * 7 * 257);
    const ImagePtr high = load(write("b.rgba", rgbaBytes("RAW64XY", " +3", "2x", 48)));
    ASSERT_TRUE(high); // the numbers are scanned as far as they go
    EXPECT_EQ(high->blue[2], (20 * 7) << 8 | 21 * 7);

    QByteArray pix(8200, '\0');
    pix[1] = char(0xF3);
    const ImagePtr small = load(write("unknown", pix));
    ASSERT_TRUE(small);
    EXPECT_EQ(QSize(small->width, small->height), QSize(128, 128));
    EXPECT_EQ(small->red[2], 65535);
    EXPECT_EQ(small->blue[3], 3 * 17 * 257);
    EXPECT_EQ(small->alpha[0], 65535);
}

TEST_F(LoadTest, CameraRawKeepsItsSamplesAndSaysWhatItLost)
{
    // Grey is grey whatever the interpolation: 10000 to the left, 40000 to the right.
    const auto value = [](int x, int) { return uint16_t(x < 32 ? 10000 : 40000); };
    const QByteArray dng = syntheticDng(64, 48, value);
    const ImagePtr img = load(write("a.dng", dng));
    ASSERT_TRUE(img);
    EXPECT_EQ(QSize(img->width, img->height), QSize(64, 48));
    const int64_t middle = 24 * 64 + 32;
    for (int p = 0; p < 3; ++p) {
        EXPECT_NEAR(img->colorPlanes()[p][middle - 16], 10000, 100);
        EXPECT_NEAR(img->colorPlanes()[p][middle + 16], 40000, 400);
    }
    EXPECT_EQ(img->alpha[middle], 65535);
    EXPECT_EQ(img->software + '|' + img->author + '|' + img->annotation,
              "Generator|A. Maker|A synthetic picture");
    EXPECT_DOUBLE_EQ(img->latitude, 48 + 30.0 / 60 + 36.0 / 3600);
    EXPECT_DOUBLE_EQ(img->longitude, 11.25);
    EXPECT_EQ(img->iso, 200);
    EXPECT_NEAR(img->shutter, 1.0 / 125, 1e-6);
    EXPECT_TRUE(ws.boxes.isEmpty()) << qPrintable(ws.boxes.join("|"));

    load(write("flat.dng", syntheticDng(64, 48, [](int, int) { return uint16_t(0); })));
    EXPECT_EQ(ws.boxes.size(), 1) << "all samples are equal: the person is told";
    ws.boxes.clear();
    takeDebugLines();
    const ImagePtr cut = load(write("cut.dng", dng.left(dng.size() - 4000)));
    EXPECT_TRUE(!ws.boxes.isEmpty() || (!cut && !takeDebugLines().isEmpty()));
    EXPECT_FALSE(load(write("no.nef", QByteArray(5000, 'x'))));
    EXPECT_TRUE(takeDebugLines().join(' ').contains("FAILED: iProcessor.open_file"));
    EXPECT_TRUE(ws.statusTexts.isEmpty()) << "the RAW path speaks to the debug channel";
}

struct BadFile {
    const char *fault, *name;
    QByteArray bytes;
    const char *said; ///< null: nothing in the status line
};

TEST_F(LoadTest, BadFilesSayWhyAndLeaveNothing)
{
    QByteArray hugePng = QByteArray::fromHex("89504E470D0A1A0A0000000D49484452") +
                         QByteArray::fromHex("00007FFF00007FFF0806000000");
    const QByteArray gif = QByteArray("GIF89a\xFF\x7F\xFF\x7F\x80\0\0", 13) + QByteArray(6, '\0') +
                           QByteArray(",\0\0\0\0\x01\0\x01\0\0\x02\x02\x44\x01\0;", 16);
    const BadFile cases[] = {
        {"EmptyUnknown", "a", "", "Unknown Image Format"},
        {"SevenBytes", "a.bin", "1234567", "Unknown Image Format"},
        {"WrongKind", "a.jpg", QByteArray(100, 'z'), "failed to load image"},
        {"EmptyPng", "a.png", "", "failed to load image"},
        {"HeaderOnly", "b.png", hugePng, "failed to load image"},
        {"GifCanvas", "c.gif", gif, "failed to load image"},
        {"RgbaOneByteLong", "a.rgba", rgbaBytes("RAW32XY", "3", "2", 25), "Unknown Image Format"},
        {"RgbaWrapsTo64", "b.rgba", rgbaBytes("RAW32XY", "65600", "1", 64 * 4),
         "Unknown Image Format"},
        {"RgbaNegative", "c.rgba", rgbaBytes("RAW64XY", "-3", "-2", 48), "Unknown Image Format"},
        {"DamagedNative", "a.ato", "ATO16BIT and more", "Unknown Image Format"},
        {"ShortPix", "a.pix", QByteArray(8191, 1), "Unknown Image Format"},
    };
    const int64_t before = memRecord.currentBytes;
    for (const BadFile &c : cases) {
        SCOPED_TRACE(c.fault);
        ws.statusTexts.clear();
        EXPECT_FALSE(load(write(c.name, c.bytes)));
        EXPECT_EQ(ws.statusTexts.join('|'), c.said);
    }
    EXPECT_FALSE(load(folder.filePath("missing.png")));
    EXPECT_FALSE(load(folder.path()));
    EXPECT_TRUE(ws.images.isEmpty());
    EXPECT_EQ(memRecord.currentBytes, before);
}

TEST_F(LoadTest, ShownPicturesGoToTheWorkspace)
{
    const QString path = write("a.rgba", rgbaBytes("RAW32XY", "3", "2", 24));
    const image *img = loadImageFile(path, "a.rgba", nullptr, true);
    EXPECT_EQ(ws.images.value(0), img);
    EXPECT_EQ(img->fullPath, path);
}

TEST_F(LoadTest, AMemoryFailureAnywhereLeavesNothing)
{
    const QString path = folder.filePath("a.png");
    ASSERT_TRUE(sampleOf(QImage::Format_ARGB32).save(path));
    for (int n = 1; n <= 7; ++n) {
        const int64_t blocks = memRecord.currentBlocks;
        memFailAt(n);
        EXPECT_FALSE(load(path)) << n;
        memFailAt(0);
        EXPECT_EQ(memRecord.currentBlocks, blocks);
        EXPECT_EQ(ws.statusTexts.takeLast(), "Image allocation failed");
    }
}

/// What fuzzing found stays mended.
TEST_F(LoadTest, FuzzFindingsStayMended)
{
    const QDir all(KESTRANE_SOURCE_DIR "/fuzz/regressions");
    int replayed = 0;
    for (const FuzzEntry &entry : fuzzEntries()) {
        const QDir dir(all.filePath(entry.name));
        for (const QString &name : dir.entryList(QDir::Files)) {
            SCOPED_TRACE(name.toStdString());
            QFile file(dir.filePath(name));
            ASSERT_TRUE(file.open(QIODevice::ReadOnly));
            const QByteArray bytes = file.readAll();
            entry.run(reinterpret_cast<const uint8_t *>(bytes.constData()), size_t(bytes.size()));
            ++replayed;
        }
    }
    EXPECT_GE(replayed, 3);
}
} // namespace
