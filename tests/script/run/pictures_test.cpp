// SPDX-License-Identifier: GPL-3.0-or-later
// What scripts do to pictures, and what goes on around a run.
#include "support/scriptfixture.h"

#include "area/producers.h"
#include "area/wand.h"
#include "core/memory.h"
#include "core/undo.h"
#include "formats/save.h"

#include <QElapsedTimer>
#include <QSettings>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>

namespace
{
ImagePtr copyOf(const image &source)
{
    auto copy = std::make_unique<image>();
    copy->allocate(source.width, source.height, source.name);
    copy->copyWorkPlanes(source);
    return copy;
}
} // namespace

TEST_F(ScriptTest, VerbsSelectAsTheAreaTools)
{
    const struct {
        const char *line;
        std::function<bool(image *)> tool;
    } cases[] = {
        {"rect 5+5 4 m_width/2 -3", [](image *i) { return rectSelect(i, 10, 4, 20, -3, false); }},
        {"ellipse 12.5 9 6.25 4",
         [](image *i) { return ellipseSelect(i, 12.5, 9, 6.25, 4, false); }},
        {"rellipse 2 3 22 14", [](image *i) { return ellipseInBox(i, 2, 3, 22, 14); }},
        {"entire", [](image *i) { return entireSelect(i); }},
        {"wand 7 8 35", [](image *i) { return wandSelect(i, 7, 8, 35); }},
    };
    for (const auto &one : cases) {
        const ImagePtr expected = copyOf(*picture);
        ASSERT_TRUE(one.tool(expected.get()));
        EXPECT_EQ(run(one.line), ScriptEnd::Done);
        EXPECT_EQ(runner.failedStatements(), 0) << one.line;
        EXPECT_TRUE(samePlanes(*picture, *expected)) << one.line;
        EXPECT_TRUE(picture->undoList.isEmpty());
    }
}

TEST_F(ScriptTest, TextStandsOnItsLineAtItsLeftEdge)
{
    const QString line = "m_fontpoints=20:t~\"Hi\":text Courier 6 26 %1 %2";
    for (const char *text : {"t", "Hi", "\"Hi\"", "H+i"}) {
        EXPECT_EQ(run(line.arg("1", text)), ScriptEnd::Done);
        const Bounds box = picture->maskBounds();
        EXPECT_EQ(box.left, 6) << text;
        EXPECT_LT(box.bottom, 26);
        EXPECT_GT(box.bottom, 15);
    }
    const Bounds large = picture->maskBounds();
    run(line.arg("0.5", "t"));
    const Bounds small = picture->maskBounds();
    EXPECT_EQ(small.left, 6);
    EXPECT_NEAR(small.width * 2, large.width, 3);
    EXPECT_GT(small.top, large.top);
    run("text Courier 6 26 1 Hi:x=m_lineheight-m_ascent-m_descent+100:setm(x)");
    EXPECT_NEAR(picture->gmask[0], 100, 3);
}

TEST_F(ScriptTest, ApplyIsOneActAndCanBeUndone)
{
    picture->fillGmask(65535);
    const ImagePtr before = copyOf(*picture);
    script->presets = "k=20";
    script->text = "exposure k 0:negative:loop(3):exposure 1 1:while():mix 25";
    table.currentOp = 82;
    table.apply(picture, true);
    ASSERT_EQ(picture->undoList.size(), 1);
    EXPECT_FALSE(picture->inUse);
    EXPECT_FALSE(sameColors(*picture, *before));
    EXPECT_GT(space.refreshes, 0);
    EXPECT_TRUE(space.boxes.isEmpty() && reports.isEmpty()) << reports.join('|').toStdString();

    undo(picture);
    EXPECT_TRUE(samePlanes(*picture, *before));
    beginAct(picture);
    run("negative:mix 25");
    for (int i = 0; i < 1200; i += 97) {
        const double old = before->green[i];
        EXPECT_EQ(picture->green[i], uint16_t(old * 0.75 + (65535 - old) * 0.25));
    }
    EXPECT_EQ(picture->alpha[5], before->alpha[5]);
    script->presetsOn = false;
    table.apply(picture, true); // without its preset
    EXPECT_TRUE(reports.contains("exposure k 0"));
}

TEST_F(ScriptTest, AMastersSamplesAreNotTouched)
{
    picture->kind = 1;
    const ImagePtr before = copyOf(*picture);
    run("negative:mix 50:x=3:exposure 5 0");
    EXPECT_TRUE(samePlanes(*picture, *before));
    EXPECT_EQ(reports,
              QStringList({"negative does not work on a master", "mix does not work on a master",
                           "exposure does not work on a master"}));
    picture->kind = 0;
}

