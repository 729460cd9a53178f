// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/image.h"
#include "script/engine/exparser.h"
#include "script/engine/functions.h"
#include "script/engine/heldtexts.h"
#include "script/engine/numberformat.h"
#include "script/engine/textexpression.h"
#include "support/recordingworkspace.h"

#include <QFont>
#include <QFontMetricsF>
#include <QLocale>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace
{
class Texts : public testing::Test, public ScriptLog
{
protected:
    Texts()
    {
        parser.debug = true;
        parser.log = this;
        format(3, 15, 0, 10, " ");
    }
    void scriptReport(const ScriptReport &report) override { messages << report.plain; }

    void format(double letter, double precision, double width, double base, const QString &fill)
    {
        parser.setNumber("m_format", letter);
        parser.setNumber("m_precision", precision);
        parser.setNumber("m_fieldwidth", width);
        parser.setNumber("m_base", base);
        parser.setText("m_fillchar", fill);
    }
    QString text(const QString &expression)
    {
        messages.clear();
        return evaluateText(parser, expression);
    }

    class AskSpace : public RecordingWorkspace
    {
    public:
        bool askText(const QString &title, const QString &prompt, QString *entry) override
        {
            *entry = title + '/' + prompt + '/' + *entry + "\r\nx\ty";
            return accepted;
        }
        bool accepted = true;
    } space;
    exParser parser;
    QStringList messages;
};
} // namespace

TEST_F(Texts, NumbersAreAsPercentL1OfTheEnglishLocaleWritesThem)
{
    const QLocale before;
    std::mt19937 random(11);
    for (int i = 0; i < 4000; ++i) {
        const int letter = int(random() % 5), precision = int(random() % 17) - 1,
                  width = int(random() % 61) - 30;
        const QChar fill = QString(" 0*,").at(int(random() % 4));
        const double special[] = {0, -0.0, INFINITY, -INFINITY, NAN, 1e300, -1234567};
        const double value = i % 8 == 0
                                 ? special[random() % 7]
                                 : (random() / 4e9 - 0.5) * std::pow(10, int(random() % 30) - 8);
        format(letter, precision, width, 10, fill);
        QLocale::setDefault(QLocale(QLocale::German)); // which must not matter
        const QString ours = formatNumber(parser, value);
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        const QString expected = QString("%L1").arg(value, width, "eEfgG"[letter], precision, fill);
        QLocale::setDefault(before);
        ASSERT_EQ(ours, expected) << letter << ' ' << precision << ' ' << width;
    }
}

TEST_F(Texts, NumbersBySettings)
{
    struct {
        double value, letter, precision, width, base;
        const char *fill, *text;
    } const rows[] = {
        {1234567.891, 2, 2, 0, 10, " ", "1,234,567.89"},
        {1234567, 0, -1, 0, 10, " ", "1.234567e+06"},
        {255, 3, 15, 6, 16, "0", "0000FF"},
        {-31, 3, 15, 0, 16, " ", "FFFFFFFFFFFFFFE1"},
        {5.5, 3, 15, 6, 2, "x", "XXX110"}, // the whole of it is put into capitals
        {NAN, 3, 15, 0, 16, " ", "0"},
        {1e300, 3, 15, 0, 16, " ", "FFFFFFFFFFFFFFFF"},
        {2.5, 5, 16, 81, 17, "ab", "2.5"}, // each of them out of range: a field of -2
        {7, -1, -2, NAN, 1, "\x80", "7 "},
        {2.123456, 3.9, 2.9, 0, 10, " ", "2.1"}, // settings without their fractions
    };
    for (const auto &row : rows) {
        format(row.letter, row.precision, row.width, row.base, QString::fromLatin1(row.fill));
        EXPECT_EQ(formatNumber(parser, row.value), row.text) << row.text;
    }
    for (int base = 2; base <= 16; ++base) {
        format(3, 15, 0, base, " ");
        EXPECT_EQ(formatNumber(parser, 987), QString::number(987, base).toUpper());
    }
    format(2, 0, 12, 10, ",");
    parser.setNumber("m_nocommas", 1);
    EXPECT_EQ(formatNumber(parser, 1234567), "1234567");
    EXPECT_EQ(formatFetched(parser, 1234567), ",,,1,234,567");
    parser.clearVariables();
    EXPECT_EQ(formatNumber(parser, 7), "7 ");
    parser.setNumber("m_fieldwidth", 1);
    parser.setNumber("m_fillchar", 4); // a number is a filling too
    EXPECT_EQ(formatNumber(parser, 7), "7");
    parser.setText("m_fillchar", "0");
    parser.setNumber("m_base", 16);
    parser.setNumber("m_fieldwidth", -4);
    EXPECT_EQ(formatNumber(parser, 10), "A000");
    EXPECT_EQ(formatFetched(parser, 10), "1000");
}

