// SPDX-License-Identifier: GPL-3.0-or-later
// What is done by hand, recorded and run on the untouched picture, comes out the same.
#include "support/scriptfixture.h"

#include "area/areatools.h"
#include "area/commitfigure.h"
#include "area/maskops.h"
#include "core/memory.h"
#include "core/undo.h"
#include "script/run/macrorecorder.h"
#include "script/run/verbs.h"

#include <random>

namespace
{
class RecordTest : public ScriptTest
{
protected:
    RecordTest()
    {
        table.applyObserver = [this](image *target, int id, bool begins) {
            recorder.applied(*target, id, begins);
        };
        picture->fillGmask(0);
        untouched->allocate(picture->width, picture->height, "untouched");
        untouched->copyWorkPlanes(*picture);
    }

    /// As commitSelection does it.
    bool figure(const ToolFigure &drawn, AreaJoin join, const std::vector<AreaPoint> &points = {})
    {
        for (const AreaPoint &point : points)
            area.appendPoint(point.x, point.y);
        if (drawn.empty())
            return false;
        Mask old;
        old.copyFrom(*picture);
        recorder.areaBegins(*picture, join != AreaJoin::Replace);
        beginAct(picture);
        if (!commitFigure(picture, drawn).made) {
            dropLastUndo(picture);
            return false;
        }
        if (join != AreaJoin::Replace)
            combineMasks(picture->gmask, old.mask, 40, 30, join == AreaJoin::Add);
        recorder.figureDone(*picture, drawn, join, int(points.size()));
        return true;
    }
    /// As the selection menu does it; without words only the selection tells what was done.
    void whole(const QString &words, const std::function<void()> &act)
    {
        recorder.areaBegins(*picture, MacroRecorder::usesSelection(words));
        beginAct(picture);
        act();
        recorder.areaDone(*picture, words);
    }
    /// As Apply, or Apply Again, does it.
    void apply(int id, bool shapes = true)
    {
        table.currentOp = id;
        if (!shapes)
            return table.apply(picture, true);
        recorder.shapeBegins(*picture);
        table.prepareAndApply(picture, true);
        recorder.shapeEnds();
    }
    /// Runs the recorded text on the picture as it was, in a workspace set otherwise.
    void expectReplay(const char *what)
    {
        const QString macro = script->text;
        const char *const others[][2] = {
            {"ellaa", "0"},   {"polyaa", "0"},       {"openFigure", "1"},
            {"outline", "1"}, {"tMode", "0"},        {"blendMode", "5"},
            {"aarange", "7"}, {"mainOpIndex", "55"}, {"maskWithTargetAlpha", "1"}};
        QStringList before;
        for (const auto &[key, value] : others) {
            before << space.settingText(key);
            ASSERT_TRUE(space.setSetting(key, value, nullptr));
        }
        auto copy = std::make_unique<image>();
        copy->allocate(untouched->width, untouched->height, "replay");
        copy->copyWorkPlanes(*untouched);
        EXPECT_EQ(runner.run(copy.get(), QString(), macro), ScriptEnd::Done);
        EXPECT_EQ(runner.failedStatements(), 0) << macro.toStdString();
        EXPECT_TRUE(samePlanes(*copy, *picture)) << what << '\n' << macro.toStdString();
        for (size_t i = 0; i < std::size(others); ++i) {
            EXPECT_EQ(space.settingText(others[i][0]), others[i][1]) << "left by the run";
            space.setSetting(others[i][0], before[int(i)], nullptr);
        }
    }
    bool back()
    {
        if (picture->undoList.isEmpty())
            return false;
        undo(picture);
        recorder.undone(*picture);
        return true;
    }
    bool forth()
    {
        if (picture->redoList.isEmpty())
            return false;
        redo(picture);
        recorder.redone(*picture);
        return true;
    }

    MacroRecorder recorder{&table, script};
    ImagePtr untouched = std::make_unique<image>();
};

} // namespace

