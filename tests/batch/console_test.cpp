// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/toolrun.h"

#include "core/memory.h"
#include "formats/tagged.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace
{
/// What is written to a console, with an image or without one, and what it answers.
struct Session {
    const char *fault, *image, *input, *output;
};

void expectAnswers(const Session &session)
{
    SCOPED_TRACE(session.fault);
    const QStringList images = QString(session.image).split(' ', Qt::SkipEmptyParts);
    const ToolRun run = runInProcess(QStringList{"-i"} + images, session.input);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, session.output);
    EXPECT_EQ(memRecord.currentBlocks, 0) << "left in memory";
}

TEST(Console, TranscriptsAreAnsweredInOrder)
{
    const Session sessions[] = {
        {"Samples", "new:3x2",
         ".size\n.pixel 2 1\n.poke 2 1 0 1 65534 65535\n.mask 2 1 7\n.pixel 2 1\n"
         ".pixel 0 0\n.fill 1 2 3 4\n.pixel 2 1\n.undo\n",
         "3 2\n36863 36863 36863 65535 0\n0 1 65534 65535 7\n"
         "36863 36863 36863 65535 0\n1 2 3 4 7\nnothing\n"},
        {"ApplyUndoRedo", "new:2x1",
         ".mask 0 0 65535\n.apply exposure 25 0\n.pixel 0 0\n.pixel 1 0\n.undo\n"
         ".pixel 0 0\n.undo\n.redo\n.pixel 0 0\n.redo\n",
         "46078 46078 46078 65535 65535\n36863 36863 36863 65535 0\n"
         "36863 36863 36863 65535 65535\nnothing\n"
         "46078 46078 46078 65535 65535\nnothing\n"},
        {"AnEmptyMaskChangesNothing", "new:1x1", ".apply negative\n.pixel 0 0\n.undo\n.undo\n",
         "36863 36863 36863 65535 0\nnothing\n"},
        {"InvertedSelection", "new:1x1", ".set invertSelection 1\n.apply negative\n.pixel 0 0\n",
         "28672 28672 28672 65535 65535\n"},
        {"AStatementMakesNoRecord", "new:1x1",
         ".mask 0 0 65535\nexposure -50+0 0:negative # 1\nexposure 0 5 : :#x=1/0\n.pixel 0 0\n"
         ".undo\n.scriptline exposure\n",
         "failed: negative has no parameters\n"
         "failed: exposure [Amount=-100...100] [Mode=0...1]\n"
         "18431 18431 18431 65535 65535\nnothing\nexposure -50 0\n"},
        {"ParametersAreSettingsToo", "new:1x1",
         ".set operatorExposure 25\n.scriptline exposure\n.set operatorExposure x\n.set nix 1\n"
         ".mask 0 0 65535\n.apply script\n.apply curves\n.apply curves 1\n.undo\n.undo\n",
         "exposure 25 0\nfailed: \"x\" is no value of operatorExposure\n"
         "failed: unknown setting \"nix\"\n"
         "failed: the console runs scripts line by line: type its statements\n"
         "failed: curves takes no values\nnothing\n"},
        {"CommentsAndBlankLines", "", "\n   \n#x=1\n: :\r\n", ""},
        {"AFailedApplyChangesNothing", "new:1x1",
         ".mask 0 0 65535\n.apply exposure 10\n.apply exposure 101 0\n"
         ".apply sharpenn\n.apply\n.undo\n.scriptline exposure\n",
         "failed: exposure [Amount=-100...100] [Mode=0...1]\n"
         "failed: exposure [Amount=-100...100] [Mode=0...1]\n"
         "failed: unknown operator \"sharpenn\"\nfailed: usage: .apply NAME ARGS...\n"
         "nothing\nexposure 0 0\n"},
        {"Snapshot", "new:1x1",
         ".snapshot\n.fill 0 0 0 0\n.undo\n.pixel 0 0\n.redo\n.pixel 0 0\n.undo\n"
         ".snapshot\n.redo\n",
         "36863 36863 36863 65535 0\n0 0 0 0 0\nnothing\n"},
        {"WrongArguments", "new:2x2",
         ".pixel 1\n.pixel 2 0\n.pixel 0 -1\n.pixel 0 1.5\n.fill 0 0 0 65536\n"
         ".poke 0 0 1 2 3 x\n.pixel 0 0\n.size 1\n.bogus\n",
         "failed: usage: .pixel X Y\nfailed: X is 0 to 1, not \"2\"\n"
         "failed: Y is 0 to 1, not \"-1\"\nfailed: Y is 0 to 1, not \"1.5\"\n"
         "failed: a sample is 0 to 65535, not \"65536\"\n"
         "failed: a sample is 0 to 65535, not \"x\"\n36863 36863 36863 65535 0\n"
         "failed: usage: .size\nfailed: unknown command \".bogus\"\n"},
        {"WithoutAnImage", "",
         ".size\n.apply negative\nnegative\n.undo\n.save x.png\n.load new:4x3\n.size\n"
         ".load new:0x3\n.size\n",
         "failed: no image\nfailed: no image\nfailed: there is no image\nfailed: no image\n"
         "failed: no image\n4 3\n"
         "failed: new:0x3: a new image is new:WxH, each side from 1 to 32767\n4 3\n"},
        {"Assignments", "new:1x1",
         ".origin new:2x2\n.origin new:3x3\n.brush new:0x0\n.origin\n.brush\n.brush new:2x2\n",
         "failed: new:0x0: a new image is new:WxH, each side from 1 to 32767\n"},
        {"Settings", "", ".set nope 1\n.set tMode\n.set mainAuthor A  B\n.set blendMode 10\n",
         "failed: unknown setting \"nope\"\nfailed: \"\" is no value of tMode (0 to 3)\n"},
        {"NoLayers", "new:1x1", ".layers\n.layer 0\n.compose\n",
         "failed: not a layered picture\nfailed: new:1x1: not a layered picture\n"
         "failed: not a layered picture\n"},
        {"QuitEndsBeforeTheRest", "new:1x1", ".quit\n.size\n", ""},
        {"LastLineWithoutItsEnd", "new:1x1", ".size", "1 1\n"}};
    for (const Session &session : sessions)
        expectAnswers(session);
}

