// SPDX-License-Identifier: GPL-3.0-or-later
#include "layers/splits.h"

#include "core/compose.h"
#include "core/fixture.h"
#include "core/layermodes.h"
#include "layers/stack.h"

namespace
{
struct SplitCase {
    const char *fault;
    QList<image *> (*split)(const image &);
    const char *names;
    int tolerance;
};

const SplitCase kSplits[] = {
    {"Channels", splitChannels, "p[red] p[green] p[blue]", 0},
    {"Cmy", splitCMY, "p[cyan] p[magenta] p[yellow]", 0},
    {"Cmyk", splitCMYK, "p[cyan] p[magenta] p[yellow] p[black]", 0},
    {"Hsv", splitHSV, "p[value] p[saturation] p[hue]", 16},
};

class Splits : public testing::TestWithParam<SplitCase>
{
protected:
    RecordingWorkspace ws;
};

INSTANTIATE_TEST_SUITE_P(All, Splits, testing::ValuesIn(kSplits),
                         [](const auto &row) { return row.param.fault; });

int largestDifference(const image &one, const image &other)
{
    int most = 0;
    for (size_t p = 0; p < 4; ++p)
        for (int64_t i = 0; i < one.sampleCount(); ++i)
            most = std::max(most, std::abs(one.colorPlanes()[p][i] - other.colorPlanes()[p][i]));
    return most;
}
} // namespace

TEST_P(Splits, PartsRecombineOverWhateverLiesBelow)
{
    const SplitCase &split = GetParam();
    const ImagePtr source = randomImage(67, 31, 11);
    source->name = QStringLiteral("p");
    std::fill_n(source->alpha, source->sampleCount(), uint16_t(65535));
    for (const int below : {-1, 0, 12345, 65535}) { // -1: the bare master
        image *master = plainImage(67, 31, 0, 0, 0, 0).release();
        master->kind = 1;
        if (below >= 0)
            addLayer(master, plainImage(67, 31, uint16_t(below), 7, 65535).release());
        QStringList names;
        for (image *part : split.split(*source)) {
            names << part->name;
            EXPECT_EQ(part->kind, 0);
            EXPECT_TRUE(addLayer(master, part));
        }
        EXPECT_EQ(names.join(QLatin1Char(' ')), split.names);
        compose(master, false);
        EXPECT_LE(largestDifference(*master, *source), split.tolerance) << below;
        destroyTree(&master);
    }
}

TEST_P(Splits, PartsCarryAlphaAndPlaceAndTheEncodingIsHonoured)
{
    const ImagePtr source = randomImage(9, 5, 12);
    source->xOffset = -3;
    source->yFraction = 0.5;
    const QList<image *> plain = GetParam().split(*source);
    source->imageMode = 1;
    const QList<image *> decoded = GetParam().split(*source);
    bool differs = false;
    for (int i = 0; i < plain.size(); ++i) {
        EXPECT_TRUE(std::equal(plain[i]->alpha, plain[i]->alpha + 45, source->alpha));
        EXPECT_TRUE(plain[i]->xOffset == -3 && plain[i]->yFraction == 0.5);
        EXPECT_EQ(decoded[i]->imageMode, 0);
        differs = differs || !sameColors(*plain[i], *decoded[i]);
    }
    EXPECT_TRUE(differs);
    qDeleteAll(plain + decoded);
}

TEST_P(Splits, ShortMemoryKeepsNothing)
{
    const ImagePtr source = randomImage(9, 5, 12);
    const int64_t blocks = memRecord.currentBlocks;
    memFailAt(16); // within the third part
    EXPECT_TRUE(GetParam().split(*source).isEmpty());
    memFailAt(0);
    EXPECT_EQ(memRecord.currentBlocks, blocks);
}
