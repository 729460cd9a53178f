// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/colour.h"
#include "core/memory.h"
#include "core/rows.h"
#include "operators/base/operatortable.h"
#include "operators/base/opwrapper.h"
#include "operators/pipeline/colorblending.h"
#include "operators/pipeline/colourset.h"
#include "operators/pipeline/samplestatistics.h"
#include "operators/table/allops.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>

namespace
{
using Values = std::vector<double>;
using Entries = std::vector<int>;
using Statistics = std::array<int, 9>;

int stored(double v)
{
    return std::isnan(v) || v <= 0 ? 0 : v >= 65535 ? 65535 : int(v);
}

/// Statistics by the book; false without samples.
bool statistics(const image &img, int maskAbove, Statistics *out)
{
    std::vector<int> samples[3];
    for (int64_t i = 0; i < img.sampleCount(); ++i)
        if (img.gmask[i] > maskAbove && img.alpha[i] > 0)
            for (int c = 0; c < 3; ++c)
                samples[c].push_back(img.colorPlanes()[size_t(c)][i]);
    for (size_t c = 0; c < 3 && !samples[0].empty(); ++c) {
        (*out)[c] = *std::min_element(samples[c].begin(), samples[c].end());
        (*out)[3 + c] = *std::max_element(samples[c].begin(), samples[c].end());
        const int64_t sum = std::accumulate(samples[c].begin(), samples[c].end(), int64_t(0));
        (*out)[6 + c] = int(sum / int64_t(samples[c].size()));
    }
    return !samples[0].empty();
}

struct Given {
    Values p;
    Statistics kept;
    const image &img;
};

/// The darkest and the brightest sample that an operator goes by.
std::pair<int, int> range(const Given &g, bool sample, int maskAbove)
{
    Statistics s = g.kept;
    if (sample)
        statistics(g.img, maskAbove, &s);
    return {std::min({s[0], s[1], s[2]}), std::max({s[3], s[4], s[5]})};
}

int cutOf(const Given &g)
{
    const auto [lo, hi] = range(g, g.p[0] != 0, 0);
    return g.p[1] == 0 ? lo : g.p[1] == 2 ? hi : (hi - lo) / 2 + lo;
}

Entries identity()
{
    Entries t(65536);
    std::iota(t.begin(), t.end(), 0);
    return t;
}

Entries contrast(const Given &g, int channel, double multiplier)
{
    const double c = std::trunc(32768 - g.p[2] / 100 * 32768);
    const double k = (g.p[0] / 100 + 1) * multiplier;
    Entries t = identity();
    for (int i = 0; i < 65536 && g.p[size_t(3 + channel)] != 0; ++i)
        t[size_t(i)] = stored(std::trunc((i - c) * k + c + g.p[1] / 100 * 65535));
    return t;
}

Entries window(const Given &g, int)
{
    const int start = int(g.p[1]) * 257, end = std::min(start + int(g.p[0]) * 257, 65536);
    Entries t(65536, 0);
    double sum = 0;
    for (int i = start; i < end; ++i, sum += 65535.0 / (end - start))
        t[size_t(i)] = stored(sum);
    for (int i = end; i < 65536; ++i)
        t[size_t(i)] = g.p[2] != 0 ? 0 : 65535;
    return t;
}

Entries gain(const Given &g, int)
{
    const int black = int(g.p[0] / 200 * 65535), white = int(g.p[2] / 200 * 65535);
    const double k = g.p[1] / 200 * 32 + 0.1;
    Entries t = identity();
    for (int i = 0; i < black; ++i)
        t[size_t(i)] = 0;
    double x = 0;
    for (int i = black; i < white; ++i, x += 1.0 / (white - black))
        t[size_t(i)] = stored((1 - std::exp(-k * x)) / (1 - std::exp(-k)) * 65535);
    for (int i = white; i < 65536; ++i)
        t[size_t(i)] = 65535;
    return t;
}

Entries darknessGain(const Given &g, int)
{
    Entries t = identity();
    const int n = int(g.p[2] / 100 * 32767);
    double phase = g.p[1] / 100 * M_PI / 2, fade = 1;
    const double step = (M_PI - phase) / n;
    for (int i = 0; i < n; ++i, phase += step, fade -= 1.0 / n)
        t[size_t(i)] = stored((std::sin(phase) * (2 * g.p[0] / 100) * fade + 1) * i);
    return t;
}

Entries levels(const Given &g, int)
{
    const double b = g.p[0], s = g.p[1], m = g.p[2], h = g.p[3], w = g.p[4];
    const double inBlack = b > 0 ? b / 100 : 0;
    const double inScale = (w > 0 ? (100 - w) / 100 : 1) - inBlack;
    const double bottom = b < 0 ? -b / 100 : 0, top = w < 0 ? (w + 100) / 100 : 1;
    const double lo = s / 100 * 0.5, span = (h / 100 * 0.5 + 0.5) - lo;
    double e = 1, t = 2 * m / 100;
    if (m > 49) {
        t -= 1;
        e = 1 - t < 0.01 ? 100.0 : 1 / (1 - t);
    } else {
        const double d = (1 - t) * 9 + 1;
        e = d > 9.99 ? 0.10010010010010009 : 1 / d;
    }
    Entries entries(65536);
    for (int i = 0; i < 65536; ++i) {
        double x = i / 65635.0;
        x = inScale < 1 ? (x - inBlack) * (1 / inScale) : x;
        x = span != 0 ? (x - lo) / span : x;
        x = m != 50 ? (x + std::pow(x, e)) * 0.5 : x;
        entries[size_t(i)] = stored((x * (top - bottom) + bottom) * 65535);
    }
    return entries;
}

Entries cut(const Given &g, bool isFloor)
{
    const int at = cutOf(g);
    Entries t(65536, isFloor ? 0 : 65535);
    double sum = 0;
    for (int i = isFloor ? at : 0; i < (isFloor ? 65536 : at); ++i) {
        t[size_t(i)] = stored(sum);
        sum += isFloor ? (65536 - at) / 65536.0 : 65535.0 / at;
    }
    return t;
}

Entries force(const Given &g, int)
{
    const auto [lo, hi] = range(g, g.p[0] != 0, g.p[1] != 0 ? 65500 : 0);
    Entries t(65536);
    for (int i = 0; i < 65536; ++i)
        t[size_t(i)] = i < lo ? 0 : i > hi ? 65535 : stored(double(i - lo) / (hi - lo) * 65535);
    return t;
}

Entries balance(double r, double g, double b, int channel)
{
    const double avg = (r + g + b) / 3, own[] = {r, g, b};
    Entries t(65536);
    for (int i = 0; i < 65536; ++i)
        t[size_t(i)] = stored(i + (avg - own[channel]) / (avg / 65535) * (i / 65535.0));
    return t;
}

struct Look {
    const char *line, *settings; ///< "key=value;..."
    bool luma;
    Entries (*entries)(const Given &given, int channel);
    Statistics kept = {900, 300, 4000, 50000, 20000, 61000, 30000, 10000, 20000};
};

const auto contrast1 = [](const Given &g, int c) { return contrast(g, c, 1.0); };
const auto contrast9 = [](const Given &g, int c) { return contrast(g, c, 5.0); };
const auto gammaOf = [](const Given &g, int) {
    Entries t(65536);
    for (int i = 0; i < 65536; ++i)
        t[size_t(i)] = stored(std::pow(i / 65535.0, 1 / g.p[0]) * 65535);
    return t;
};
const auto darken = [](const Given &g, int) {
    Entries t = identity();
    const double limit = g.p[1] * 257;
    for (int i = 0; i <= limit; ++i)
        t[size_t(i)] = stored(i - (limit - i) / limit * i * (g.p[0] / 100));
    return t;
};
const auto floorCut = [](const Given &g, int) { return cut(g, true); };
const auto ceilingCut = [](const Given &g, int) { return cut(g, false); };

const Look kLooks[] = {
    {"contbrit 30 -20 40 1 0 1", "ContrastMultiplier=1", false, contrast1},
    {"contbrit 100 -100 100 0 1 0", "ContrastMultiplier=9", false, contrast9},
    {"contbrit -100 100 -100 1 1 1", "ContrastMultiplier=1", false, contrast1},
    {"windowlevel 100 60 0", "", true, window},
    {"windowlevel 0 7 1", "", true, window},
    {"windowlevel 255 255 0", "", true, window},
    {"gamma 2.2", "", true, gammaOf},
    {"gamma .25", "", true, gammaOf},
    {"gain 20 90 170", "", true, gain},
    {"gain 200 200 0", "", true, gain},
    {"gain 100 0 100", "", true, gain},
    {"darken 150 128", "", true, darken},
    {"darken 200 0", "", true, darken},
    {"darknessgain 100 30 70", "", true, darknessGain},
    {"darknessgain 100 100 0", "", true, darknessGain},
    {"levels 0 0 50 100 0", "", true, levels},
    {"levels 20 30 80 60 10", "", true, levels},
    {"levels -30 100 0 0 -100", "", true, levels},
    {"levels 100 0 100 100 100", "", true, levels},
    {"floor 1 0", "", true, floorCut},
    {"floor 0 1", "", true, floorCut},
    {"floor 0 2", "", true, floorCut, {}},
    {"ceiling 1 1", "", true, ceilingCut},
    {"ceiling 0 2", "", true, ceilingCut},
    {"ceiling 0 0", "", true, ceilingCut, {}},
    {"forcedynamic 1 0", "", true, force},
    {"forcedynamic 1 1", "", true, force},
    {"forcedynamic 0 1", "", true, force},
    {"forcedynamic 0 0", "", true, force, {9, 9, 9, 9, 9, 9, 9, 9, 9}},
    {"whitebalance", "WhiteBalanceDirect=0", false,
     [](const Given &, int c) { return balance(30000, 10000, 20000, c); }},
    {"whitebalance",
     "WhiteBalanceDirect=0",
     false,
     [](const Given &, int c) { return balance(0, 0, 0, c); },
     {}},
    {"whitebalance", "WhiteBalanceDirect=1;WhiteBalanceRed=250;WhiteBalanceGreen=0", false,
     [](const Given &, int c) { return balance(250 * 257, 0, 128 * 257, c); }},
};

void longhand(image &img, const std::array<Entries, 3> &tables, bool luma)
{
    colorblending mixer;
    for (int64_t i = 0; i < img.sampleCount(); ++i) {
        const auto planes = img.colorPlanes();
        double result[3];
        Hsv hsv = rgbToHsv({double(img.red[i]), double(img.green[i]), double(img.blue[i])});
        hsv.value = tables[1][size_t(int(hsv.value * 65535.0 / 100.0))] * 100.0 / 65535.0;
        const Rgb joined = hsvToRgb(hsv);
        const double lumaResult[3] = {joined.red, joined.green, joined.blue};
        for (size_t c = 0; c < 3; ++c)
            result[c] = luma ? lumaResult[c] : tables[c][planes[c][i]];
        for (size_t c = 0; c < 3; ++c)
            planes[c][i] =
                uint16_t(mixer.blend(result[c], planes[c][i], 1 - img.gmask[i] / 65535.0));
    }
}

/// `soft`: the random mask as it is; else runs of nothing and everything.
ImagePtr picture(bool soft, uint32_t seed)
{
    auto img = randomImage(211, 7, seed);
    for (int64_t i = 0; i < img->sampleCount(); ++i) {
        if (!soft)
            img->gmask[i] = i / 37 % 3 ? 65535 : 0;
        // No black and no white, so that the ends of the range are read, not met by chance.
        for (uint16_t *plane : {img->red, img->green, img->blue})
            plane[i] = uint16_t(700 + plane[i] / 2);
        if (i % 5 == 0) // a ramp: one channel leads, and all tones come
            img->red[i] = uint16_t(i * 44);
    }
    return img;
}

class Lookups : public testing::Test
{
protected:
    Lookups() { addAllOperators(&table); }
    OpWrapper *opOf(const QString &line) { return table.byScriptName(line.section(' ', 0, 0)); }
    int call(const QString &line, image *img)
    {
        QStringList args = line.split(' ').mid(1);
        return opOf(line)->scriptCall(args.size(), &args, img, &usage);
    }
    void set(const QString &settings)
    {
        for (const QString &one : settings.split(';', Qt::SkipEmptyParts))
            EXPECT_TRUE(
                table.setParameter("operator" + one.section('=', 0, 0), one.section('=', 1)));
    }
    void keep(const Statistics &values)
    {
        std::copy(values.begin(), values.end(), space.sampleStatistics);
    }
    Statistics kept() const
    {
        Statistics values;
        std::copy_n(space.sampleStatistics, 9, values.begin());
        return values;
    }
    RecordingWorkspace space;
    OperatorTable table;
    QString usage;
};
} // namespace

