// SPDX-License-Identifier: GPL-3.0-or-later
// What scripts mean: statements, assignments, control flow, messages, limits.
#include "support/scriptfixture.h"

#include "core/memory.h"
#include "script/run/hints.h"

#include <random>

TEST(Statements, PiecesAndTheLinesTheyBeginOn)
{
    const struct {
        const char *text, *pieces; // "line text|…", comments in brackets
    } cases[] = {{"a:b\n\nc", "1 a|1 b|3 c"},
                 {"a::b:::c", "1 a:b:|1 c"},
                 {"a\r\nb\rc\n", "1 a|2 b|3 c"},
                 {"x=1:#y:z\n # t\n ", "1 x=1|[1 #y]|1 z|[2  # t]|[3  ]"},
                 {"::\n:", "1 :"}};
    for (const auto &one : cases) {
        QStringList pieces;
        for (const ScriptStatement &statement : splitStatements(one.text))
            pieces << QString(statement.isCode ? "%1 %2" : "[%1 %2]")
                          .arg(statement.line)
                          .arg(statement.text);
        EXPECT_EQ(pieces.join('|').toStdString(), one.pieces) << one.text;
    }
}

TEST_F(ScriptTest, ScriptsGiveTheirValues)
{
    const struct {
        const char *text;
        double x;
    } cases[] = {
        {"x=1:#y=2:x=x+1", 2},
        {"x = 1\n x =x + 1 \n\tx\t=\tx+1", 3},
        {"a=1::x=2", 2},
        {"x=1:x=\"abc\":t~\"7\":x=t:x=nosuch(", 1}, // none of these assigns
        {"3+4:x=void", 7},
        {"y=5:x=m_xyzzyplugh", 5},
        {"x=1:1x=3:=4:~5", 1},
        // Loops
        {"x=0:loop(5):x=x+1:while()", 5},
        {"x=0:loop():x=x+1:while()", 1},
        {"x=0:loop(0):x=x+1:while():loop(-1):x=x+1:while():loop(bad():x=x+1:while()", 3},
        {"x=0:loop():x=x+1:while(x<9)", 9},
        {"x=0:loop(3):x=x+1:while(x<9):loop(7):x=x+1:while(x<5)", 5},
        {"x=0:N=3:loop(N):loop(2*2):x=x+1:while():while()", 12},
        {"x=3:while(1):while():x=x+1", 4},
        // Branches
        {"if(1):x=1:else:x=2:endif", 1},
        {"if(0):x=1:if(1):x=3:else:x=4:endif:else:x=2:endif", 2},
        {"if(0):x=1:else:if(1):x=2:endif:x=9:endif", 2}, // an endif ends the else around it
        {"x=0:if(1):if(0):x=x+1:else:x=x+2:endif:x=x+4:endif:x=x+8", 14},
        {"5:if(void):x=1:else:x=2:endif", 2},
        {"t~\"True\":if(t):x=1:else:x=2:endif", 1},
        {"t~\"\":if(t):x=1:else:x=2:endif", 2},
        {"if(\"t\"):x=1:else:x=2:endif", 1},
        {"if(\"true\"):x=1:else:x=2:endif", 2},
        {"if(a > b):x=1:else:x=2:endif", 2}, // its condition ends at the blank
        {"endif:endif:x=1", 1},
        {"x=1:elsewhere=1:x=2", 1},
        {"x=0:if(0):loop(3):x=x+1:while():exposure 1:pop(:endif:x=x+5", 5},
        // Functions share loops and branches with the run
        {"f~\"y=dparm(0)*2;y=y+1\":x=func(f,5)", 11},
        {"f~\"y=0;loop(4);y=y+2;while();y=y\":x=0:loop(3):x=func(f)+x:while()", 24},
        {"f~\"if(dparm(0)<1);y=1;else;n=dparm(0);y=func(f,n-1)*2;endif;y=y\":x=func(f,3)", 8},
    };
    for (const auto &one : cases) {
        EXPECT_EQ(xAfter(one.text), one.x) << one.text;
        // A whole run gives the same; the selection tells.
        runner.run(picture, QString(), QString(one.text) + "\nendif:setm(x)");
        EXPECT_EQ(picture->gmask[7], one.x) << one.text;
    }
}

