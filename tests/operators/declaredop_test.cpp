// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/base/declaredop.h"

#include "core/image.h"
#include "operators/adjustment/negative.h"
#include "operators/base/operatortable.h"
#include "operators/base/oppage.h"
#include "operators/filter/exposure.h"
#include "operators/table/allops.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <limits>

namespace
{
/// One parameter of every kind.
class Sampler : public DeclaredOp
{
public:
    explicit Sampler(OperatorTable *table) : DeclaredOp(table)
    {
        usageLine = QStringLiteral("%1 [a] [b] [c]");
        hotkeyKey = QStringLiteral("SamplerHotkey");
        declare({.field = &whole,
                 .key = "sWhole",
                 .low = 1,
                 .high = 20,
                 .initial = 5,
                 .control = spin("Whole")});
        declare({.field = &real,
                 .key = "sReal",
                 .initial = 0.5,
                 .control = doubleSpin("Real", 0.1, 2)});
        declare({.field = &hidden,
                 .key = "sHidden",
                 .low = 0,
                 .high = 9,
                 .control = ::slider("Hidden"),
                 .inScriptLine = false});
        declare({.field = &on, .key = "sOn", .low = 0, .high = 1, .control = check("On")});
    }
    void apply(image *, image *) override { ++applied; }
    int whole, hidden, applied = 0;
    double real;
    bool on;
};

/// A page that keeps what it was told, as one line per call.
class ListPage : public OpPage
{
public:
    QStringList said;
    int addSlider(const QString &l, int a, int b, int v, bool, const QString &u) override
    {
        return say(QStringLiteral("slider %1 %2 %3 %4%5").arg(l).arg(a).arg(b).arg(v).arg(u));
    }
    int addIntSpin(int a, int b, int v, bool) override
    {
        return say(QStringLiteral("spin %1 %2 %3").arg(a).arg(b).arg(v));
    }
    int addDoubleSpin(double, double, double step, int, double v, bool) override
    {
        return say(QStringLiteral("real %1 %2").arg(step).arg(v));
    }
    int addCombo(const QStringList &names, int index, bool) override
    {
        return say(QStringLiteral("combo %1 %2").arg(names.join(QLatin1Char('|'))).arg(index));
    }
    int addComboData(const QStringList &, const QVariantList &, int, bool) override { return -1; }
    int addCheck(const QString &text, bool state, bool) override
    {
        return say(QStringLiteral("check %1 %2").arg(text).arg(state));
    }
    int addButton(const QString &, bool) override { return -1; }
    int addLabel(const QString &text, LabelAlign, bool) override { return say(text); }
    int addLine(const QString &, bool) override { return -1; }
    int addEditor(const QString &) override { return -1; }
    int addWell(int, int, int, bool) override { return -1; }
    void setSlider(int i, int v) override { set("slider", i, v); }
    void setIntSpin(int i, int v) override { set("spin", i, v); }
    void setDoubleSpin(int i, double v) override { set("real", i, v); }
    void setCombo(int i, int v) override { set("combo", i, v); }
    void setCheck(int i, bool v) override { set("check", i, v); }
    void setLine(int, const QString &) override {}

private:
    int say(const QString &text)
    {
        said << text;
        return 0;
    }
    void set(const char *kind, int index, double value)
    {
        say(QStringLiteral("set %1 %2 %3").arg(QLatin1String(kind)).arg(index).arg(value));
    }
};

class Declared : public testing::Test
{
protected:
    Declared() { addAllOperators(&table); }
    int call(OpWrapper *op, const char *line, image *target)
    {
        QStringList args = QString::fromUtf8(line).split(QLatin1Char(' '), Qt::SkipEmptyParts);
        return op->scriptCall(args.size(), &args, target, &usage);
    }
    QString lineOf(OpWrapper *op)
    {
        QString line;
        op->scriptLine(&line);
        return line;
    }

    RecordingWorkspace space;
    OperatorTable table;
    QString usage;
};
} // namespace