TEST_F(Lookups, EveryOperatorIsItsFormula)
{
    for (const Look &look : kLooks)
        for (int mode : {int(kBlendMatte), int(kBlendDivide), int(kBlendSoftDissolve)})
            for (bool soft : {false, true}) {
                const auto one = picture(soft, 5), other = picture(soft, 5);
                space.blendMode = mode;
                set(look.settings);
                keep(look.kept);
                {
                    const colorblending mixer;
                    ASSERT_EQ(call(look.line, one.get()), 1) << look.line;
                }
                EXPECT_EQ(kept(), look.kept) << look.line;
                Given given = {{}, look.kept, *other};
                for (const QString &word : QString(look.line).split(' ').mid(1))
                    given.p.push_back(word.toDouble());
                const std::array<Entries, 3> tables = {
                    look.entries(given, 0), look.entries(given, 1), look.entries(given, 2)};
                longhand(*other, tables, look.luma);
                EXPECT_TRUE(samePlanes(*one, *other))
                    << look.line << " mode " << mode << " soft " << soft;
            }
}

TEST_F(Lookups, BadScriptLinesChangeNothing)
{
    const char *const lines[] = {"contbrit 0 0 0 1 1",
                                 "contbrit 0 0 0 1 1 2",
                                 "contbrit 0 -101 0 1 1 1",
                                 "contbrit x 0 0 1 1 1",
                                 "windowlevel 256 0 0",
                                 "windowlevel 1 1e300 0",
                                 "gamma .24",
                                 "gamma 1 1",
                                 "gamma",
                                 "gamma 4.001",
                                 "gamma 1e999",
                                 "gain 0 201 0",
                                 "darken 10 -1",
                                 "darken 201 0",
                                 "darknessgain 0 0",
                                 "darknessgain 0 0 101",
                                 "levels 0 0 50 100 -101",
                                 "levels 0 -1 50 100 0",
                                 "floor 0 3",
                                 "floor 2 0",
                                 "ceiling 0 -1",
                                 "ceiling 0",
                                 "forcedynamic 1 2",
                                 "forcedynamic 1 0 0",
                                 "whitebalance 1",
                                 "sample 1",
                                 "sample 2 0",
                                 "sample 99999999999999 0",
                                 "levels 0 0 x 100 0",
                                 "gain \"a\" 0 0"};
    const auto img = picture(true, 9), before = picture(true, 9);
    keep(kLooks[0].kept);
    for (const char *line : lines) {
        OpWrapper *op = opOf(line);
        QString written, after;
        op->scriptLine(&written);
        usage.clear();
        EXPECT_EQ(call(line, img.get()), 0) << line;
        op->scriptLine(&after);
        EXPECT_EQ(after, written) << line;
        EXPECT_EQ(usage, op->usage()) << line;
        EXPECT_FALSE(usage.isEmpty()) << line;
        EXPECT_TRUE(samePlanes(*img, *before)) << line;
        EXPECT_EQ(kept(), kLooks[0].kept) << line;
    }
}