TEST_F(ScriptTest, MessagesOfStatements)
{
    const char *const exposureUsage = "exposure [Amount=-100...100] [Mode=0...1]";
    const struct {
        const char *text;
        QStringList messages;
        int failures;
    } cases[] = {
        {"exposure 10", {"exposure 10", QString("incorrect parameters for ") + exposureUsage}, 1},
        {"exposure 50+50 0:testscripting", {}, 0},
        {"if(0):rect 1 2 3:endif",
         {"rect 1 2 3", "incorrect parameters for rect [Left] [Top] [Right] [Bottom]"},
         1},
        {"pause 11", {"pause 11", "incorrect parameters for pause [Seconds=1...10]"}, 1},
        {"wand 99 99 5", {"wand selects nothing"}, 0},
        {"script", {"script", "incorrect parameters for script cannot be called by a script"}, 1},
        {"pop(", {"pop(", "incorrect parameters for"}, 1},
        {"x=\"a b\"", {"can't assign string with \"=\": x=\"a b\""}, 0},
        {"t~\"a\":x=t", {"can't assign string with \"=\": x=t"}, 0},
        {"x=(", {"x=(", "x=("}, 0},
        {"1/0", {"Division by zero"}, 0},
        {"debug=0:1/0:pop(", {}, 1},
    };
    for (const auto &one : cases) {
        reports.clear();
        EXPECT_EQ(run(one.text), ScriptEnd::Done);
        EXPECT_EQ(reports, one.messages) << one.text << ": " << reports.join('|').toStdString();
        EXPECT_EQ(runner.failedStatements(), one.failures) << one.text;
    }
    EXPECT_TRUE(space.boxes.isEmpty());
    EXPECT_TRUE(parser.variables.number(u"m_pi") && !parser.variables.number(u"x"));
}

TEST_F(ScriptTest, OnlyTheUsageIsAskedFor)
{
    QString text;
    EXPECT_TRUE(runner.dispatchLine(nullptr, {"exposure", "5"}, &text, -1));
    EXPECT_EQ(text, "exposure [Amount=-100...100] [Mode=0...1]");
    EXPECT_FALSE(runner.dispatchLine(nullptr, {"mix"}, &text, -1));
    EXPECT_EQ(text, "mix [Amount=0.0...100.0]");
    EXPECT_FALSE(runner.dispatchLine(nullptr, {"x=1", "2"}, &text, -1));
    EXPECT_EQ(text, "Unknown operator or formulation \"x=1\"");
    EXPECT_EQ(parser.numberOr("x", -99), -99);
}

TEST_F(ScriptTest, UnknownWordsHaveANearestOne)
{
    run("exposur 10 0\nwidht=3\nx=m_widht+hyp(3,4)\nloop(9):y=foozle:while()\nx = 1:x + 2");
    EXPECT_EQ(hints,
              QStringList({"1 exposur>exposure", "3 m_widht>m_width", "3 hyp>hypo", "4 foozle>"}));
    EXPECT_EQ(nearestWord({"rect", "text", "ellipse"}, "RECTT"), "rect");
    EXPECT_EQ(nearestWord({"rect", "text"}, "tset"), "");
}

TEST_F(ScriptTest, OperationsAreLimited)
{
    const QString endless = "loop():while(1)";
    EXPECT_EQ(run(endless), ScriptEnd::LimitPassed);
    ASSERT_EQ(space.boxes.size(), 1);
    EXPECT_TRUE(space.boxes[0].contains(">&nbsp;10000&nbsp;<")) << space.boxes[0].toStdString();
    EXPECT_EQ(run("f~\"" + endless + "\":f~\"loop();while(1)\":func(f)"), ScriptEnd::LimitPassed);
    EXPECT_EQ(run("m_maxops=0" + QString(":y=1").repeated(99)), ScriptEnd::Done);
    EXPECT_EQ(run("m_maxops=0" + QString(":y=1").repeated(100)), ScriptEnd::LimitPassed);
    EXPECT_EQ(run("m_maxops=30000:x=0:loop(14000):x=x+1:while():setm(x)"), ScriptEnd::Done);
    EXPECT_EQ(picture->gmask[0], 14000);

    // A console goes on with its next line, with fresh counters.
    runner.begin(picture);
    EXPECT_EQ(runner.runLine(endless, nullptr), ScriptEnd::LimitPassed);
    EXPECT_EQ(runner.runLine("x=0:loop(4000):x=x+1:while()", nullptr), ScriptEnd::Done);
    EXPECT_EQ(parser.numberOr("x", 0), 4000);
    EXPECT_EQ(run("x=1"), ScriptEnd::Refused);
    runner.end();
}

