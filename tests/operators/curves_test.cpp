// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/adjustment/curvesop.h"

#include "core/colour.h"
#include "operators/base/operatortable.h"
#include "operators/pipeline/colorblending.h"
#include "operators/table/allops.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace
{
/// Random knots, some on plateaus and some as close as they may be.
ToneCurve randomCurve(std::mt19937 &generator)
{
    const auto part = [&] { return double(generator() % 1025) / 1024; };
    ToneCurve curve;
    curve.move(0, part() / 8, part());
    curve.move(1, 1 - part() / 8, part());
    const int wanted = 2 + int(generator() % (ToneCurve::kMostKnots - 1));
    for (int tries = 0; tries < 200 && curve.count() < wanted; ++tries) {
        const ToneCurve::Knot near = curve.knot(int(generator() % uint32_t(curve.count())));
        const double x = generator() % 3 ? part() : near.x + ToneCurve::kLeastDistance;
        curve.add(std::min(x, 1.0), generator() % 3 ? part() : near.y);
    }
    return curve;
}

/// The table by the book: no grid of slopes kept, each entry found anew.
int slowEntry(const ToneCurve &curve, int i)
{
    return std::min(65535, int(std::floor(curve.valueAt(i / 65535.0) * 65535 + 1e-6)));
}
} // namespace

TEST(ToneCurve, RunsThroughItsKnotsAndNowhereBeyondThem)
{
    for (uint32_t seed = 1; seed <= 60; ++seed) {
        std::mt19937 generator(seed);
        const ToneCurve curve = randomCurve(generator);
        std::vector<uint16_t> table(65536);
        curve.fillTable(table.data());
        const int last = curve.count() - 1;
        ASSERT_EQ(curve.valueAt(0), curve.knot(0).y) << seed;
        ASSERT_EQ(curve.valueAt(1), curve.knot(last).y) << seed;
        for (int k = 0; k < last; ++k) {
            const auto from = curve.knot(k), to = curve.knot(k + 1);
            ASSERT_EQ(curve.valueAt(from.x), from.y) << seed;
            const bool rises = to.y >= from.y;
            double before = from.y;
            for (int i = 1; i <= 50; ++i) {
                const double y = curve.valueAt(from.x + (to.x - from.x) * i / 50);
                ASSERT_TRUE(rises ? y >= before - 1e-12 && y <= to.y
                                  : y <= before + 1e-12 && y >= to.y)
                    << seed << ": knot " << k << " step " << i;
                before = y;
            }
            // The slope on both sides of a knot is the same: there is no corner.
            const double e = 1e-8;
            const double left = (from.y - curve.valueAt(from.x - e)) / e;
            const double right = (curve.valueAt(from.x + e) - from.y) / e;
            ASSERT_TRUE(k == 0 || std::abs(left - right) < 0.1) << seed << ": knot " << k;
        }
        for (int i = 0; i < 65536; i += 7)
            ASSERT_EQ(table[size_t(i)], slowEntry(curve, i)) << seed << ": entry " << i;
        ToneCurve read;
        ASSERT_TRUE(read.setText(curve.text())) << curve.text().toStdString();
        ASSERT_TRUE(read == curve) << seed;
    }
}

TEST(ToneCurve, LinesAreExact)
{
    std::vector<uint16_t> table(65536);
    for (const char *text : {"0,0 1,1", "0,0 0.123,0.123 0.3,0.3 0.777,0.777 1,1"}) {
        ToneCurve line;
        ASSERT_TRUE(line.setText(text));
        line.fillTable(table.data());
        for (int i = 0; i < 65536; ++i)
            ASSERT_EQ(table[size_t(i)], i) << text;
    }
    ToneCurve curve;
    ASSERT_TRUE(curve.setText("0.25,1 0.5,0"));
    curve.fillTable(table.data());
    EXPECT_EQ(table[0], 65535);
    EXPECT_EQ(table[65535], 0);
    EXPECT_EQ(table[24576], 32766) << "halfway down";
    // Three knots make a parabola, computed by hand: y = 1.8 x - 0.8 x².
    ASSERT_TRUE(curve.setText("0,0 0.5,0.7 1,1"));
    for (double x : {0.1, 0.25, 0.6, 0.9})
        EXPECT_NEAR(curve.valueAt(x), 1.8 * x - 0.8 * x * x, 1e-12);
}