TEST_F(Lookups, AFailedAllocationLeavesThePictureAsItWas)
{
    const auto img = picture(true, 3), before = picture(true, 3);
    for (const Look &look : kLooks) {
        if (!look.luma) // these work in the tables that stand
            continue;
        EXPECT_TRUE(opOf(look.line)->readArguments(QString(look.line).count(' '),
                                                   QString(look.line).split(' ').mid(1), &usage));
        memFailAt(1);
        opOf(look.line)->apply(img.get(), nullptr);
        memFailAt(0);
        EXPECT_TRUE(samePlanes(*img, *before)) << look.line;
    }
    for (int n = 1; n <= 2; ++n) { // the set is lost, the statistics are not
        keep({});
        memFailAt(n);
        opOf("sample")->apply(img.get(), nullptr);
        memFailAt(0);
        EXPECT_NE(kept(), Statistics());
        EXPECT_EQ(space.statusTexts.size(), 1);
        space.statusTexts.clear();
        upfree(&space.colorSpace);
        upfree(&space.colorSpaceBackup);
    }
}

TEST_F(Lookups, AWrittenGammaReadsBackAsTheSamePlace)
{
    for (double field : {0.0, 20.0, 33.0, 52.0, 99.0, 100.0, 100 / 3.0}) {
        ASSERT_TRUE(table.setParameter("operatorGamma", QString::number(field, 'f', 12)));
        const QString place = table.parameterText("operatorGamma");
        QString line, again;
        opOf("gamma")->scriptLine(&line);
        EXPECT_EQ(call(line.trimmed(), nullptr), 1) << line.toStdString();
        opOf("gamma")->scriptLine(&again);
        EXPECT_EQ(again, line);
        EXPECT_EQ(table.parameterText("operatorGamma"), place);
    }
    opOf("gamma")->reset();
    QString line;
    opOf("gamma")->scriptLine(&line);
    EXPECT_EQ(line, "gamma 1\n");
    for (const char *given : {"gamma 2.91\n", "gamma 1.4\n", "gamma 0.25\n", "gamma 4\n"}) {
        EXPECT_EQ(call(QString(given).trimmed(), nullptr), 1);
        opOf("gamma")->scriptLine(&line);
        EXPECT_EQ(line, given);
    }
}