TEST_F(ScriptTest, LinesOfAConsoleShareTheirState)
{
    QStringList answers;
    const auto answer = [&answers](const StatementResult &result) {
        answers << (!result.ok            ? "failed " + result.errorText
                    : result.isExpression ? QString::number(result.value)
                                          : QString("-"));
    };
    runner.begin(picture);
    for (const char *line : {"x=2:x*(", "if(x<1)", "x=9", "else:x=5", "endif", "x:mix", "loop(3)",
                             "x=x+1", "while():x", "push(4):array(a,1,2)", "pop()+size(a)"})
        runner.runLine(line, answer);
    EXPECT_EQ(answers.join('|').toStdString(),
              "-|failed |-|-|-|-|-|5|failed mix [Amount=0.0...100.0]|-|-|-|6|0|2|6");
    EXPECT_TRUE(reports.isEmpty()) << reports.join('|').toStdString();
    const auto smaller = plainImage(3, 2, 1, 2, 3);
    runner.retarget(smaller.get());
    answers.clear();
    runner.runLine("m_width+m_height:readch(0,0,2)", answer);
    EXPECT_EQ(answers, QStringList({"5", "3"}));
    runner.end();
}

TEST_F(ScriptTest, NothingStaysAllocatedAndMissingMemoryIsNoCrash)
{
    const QString text = "m_maxops=90000:f~\"y=dparm(0)+1;y=y\"\nt~\"Abc\"+author()\n"
                         "array(a,1,2,3):x=0:loop(300):x=func(f,value(a,1))+x:while()\n"
                         "exposure 5 0:rect 1 1 9 9:wand 3 3 20:text Courier 1 20 0.5 t\n"
                         "mix 30:writep(1,1,2,3,4):undefined word";
    run("ellipse 9 9 3 3"); // the point list of the area tools stays
    const int64_t before = memRecord.currentBlocks;
    run(text);
    EXPECT_EQ(memRecord.currentBlocks, before);
    for (int n = 1; n < 60; ++n) {
        memFailAt(n);
        run(text);
        memFailAt(0);
        EXPECT_EQ(memRecord.currentBlocks, before) << n;
    }
}

TEST_F(ScriptTest, AnsweredLinesOfTheConsoleLeaveNoStacks)
{
    runner.begin(picture);
    runner.runLine("f~\"v=func(g)\":g~\"w=1+1\"", nullptr);
    const int64_t before = memRecord.currentBlocks;
    runner.runLine("x=func(f)", nullptr);
    EXPECT_EQ(memRecord.currentBlocks, before);
    runner.end();
}

TEST_F(ScriptTest, StatementsOfAnyKindCannotHarm)
{
    const QStringList words = {"x",
                               "=",
                               "~",
                               "\"",
                               "(",
                               ")",
                               ":",
                               "\n",
                               "loop(",
                               "while",
                               "(",
                               ")",
                               "if(x)",
                               "else",
                               "endif",
                               "func",
                               "f",
                               "f~\"x=1;",
                               ";",
                               ",",
                               "12",
                               "0.5",
                               "-",
                               "+",
                               "%",
                               "rect",
                               "text",
                               "mix",
                               "wand",
                               " ",
                               " ",
                               "1",
                               "exposure",
                               "::",
                               "array(",
                               "a",
                               "#",
                               "void",
                               "entire",
                               "writep(",
                               "readch(",
                               "push(",
                               "pop()",
                               "X",
                               "negative",
                               QString(QChar(0)),
                               QString(QChar(0xd800)),
                               QString("é")};
    std::mt19937 random(20);
    for (int round = 0; round < 1500; ++round) {
        QString text;
        for (int i = int(random() % 40); i >= 0; --i)
            text += words[int(random() % uint32_t(words.size()))];
        const ScriptEnd end = run(text);
        EXPECT_TRUE(end == ScriptEnd::Done || end == ScriptEnd::LimitPassed);
    }
    EXPECT_EQ(picture->width, 40);
}