TEST(Console, StatementsAreOneRunOfTheLanguage)
{
    const Session sessions[] = {
        {"Values", "", "1+2*3\n1/3\nhypo(3,4)*2\n2 * (1 + 2)\n\"text\"\n",
         "9\n0.33333333333333331\n10\n6\n0\n"},
        {"SilentStatements", "", "x=2:t~\"a\"\nx = 3 : x\ntestscripting\n", "3\n"},
        {"ReportsStandBeforeTheirAnswer", "", "1/0:2\npop()\nz=5%0\ndebug=0\n1/0\n",
         "error: Division by zero\n0\n2\nwarning: user stack is empty\n0\n"
         "error: Can't mod by zero\n0\n"},
        {"Rich", "", "x=1\n.rich on\n5%0\n.rich off\n.rich maybe\n5/0\n",
         "rich: <b>Script</b> step 2: <font color=\"#ff0000\">error:</font> "
         "<font color=\"#0000FF\">an't mod by zero\n0\n"
         "failed: usage: .rich on|off\nerror: Division by zero\n0\n"},
        {"StateStaysFromLineToLine", "",
         "array(a,1,2)\nappend(a,5)\nvalue(a,2)\npush(7)\nif(1<0)\nx=1\nelse\nx=2\nendif\n"
         "x+pop()\nn=0:loop(3):n=n+1:while()\nn\n",
         "2\n3\n5\n0\n9\n3\n"},
        {"Looks", "",
         "w=12345.5\nname~\"a b\"\n.value w\n.value 1+\n.value (1\n.text name+\" \"+w\n"
         ".text name+,\n.tokens 2*-x1\n",
         "12,345.5\n1\nfailed: no value\na b 12,345.5\nwarning: not parsed: \",\"\na b,\n"
         "\"2\" 76 SO_DUB\n\"*\" 136 SO_MUL\n\"-\" 140 SO_NEGATE2\n\"x1\" 141 SO_NOP\n"},
        {"VariablesFollowTheImage", "new:7x5",
         "m_width\n.load new:3x2\nm_width*10+m_height\nm_origin\n.origin new:9x9\nm_owidth\n"
         ".origin\nm_owidth\n",
         "7\n32\n0\n9\n0\n"},
        {"PixelsAndOperators", "new:4x4",
         "rect 0 0 1 3\nexposure -100 0\nwritep(3,3,1,2,3)\nreadch(0,0,1)\n.pixel 2 0\n"
         "entire\nwritep(3,3,1,2,3)\n.pixel 3 3\n.undo\n",
         "1\n0\n36863 36863 36863 65535 0\n1\n1 2 3 65535 65535\nnothing\n"},
        {"KernelsReadTheSnapshot", "new:3x3",
         "array(k,1,1,1,1,1,1,1,1,1):dim(k,3,3):entire\n.poke 1 1 0 0 0 65535\n.snapshot\n"
         "convolve(k,3)\nreadch(1,1,0)\n",
         "9\n0\n0\n32767\n"},
        {"WithoutAnImage", "", "x=3\nexposure 10 0\nrect 0 0 1 1\nreadch(0,0,0)\nm_width\nx\n",
         "failed: there is no image\nfailed: there is no image\n0\n0\n3\n"}};
    for (const Session &session : sessions)
        expectAnswers(session);
}

