// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/messages.h"
#include "batch/options.h"

#include "batch/toolrun.h"

#include <gtest/gtest.h>

namespace
{
QStringList split(const char *arguments)
{
    return QString::fromUtf8(arguments).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

struct WrongCase {
    const char *fault, *arguments, *line;
};
class WrongUsage : public testing::TestWithParam<WrongCase>
{
};

TEST_P(WrongUsage, IsOneLineAndStatus2)
{
    const ToolRun run = runInProcess(split(GetParam().arguments));
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.messages, std::string("error: ") + GetParam().line + "\n");
    EXPECT_EQ(run.out, "");
}

INSTANTIATE_TEST_SUITE_P(
    Lines, WrongUsage,
    testing::Values(
        WrongCase{"NothingAtAll", "", "no image is given"},
        WrongCase{"OnlyTheEndOfOptions", "--", "no image is given"},
        WrongCase{"UnknownLong", "--bogus a.png", "unknown option --bogus"},
        WrongCase{"UnknownLongWithValue", "--bogus=1 a.png", "unknown option --bogus"},
        WrongCase{"UnknownShort", "-x a.png", "unknown option -x"},
        WrongCase{"PrefixIsNoOption", "--outp x.png a.png", "unknown option --outp"},
        WrongCase{"ValueMissing", "a.png -o", "-o needs a value"},
        WrongCase{"LongValueMissing", "a.png --depth", "--depth needs a value"},
        WrongCase{"FlagWithValue", "--strict=1 a.png", "--strict takes no value"},
        WrongCase{"EmptyOutput", "--output= a.png", "--output : the value is empty"},
        WrongCase{"Depth", "--depth 16 a.png", "--depth 16: the depth is 32 or 64"},
        WrongCase{"QualityTooLow", "--quality 0 a.png",
                  "--quality 0: the quality is a whole number from 1 to 100"},
        WrongCase{"QualityWithTail", "--quality=50% a.png",
                  "--quality 50%: the quality is a whole number from 1 to 100"},
        WrongCase{"SettingWithoutValue", "--set tMode a.png",
                  "--set tMode: a setting is given as KEY=VALUE"},
        WrongCase{"SettingUnknown", "--set nope=1 new:1x1", "--set: unknown setting \"nope\""},
        WrongCase{"SettingOutOfRange", "--set tMode=9 new:1x1",
                  "--set: \"9\" is no value of tMode (0 to 3)"},
        WrongCase{"NewWithoutSize", "new:4",
                  "new:4: a new image is new:WxH, each side from 1 to 32767"},
        WrongCase{"NewOfNothing", "new:0x4",
                  "new:0x4: a new image is new:WxH, each side from 1 to 32767"},
        WrongCase{"NewThatWraps", "new:65600x4",
                  "new:65600x4: a new image is new:WxH, each side from 1 to 32767"},
        WrongCase{"NewBeyondInt", "new:4x4294967300",
                  "new:4x4294967300: a new image is new:WxH, each side from 1 to 32767"},
        WrongCase{"BrushNegative", "--brush new:-4x4 a.png",
                  "--brush new:-4x4: a new image is new:WxH, each side from 1 to 32767"},
        WrongCase{"Script", "-s a.script a.png", "-s is not available in this version"},
        WrongCase{"Text", "--execute x=1 a.png", "--execute is not available in this version"},
        WrongCase{"ConsoleOutput", "-i -o x.png new:1x1",
                  "--output does not go with --interactive, which has .save"},
        WrongCase{"TwoResultsOfOneName", "-o {name}.jpg a.png b/a.png",
                  "a.jpg would be written twice; use {name} or {n} in --output"},
        WrongCase{"SameFileOtherwiseWritten", "-o ./x{n}/../y.jpg a.png b.png",
                  "./x2/../y.jpg would be written twice; use {name} or {n} in --output"},
        WrongCase{"InputOfAnotherImage", "-o x{n}.png a.png ./x1.png",
                  "x1.png is also read by this run and is not overwritten"},
        WrongCase{"TheOrigin", "--origin o.png -o o.png a.png",
                  "o.png is also read by this run and is not overwritten"}),
    [](const auto &row) { return row.param.fault; });

TEST(Options, AllFormsOfAnOptionAreOne)
{
    for (const char *arguments : {"-o x.rgba --depth 32 --quality 7 --set a=b=c -- -i a.png",
                                  "-ox.rgba --depth=32 --quality=7 --set=a=b=c -- -i a.png"}) {
        Options options;
        QString error;
        // Both images would go to one file, which is not what this looks at.
        EXPECT_FALSE(parseOptions(split(arguments), &options, &error));
        EXPECT_EQ(options.output, QStringLiteral("x.rgba"));
        EXPECT_EQ(options.rgbaDepth, 32);
        EXPECT_EQ(options.quality, 7);
        EXPECT_EQ(options.images, (QStringList{"-i", "a.png"}));
        ASSERT_EQ(options.settings.size(), 1);
        EXPECT_EQ(options.settings[0].second, QStringLiteral("b=c"));
        EXPECT_FALSE(options.interactive);
    }
}

TEST(Options, ResultNames)
{
    EXPECT_EQ(outputName("{name}-{n}.png", "a/b.tar.gz", 12), "b.tar-12.png");
    EXPECT_EQ(outputName("o/{n}{n}{x}", "plain", 3), "o/33{x}");
    EXPECT_EQ(outputName("{name}", "d/{n}{name}.png", 3), "{n}{name}");
}

TEST(Options, AnImageMayReplaceItsOwnInput)
{
    Options options;
    options.images = QStringList{"a.png", "b.png"};
    options.output = "./{name}.png";
    QString error;
    EXPECT_TRUE(checkOutputs(options, &error)) << error.toStdString();
}

TEST(Options, HelpAndVersionAnswerOnStandardOutput)
{
    const ToolRun help = runInProcess({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("--keep-going"), std::string::npos);
    EXPECT_EQ(help.messages, "");
    EXPECT_EQ(runInProcess({"--version"}).out, "kestrane-batch " KESTRANE_VERSION "\n");
}

TEST(Messages, MarkUpBecomesPlainTextOnOneLine)
{
    EXPECT_EQ(plainLine("Can't save.<br>Use <i>not</i> a&nbsp;b &lt;x&gt;<br><br>z"),
              "Can't save. Use not a b <x> z");
    EXPECT_EQ(plainLine("a < b > c & d &amp;lt; \033[2J\nend"), "a < b > c & d &lt; [2J end");
}

TEST(Messages, ProgressMakesWayForMessagesOnATerminalAlone)
{
    for (const bool terminal : {true, false}) {
        std::ostringstream stream;
        {
            Messages messages(stream, terminal);
            messages.showProgress("1/2 a.png");
            messages.error("no\nmore");
        }
        EXPECT_EQ(stream.str(),
                  terminal ? "1/2 a.png\r\033[Kerror: no more\n" : "error: no more\n");
    }
}
} // namespace