TEST_F(RecordTest, RandomActsAndSteps)
{
    // What goes by settings, statistics and parameters that no script line tells among them.
    const char *const names[] = {"exposure", "exposure", "negative",     "burn",    "colorfill",
                                 "curves",   "sample",   "whitebalance", "alphamod"};
    for (unsigned seed = 1; seed <= 100; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const auto pick = [&random](int low, int high) {
            return low + int(random() % unsigned(high - low + 1));
        };
        picture->copyWorkPlanes(*untouched);
        clearUndoList(picture);
        clearRedoList(picture);
        script->text.clear();
        recorder.setOn(true, picture);
        for (int act = 0; act < 14; ++act) {
            const auto place = [&] { return AreaPoint{pick(-5, 45), pick(-5, 35)}; };
            ToolFigure drawn;
            drawn.tool = pick(0, 11);
            drawn.constrained = drawn.tool % 2 == 0 && drawn.tool < 3 && pick(0, 3) == 0;
            drawn.first = place();
            drawn.last = place();
            std::vector<AreaPoint> points;
            for (int i = pick(3, 9); drawn.drawsList() && i > 0; --i)
                points.push_back(place());
            const struct {
                const char *key;
                int low, high;
            } settings[] = {{"blendMode", 0, 8},
                            {"tMode", 0, 3},
                            {"invertSelection", 0, 1},
                            {"ellaa", 0, 1},
                            {"FilledFigure", 0, 1},
                            {"openFigure", 0, 1},
                            {"outline", 0, 1},
                            {"edgeOnly", 0, 1},
                            {"wandTolerance", 0, 100},
                            {"globalPick", 0, 1},
                            {"aarange", 1, 4},
                            {"mainOpIndex", 54, 55},
                            {"maskWithTargetAlpha", 0, 1}};
            const auto &change = settings[pick(0, int(std::size(settings)) - 1)];
            space.setSetting(change.key, QString::number(pick(change.low, change.high)), nullptr);
            switch (pick(0, 11)) {
            case 0:
            case 1:
            case 2:
            case 3:
                figure(drawn, AreaJoin(pick(0, 2)), points);
                area.clearPoints();
                break;
            case 4:
                whole("invert", [&] { picture->invertMask(); });
                break;
            case 5:
                whole("grow 2", [&] { growSelection(picture, 2); });
                break;
            case 6: // nothing that the recorder hears of
                beginAct(picture);
                picture->gmask[pick(0, 1199)] ^= 4242;
                break;
            case 7:
                whole({}, [&] { picture->gmask[pick(0, 1199)] = uint16_t(pick(0, 65535)); });
                break;
            case 8:
                pick(0, 1) ? back() : forth();
                break;
            default:
                table.setParameter("operatorExposure", QString::number(pick(-60, 60)));
                apply(table.byScriptName(names[pick(0, int(std::size(names)) - 1)])->id,
                      pick(0, 3) > 0);
            }
        }
        recorder.setOn(false, picture);
        if (script->text.isEmpty()) // all that was done was undone
            continue;
        expectReplay("random acts");
    }
}

TEST_F(RecordTest, UndoTakesLinesOutAndRedoPutsThemBack)
{
    recorder.setOn(true, picture);
    QStringList texts = {script->text};
    ToolFigure drawn;
    drawn.tool = kToolRectangle;
    drawn.last = {20, 20};
    figure(drawn, AreaJoin::Replace);
    texts << script->text;
    space.blendMode = 3;
    apply(table.byScriptName("negative")->id);
    texts << script->text;
    space.blendMode = 0;
    apply(table.byScriptName("exposure")->id);
    texts << script->text;
    EXPECT_TRUE(texts[3].contains("use blendMode 3\n") && texts[3].contains("use blendMode 0\n"))
        << texts[3].toStdString();
    for (int i = 2; i >= 0; --i) {
        ASSERT_TRUE(back());
        EXPECT_EQ(script->text, texts[i]) << i;
    }
    for (int i = 1; i <= 3; ++i) {
        ASSERT_TRUE(forth());
        EXPECT_EQ(script->text, texts[i]) << i;
    }
    // What the person wrote stays, and the lines of the act go all the same.
    script->text += "# mine";
    back();
    EXPECT_TRUE(script->text.endsWith("use blendMode 0\n# mine")) << script->text.toStdString();
    script->text += "\n";
    picture->red[0] ^= 1;
    apply(table.byScriptName("exposure")->id, false);
    EXPECT_TRUE(script->text.contains("something that is not recorded"));
    image other;
    other.allocate(8, 8, "a:negative");
    recorder.areaBegins(other, true);
    recorder.areaDone(other, "invert");
    EXPECT_TRUE(script->text.endsWith("# picture a::negative\narea none\narea invert\n"));
}

