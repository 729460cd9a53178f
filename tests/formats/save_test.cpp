// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/load.h"
#include "formats/save.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>

#include <sys/resource.h>

namespace
{
class SaveTest : public testing::Test
{
protected:
    FileRecord at(const QString &name) const { return FileRecord::fromPath(folder.filePath(name)); }
    QByteArray bytesOf(const QString &name) const
    {
        QFile file(folder.filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    ImagePtr reload(const QString &name)
    {
        return ImagePtr(loadImageFile(folder.filePath(name), {}, nullptr, false));
    }

    QTemporaryDir folder;
    RecordingWorkspace ws;
};

TEST_F(SaveTest, RawFormRoundTrips)
{
    const ImagePtr img = randomImage(23, 17, 5);
    ASSERT_TRUE(saveImageFile(at("a.rgba"), img.get(), false));
    EXPECT_EQ(ws.questions, QStringList("Select image bit depth:"));
    EXPECT_EQ(ws.statusTexts, QStringList("Save Complete"));
    EXPECT_EQ(bytesOf("a.rgba").left(24), QByteArray("RAW64XY\0"
                                                     "23\0\0\0\0\0\0"
                                                     "17\0\0\0\0\0\0",
                                                     24));
    EXPECT_TRUE(sameColors(*img, *reload("a.rgba")));
    EXPECT_FALSE(img->changed);
    EXPECT_EQ(img->name, "a.rgba");

    ws.rgbaDepth = 32;
    ASSERT_TRUE(saveImageFile(at("b.rgba"), img.get(), false));
    const ImagePtr low = reload("b.rgba");
    ASSERT_TRUE(low);
    EXPECT_EQ(low->red[7], (img->red[7] >> 8) * 257);
    ws.answer = 2;
    EXPECT_FALSE(saveImageFile(at("c.rgba"), img.get(), false));
    EXPECT_EQ(ws.statusTexts.last(), "save cancelled");
    EXPECT_FALSE(QFileInfo::exists(folder.filePath("c.rgba")));
}

TEST_F(SaveTest, PngKeepsHighBytesTextsAndDpi)
{
    const ImagePtr img = randomImage(19, 11, 6);
    img->author = "Ann";
    img->xDpi = 240;
    ASSERT_TRUE(saveImageFile(at("a.png"), img.get(), false));
    EXPECT_TRUE(ws.statusTexts.isEmpty()) << "this form is saved without a word";
    const ImagePtr back = reload("a.png");
    ASSERT_TRUE(back);
    for (int p = 0; p < 4; ++p)
        for (int64_t i = 0; i < img->sampleCount(); ++i)
            ASSERT_EQ(back->colorPlanes()[p][i], (img->colorPlanes()[p][i] >> 8) * 257);
    EXPECT_EQ(back->author, "Ann");
    EXPECT_EQ(back->xDpi, 240);
}

TEST_F(SaveTest, PngAtSixteenBitsIsExactBothWays)
{
    const ImagePtr img = randomImage(19, 11, 6);
    img->author = "Ann";
    img->xDpi = 240;
    ws.png16 = true;
    ASSERT_TRUE(saveImageFile(at("a.png"), img.get(), false));
    const ImagePtr back = reload("a.png");
    ASSERT_TRUE(back);
    EXPECT_TRUE(sameColors(*img, *back));
    EXPECT_EQ(back->author + QString::number(back->xDpi), "Ann240");
    QImage grey(3, 1, QImage::Format_Grayscale16);
    reinterpret_cast<quint16 *>(grey.bits())[1] = 12345;
    ASSERT_TRUE(grey.save(at("grey.png").fullPath));
    EXPECT_EQ(reload("grey.png")->blue[1], 12345);

    // Switched off, the same files give 8 bits.
    ws.png16 = false;
    EXPECT_EQ(reload("a.png")->toQImage(),
              QImage(at("a.png").fullPath).convertToFormat(QImage::Format_ARGB32));
    EXPECT_EQ(reload("grey.png")->blue[1] % 257, 0);
}

TEST_F(SaveTest, JpegCarriesItsExifBlock)
{
    const ImagePtr img = plainImage(8, 8, 65535, 0, 0);
    img->tagBlock = QByteArray("Exif\0\0II*\0\x08\0\0\0\0\0\0\0\0\0", 20);
    ASSERT_TRUE(saveImageFile(at("a.JPG"), img.get(), false));
    const QByteArray with = bytesOf("a.JPG");
    EXPECT_EQ(with.left(6), QByteArray::fromHex("FFD8FFE10016"));
    EXPECT_EQ(with.mid(6, 20), img->tagBlock);
    EXPECT_EQ(reload("a.JPG")->tagBlock, img->tagBlock);
    ws.saveEXIF = false;
    ASSERT_TRUE(saveImageFile(at("b.jpeg"), img.get(), false));
    EXPECT_EQ(bytesOf("b.jpeg").mid(2), with.mid(26)) << "nothing else differs";
}

TEST_F(SaveTest, RefusalsWriteNothingAndKeepThePictureChanged)
{
    struct Case {
        const char *fault, *name;
        uint16_t alpha, kind;
        bool quality;
        int answer;
        const char *said;
    };
    const Case cases[] = {
        {"UnknownForm", "a.bmp", 65535, 0, true, -1, "Can't save in this format."},
        {"LayeredElsewhere", "a.png", 65535, 1, true, -1, "Can't save a layered image"},
        {"TransparencyKept", "a.jpg", 65534, 0, true, 1, nullptr},
        {"QualityCancelled", "a.jpg", 65535, 0, false, -1, nullptr},
        {"NoSuchFolder", "no/a.png", 65535, 0, true, -1, "could not be saved"},
        {"NoSuchFolderOwnForm", "no/a.mcai", 65535, 0, true, -1, "could not be saved"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.fault);
        const ImagePtr img = plainImage(4, 4, 1, 2, 3, c.alpha);
        img->kind = c.kind;
        img->changed = true;
        ws.boxes.clear();
        ws.answer = c.answer;
        ws.acceptQuality = c.quality;
        EXPECT_FALSE(saveImageFile(at(c.name), img.get(), false));
        EXPECT_TRUE(img->changed);
        EXPECT_FALSE(QFileInfo::exists(folder.filePath(c.name)));
        EXPECT_EQ(ws.boxes.size(), c.said ? 1 : 0);
        EXPECT_TRUE(!c.said || ws.boxes.value(0).contains(c.said)) << qPrintable(ws.boxes.value(0));
    }
}

/// Files of this process end at `bytes` while it lives, as on a disk that fills up.
class FullDisk
{
public:
    explicit FullDisk(rlim_t bytes) : handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit full = {bytes, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &full);
    }
    ~FullDisk()
    {
        setrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, handler);
    }

private:
    rlimit before = {};
    void (*handler)(int);
};

TEST_F(SaveTest, AFailedSaveLeavesTheOldFile)
{
    const ImagePtr img = randomImage(60, 40, 7);
    for (const char *name : {"a.rgba", "a.png", "a.jpg", "a.ato", "a.mcai"}) {
        SCOPED_TRACE(name);
        ASSERT_TRUE(saveImageFile(at(name), img.get(), false));
        const QByteArray old = bytesOf(name);
        img->name = "as before";
        img->changed = true;
        ws.boxes.clear();
        {
            const FullDisk disk(500);
            EXPECT_FALSE(saveImageFile(at(name), img.get(), false));
        }
        EXPECT_TRUE(img->changed);
        EXPECT_EQ(img->name, "as before");
        EXPECT_EQ(bytesOf(name), old);
        EXPECT_EQ(ws.boxes.size(), 1);
    }
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files).size(), 5) << "no scraps are left";
}
} // namespace