TEST(ToneCurve, KnotsKeepTheirLimits)
{
    ToneCurve curve;
    EXPECT_EQ(curve.add(0.5, 0.9), 1);
    EXPECT_EQ(curve.add(0.5, 0.1), -1) << "one stands there";
    EXPECT_EQ(curve.add(0.5001, 0.1), -1) << "too close";
    EXPECT_EQ(curve.add(std::nan(""), 0.1), -1);
    curve.move(1, 7, -3);
    EXPECT_NEAR(curve.knot(1).x, 1 - ToneCurve::kLeastDistance, 2e-9);
    EXPECT_EQ(curve.knot(1).y, 0);
    curve.move(1, std::nan(""), std::nan(""));
    EXPECT_TRUE(ToneCurve().setText(curve.text())) << curve.text().toStdString();
    EXPECT_FALSE(curve.remove(0) || curve.remove(2) || curve.remove(-1) || curve.remove(9));
    EXPECT_TRUE(curve.remove(1));
    EXPECT_TRUE(curve == ToneCurve());
    for (int i = 1; i < ToneCurve::kMostKnots - 1; ++i)
        EXPECT_EQ(curve.add(i / 32.0, 0.5), i);
    EXPECT_EQ(curve.add(0.99, 0.5), -1) << "full";
    const QStringList names = ToneCurve::presetNames();
    for (int i = 0; i < names.size(); ++i)
        EXPECT_EQ(ToneCurve::preset(i).presetIndex(), i) << qPrintable(names.at(i));
    EXPECT_EQ(curve.presetIndex(), -1);
    EXPECT_TRUE(ToneCurve::preset(999) == ToneCurve());
}

TEST(ToneCurve, HostileTextsAndFilesAreRefusedWhole)
{
    ToneCurve curve = ToneCurve::preset(3);
    const ToneCurve before = curve;
    for (const QString &text :
         {QString(), QString("0,0"), QString("0,0 1"), QString("0,0 1,1,1"), QString("0,0 1,x"),
          QString("1,1 0,0"), QString("0,0 0,1"), QString("0,0 0.0001,1"), QString("-0.1,0 1,1"),
          QString("0,0 1,1.1"), QString("nan,0 1,1"), QString("0,0 inf,1"), QString("0,0 1e9999,1"),
          QString("0,0 1,1 ").repeated(20), QString(5000, ' ') + "0,0 1,1"})
        EXPECT_FALSE(curve.setText(text)) << text.left(40).toStdString();

    QTemporaryDir folder;
    const QString path = folder.filePath("curve.json");
    QString error;
    const QByteArray start = R"({"format": "Kestrane Curve", "version": 1, "knots": )";
    const struct {
        QByteArray bytes;
        const char *says;
    } files[] = {{"", "no curve file"},
                 {"\x89PNG\r\n", "no curve file"},
                 {R"({"format": "Kestrane P-Shape", "version": 1})", "no curve file"},
                 {R"({"format": "Kestrane Curve", "version": 2})", "later version"},
                 {start + "7}", "0 knots"},
                 {start + "[[0,0]]}", "1 knots"},
                 {start + "[" + QByteArray("[0,0],").repeated(32) + "[1,1]]}", "33 knots"},
                 {start + R"([[0,0],["1",1]]})", "damaged"},
                 {start + "[[0,0],[1,1,1]]}", "damaged"},
                 {start + "[[0,0],[0,1]]}", "damaged"},
                 {start + "[[0,0],[1,1]]}" + QByteArray(70000, ' '), "too long"}};
    for (const auto &file : files) {
        QFile out(path);
        ASSERT_TRUE(out.open(QIODevice::WriteOnly) && out.write(file.bytes) >= 0);
        out.close();
        error.clear();
        EXPECT_FALSE(curve.load(path, &error)) << file.bytes.left(80).data();
        EXPECT_TRUE(error.contains(file.says)) << error.toStdString();
    }
    EXPECT_FALSE(curve.load(folder.filePath("none.json"), &error));
    EXPECT_FALSE(curve.save(folder.filePath("none/curve.json"), &error));
    EXPECT_TRUE(curve == before);

    EXPECT_TRUE(curve.save(path, &error)) << error.toStdString();
    ToneCurve read;
    EXPECT_TRUE(read.load(path, &error)) << error.toStdString();
    EXPECT_TRUE(read == curve);
}