TEST_F(Declared, ScriptCallsOfExposure)
{
    struct {
        const char *fault, *line;
        int result, amountAfter, modeAfter;
    } const cases[] = {{"tokens are expressions", "50+50 0", 1, 100, 0},
                       {"lower limit is inside", "-100 (1)", 1, -100, 1},
                       {"one short", "10", 0, 7, 1},
                       {"one too many", "10 0 0", 0, 7, 1},
                       {"nothing", "", 0, 7, 1},
                       {"first out of range", "101 0", 0, 7, 1},
                       {"second out of range", "10 2", 0, 7, 1},
                       {"second no number", "10 x", 0, 7, 1}};
    auto *exposure = static_cast<Exposure *>(table.byScriptName(QStringLiteral("exposure")));
    for (const auto &one : cases) {
        auto img = randomImage(5, 5, 1), before = randomImage(5, 5, 1);
        exposure->amount = 7;
        exposure->mode = 1;
        usage.clear();
        EXPECT_EQ(call(exposure, one.line, img.get()), one.result) << one.fault;
        EXPECT_EQ(exposure->amount, one.amountAfter) << one.fault;
        EXPECT_EQ(exposure->mode, one.modeAfter) << one.fault;
        EXPECT_EQ(usage, QLatin1String("exposure [Amount=-100...100] [Mode=0...1]"));
        EXPECT_EQ(samePlanes(*img, *before), one.result == 0) << one.fault;
        EXPECT_TRUE(img->undoList.isEmpty()) << one.fault;
    }
    // Counts and lists that do not fit each other, as a careless caller might pass.
    QStringList one{QStringLiteral("1")};
    EXPECT_EQ(exposure->scriptCall(2, &one, nullptr, &usage), 0);
    EXPECT_EQ(exposure->scriptCall(2, nullptr, nullptr, nullptr), 0);
    QStringList two{QStringLiteral("1"), QStringLiteral("0")};
    EXPECT_EQ(exposure->scriptCall(2, &two, nullptr, &usage), 1);
}

TEST_F(Declared, ScriptLinesAndTheUnscriptable)
{
    auto *exposure = static_cast<Exposure *>(table.byId(29));
    exposure->amount = -25;
    exposure->mode = 1;
    EXPECT_EQ(lineOf(exposure), QLatin1String("exposure -25 1\n"));
    EXPECT_EQ(lineOf(table.byId(62)), QLatin1String("negative\n"));
    auto img = randomImage(3, 3, 9);
    img->fillGmask(65535);
    const uint16_t old = img->blue[4];
    EXPECT_EQ(call(table.byId(62), "", img.get()), 1);
    EXPECT_EQ(img->blue[4], 65535 - old);
    EXPECT_EQ(call(table.byId(62), "1", img.get()), 0);
    EXPECT_EQ(usage, QLatin1String("negative has no parameters"));
    OpWrapper plain(&table);
    plain.menuName = QStringLiteral("Brushstroke");
    EXPECT_EQ(lineOf(&plain), QLatin1String("# No script operator for \"Brushstroke\"\n"));
    EXPECT_EQ(call(&plain, "1", img.get()), -1);
    EXPECT_FALSE(plain.readArguments(0, {}, &usage));
    EXPECT_TRUE(usage.isEmpty());
}

TEST_F(Declared, LinesOfEveryKindReadBackAsWritten)
{
    Sampler op(&table);
    op.scriptName = QStringLiteral("sampler");
    EXPECT_EQ(lineOf(&op), QLatin1String("sampler 5 0.5 0\n"));
    for (double value : {0.1, -3.75, 1000000.0, 1e-7, 123456.789012345}) {
        op.real = value;
        op.whole = 20;
        op.on = true;
        const QString line = lineOf(&op);
        QStringList args = line.trimmed().split(QLatin1Char(' ')).mid(1);
        op.real = 0;
        ASSERT_TRUE(op.readArguments(3, args, &usage)) << qPrintable(line);
        EXPECT_EQ(op.real, value);
    }
    EXPECT_EQ(op.applied, 0);
    EXPECT_EQ(usage, QLatin1String("sampler [a] [b] [c]"));
    EXPECT_EQ(call(&op, "1 99999 2", nullptr), 0); // a check is 0 or 1
    EXPECT_TRUE(op.on);
}

