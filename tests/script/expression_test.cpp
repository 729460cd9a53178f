// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/exparser.h"
#include "script/engine/expression.h"
#include "script/engine/textexpression.h"

#include "core/memory.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <random>

namespace
{
/// The value, or 99 for an expression without one.
double valueOf(exParser &parser, const QString &text)
{
    bool ok = false;
    const double value = parser.evaluate(text, &ok);
    return ok ? value : 99;
}

QString tokensOf(const exParser &parser, const QString &text)
{
    QStringList tokens;
    QList<int32_t> codes;
    parser.tokenize(text, &tokens, &codes);
    QString all;
    for (int i = 0; i < tokens.size(); ++i)
        all += QStringLiteral("%1 %2|").arg(tokens[i]).arg(codes.value(i, -1));
    return all;
}

class Messages : public ScriptLog
{
public:
    explicit Messages(exParser *parser)
    {
        parser->log = this;
        parser->debug = true;
    }
    void scriptReport(const ScriptReport &report) override
    {
        plain << report.plain;
        rich << report.rich;
    }
    QStringList plain, rich;
};
} // namespace

TEST(Tokens, AreSplitAndTold)
{
    exParser parser;
    parser.setNumber("sin", 4);
    parser.setText("word", "x");
    const struct {
        const char *text, *tokens;
    } cases[] = {
        {"2*-3", "2 76|* 136|- 140|3 76|"},
        {"2%-3", "2 76|% 133|- 189|3 76|"},
        {"2---3", "2 76|- 189|- 140|- 189|3 76|"},
        {"x<=-1", "x 141|<= 109|- 189|1 76|"},
        {"a <= b", "a 141|  141|<= 109|  141|b 141|"},
        {"a< =b", "a 141|< 108|  141|= 141|b 141|"},
        {"===", "== 79|= 141|"},
        {"2<abc=3", "2 76|<= 109|3 76|"}, // the word between is lost
        {"a&gt;=b&lt;c", "a 141|>= 96|b 141|< 108|c 141|"},
        {"1e-3", "1e 141|- 140|3 76|"},
        {"0x1F+0XF+0Q44", "0x1F 76|+ 4|0XF 141|+ 4|0Q44 76|"},
        {"sin(Word)", "sin 198|( 117|Word 168|) 173|"},
        {"\"a\"+\"b\"", "\"a\"+\"b\" 141|"},
        {"Sin(1)", "Sin 198|( 117|1 76|) 173|"},
        {"Cos(1)", "Cos 141|( 117|1 76|) 173|"},
        {"", ""},
    };
    for (const auto &one : cases)
        EXPECT_EQ(tokensOf(parser, one.text), QString(one.tokens)) << one.text;
}

TEST(Evaluation, GoesFromLeftToRightInItsOwnWay)
{
    exParser parser;
    parser.setNumber("five", 5);
    parser.setText("t", "text");
    const struct {
        const char *text;
        double value; // 99: none
    } cases[] = {
        {"1+2*3", 9},
        {"2*(1+2)", 6},
        {"3==1+2", 2},
        {"-(3+4)", 1},
        {"2--3", 5},
        {"-five", -5},
        {"\"text\"", 0},
        {"", 99},
        {"1+", 1},
        {"(1", 99},
        {")(", 99},
        {"()", 0},
        {"1e-3", 0.001},
        {" 7 ", 7},
        {"0x1F", 31},
        {"sum(1,2,3)", 1},
        {"count(4,5)", 4},
        {"hypo(3)", 3},
        {"hypo(3,4,9)", 5},
        {"hypo(3,4)", 5},
        {"1+hypo(3)", std::sqrt(10.0)},
        {"2*hypo(3,4)+1", 11},
        {"hypo(hypo(3,4),12)", 13},
        {"((((1))))+((2))", 3},
        {"-sin(1)", std::sin(-1.0)},
        {"sin(0)+cos(0)", 1},
        {"exists(five)+exists(nosuch)", 1},
        {"notexists(nosuch)*7", 7},
        {"exists(t)", 1},
        {"pop()+4", 4},
        {"FIVE", 5},   // a whole text that names a number
        {"1+Five", 1}, // a capital passes the name
        {"nosuch", 0},
        {"if(1)", 1},
        {"author()", 0},
        {"4*amix(5)", 20},
    };
    for (const auto &one : cases)
        EXPECT_EQ(valueOf(parser, one.text), one.value) << one.text;
    double first = 0;
    EXPECT_EQ(parser.parseRadixNumber("0Q44", nullptr), 24);
    EXPECT_EQ(first, 0);
}