TEST(Console, MessagesTellTheLineAndTheWordThatWasMeant)
{
    const ToolRun run = runInProcess({"-i", "new:1x1"}, "x=1\n\nx/0\nhyp(3,4)\nexposure 1\n(1\n");
    EXPECT_EQ(run.out, "error: Division by zero\n0\n3\n"
                       "failed: exposure [Amount=-100...100] [Mode=0...1]\nfailed: \n");
    EXPECT_EQ(run.messages, "error: line 3: Division by zero\n"
                            "warning: line 4: unknown word \"hyp\", did you mean \"hypo\"?\n"
                            "error: line 5: exposure [Amount=-100...100] [Mode=0...1]\n"
                            "error: line 6: has no value\n");
    EXPECT_EQ(runInProcess({"-i"}, "1/0\n", true).messages, "") << "the answer is on the screen";
}

TEST(Console, AnEndlessLoopEndsAndTheNextLineStartsAfresh)
{
    const ToolRun run = runInProcess(
        {"-i"}, "n=0\nloop():n=n+1:while(1)\nn>3000\nn=0:loop(3000):n=n+1:while()\nn\n");
    EXPECT_EQ(run.out, "1\n3000\n");
    EXPECT_EQ(run.messages.rfind("notice: Script aborted; number of operations exceeded", 0), 0U)
        << run.messages;
}

TEST(Console, EveryVariableIsListedInOrder)
{
    const std::string list = runInProcess({"-i"}, "zz=1/3\naa~\"x  y\"\n.vars\n").out;
    EXPECT_EQ(list.rfind("aa = x y\n", 0), 0U) << list;
    EXPECT_NE(list.find("\nm_pi = 3.1415926535897931\n"), std::string::npos);
    EXPECT_NE(list.find("\nvoid = 0\nzz = 0.33333333333333331\n"), std::string::npos);
}

/// Two layers: black below, and a half transparent white one that covers the left column.
QString layeredFile(const QTemporaryDir &folder)
{
    RecordingWorkspace space;
    image *master = plainImage(2, 1, 0, 0, 0).release();
    master->kind = 1;
    for (const uint16_t level : {uint16_t(0), uint16_t(65535)}) {
        image *layer = plainImage(level ? 1 : 2, 1, level, level, level).release();
        layer->name = level ? "white sheet" : "ground";
        layer->opacity = level ? 0.25 : 1.0;
        layer->kind = 2;
        layer->master = master;
        master->layers << layer;
    }
    const QString path = folder.filePath("stack.elx");
    QString error;
    EXPECT_TRUE(writeMaster(master, path, &error)) << qPrintable(error);
    destroyTree(&master);
    return path;
}

