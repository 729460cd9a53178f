// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/layermodes.h"
#include "core/undo.h"
#include "core/warpfield.h"
#include "formats/develop.h"
#include "formats/exif.h"
#include "formats/load.h"
#include "formats/orient.h"
#include "support/dng.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace
{
class OrientTest : public testing::Test
{
protected:
    RecordingWorkspace ws;
};

/// Where the sample (x, y) of a picture goes, in the words of the EXIF standard: what its row 0
/// and its column 0 are of the upright picture.
QPoint uprightPlace(int orientation, int x, int y, int width, int height)
{
    const int right = width - 1 - x, down = height - 1 - y;
    const QPoint places[] = {{x, y}, {right, y}, {right, down}, {x, down},
                             {y, x}, {down, x},  {down, right}, {y, right}};
    return places[orientation - 1];
}

TEST_F(OrientTest, EveryOrientationMovesSamplesPlacesAndComesBack)
{
    for (int orientation = 2; orientation <= 8; ++orientation)
        for (const int height : {64, 31}) { // with and without a middle row, whole blocks or not
            SCOPED_TRACE(orientation);
            const int width = 75;
            const ImagePtr img = randomImage(width, height, 9),
                           before = randomImage(width, height, 9);
            img->xDpi = 100;
            img->yDpi = 200;
            img->xCenter = 3;
            img->yCenter = 5;
            img->guidesX = {10};
            img->guidesY = {0};
            Notation note;
            note.textX = 7;
            note.textY = 2;
            note.points = QPolygon(QVector<QPoint>{{1, 2}});
            img->notations << note;
            ASSERT_TRUE(orientImage(img.get(), orientation));
            const bool turned = orientation > 4;
            ASSERT_EQ(QSize(img->width, img->height),
                      turned ? QSize(height, width) : QSize(width, height));
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x) {
                    const QPoint to = uprightPlace(orientation, x, y, width, height);
                    for (size_t p = 0; p < 5; ++p)
                        ASSERT_EQ(img->workPlanes()[p][to.y() * img->width + to.x()],
                                  before->workPlanes()[p][y * width + x]);
                }
            EXPECT_EQ(img->xDpi, turned ? 200 : 100);
            EXPECT_EQ(QPoint(img->xCenter, img->yCenter),
                      uprightPlace(orientation, 3, 5, width, height));
            EXPECT_EQ(QPoint(img->notations[0].textX, img->notations[0].textY),
                      uprightPlace(orientation, 7, 2, width, height));
            EXPECT_EQ(img->notations[0].points[0], uprightPlace(orientation, 1, 2, width, height));
            // The edges left and right of a sample, whichever way round.
            const QPoint left = uprightPlace(orientation, 9, 0, width, height);
            const QPoint right = uprightPlace(orientation, 10, 0, width, height);
            const int edge = turned ? std::max(left.y(), right.y()) : std::max(left.x(), right.x());
            EXPECT_EQ(turned ? img->guidesY : img->guidesX, QList<int>{edge});
            EXPECT_EQ(img->undoList.size(), 1);
            undo(img.get());
            EXPECT_TRUE(samePlanes(*img, *before));
            EXPECT_EQ(img->notations[0].textX, 7);
        }
    const ImagePtr img = randomImage(5, 4, 1);
    EXPECT_FALSE(orientImage(img.get(), 0) || orientImage(img.get(), 9));
    EXPECT_TRUE(orientImage(img.get(), 1));
    EXPECT_TRUE(img->undoList.isEmpty());
}

/// A displacement points at a sample of the picture below; it has to point at where that went.
TEST_F(OrientTest, DisplacementsTurnWithTheirPicture)
{
    for (int orientation = 2; orientation <= 8; ++orientation) {
        const ImagePtr field = plainImage(8, 6, 0, 0, 0);
        field->kind = 2;
        field->layerMode = kWarpMode;
        for (int64_t i = 0; i < field->sampleCount(); ++i)
            setDisplacement(field.get(), i, {2, 0.5});
        ASSERT_TRUE(orientImage(field.get(), orientation));
        const QPoint a = uprightPlace(orientation, 0, 0, 8, 6);
        const QPoint moved = uprightPlace(orientation, 4, 1, 8, 6) - a; // twice as far
        const Displacement d = displacementAt(*field, 5);
        EXPECT_EQ(QPointF(d.x, d.y) * 2, QPointF(moved)) << orientation;
    }
}