TEST(Evaluation, NamedFunctionsTakeTheNumbersOfTheirOwnCall)
{
    exParser parser;
    EXPECT_EQ(valueOf(parser, "array(a,4,5,6)"), 3);
    EXPECT_EQ(valueOf(parser, "10+size(a)"), 13);
    EXPECT_EQ(valueOf(parser, "10+value(a,1)"), 15);
    EXPECT_EQ(valueOf(parser, "value(a,1)*value(a,2)"), 30);
    EXPECT_EQ(valueOf(parser, "value(a,value(a,0)-size(a))"), 5);
    EXPECT_EQ(valueOf(parser, "100+array(b,1,2)+size(b)"), 104);
    // Names that another call left over do not come before a call's own.
    EXPECT_EQ(valueOf(parser, "sin(nosuch)+size(a)"), 3);
    EXPECT_EQ(valueOf(parser, "pow(b,nosuch)+duplicate(a,copy)"), 3);
    EXPECT_EQ(valueOf(parser, "size( a )"), 3);
}

TEST(Evaluation, QuotedTextsOfACallStayWhole)
{
    exParser parser;
    Messages messages(&parser);
    const QStringList texts = {"a-b", "two words", "no (yes), 5 > 3", "x", ""};
    for (const QString &text : texts)
        EXPECT_EQ(valueOf(parser, "1+pushs(\"" + text + "\")"), 1) << qPrintable(text);
    EXPECT_EQ(parser.userStrings, texts);
    valueOf(parser, "pushs(\"open and ( \"a\")+1");
    EXPECT_EQ(messages.plain, QStringList());
    evaluateText(parser, "author(p,q)");
    EXPECT_EQ(messages.plain, QStringList({"\"p\" not parsed", "\"q\" not parsed"}));
}

TEST(Evaluation, OverflowingStacksLoseWhatDoesNotFit)
{
    exParser parser;
    const int64_t blocks = memRecord.currentBlocks;
    const auto nested = [](int depth) { return QString(depth, '(') + '1' + QString(depth, ')'); };
    EXPECT_EQ(valueOf(parser, nested(1000)), 1);
    valueOf(parser, nested(10000));
    EXPECT_EQ(valueOf(parser, "array(a" + QString(",7").repeated(100000) + ')'), 1024);
    EXPECT_EQ(valueOf(parser, "0" + QString("+1").repeated(100000)), 100000);
    valueOf(parser, QString(",(").repeated(3000) + QString(")").repeated(3000));
    EXPECT_EQ(memRecord.currentBlocks, blocks);
}

TEST(Evaluation, RandomTextsDoNoHarm)
{
    exParser parser;
    std::mt19937 generator(20240611);
    const QStringList words = QString("( ( ) ) , , + - * / % = == < ! 1 2.5 0x1F a B void sin hypo "
                                      "pow round array value size append exists notexists loop "
                                      "twidth pushs pop author matmul if else endif func declare "
                                      "mod x9v3p09 \"q\"")
                                  .split(' ')
                              << " ";
    int valid = 0;
    for (int i = 0; i < 20000; ++i) {
        QString text;
        for (uint32_t n = generator() % 14; n > 0; --n)
            text += words.at(int(generator() % uint32_t(words.size())));
        bool ok = false;
        parser.evaluate(text, &ok);
        valid += ok;
    }
    EXPECT_GT(valid, 1000);
}