TEST(Console, LayersAreListedChosenAndComposed)
{
    QTemporaryDir folder;
    const QString file = layeredFile(folder), again = folder.filePath("again.elx");
    const QString flat = folder.filePath("flat.rgba"), layerFile = folder.filePath("layer.rgba");
    const ToolRun run =
        runInProcess({"-i", "--layer", "1", file},
                     (".size\n.layers\n.layer 3\n.layer x\n.layer 0\n.pixel 0 0\n.pixel 1 "
                      "0\n.layer 2\n.fill 65535 "
                      "0 0 65535\n.compose\n.save " +
                      flat + "\n.save " + again + "\n.load " + flat +
                      "\n.pixel 1 0\n.layers\n.load " + again + "\n.layers\n.pixel 1 0\n")
                         .toStdString());
    const std::string list = "2 0 1 ground\n1 0 0.25 white sheet\n";
    EXPECT_EQ(run.out, "1 1\n" + list + "failed: " + file.toStdString() +
                           ": the layers are 1 to 2, not 3\n"
                           "failed: a layer is a whole number from 0, not \"x\"\n"
                           "32767 32767 32767 65535 0\n0 0 0 65535 0\n"
                           "65535 0 0 65535 0\nfailed: not a layered picture\n" +
                           list + "65535 0 0 65535 0\n");
    EXPECT_EQ(runInProcess({"--layer", "3", "-o", layerFile, file}).status, 1);
    EXPECT_EQ(runInProcess({"--layer", "1", "-o", layerFile, flat}).status, 1);
    EXPECT_FALSE(QFileInfo::exists(layerFile));
    EXPECT_EQ(memRecord.currentBlocks, 0) << "left in memory";
}

TEST(Console, AScriptWorksOnTheLayerThatIsChosenElseOnTheMaster)
{
    QTemporaryDir folder;
    const QString file = layeredFile(folder), flat = folder.filePath("flat.rgba");
    const QStringList save{"-o", flat, file};
    const QString looks = "entire:if(readm(1,0)<65535):x=1/0:endif:if(m_width==1):x=2/0:endif";
    ToolRun run = runInProcess(QStringList{"-e", looks, "-e", "negative", "--strict"} + save);
    EXPECT_EQ(run.status, 3);
    EXPECT_NE(run.messages.find("error: line 2: negative does not work on a master\n"),
              std::string::npos)
        << run.messages;
    EXPECT_EQ(runInProcess(QStringList{"-e", looks, "--strict"} + save).status, 0);
    run = runInProcess(QStringList{"--layer", "2", "-e", looks + ":negative", "--strict"} + save);
    EXPECT_EQ(run.status, 0) << run.messages;
    EXPECT_EQ(runInProcess({"-i", flat}, ".pixel 0 0\n.pixel 1 0\n").out,
              "65535 65535 65535 65535 0\n65535 65535 65535 65535 0\n");
    EXPECT_EQ(memRecord.currentBlocks, 0) << "left in memory";
}

TEST(Console, HostileLinesAreAnsweredAndPassed)
{
    const QByteArray lines[] = {QByteArray(17 << 20, '.'),
                                "." + QByteArray(1 << 20, 'a'),
                                QByteArray(".pixel \0 1", 10),
                                ".pixel " + QByteArray(1 << 20, '9') + " 0",
                                QByteArray(".load \xff\xfe\x80\0", 10),
                                QByteArray("(\0\0\0", 4),
                                QByteArray(20000, '('),
                                "if(" + QByteArray(20000, '-') + "1)\n(",
                                ".apply exposure " + QByteArray(100000, '(') + " 0",
                                "exposure \xc3( 0"};
    for (const QByteArray &line : lines) {
        const ToolRun run = runInProcess({"-i", "new:1x1"}, (line + "\n.size\n").toStdString());
        EXPECT_EQ(run.out.rfind("failed: ", 0), 0U) << run.out.substr(0, 100);
        EXPECT_EQ(run.out.substr(run.out.find('\n') + 1), "1 1\n") << line.left(20).constData();
        EXPECT_EQ(run.out.find('\0'), std::string::npos);
        EXPECT_LT(run.out.size(), 400U);
    }
}

TEST(Console, MemoryReportCountsTheImageAndItsRecord)
{
    const std::string report = runInProcess({"-i", "new:5x5"}, ".snapshot\n.memory\n").out;
    EXPECT_EQ(report.rfind("Current # of Memory Blocks: ", 0), 0U);
    EXPECT_NE(report.find("undo 1: New Image 1"), std::string::npos) << report;
    EXPECT_NE(report.find("Slot 1: "), std::string::npos);
    EXPECT_EQ(report.find_last_not_of('\n'), report.size() - 2) << "one line end";
}

TEST(Console, PromptsOnATerminalAlone)
{
    const std::string shown = runInProcess({"-i", "new:1x1"}, ".size\n.quit\n", true).out;
    EXPECT_EQ(shown.rfind("\r> ", 0), 0U);
    EXPECT_NE(shown.find("\r\n1 1\n\r> "), std::string::npos) << shown;
}
} // namespace
