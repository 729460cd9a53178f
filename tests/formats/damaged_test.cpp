// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/memory.h"
#include "formats/load.h"
#include "formats/readers.h"
#include "samplefiles.h"
#include "support/debuglog.h"
#include "support/recordingworkspace.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <random>

namespace
{
constexpr int kVariants = 20; // of each file

/// Cut, a few bits turned, a number made huge or zero, a piece moved to another place.
QByteArray damaged(QByteArray bytes, std::mt19937 *random)
{
    const auto below = [random](int most) { return int((*random)() % uint32_t(most)); };
    // Headers are where lies are told.
    const auto place = [&] { return below(below(2) ? bytes.size() : std::min(bytes.size(), 64)); };
    switch (below(4)) {
    case 0:
        return bytes.left(place());
    case 1:
        for (int i = below(8); i >= 0; --i)
            bytes[place()] = char(below(256));
        return bytes;
    case 2:
        return bytes.replace(place(), 4, QByteArray(4, below(2) ? '\x7F' : '\0'));
    default:
        return bytes.insert(place(), bytes.mid(place(), below(40)));
    }
}

bool usable(const image &img)
{
    for (const uint16_t *plane : img.workPlanes())
        if (!plane)
            return false;
    return img.valid() && img.width > 0 && img.height > 0 && img.width <= kMaxImageSide &&
           img.height <= kMaxImageSide;
}

/// Each comes to a picture, or to none and a word about it; nothing stays behind.
TEST(DamagedFiles, AreReadOrRefusedWithAMessage)
{
    RecordingWorkspace ws;
    const QTemporaryDir folder;
    std::mt19937 random(20260101);
    int tried = 0, pictures = 0;
    for (const SampleFile &sample : sampleFiles())
        for (int i = 0; i < kVariants; ++i, ++tried) {
            SCOPED_TRACE(testing::Message() << sample.target << ' ' << sample.extension.constData()
                                            << ", variant " << tried);
            const QString path = folder.filePath("a" + sample.extension);
            QFile file(path);
            ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
            // The first variant is the file itself, which has to be read. An EXIF block alone
            // is no picture, and ".bmp" is none of the names that are read.
            const bool sound = i == 0 && !sample.extension.isEmpty() && sample.extension != ".bmp";
            file.write(i == 0 ? sample.bytes : damaged(sample.bytes, &random));
            file.close();
            ws.statusTexts.clear();
            ws.boxes.clear();
            takeDebugLines();
            const int64_t before = memRecord.currentBytes;
            {
                const ImageHolder img(loadImageFile(path, {}, nullptr, false));
                pictures += img ? 1 : 0;
                EXPECT_TRUE(img || !sound);
                EXPECT_TRUE(!img || usable(*img));
                for (const image *layer : img ? img->layers : QList<image *>())
                    EXPECT_TRUE(usable(*layer));
                const bool said = !ws.statusTexts.isEmpty() || !ws.boxes.isEmpty() ||
                                  !takeDebugLines().isEmpty(); // there the RAW path speaks
                EXPECT_TRUE(img || said);
            }
            EXPECT_EQ(memRecord.currentBytes, before);
        }
    EXPECT_GE(tried, 500);
    EXPECT_GT(pictures, tried / 10);
    EXPECT_LT(pictures, tried);
}
} // namespace