TEST_F(Texts, Expressions)
{
    parser.setText("c", "see");
    parser.setNumber("n", QString("1000*2"));
    parser.setText("flag", "True");
    parser.tparms = QStringList{"\"quo ted\"", "c", "0x1F", "word", "n"};
    struct {
        const char *expression, *value, *messages;
    } const rows[] = {
        {"", "", ""},
        {"\"a+b\" + c", "a+bsee", ""},
        {"C+N+n", "see1000*22,000", ""},
        {"\"say \\\"hi\\\" \"+c", "say \"hi\" see", ""},
        {"\"a\"++\"b\"+", "ab", ""},
        {"\"x\"y", "\"x\"y", "not parsed: \"\"x\"y\""},
        {"\"(,\"", "(,", ""},
        {"\"open", "", "string tokenize failure: \"open"},
        {"(c)", "(c)", "not parsed: \"(c)\""},
        {"sin(1)", "", "not parsed: \"sin(1)\""},
        {"cftvg84530", "+", "not parsed: \"cftvg84530\""},
        {"Verbatim(\"a+b\",,c)", "\"a+b\",c", ""},
        {"truth(flag)+truth(n)+truth(nosuch)", "truetruefalse", ""},
        {"truth(n,\"it is \",\",, really\")", "it is true, really", ""},
        {"tparm(0)+tparm(n-1999)+tparm(2)", "quo tedsee31", ""},
        {"tparm(3)+tparm(4)", "word2,000", "\"word\" not parsed"},
        {"tparm(5)", "", "tvar(5) parameter empty"},
        {"tparm(-1)", "", "invalid index \"-1\""},
        {"tparm()", "", "incorrect parameters for text=tparm(index)"},
        {"pushs(c)+pushs(\"d e\")+pops()+pulls()", "d esee", ""},
        {"author(\"by \",c)", "by see", ""},
        {"imagename(what)", "what", "\"what\" not parsed"},
        {"ask(c,,,\"p\",n)", "c,/p/2,000 x y", "\"c,\" not parsed"},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(text(row.expression), row.value) << row.expression;
        EXPECT_EQ(messages.join('|'), row.messages) << row.expression;
    }
    space.accepted = false;
    EXPECT_EQ(text("ask()+\".\""), " .");
    EXPECT_EQ(text("verbatim(" + QString(79, 'x') + QString::fromUcs4(U"\U0001F600", 1) + ")"),
              QString(79, 'x')); // no half of a character
}

TEST_F(Texts, FieldsOfTheImage)
{
    image master, layer;
    master.name = "Stack";
    layer.name = "Sky";
    layer.master = &master;
    layer.kind = 2;
    layer.latitude = 51.507351;
    layer.longitude = -0.5;
    layer.altitude = 12;
    layer.annotation = "note";
    layer.author = "Ann";
    layer.copyright = "(c)";
    layer.software = "soft";
    layer.creationTime = "then";
    layer.modificationTime = "now";
    parser.images.target = &layer;
    EXPECT_EQ(text("imagename()+layername(\"/\",\".\")+mastername()+altitude(\" \")+"
                   "latitude(\" \")+longitude(\" \")"),
              "Sky/Sky.Stack 12 51.507351 -0.5");
    EXPECT_EQ(text("annotation()+author()+copyright()+software()+createtime()+modtime()"),
              "noteAnn(c)softthennow");
    EXPECT_TRUE(
        QRegularExpression("^\\d{8} \\d{6} UTC$").match(text("date()+time(\" \")")).hasMatch());
}

