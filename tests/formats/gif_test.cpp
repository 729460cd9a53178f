// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/gif.h"

#include "formats/gif_palette.h"
#include "formats/writers.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <QDir>
#include <QFile>
#include <QImageReader>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <set>

namespace
{
/// Asks to stop once the work is half done.
class ImpatientWorkspace : public RecordingWorkspace
{
public:
    void progress(const QString &text, int64_t done, int64_t total) override
    {
        ended = text.isEmpty() || total == 0;
        late = done * 2 > total;
    }
    bool cancelRequested() override { return impatient && late; }

    bool impatient = false, late = false, ended = false;
};

class GifTest : public testing::Test
{
protected:
    bool write(const std::vector<const image *> &frames, const GifAnimation &animation = {})
    {
        return writeGif({frames.begin(), frames.end()}, animation, path, &error);
    }
    QByteArray bytes() const
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir folder;
    QString path = folder.filePath("a.gif"), error;
    ImpatientWorkspace ws;
};

/// What a viewer is to show of a frame whose colours are kept.
QImage shown(const image &frame)
{
    QImage picture = frame.toQImage();
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) {
            const QRgb color = picture.pixel(x, y);
            picture.setPixel(x, y, qAlpha(color) < 128 ? qRgba(0, 0, 0, 0) : color | 0xFF000000);
        }
    return picture.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

/// A few colours in squares, moving with `step`; with holes where asked for.
ImagePtr squares(int step, bool holes)
{
    ImagePtr img = plainImage(150, 101, 65535, 65535, 65535);
    for (int64_t i = 0; i < img->sampleCount(); ++i) {
        const int square = int(i % 150 / 10 + i / 1500 + step) % 9;
        img->red[i] = uint16_t(square * 7000 + step);
        img->green[i] = square % 2 ? 32767 : 256;
        img->alpha[i] = holes && square > 5 ? 32767 : 32768;
    }
    return img;
}

TEST_F(GifTest, EachFrameShowsAlone)
{
    // In every order of frames with and without holes, the last before the first too.
    const ImagePtr frames[] = {squares(0, true), squares(1, false), squares(2, true),
                               squares(3, true), squares(4, false), squares(5, false)};
    GifAnimation animation;
    animation.delays = {7, 9, 11, 13, 15, 65535};
    animation.repeats = 300;
    std::vector<const image *> list;
    for (const ImagePtr &frame : frames)
        list.push_back(frame.get());
    for (const bool reversed : {false, true}) {
        animation.reversed = reversed;
        ASSERT_TRUE(write(list, animation)) << qPrintable(error);
        EXPECT_TRUE(ws.ended);
        QImageReader reader(path);
        EXPECT_EQ(reader.imageCount(), 6);
        for (size_t place = 0; place < list.size(); ++place) {
            const size_t number = reversed ? 5 - place : place;
            const QImage got = reader.read().convertToFormat(QImage::Format_ARGB32_Premultiplied);
            EXPECT_EQ(got, shown(*list[number])) << number;
            EXPECT_EQ(reader.nextImageDelay(), animation.delays[int(number)] * 10);
        }
        EXPECT_EQ(reader.loopCount(), 300);
    }
}

TEST_F(GifTest, ASingleFrameIsAPlainFile)
{
    for (const bool holes : {false, true}) {
        const ImagePtr img = squares(0, holes);
        ASSERT_TRUE(write({img.get()})) << qPrintable(error);
        EXPECT_FALSE(bytes().contains("NETSCAPE"));
        EXPECT_TRUE(bytes().startsWith(holes ? "GIF89a" : "GIF87a"));
        EXPECT_EQ(QImage(path).convertToFormat(QImage::Format_ARGB32_Premultiplied), shown(*img));
    }
}

TEST_F(GifTest, ColoursAreKeptUpToTheLimit)
{
    for (const int colors : {2, 3, 255, 256})
        for (const bool hole : {false, true})
            for (const int surplus : {0, 1}) {
                SCOPED_TRACE(testing::Message() << colors << hole << surplus);
                const int present = colors - hole + surplus;
                const ImagePtr img = plainImage(64, 16, 0, 0, 0);
                for (int64_t i = 0; i < img->sampleCount(); ++i)
                    img->blue[i] = uint16_t(i % present << 8), img->green[i] = i % present > 255;
                for (int64_t i = 0; present > 256 && i < img->sampleCount(); ++i)
                    img->green[i] = i % present > 255 ? 65535 : 0;
                img->alpha[1023] = hole ? 0 : 65535;
                GifAnimation animation;
                animation.colors = colors;
                ASSERT_TRUE(write({img.get()}, animation)) << qPrintable(error);
                const QImage got =
                    QImage(path).convertToFormat(QImage::Format_ARGB32_Premultiplied);
                EXPECT_EQ(got == shown(*img), surplus == 0);
                std::set<QRgb> seen;
                for (int i = 0; i < 1024; ++i)
                    seen.insert(got.pixel(i % 64, i / 64));
                EXPECT_LE(int(seen.size()), colors);
                EXPECT_EQ(qAlpha(got.pixel(63, 15)), hole ? 0 : 255);
            }
}

/// Root mean square of what blocks of `side` x `side` samples differ in the mean, in bytes.
double difference(const QImage &got, const image &img, int side)
{
    double sum = 0;
    int blocks = 0;
    for (int y = 0; y + side <= img.height; y += side)
        for (int x = 0; x + side <= img.width; x += side, ++blocks) {
            double all[3] = {};
            for (int i = 0; i < side * side; ++i) {
                const QRgb color = got.pixel(x + i % side, y + i / side);
                const int64_t at = int64_t(y + i / side) * img.width + x + i % side;
                all[0] += qRed(color) - (img.red[at] >> 8);
                all[1] += qGreen(color) - (img.green[at] >> 8);
                all[2] += qBlue(color) - (img.blue[at] >> 8);
            }
            for (const double channel : all)
                sum += channel * channel / std::pow(side, 4) / 3;
        }
    return std::sqrt(sum / blocks);
}

TEST_F(GifTest, ManyColoursAreReducedAndDiffused)
{
    // 120000 colours: more than the histogram keeps apart.
    const ImagePtr img = plainImage(400, 300, 0, 0, 0);
    for (int64_t i = 0; i < img->sampleCount(); ++i) {
        img->red[i] = uint16_t(i % 400 * 160);
        img->green[i] = uint16_t(i / 400 * 218);
        img->blue[i] = uint16_t((i % 400 + i / 400) * 90);
    }
    GifAnimation animation;
    for (const int colors : {256, 16}) {
        animation.colors = colors;
        animation.dither = false;
        ASSERT_TRUE(write({img.get()}, animation));
        const QImage plain(path);
        animation.dither = true;
        ASSERT_TRUE(write({img.get()}, animation));
        const QImage dithered(path);
        // A plane of colours cut into `colors` equal squares would err by about this.
        EXPECT_LT(difference(plain, *img, 1), 1.15 * 85 / std::sqrt(colors));
        EXPECT_LT(difference(dithered, *img, 10), 0.7 * difference(plain, *img, 10));
    }
}

TEST_F(GifTest, ThePreviewShowsTheFile)
{
    const ImagePtr img = randomImage(160, 120, 5);
    std::atomic<bool> stop{false};
    GifAnimation animation{.colors = 20};
    for (const bool dither : {false, true}) {
        animation.dither = dither;
        ASSERT_TRUE(write({img.get()}, animation));
        const GifPreview made = previewGifFrame(*img, animation, false, stop);
        EXPECT_EQ(made.picture, QImage(path).convertToFormat(QImage::Format_ARGB32));
        EXPECT_NEAR(double(made.bytes), double(bytes().size()), 20.0);
    }
    stop = true;
    EXPECT_TRUE(previewGifFrame(*img, animation, false, stop).picture.isNull());
}

TEST_F(GifTest, TheNearestEntryIsFound)
{
    std::mt19937 random(11);
    std::vector<PaletteColor> palette;
    for (int i = 0; i < 256; ++i) // half of them crowded together
        palette.push_back(
            i % 2 ? PaletteColor{uint8_t(random()), uint8_t(random()), uint8_t(random())}
                  : PaletteColor{uint8_t(120 + random() % 9), 99, uint8_t(i)});
    NearestColor nearest(palette);
    for (int i = 0; i < 20000; ++i) {
        const int r = int(random() % 256), g = int(random() % 256), b = int(random() % 256);
        const auto far = [&](const PaletteColor &c) {
            return (c.red - r) * (c.red - r) + (c.green - g) * (c.green - g) +
                   (c.blue - b) * (c.blue - b);
        };
        const auto best =
            std::min_element(palette.begin(), palette.end(),
                             [&](const auto &one, const auto &two) { return far(one) < far(two); });
        ASSERT_EQ(nearest.find(r, g, b), best - palette.begin());
    }
}

TEST_F(GifTest, RefusalsKeepTheOldFile)
{
    const ImagePtr img = randomImage(200, 400, 3), other = randomImage(200, 399, 3);
    ASSERT_TRUE(write({img.get()}));
    const QByteArray old = bytes();
    struct Case {
        const char *fault;
        std::vector<const image *> frames;
        GifAnimation animation;
        bool impatient;
    };
    const Case cases[] = {
        {"NoFrame", {}, {}, false},
        {"NullFrame", {img.get(), nullptr}, {}, false},
        {"OtherSize", {img.get(), other.get()}, {}, false},
        {"Delay", {img.get()}, {.delay = 65536}, false},
        {"OneOfTheDelays", {img.get(), img.get()}, {.delays = {1, -1}}, false},
        {"Repeats", {img.get()}, {.repeats = -1}, false},
        {"OneColour", {img.get()}, {.colors = 1}, false},
        {"Cancelled", {img.get(), img.get()}, {}, true},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.fault);
        ws.impatient = c.impatient;
        EXPECT_FALSE(write(c.frames, c.animation));
        EXPECT_FALSE(error.isEmpty());
        EXPECT_EQ(error == kSaveCancelled, c.impatient);
        EXPECT_EQ(bytes(), old);
        EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files).size(), 1) << "no scraps are left";
        EXPECT_TRUE(ws.ended);
    }
    ws.impatient = false;
    path = folder.filePath("no/a.gif");
    EXPECT_FALSE(write({img.get()}));
    EXPECT_FALSE(error.isEmpty());
}
} // namespace