TEST(Statistics, CountWhatTheyShould)
{
    for (int threads : {0, 1})
        for (uint32_t seed = 1; seed <= 4; ++seed) {
            setRowThreads(threads);
            const auto img = randomImage(seed == 4 ? 1 : 700, seed == 4 ? 1 : 300, seed);
            for (int above : {0, 32767, 65500, 65535}) {
                Statistics wanted = {}, found = {};
                const bool any = statistics(*img, above, &wanted);
                EXPECT_EQ(gatherStatistics(*img, uint16_t(above), found.data()), any) << above;
                EXPECT_EQ(found, wanted) << above << ' ' << seed;
            }
        }
    setRowThreads(0);
    const auto img = randomImage(50, 40, 8);
    std::fill_n(img->alpha, 50 * 10, uint16_t(0)); // the first ten rows
    const QRect rectangles[] = {
        {3, 9, 20, 8}, {-5, 30, 9000, 9000}, {0, 0, 50, 10}, {60, 0, 5, 5}, {0, 0, 0, 0}};
    for (const QRect &samples : rectangles) {
        for (int y = 0; y < 40; ++y) // as a selection, for the one by the book
            for (int x = 0; x < 50; ++x)
                img->gmask[y * 50 + x] = samples.contains(x, y) ? 65535 : 0;
        Statistics wanted = {}, found = {};
        const bool any = statistics(*img, 0, &wanted);
        img->fillGmask(0);
        EXPECT_EQ(gatherStatistics(*img, samples, found.data()), any);
        EXPECT_EQ(found, wanted) << samples.x();
    }
}