TEST_F(Texts, OperandsOfOperators)
{
    parser.setText("t", "see");
    parser.setNumber("n", 1234.5);
    struct {
        const char *operand, *value; ///< null: refused
    } const rows[] = {{"t", "see"},       {"T+n", "see1,234.5"}, {"a b+t", "a bsee"},
                      {"a++b", "a+b"},    {"a+++t", "a+see"},    {"", ""},
                      {"+a", nullptr},    {"a+", nullptr},       {"a+++", nullptr},
                      {"u7864jfg83", "+"}};
    for (const auto &row : rows) {
        QString value = "unset";
        EXPECT_EQ(textOperand(parser, row.operand, &value), row.value != nullptr) << row.operand;
        EXPECT_EQ(value, row.value ? row.value : "unset") << row.operand;
    }
}

TEST_F(Texts, TokensForColouring)
{
    QStringList tokens;
    QList<int> types;
    EXPECT_TRUE(tokenizeText(parser, "ask(x, \"a,\\\"b\")+loop", {"loop"}, &tokens, &types));
    EXPECT_EQ(tokens.join('|'), "ask|(|x|,| |\"a,\\\"b\"|)|+|loop");
    EXPECT_EQ(types, (QList<int>{4, 0, 6, 0, 8, 5, 0, 1, 10}));
    EXPECT_FALSE(tokenizeText(parser, "a\"b", {}, &tokens, &types));
    EXPECT_EQ(types, (QList<int>{6, 5}));
    EXPECT_FALSE(tokenizeText(parser, "a)", {}, &tokens, &types));
}

TEST_F(Texts, StackAndWidthInNumbers)
{
    bool ok = false;
    parser.setText("m_font", "Courier");
    parser.setText("t", "width");
    parser.setNumber("m_fontpoints", 100);
    EXPECT_EQ(parser.evaluate("pushs(t)+pushs(255)+pushs(\"two words\")", &ok), 0);
    EXPECT_EQ(parser.userStrings, (QStringList{"width", "255", "two words"}));
    QFont font("Courier");
    font.setPixelSize(100);
    EXPECT_EQ(parser.evaluate("twidth(t)", &ok), QFontMetricsF(font).horizontalAdvance("width"));
    EXPECT_EQ(messages.join('|'), "");
    parser.showParameterTags = true;
    parser.evaluate("twidth(u)", &ok);
    parser.evaluate("twidth()", &ok);
    parser.setNumber("m_fontpoints", 0.0);
    parser.evaluate("twidth(t)", &ok);
    EXPECT_EQ(messages.join('|'), "unable to fetch \"u\"|"
                                  "incorrect parameters for width=twidth(textVariable) (tag 2)|"
                                  "incorrect parameters for width=twidth(textVariable) (tag 1)");
}

TEST_F(Texts, LongAndRandomTextsEnd)
{
    const QString plus(1 << 20, '+');
    EXPECT_EQ(text('"' + plus + '"').size(), plus.size());
    EXPECT_EQ(text(plus), "");
    EXPECT_EQ(text("verbatim(" + QString(1 << 20, ',') + ")").size(), 80);
    QString value;
    EXPECT_TRUE(textOperand(parser, plus, &value));
    EXPECT_EQ(value.size(), plus.size() / 2);
    parser.setText("big", QString(kLongestText, 'x'));
    EXPECT_EQ(text("big+\"y\""), "");
    EXPECT_TRUE(messages.join('|').startsWith("a text cannot have more"));
    std::mt19937 random(3);
    const QStringList bits = QString("\"|(|)|,|+|\\| |ask|tparm|pops|truth|n|C|\xe9").split('|');
    for (int i = 0; i < 5000; ++i) {
        QString expression;
        for (int n = int(random() % 12); n > 0; --n)
            expression += bits.at(int(random() % uint(bits.size())));
        text(expression);
        textOperand(parser, expression, &value);
    }
}
