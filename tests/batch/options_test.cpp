// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/messages.h"
#include "batch/options.h"

#include "batch/toolrun.h"

#include <gtest/gtest.h>

namespace
{
QStringList split(const char *arguments)
{
    return QString(arguments).split(' ', Qt::SkipEmptyParts);
}

TEST(Options, WrongUsageIsOneLineAndStatus2)
{
    struct {
        const char *arguments, *line;
    } const cases[] = {
        {"", "no image is given"},
        {"--bogus a.png", "unknown option --bogus"},
        {"-x a.png", "unknown option -x"},
        {"--outp x.png a.png", "unknown option --outp"},
        {"a.png -o", "-o needs a value"},
        {"--strict=1 a.png", "--strict takes no value"},
        {"--output= a.png", "--output : the value is empty"},
        {"--depth 16 a.png", "--depth 16: the depth is 32 or 64"},
        {"--quality 0 a.png", "--quality 0: the quality is a whole number from 1 to 100"},
        {"--quality=50% a.png", "--quality 50%: the quality is a whole number from 1 to 100"},
        {"--set tMode a.png", "--set tMode: a setting is given as KEY=VALUE"},
        {"--set tMode=9 new:1x1", "--set: \"9\" is no value of tMode (0 to 3)"},
        {"new:4", "new:4: a new image is new:WxH, each side from 1 to 32767"},
        {"new:65600x4", "new:65600x4: a new image is new:WxH, each side from 1 to 32767"},
        {"new:4x4294967300", "new:4x4294967300: a new image is new:WxH, each side from 1 to 32767"},
        {"--brush new:-4x4 a.png",
         "--brush new:-4x4: a new image is new:WxH, each side from 1 to 32767"},
        {"-s none.script a.png", "none.script: no such file"},
        {"--script=/ a.png", "/: is a folder"},
        {"-i -e x=1", "no image is given"},
        {"-i -o x.png new:1x1", "--output does not go with --interactive, which has .save"},
        {"-o {name}.jpg a.png b/a.png",
         "a.jpg would be written twice; use {name} or {n} in --output"},
        {"-o ./x{n}/../y.jpg a.png b.png",
         "./x2/../y.jpg would be written twice; use {name} or {n} in --output"},
        {"-o x{n}.png a.png ./x1.png", "x1.png is also read by this run and is not overwritten"},
        {"--origin o.png -o o.png a.png", "o.png is also read by this run and is not overwritten"}};
    for (const auto &c : cases) {
        const ToolRun run = runInProcess(split(c.arguments));
        EXPECT_EQ(run.status, 2) << c.arguments;
        EXPECT_EQ(run.messages, std::string("error: ") + c.line + "\n");
        EXPECT_EQ(run.out, "") << c.arguments;
    }
}

TEST(Options, AllFormsOfAnOptionAreOne)
{
    for (const char *arguments : {"-o x.rgba --depth 32 --quality 7 --set a=b=c -- -i a.png",
                                  "-ox.rgba --depth=32 --quality=7 --set=a=b=c -- -i a.png"}) {
        Options options;
        QString error;
        // Both images would go to one file, which is not what this looks at.
        EXPECT_FALSE(parseOptions(split(arguments), &options, &error));
        EXPECT_EQ(options.output, "x.rgba");
        EXPECT_TRUE(options.rgbaDepth == 32 && options.quality == 7 && !options.interactive);
        EXPECT_EQ(options.images, (QStringList{"-i", "a.png"}));
        ASSERT_EQ(options.settings.size(), 1);
        EXPECT_EQ(options.settings[0].second, "b=c");
    }
}

TEST(Options, ResultNames)
{
    EXPECT_EQ(outputName("{name}-{n}.png", "a/b.tar.gz", 12), "b.tar-12.png");
    EXPECT_EQ(outputName("o/{n}{n}{x}", "plain", 3), "o/33{x}");
    EXPECT_EQ(outputName("{name}", "d/{n}{name}.png", 3), "{n}{name}");
    Options options;
    options.images = QStringList{"a.png", "b.png"};
    options.output = "./{name}.png"; // an image may replace its own input
    QString error;
    EXPECT_TRUE(checkOutputs(options, &error)) << error.toStdString();
}

TEST(Options, HelpAndVersionAnswerOnStandardOutput)
{
    const ToolRun help = runInProcess({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("--keep-going"), std::string::npos);
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