TEST_F(Lookups, SampleGathersJoinsAndTakesAway)
{
    const auto in = [&](const uint8_t *set, const image &img, int64_t i) {
        const size_t byte =
            size_t(((img.red[i] >> 8 << 8) + (img.green[i] >> 8)) * 32 + (img.blue[i] >> 11));
        return (set[byte] >> ((img.blue[i] >> 8) & 3) & 1) != 0;
    };
    const auto dark = plainImage(6, 4, 300, 1200, 4097),
               bright = plainImage(3, 4, 60001, 700, 65535);
    for (image *img : {dark.get(), bright.get()})
        img->fillGmask(1);
    dark->gmask[0] = 0;
    const auto darkBefore = plainImage(6, 4, 300, 1200, 4097);
    const auto expect = [&](const char *line, image *img, const Statistics &wanted, bool hasDark,
                            bool hasBright) {
        EXPECT_EQ(call(line, img), 1);
        EXPECT_EQ(kept(), wanted) << line;
        EXPECT_EQ(in(space.colorSpace, *dark, 0), hasDark) << line;
        EXPECT_EQ(in(space.colorSpace, *bright, 0), hasBright) << line;
        EXPECT_EQ(colourSetSize(), hasDark + hasBright) << line;
    };
    const Statistics darkOnly = {300, 1200, 4097, 300, 1200, 4097, 300, 1200, 4097};
    const Statistics both = {300,
                             700,
                             4097,
                             60001,
                             1200,
                             65535,
                             (23 * 300 + 12 * 60001) / 35,
                             (23 * 1200 + 12 * 700) / 35,
                             (23 * 4097 + 12 * 65535) / 35};
    expect("sample 1 0", dark.get(), darkOnly, true, false); // nothing was there to join
    expect("sample 1 0", bright.get(), both, true, true);
    expect("sample 0 1", dark.get(), both, false, true);
    EXPECT_TRUE(in(space.colorSpaceBackup, *dark, 0) && in(space.colorSpaceBackup, *bright, 0));
    expect("sample 0 0", dark.get(), darkOnly, true, false);
    EXPECT_TRUE(sameColors(*dark, *darkBefore));
    // The eyedropper wrote in between: its reading and the new one weigh alike.
    keep({10, 10, 10, 20, 20, 20, 15, 15, 15});
    expect("sample 1 0", dark.get(), {10, 10, 10, 300, 1200, 4097, 157, 607, 2056}, true, false);
    dark->fillGmask(0);
    expect("sample 0 0", dark.get(), kept(), true, false); // nothing selected: nothing is lost
    EXPECT_EQ(space.statusTexts.size(), 1);
    bright->fill(0, 0, 0, 0); // nor by samples that nobody sees
    EXPECT_EQ(call("sample 0 0", bright.get()), 1);
    EXPECT_EQ(kept()[0], 10);
}