TEST_F(OrientTest, TheBlockFollowsAndUndoBringsItBack)
{
    const ImagePtr img = randomImage(6, 4, 2);
    img->tagBlock = syntheticExif(); // orientation 6
    img->tagLines = exifLines(img->tagBlock) << "a line of somebody's own";
    const QStringList before = img->tagLines;
    ASSERT_TRUE(turnUpright(img.get()));
    EXPECT_EQ(img->width, 4);
    EXPECT_EQ(exifOrientation(img->tagBlock), 1);
    QStringList expected = before;
    expected.replaceInStrings("right, top", "top, left");
    EXPECT_NE(before, expected);
    EXPECT_EQ(img->tagLines, expected);
    EXPECT_FALSE(turnUpright(img.get())) << "nothing is left to do";
    undo(img.get());
    EXPECT_EQ(img->tagBlock, syntheticExif());
    EXPECT_EQ(img->tagLines, before);
    redo(img.get());
    EXPECT_EQ(exifOrientation(img->tagBlock), 1);
}

TEST_F(OrientTest, BlocksOfBothByteOrdersAndHostileOnes)
{
    QByteArray big("Exif\0\0MM\0*\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0\x08\0\0\0\0\0\0", 32);
    EXPECT_EQ(exifOrientation(big), 8);
    EXPECT_TRUE(setExifOrientation(&big, 3));
    EXPECT_EQ(exifOrientation(big), 3);
    EXPECT_FALSE(setExifOrientation(&big, 0) || setExifOrientation(&big, 9));
    for (const QByteArray &whole : {big, syntheticExif()})
        for (int size = 0; size < whole.size(); ++size) {
            QByteArray cut = whole.left(size);
            const int found = exifOrientation(cut);
            EXPECT_TRUE(found == 0 || found == exifOrientation(whole));
            EXPECT_EQ(setExifOrientation(&cut, 2), found != 0);
            EXPECT_EQ(cut.size(), size);
        }
    QByteArray far = syntheticExif();
    far.replace(10, 4, "\xFF\xFF\xFF\xFF");
    EXPECT_FALSE(setExifOrientation(&far, 2));
}

TEST_F(OrientTest, DevelopingIsOneActAndOnlyForRaw)
{
    // Darker than the sensor allows, the left half at a quarter of the right one's light.
    QByteArray dng =
        syntheticDng(64, 48, [](int x, int) { return uint16_t(x < 32 ? 4000 : 16000); });
    dng.replace("Generator", QByteArray(9, '\0'));
    const int tag = dng.indexOf(QByteArray("\x12\x01\x03\0\x01\0\0\0\x01\0", 10));
    ASSERT_GT(tag, 0);
    dng[tag + 8] = 6;
    const QTemporaryDir folder;
    const QString path = folder.filePath("a.dng");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(dng) == dng.size());
    file.close();
    const auto load = [&] { return ImagePtr(loadImageFile(path, {}, nullptr, false)); };

    const ImagePtr linear = load();
    ASSERT_TRUE(linear);
    EXPECT_EQ(linear->software, "LibRAW construct");
    EXPECT_EQ(linear->cameraOrientation, 6);
    EXPECT_EQ(QSize(linear->width, linear->height), QSize(64, 48)) << "loaded unturned";
    const ImagePtr untouched = load();

    ASSERT_TRUE(developRaw(linear.get()));
    EXPECT_EQ(QSize(linear->width, linear->height), QSize(48, 64));
    const double white = untouched->green[24 * 64 + 60] / kWhite;
    const uint16_t dark = linear->green[5 * 48 + 24], light = linear->green[60 * 48 + 24];
    EXPECT_EQ(dark, uint16_t(developCurve(untouched->green[24 * 64 + 5] / kWhite, white) * kWhite));
    EXPECT_GT(light, 58000) << "white is nearly white";
    EXPECT_FALSE(developRaw(linear.get())) << "a second time";
    EXPECT_EQ(linear->undoList.size(), 1);
    undo(linear.get());
    EXPECT_TRUE(sameColors(*linear, *untouched));
    EXPECT_EQ(linear->cameraOrientation, 6);

    ws.rawDevelop = true;
    const ImagePtr developed = load();
    ASSERT_TRUE(developed);
    EXPECT_EQ(developed->height, 64);
    EXPECT_FALSE(developed->changed);
    EXPECT_FALSE(developRaw(randomImage(4, 4, 1).get()));
}

TEST_F(OrientTest, TheCurveRisesToWhite)
{
    for (const double white : {0.0, 0.02, 0.3, 1.0}) {
        double last = -1;
        for (int i = 0; i <= 1000; ++i) {
            const double now = developCurve(i / 1000.0, white);
            EXPECT_GT(now, last) << white << ' ' << i;
            last = now;
        }
        EXPECT_EQ(developCurve(0, white), 0);
        EXPECT_NEAR(last, 1.0, 1e-12);
    }
}
} // namespace