TEST_F(ScriptTest, FilesBecomePicturesOrOriginImages)
{
    QTemporaryDir folder;
    const QString path = folder.filePath("a b.png"), plain = folder.filePath("c.png");
    const auto red = plainImage(5, 4, 65535, 257, 514);
    ASSERT_TRUE(red->toQImage().save(path) && red->toQImage().save(plain));
    const int64_t before = memRecord.currentBlocks;
    const QString read = ":x=readch(1,1,1,1)+(m_owidth*1000)+m_origin:setm(x)";
    run("vload \"" + path + "\" 1 0" + read);
    EXPECT_EQ(picture->gmask[0], 257 + 5001) << reports.join('|').toStdString();
    EXPECT_EQ(space.images.size(), 1); // not shown
    space.assignOrigin(nullptr);
    run("x=1");
    EXPECT_EQ(memRecord.currentBlocks, before); // and gone with its assignment

    run("p~\"" + plain + "\":vload p 0 0:vload p 0 0");
    EXPECT_EQ(space.images.size(), 2); // open already
    run("vload " + plain + " 1 0");
    EXPECT_EQ(space.originImage, space.images[1]);
    run("vload " + plain + " 0 1:vload " + plain + " 1 1");
    EXPECT_EQ(space.images.size(), 3);
    EXPECT_FALSE(space.images.contains(space.originImage));
    reports.clear();
    run("vload /nowhere/x.png 1 0:vload " + plain + " 2 0");
    EXPECT_EQ(reports.value(0), "cannot load \"/nowhere/x.png\"");
    EXPECT_EQ(runner.failedStatements(), 1);
}

TEST_F(ScriptTest, ThePersonStopsAnEndlessLoop)
{
    space.person = [this] { space.cancelled = true; };
    beginAct(picture);
    EXPECT_EQ(run("m_maxops=1000000000:loop():while(1)"), ScriptEnd::Stopped);
    EXPECT_TRUE(space.boxes.isEmpty());
    EXPECT_EQ(picture->undoList.size(), 1);
    EXPECT_FALSE(parser.variables.number(u"x") || runner.isRunning() || picture->inUse);
    space.cancelled = false;
    space.person = [this] { runner.stop(); };
    const QString inFunction = "m_maxops=1000000000:f~\"loop();x=1;while(1)\":func(f):y=2";
    EXPECT_EQ(run(inFunction), ScriptEnd::Stopped);
    // The image is closed while the person is let in.
    space.person = [this] {
        space.images.removeAll(picture);
        destroyTree(&picture);
    };
    table.currentOp = 82;
    script->text = inFunction;
    table.apply(picture, true);
    EXPECT_EQ(picture, nullptr);
    EXPECT_EQ(runner.lastEnd(), ScriptEnd::Stopped);
}

TEST_F(ScriptTest, APauseLetsEventsInButNoSecondRun)
{
    ScriptEnd second = ScriptEnd::Done;
    QTimer::singleShot(1, [&] {
        EXPECT_TRUE(runner.isPausing() && picture->inUse);
        second = run("x=5");
        runner.stop();
    });
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(run("x=1:pause 10:x=2"), ScriptEnd::Stopped);
    EXPECT_LT(clock.elapsed(), 5000);
    EXPECT_EQ(second, ScriptEnd::Refused);
    QTimer::singleShot(1, [&] {
        space.images.removeAll(picture);
        destroyTree(&picture);
    });
    EXPECT_EQ(run("pause 10:exposure 1 0"), ScriptEnd::Stopped);
}

TEST_F(ScriptTest, APreviewIsShortAndSilent)
{
    const auto small = randomImage(20, 20, 9);
    table.preview = small.get();
    small->fillGmask(65535);
    const ImagePtr before = copyOf(*small);
    QElapsedTimer clock;
    clock.start();
    const auto blocks = memRecord.currentBlocks;
    runner.run(small.get(), QString(),
               "1/0:bad(:pause 9:vload /x 0 0:x=slider(\"a\",\"b\",1,9,4):if(x==4):negative:endif:"
               "if(readch(0,0,0)>0):negative:endif:m_maxops=1000000000:loop():while(1)");
    EXPECT_LT(clock.elapsed(), 3000);
    EXPECT_TRUE(reports.isEmpty() && space.boxes.isEmpty() && space.statusTexts.isEmpty());
    EXPECT_EQ(small->red[3], 65535 - before->red[3]);
    EXPECT_EQ(memRecord.currentBlocks, blocks);
    table.preview = nullptr;
}

TEST_F(ScriptTest, TheProgramIsKept)
{
    QTemporaryDir folder;
    QSettings store(folder.filePath("s.ini"), QSettings::IniFormat);
    table.store = &store;
    script->text = "x=1\ny~\"ä:b\"";
    script->presets = "k=2";
    script->presetsOn = false;
    script->settings(true);
    script->reset();
    EXPECT_TRUE(script->presetsOn);
    EXPECT_EQ(script->text, "x=1\ny~\"ä:b\""); // a reset loses no work
    script->text = script->presets = QString();
    script->settings(false);
    EXPECT_EQ(script->text, "x=1\ny~\"ä:b\"");
    EXPECT_TRUE(script->presets == "k=2" && !script->presetsOn);
    table.store = nullptr;
}