TEST_F(RecordTest, DissolvedStatisticsAndLinelessOperatorsComeOutTheSame)
{
    recorder.setOn(true, picture);
    whole("luma", [&] { selectFromLuma(picture); });
    for (const int mode : {7, 8, 7}) {
        space.blendMode = mode;
        apply(table.byScriptName("gamma") ? table.byScriptName("gamma")->id
                                          : table.byScriptName("negative")->id);
    }
    space.blendMode = 0;
    space.sampleStatistics[4] = 1234;
    if (table.setParameter("operatorCurveKnots", "0,0 0.25,0.6 1,0.9"))
        apply(table.byScriptName("curves")->id);
    apply(table.byScriptName("negative")->id);
    EXPECT_TRUE(script->text.contains("use sampleStatistics 0 0 0 0 1234 0 0 0 0\n"));
    expectReplay("dissolved");
    EXPECT_EQ(space.sampleStatistics[4], 1234);
}

TEST_F(RecordTest, SelectionsAreScaledAndHostileOnesRefused)
{
    recorder.setOn(true, picture);
    whole({}, [&] { selectFromLuma(picture); });
    const QString line = script->text.section('\n', 2, 2);
    ASSERT_TRUE(line.startsWith("selection 40x30 ")) << line.toStdString();
    const QString data = line.section(' ', 2);
    const QString bad[] = {"selection 41x30 " + data,
                           "selection 40x30 " + data.left(data.size() / 2),
                           "selection 40x30 " + data.mid(4),
                           "selection 40x30 %",
                           "selection 32767x32767 " + data,
                           "selection 99999x1 " + data,
                           "selection 0x0 " + data,
                           "selection 40x-30 " + data,
                           "selection 40x30",
                           "area replace polygon 1 2 3",
                           "area add rectangle 1 2 3 x4y",
                           "area add rectangle 1 2 3 4 5",
                           "area replace nothing",
                           "area feather 61",
                           "area all 1",
                           "use wandTolerance 101",
                           "use wandTolerance",
                           "use toolSelect 1",
                           "use maxUndos 3",
                           "use operatorExposure 101",
                           "use sampleStatistics 1 2 3",
                           "use operatorScript x",
                           "shape 1",
                           "perform script",
                           "perform nonsense"};
    const int64_t blocks = memRecord.currentBlocks;
    for (const QString &one : bad) {
        picture->copyWorkPlanes(*untouched);
        EXPECT_EQ(run(one), ScriptEnd::Done);
        EXPECT_EQ(runner.failedStatements(), 1) << one.toStdString();
        EXPECT_TRUE(samePlanes(*picture, *untouched)) << one.toStdString();
    }
    EXPECT_EQ(memRecord.currentBlocks, blocks);
    image large;
    large.allocate(80, 60, "large");
    large.fillGmask(0);
    EXPECT_EQ(runner.run(&large, QString(), line), ScriptEnd::Done);
    EXPECT_NE(large.gmask[30 * 80 + 40], 0);
    EXPECT_EQ(xAfter("area = 3:area:area * 2:x=void/6*area+1"), 4) << "a variable of a verb's name";
    run("use wandTolerance 5*5:use operatorExposure 31:x=1/0");
    EXPECT_EQ(space.wandTolerance, 10);
    EXPECT_EQ(table.parameterText("operatorExposure"), "0");
    for (const OpWrapper *op : table.operators())
        EXPECT_FALSE(findVerb(op->scriptName)) << op->scriptName.toStdString();
}