TEST_F(Declared, ControlsFollowTheFields)
{
    ListPage page;
    auto owned = std::make_unique<Sampler>(&table);
    Sampler &op = *owned;
    table.add(90, kGroupMeta, "sampler", "Sampler", "", std::move(owned));
    op.build(&page);
    EXPECT_EQ(page.said.join(QLatin1Char(';')),
              QLatin1String("Whole;spin 1 20 5;Real;real 0.1 0.5;slider Hidden 0 9 0;check On 0"));
    page.said.clear();
    table.page = &page;
    op.reset(); // the page shows another operator
    EXPECT_TRUE(page.said.isEmpty());
    table.currentOp = 90;
    EXPECT_EQ(op.intspin(0, 12), 1);
    EXPECT_EQ(op.intspin(0, 21), 1); // out of range
    EXPECT_EQ(op.intspin(1, 3), 0);  // no such control
    EXPECT_EQ(op.combo(0, 0), 0);
    EXPECT_EQ(op.dubspin(0, 2.5), 1);
    EXPECT_EQ(op.dubspin(0, std::numeric_limits<double>::quiet_NaN()), 1);
    EXPECT_EQ(op.slider(0, 4), 1);
    EXPECT_EQ(op.checkbox(0, true), 1);
    EXPECT_EQ(op.whole, 12);
    EXPECT_EQ(op.real, 2.5);
    EXPECT_EQ(op.hidden, 4);
    EXPECT_TRUE(op.on);
    op.reset();
    EXPECT_EQ(page.said.join(QLatin1Char(';')),
              QLatin1String("set spin 0 5;set real 0 0.5;set slider 0 0;set check 0 0"));
    Exposure exposure(&table);
    page.said.clear();
    exposure.combo(0, 1);
    exposure.slider(0, 40);
    exposure.build(&page);
    EXPECT_EQ(page.said.join(QLatin1Char(';')),
              QLatin1String("slider Amount -100 100 40;Mode;combo Raw RGB|Luma 1"));
    exposure.reset();
    EXPECT_EQ(exposure.amount, 0);
    EXPECT_EQ(exposure.mode, 1); // reset keeps the mode
}

TEST_F(Declared, SettingsComeBackAndHostileOnesAreIgnored)
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("settings.ini"));
    auto *exposure = static_cast<Exposure *>(table.byId(29));
    exposure->amount = -33;
    exposure->mode = 1;
    exposure->hotkey = QStringLiteral("e");
    table.byId(62)->hotkey = QStringLiteral("n");
    table.settings(true); // no store: nothing happens
    {
        QSettings store(path, QSettings::IniFormat);
        table.store = &store;
        table.settings(true);
    }
    QSettings store(path, QSettings::IniFormat);
    EXPECT_EQ(store.allKeys().join(QLatin1Char(' ')),
              QLatin1String("operatorExposure operatorExposureHotkey operatorExposureMode "
                            "operatorNegativeHotkey"));
    OperatorTable other;
    addAllOperators(&other);
    other.store = &store;
    other.settings(false);
    auto *read = static_cast<Exposure *>(other.byId(29));
    EXPECT_EQ(read->amount, -33);
    EXPECT_EQ(read->mode, 1);
    EXPECT_EQ(read->hotkey, QLatin1String("e"));
    EXPECT_EQ(other.byId(62)->hotkey, QLatin1String("n"));
    for (const char *bad : {"1e300", "nan", "101", "x", ""}) {
        store.setValue(QStringLiteral("operatorExposure"), QString::fromUtf8(bad));
        other.settings(false);
        EXPECT_EQ(read->amount, -33) << bad;
    }
    table.store = nullptr;
    table.add(63, kGroupMeta, "notations", "Notations", "", nullptr); // no memory
    EXPECT_EQ(table.byId(63), nullptr);
}