TEST(Assignment, NamesAndValues)
{
    exParser parser;
    Messages messages(&parser);
    EXPECT_TRUE(parser.setNumber("Width", "3*4"));
    EXPECT_TRUE(parser.setNumber("true", "0"));
    EXPECT_TRUE(parser.setNumbers("a", "2:b=a*3:c"));
    EXPECT_EQ(valueOf(parser, "width+true+a+b"), 21);
    EXPECT_EQ(parser.variables.number(QStringView(u"WIDTH"))->sourceText(), "3*4");
    EXPECT_FALSE(parser.setNumber("", "5"));
    EXPECT_FALSE(parser.setNumber("4x", "5"));
    EXPECT_FALSE(parser.setNumber(".5", "5"));
    EXPECT_FALSE(parser.setNumber("a", "(1"));
    parser.report("error: spelt out");
    EXPECT_EQ(valueOf(parser, "a"), 2);
    EXPECT_EQ(messages.plain,
              QStringList({"assignments must have a variable name: =5",
                           "variable names can't start with a digit: 4x",
                           "variables can't be numbers: .5=5", "a=(1", "spelt out"}));
    EXPECT_TRUE(parser.setNumber("debug", "0"));
    messages.plain.clear();
    parser.setNumber("a", "1/0");
    EXPECT_EQ(messages.plain, QStringList());
    // One name can stand for a number and a text.
    parser.setText("a", "letters");
    EXPECT_EQ(valueOf(parser, "a"), 0);
}

TEST(Reports, AreMarkedUpByBareCapitals)
{
    exParser parser;
    Messages messages(&parser);
    parser.presetStatements = 2;
    parser.statement = 1;
    parser.report("w: x GyEG");
    parser.statement = 2;
    parser.report("e: Can't mod by zero");
    parser.badParameters(200, 46);
    parser.showParameterTags = true;
    parser.badParameters(200, 46);
    EXPECT_EQ(messages.rich[0], "<b>Preset</b> step 1: <font color=\"#cc6600\">warning:</font> x "
                                "<tt><font color=\"#008800\"><b>y</b></font></tt>");
    EXPECT_EQ(messages.rich[1], "<b>Script</b> step 1: <font color=\"#ff0000\">error:</font> "
                                "<font color=\"#0000FF\">an't mod by zero");
    EXPECT_EQ(messages.plain,
              QStringList({"x y", "Can't mod by zero", "incorrect parameters for 0/1=writem(x,y,M)",
                           "incorrect parameters for 0/1=writem(x,y,M) (tag 46)"}));
}

TEST(Parameters, LimitsAreInclusiveAndBothZeroMeansNone)
{
    const struct {
        const char *text;
        int low, high, value; // 7: as it was
    } cases[] = {{"-100", -100, 100, -100},
                 {"100.9", -100, 100, 100},
                 {"50+50", 0, 100, 100},
                 {"101", -100, 100, 7},
                 {"-1", 0, 1, 7},
                 {"2147483648", 0, 0, 7},
                 {"-2147483648", 0, 0, INT_MIN},
                 {"nosuch", 0, 0, 7},
                 {"nan", 0, 0, 7},
                 {"", 0, 0, 7}};
    for (const auto &one : cases) {
        int whole = 7;
        EXPECT_EQ(intParam(one.text, one.low, one.high, &whole), one.value != 7) << one.text;
        EXPECT_EQ(whole, one.value) << one.text;
    }
    double real = 7;
    EXPECT_TRUE(doubleParam(".25", 0.25, 4, &real));
    EXPECT_FALSE(doubleParam(".2499", 0.25, 4, &real));
    EXPECT_EQ(real, 0.25);
    EXPECT_TRUE(doubleParam("99999", 0, 0, &real));
}

TEST(Stacks, OfFiveKindsAreBounded)
{
    struct Record {
        int64_t a = -1;
    };
    genStack<Record> records(2);
    genStack<double> numbers(1);
    EXPECT_EQ(records.pop().a, -1);
    for (int i = 0; i < 3; ++i)
        records.push({i});
    numbers.push(1.5);
    numbers.push(2.5);
    EXPECT_EQ(records.count(), 2);
    EXPECT_EQ(records.pop().a, 1);
    EXPECT_EQ(numbers.peek(), 1.5);
    EXPECT_EQ(numbers.pop() + numbers.pop(), 1.5);
}