TEST(Curvesop, AppliesItsCurveToTheValue)
{
    RecordingWorkspace space;
    OperatorTable table;
    addAllOperators(&table);
    auto *op = dynamic_cast<Curvesop *>(table.byId(21));
    ASSERT_TRUE(op);
    EXPECT_FALSE(op->setParameter("CurveKnots", "0,0 1,2") || op->setParameter("CurveKnots", "\""));
    EXPECT_FALSE(op->setParameter("Curve", "0,0 1,1"));
    ASSERT_TRUE(op->setParameter("CurveKnots", "\"0,0.1 0.3,0.6 1,0.8\""));
    EXPECT_EQ(op->parameterText("CurveKnots"), "0,0.1 0.3,0.6 1,0.8");
    QString line;
    op->scriptLine(&line);
    EXPECT_EQ(line, "# No script operator for \"Curves\"\n");

    for (int mode : {int(kBlendMatte), int(kBlendMultiply)}) {
        space.blendMode = mode;
        auto fast = randomImage(257, 9, 5), slow = randomImage(257, 9, 5);
        op->apply(fast.get(), nullptr);
        colorblending mixer;
        for (int64_t i = 0; i < slow->sampleCount(); ++i) {
            uint16_t *const planes[] = {slow->red + i, slow->green + i, slow->blue + i};
            Hsv hsv = rgbToHsv({double(*planes[0]), double(*planes[1]), double(*planes[2])});
            hsv.value = slowEntry(op->curve, int(hsv.value * 65535.0 / 100.0)) * 100.0 / 65535.0;
            const Rgb made = hsvToRgb(hsv);
            const double results[] = {made.red, made.green, made.blue};
            for (int c = 0; c < 3; ++c)
                *planes[c] = uint16_t(
                    std::clamp(mixer.blend(results[c], *planes[c], 1 - slow->gmask[i] / 65535.0),
                               0.0, kWhite));
        }
        EXPECT_TRUE(samePlanes(*fast, *slow)) << mode;
    }
}

TEST(Curvesop, KeepsItsKnotsInTheSettings)
{
    RecordingWorkspace space;
    QTemporaryDir folder;
    QSettings store(folder.filePath("test.ini"), QSettings::IniFormat);
    OperatorTable table;
    table.store = &store;
    addAllOperators(&table);
    auto *op = dynamic_cast<Curvesop *>(table.byId(21));
    ASSERT_TRUE(op && op->setParameter("CurveKnots", "0,0 0.5,0.7 1,1"));
    op->hotkey = "Ctrl+K";
    op->settings(true);
    op->reset();
    EXPECT_TRUE(op->curve == ToneCurve());
    op->hotkey.clear();
    op->settings(false);
    EXPECT_EQ(op->curve.text(), "0,0 0.5,0.7 1,1");
    EXPECT_EQ(op->hotkey, "Ctrl+K");
    store.setValue(table.prefix + "CurveKnots", "0,0 nonsense");
    op->settings(false);
    EXPECT_TRUE(op->curve == ToneCurve());
}
