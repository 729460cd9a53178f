// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/image.h"
#include "core/memory.h"
#include "core/undo.h"
#include "operators/pipeline/colorblending.h"
#include "operators/pipeline/random15.h"
#include "script/engine/exparser.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace
{
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

/// Runs the statements of user functions: "jump N" and "stop" as control flow does, "again"
/// a call of the function itself, "bad" fails, and a number is assigned.
class Dispatcher : public ScriptDispatcher
{
public:
    explicit Dispatcher(exParser *owner) : parser(*owner) {}
    bool dispatchLine(int *index, const QStringList &tokens, QString *, int) override
    {
        lines << tokens.join('|');
        bool ok = true;
        if (tokens[0] == "jump" && jumps-- > 0)
            *index = tokens[1].toInt();
        else if (tokens[0] == "again")
            parser.evaluate("func(deep)", &ok);
        else if (tokens[0] == "stop")
            running = false;
        else if (const double value = tokens[0].toDouble(&ok); ok)
            parser.setNumber("m_xyzzyplugh", value);
        return tokens[0] != "bad";
    }
    bool keepRunning() const override { return running; }

    exParser &parser;
    QStringList lines;
    int jumps = 0;
    bool running = true;
};

class AskedSpace : public RecordingWorkspace
{
public:
    bool askSlider(const QString &title, const QString &label, int low, int high,
                   int *value) override
    {
        asked = QString("%1/%2 %3 %4 %5").arg(title, label).arg(low).arg(high).arg(*value);
        *value = 42;
        return accepted;
    }
    void progress(const QString &text, int64_t, int64_t total) override
    {
        looks += total > 0;
        ended = text.isEmpty();
    }
    bool cancelRequested() override { return looks >= patience; }
    QString asked;
    bool accepted = true, ended = false;
    int looks = 0, patience = 1000;
};
} // namespace

class Functions : public testing::Test, protected ScriptLog
{
protected:
    Functions()
    {
        parser.log = this;
        parser.debug = parser.showParameterTags = true;
        parser.dispatcher = &dispatcher;
    }
    void scriptReport(const ScriptReport &report) override { said << report.plain; }

    /// Calls the implementation of a word, in whichever way its class is called.
    double call(const QString &keyword, const std::vector<double> &a, const QStringList &names = {})
    {
        const int code = parser.lookupKeyword(keyword);
        const OtImplementation &way = kOtDefinitions[code].implementation;
        if (const auto *unary = std::get_if<UnaryFunction>(&way))
            return (*unary)(parser, a[0]);
        if (const auto *dual = std::get_if<DualFunction>(&way))
            return (*dual)(parser, a[0], a[1]);
        if (const auto *zip = std::get_if<ZipFunction>(&way))
            return (*zip)(parser);
        FunctionCall parameters{parser, code, a.data(), int(a.size()), names};
        return std::get<MultiFunction>(way)(parameters);
    }
    /// What was said since the last question.
    QString heard()
    {
        const QString all = said.join('\n');
        said.clear();
        return all;
    }
    /// A call as words: the keyword, numbers, and named parameters.
    double callLine(const QString &line)
    {
        QStringList names = line.simplified().split(' ');
        const QString keyword = names.takeFirst();
        std::vector<double> numbers;
        bool isNumber = true;
        while (!names.isEmpty() && isNumber) {
            const double number = names[0].toDouble(&isNumber);
            if (isNumber) {
                numbers.push_back(number);
                names.removeFirst();
            }
        }
        return call(keyword, numbers, names);
    }
    /// Lines of "call = result", with semicolons between them.
    void expectResults(QString text)
    {
        for (const QString &line : text.replace('\n', ';').split(';', Qt::SkipEmptyParts)) {
            const int cut = line.lastIndexOf(" = ");
            EXPECT_DOUBLE_EQ(callLine(line.left(cut)), line.mid(cut + 3).toDouble())
                << qPrintable(line);
        }
    }

    AskedSpace space;
    exParser parser;
    Dispatcher dispatcher{&parser};
    QStringList said;
};

TEST_F(Functions, NumbersAndTheirValues)
{
    expectResults(R"(
abs -2.5 = 2.5; acos 0.3 = 1.2661036727794992; acosh 2 = 1.3169578969248166;
alog 2.5 = 316.22776601683796; asin 0.3 = 0.3046926540153975; asinh 2 = 1.4436354751788103;
atan 2 = 1.1071487177940904; atanh 0.5 = 0.5493061443340548; btow 100 = 29.29973630237328;
cbrt -27 = -3; ceil -1.5 = -1; ceil 2.1 = 3; ceil 1e+300 = 1e+300; chup 127.5 = 32896;
chup -1 = 0; chup 255.6 = 65535; cos 1 = 0.5403023058681398; cosh 1 = 1.5430806348152437;
ctok 20 = 293.15; ctor 20 = 528; prat 3 = 1.9952623149688795; vrat 6 = 1.9952623149688795;
dec 3 = 2; dctodf 9 = 5; dftodc 10 = 18; dtow 30 = 1; exp 2 = 7.38905609893065; fact 1 = 1;
fact -3 = 6; fact 20 = 2432902008176640000; fact 21 = 1.4197454024290337e+19;
! 65 = 9.223372036854776e+18; floor -0.5 = -1; frac -1.25 = 0.75; frac 1e+300 = 0;
ftok 212 = 373.15; ftom 10 = 3.048; ftor 32 = 492; ftow 1000000 = 299.792458; wtof 0 = 0;
wtof 2 = 149896229; gtod 100 = 90; inc 3 = 4; int -0.5 = -1; ktoc 300 = 26.850000000000023;
ktof 300 = 80.33000000000004; ktor 300 = 540.33; ln 2 = 0.6931471805599453;
log 2 = 0.3010299956639812; lton 2 = 8.896443230521019; mtof 2 = 6.561679790026246;
negate 3 = -3; ntol 2 = 0.44961788619942; rtoc 500 = 4.444444444444445; rtof 500 = 40;
rtok 500 = 277.59444444444443; sin 1 = 0.8414709848078965; sinh 1 = 1.1752011936438014;
sqrt 2 = 1.4142135623730951; stoe 98.08 = 16; tan 1 = 1.5574077246549023;
tanh 1 = 0.7615941559557649; rtod 1 = 57.29577951308232; dtog 90 = 100;
dtor 90 = 1.5707963267948966; wtob 2 = 6.826; wtod 2 = 33.01029995663981; x9v3p09 7 = 7;
+ 1 2 = 3; - 1 2 = -1; * 3 -2 = -6; / 1 4 = 0.25; % 5 3 = 2; % -5 3 = -2; % 5.9 3.9 = 2;
== 2 2 = 1; != 2 2 = 0; > 3 2 = 1; >= 2 2 = 1; < 3 2 = 0; <= 3 2 = 0; amix 100 200 0.25 = 125;
amix -5 70000 0.5 = 32767.5; amix 1 2 7 = 2; atan2 1 -2 = 2.677945044588987; ctof 100 = 212;
dbm 0.5 = 6.989700043360188; dbm 0.5 75 = 5.228787452803376; dbpr 4 2 = 3.010299956639812;
dbpr 4 0 = 0; dbvr 4 2 = 6.020599913279624; dbvr 4 0 = 0; dtos -100 = 4.494850021680094;
dtos -40 = 9.032975625700459; dtov 13 = 0.9988148764833451; ftoc 212 = 100; hypo 3 4 = 5;
length 1 2 4 6 = 5; mod 5.5 2 = 1.5; mod -5.5 2 = -1.5; percent 5 20 = 25;
pow 2 0.5 = 1.4142135623730951; round -2.5 = -3; round 1.2345 2 = 1.23; round 1234.5 -3 = 1235;
round 0.12345678901234566 99 = 0.123456789012346; stodbm 5 = -96.96910013008056;
stodbm 9.01 = -62.975625700460014; sunits 5e-05 = 8.993133362240126;
sunits 1e-06 = 3.3299000144533957; eitop 6 2 = 12; eitor 6 2 = 3; eptor 6 2 = 18;
ertoi 6 2 = 3; ertop 6 2 = 18; irtoe 6 2 = 12; irtop 6 2 = 72; petoi 6 2 = 3; pitoe 6 2 = 3;
pitor 6 2 = 1.5; prtoi 8 2 = 2; prtoe 8 2 = 4; sum 1 2 4 = 7; lser 1 2 4 = 7; rser 1 2 4 = 7;
cpar 1 2 4 = 7; avg 1 2 6 = 3; mean 1 2 6 = 3; count 4 5 = 2; max 3 9 -1 = 9; min 3 9 -1 = -1;
median 9 1 4 = 4; median 9 1 4 2 = 3; lpar 6 3 2 = 1; rpar 5 = 5; cser 4 0 = 0;
push 3 = 0; push 4 = 0; pull = 4; push 5 = 0; pop = 5; pop = 3)");
    EXPECT_EQ(heard(), "");
}

TEST_F(Functions, WhatNoWholeNumberHolds)
{
    expectResults(R"(
% -2147483648 -1 = 0; % 1e300 7 = 1; % -inf 10 = -8; % nan 7 = 0; chup nan = 0; chup 1e300 = 65535
frac inf = 0; round 2.25 1e300 = 2.25; round 2.25 nan = 2; amix nan 10 .5 = 5)");
    EXPECT_FALSE(std::signbit(call("ceil", {-0.5})));
    EXPECT_TRUE(std::isnan(call("sqrt", {-1})));
    // Any function with any numbers, and a picture that none of them may overrun.
    const ImagePtr img = randomImage(5, 4, 1);
    parser.images = {img.get(), img.get(), nullptr};
    const double hostile[] = {0,     -1,     1.5,           5,   -2147483648.0, 65536, 2147483648.0,
                              1e300, -1e300, 1e300 * 1e300, kNan};
    for (const OtDefinition &row : kOtDefinitions) {
        const int named = parameterCount(row.count).named;
        if (row.implementation.index() == 0 || row.opClass == OT_TFUNC || named > 0)
            continue;
        for (double x : hostile)
            for (double y : hostile)
                for (int swapped = 0; swapped < 2; ++swapped) {
                    std::vector<double> a(size_t(std::max(1, row.count & 15)), x);
                    for (size_t i = 0; i < a.size(); ++i)
                        if ((i % 2 == 0) == bool(swapped))
                            a[i] = y;
                    call(row.keyword, a);
                }
    }
    memSweep();
    EXPECT_EQ(memRecord.overruns + memRecord.underruns, 0);
}

TEST_F(Functions, WhatIsSaid)
{
    struct {
        const char *calls; // with their results
        const char *message;
    } const cases[] = {
        {"/ 1 0 = 0", "Division by zero"},
        {"% 1 0 = 0; % 5 .5 = 0", "Can't mod by zero"},
        {"fact 0 = 0; ! 0.4 = 0", "Factorial candidate 0 out of range"},
        {"fact -66 = 0", "Factorial candidate 66 out of range"},
        {"fact nan = 0", "Factorial candidate nan out of range"},
        {"aam 21 1 = 0; aam 1 1.5 = 0; aam 1 nan = 0",
         "incorrect parameters for a=aam(radius,amount) (tag 42)"},
        {"writem 1 1 = 0", "incorrect parameters for 0/1=writem(x,y,M) (tag 46)"},
        {"slider 1 2 a b = 0; slider 1 2 3 a = 0",
         "incorrect parameters for x=slider(title,lable,min,max,preset) (tag 34)"},
        {"func = 0", "incorrect parameters for x=func(variableName) (tag 5)"},
        {"func nosuch = 0", "unable to fetch function: \"nosuch\""},
        {"dparm 2.6 = 0", "dvar(2.6) parameter empty: dparms size=1"},
        {"dparm -1 = 0", "dvar(-1) parameter empty: dparms size=1"},
        {"dparm 1 = 0; dparm 0.4 = 7", ""},
        {"pull = 0; pop = 0", "user stack is empty"},
        {"convolve m = 0; convolve 3 m = 0", // neither a number nor a picture
         "incorrect parameters for void=convolve(arrayName,x) (tag 13)"},
        {"convolve 3 none = 0", "matrix \"none\" does not exist"},
        {"convolve 1 one = 0", "Array one must be at least 3x3 and odd row/col size"},
        {"convolve 4 four = 0", "Array four must be at least 3x3 and odd row/col size"},
        {"readch 0 0 0 = 0; writep 0 0 1 2 3 = 0; linem 0 0 3 4 5 = 0; setm 1 = 0", ""},
        {"declare a B_2 c = 3", ""},
        {"declare a Number c = 1", "Numeric variable already exists"},
        {"declare a b c\u00e4 = 2", "Illegal variable name"},
        {"declare 3a = 0", "Variable names cannot begin with a number"},
        {"declare a A = 1", "duplicate variable declaration"},
        {"declare 7 a Text = 1", "String variable already exists"},
    };
    parser.setNumber("number", 1);
    parser.setText("text", "t");
    const std::pair<const char *, int> arrays[] = {{"one", 1}, {"four", 4}, {"m", 3}};
    for (const auto &[name, side] : arrays) {
        ScriptArray *array = parser.arrays.create(name);
        array->rows = array->cols = side;
        array->values.resize(size_t(side * side), 1.0);
    }
    parser.dparms = {7};
    for (const auto &one : cases) {
        expectResults(one.calls);
        said.removeDuplicates();
        EXPECT_EQ(heard(), one.message) << one.calls;
    }
}

TEST_F(Functions, ASeedSettlesRandomNumbersAndDissolvedPixels)
{
    const auto numbers = [this](double seed) {
        call("seed", {seed});
        return std::vector<double>{call("rnd", {10}), call("rnd", {1}), call("rnd", {1})};
    };
    EXPECT_EQ(numbers(5), numbers(5));
    EXPECT_NE(numbers(235959), numbers(235958)); // times of the day
    EXPECT_EQ(numbers(1e300), numbers(1e300));
    call("seed", {0.4});
    const double drawn = call("rnd", {1});
    seedRandom15(180200002);
    EXPECT_EQ(random15() / 32767.0, drawn);

    colorblending blending;
    blending.blendMode = kBlendDissolve;
    call("seed", {0});
    blending.blend(0, 1, 0.5);
    EXPECT_EQ(blending.dissolveValue, drawn);
}

TEST_F(Functions, UserFunctionsRunStatementByStatement)
{
    struct {
        const char *text;
        double result;
        const char *lines, *message;
    } const cases[] = {
        {"5", 5, "5", ""},
        {"a  b;# c; d;;e ;;;6;", 6, "a|b d;e|; 6", ""},
        {"a;b;jump 0;7", 7, "a b jump|0 b jump|0 b jump|0 7", ""}, // to where the loop stands
        {"a;jump -9;7", 7, "a jump|-9 a jump|-9 a jump|-9 7", ""},
        {"8;stop;9", 8, "8 stop", ""},
        {"bad x;9", 0, "bad|x",
         "function \"f\" failed\ncode: \"bad x\"\nfunction \"f\" encountered a problem"},
        {"", 3, "", "incorrect parameters for x=func(variableName) (tag 4)"},
    };
    for (const auto &one : cases) {
        parser.setText("f", one.text);
        parser.setNumber("m_xyzzyplugh", 3);
        dispatcher.lines.clear();
        dispatcher.jumps = 2;
        dispatcher.running = true;
        EXPECT_EQ(call("func", {1, 2}, {"f", "p", "\"q\""}), one.result) << one.text;
        EXPECT_EQ(dispatcher.lines.join(' '), one.lines);
        EXPECT_EQ(heard(), one.message);
        EXPECT_EQ(parser.dparms, (std::vector<double>{1, 2})); // they stay
        EXPECT_EQ(parser.tparms, QStringList({"p", "\"q\""}));
    }
    dispatcher.lines.clear();
    dispatcher.running = true;
    parser.setText("deep", "again");
    bool ok = false;
    parser.evaluate("func(deep)", &ok);
    EXPECT_EQ(dispatcher.lines.size(), exParser::kDeepestNesting);
    EXPECT_EQ(heard(), "function \"deep\" calls itself too often");
}

TEST_F(Functions, TheSliderIsAskedInOrder)
{
    parser.setText("title", "Choose");
    EXPECT_EQ(call("slider", {10.4, -9.6, 200}, {"title", "\"How much\""}), 42);
    EXPECT_EQ(space.asked, "Choose/How much -10 10 10");
    space.accepted = false;
    EXPECT_EQ(call("slider", {0, 9, 5}, {"a", "b"}), 0);
}

TEST_F(Functions, SamplesAreReadAndWrittenThroughTheSelection)
{
    const ImagePtr img = plainImage(4, 3, 1000, 2000, 3000, 40000);
    const ImagePtr origin = plainImage(9, 9, 1, 2, 3, 4);
    parser.images.target = img.get();
    img->fillGmask(0);
    img->gmask[6] = 32768;
    img->gmask[7] = 65535;
    expectResults(R"(
readch 3.9 2 0 = 1000; readch 0 0 2 = 3000; readch 0 0 3 = 40000; readch 0 0 -1e300 = 2000
readch 4 0 0 = 0; readch -1 0 0 = 0; readch 65537 0 0 = 1000; readch -1e300 0 0 = 0
readch nan 0 0 = 0; readch 8 8 0 1 = 0)");
    parser.images.origin = origin.get();
    // A full selection keeps alpha, none takes the new one.
    expectResults(R"(
readch 8 8 1 0 = 2; readch 9 8 1 0 = 0; writep 2 1 5000 70000 -5 = 1
readch 2 1 0 = 3605; readch 2 1 1 = 46362; readch 2 1 2 = 2121; readch 2 1 3 = 40000
writep 3 1 9 9 9 9 = 1; readch 3 1 1 = 9; readch 3 1 3 = 40000
writep 0 0 9 9 9 1e300 = 1; readch 0 0 0 = 1000; readch 0 0 3 = 65535
writep 4 0 1 1 1 = 0; writep -1 0 1 1 1 = 0
readm 2 1 = 32768; readm 2 3 = 0; writem 2 2 70000 = 1; readm 2 2 = 65535; writem nan 2 7 = 0
setm 12.9 = 1; readm 3 2 = 12; linem -1e9 1.5 1e9 1 300.7 = 2e9; readm 0 1 = 300; readm 3 1 = 300
readm 0 0 = 12; aam 0.9 1 = 1; readm 3 1 = 300; aam 1 1 = 1)");
    EXPECT_GT(call("readm", {1, 0}), 12); // the line spread
    colorblending blending;
    parser.blending = &blending;
    blending.blendMode = kBlendForeground;
    space.foreRed = 11, space.foreGreen = 22, space.foreBlue = 33;
    // A lone channel does not shift those of the next pixel.
    expectResults("cmix 0 0 1 = 11; setm 65535 = 1; writep 0 0 0 0 0 = 1;"
                  "readch 0 0 0 = 11; readch 0 0 2 = 33");
}

TEST_F(Functions, AMatrixEqualsTheSlowSum)
{
    colorblending blending;
    parser.blending = &blending;
    struct {
        int side, mode, blendMode;
        bool cancelling; // weights with the sum 0: black or white
    } const cases[] = {{3, 0, kBlendMatte, false},    {5, 1, kBlendMatte, false},
                       {3, 2, kBlendAdd, false},      {7, 3, kBlendMatte, false},
                       {3, 4, kBlendMultiply, true},  {3, 5, kBlendMatte, true},
                       {3, 9, kBlendDissolve, false}, {5, 0, kBlendForeground, false},
                       {99, 0, kBlendMatte, false}}; // wider than the picture
    for (const auto &one : cases) {
        const ImagePtr img = randomImage(83, one.side > 9 ? 5 : 401, 7);
        saveUndo(img.get(), true);
        image *source = img->undoList.last();
        std::reverse(source->red, source->red + source->sampleCount()); // the run went on since
        parser.images = {img.get(), nullptr, source};
        ScriptArray *array = parser.arrays.create("m");
        array->rows = array->cols = one.side;
        for (int i = 0; i < one.side * one.side; ++i)
            array->values.push_back(one.cancelling ? (i == 4 ? 8 : -1) : std::sin(i) + 0.9);
        blending.blendMode = one.blendMode;

        const ImagePtr expected = randomImage(img->width, img->height, 7);
        seedRandom15(3);
        const auto picked = [&](int64_t at, int c) -> double {
            const double r = source->red[at], g = source->green[at], b = source->blue[at];
            const double own[] = {r, g, b};
            const double all[] = {own[c], (r + g + b) / 3, .33 * r + .59 * g + .11 * b, r, g, b};
            return all[one.mode > 5 ? 0 : one.mode];
        };
        for (int y = 0; y < img->height; ++y)
            for (int x = 0; x < img->width; ++x)
                for (int c = 0; c < 3; ++c) {
                    double sum = 0, wsum = 0;
                    for (int i = 0; i < one.side * one.side; ++i) {
                        const int row = y + i / one.side - one.side / 2;
                        const int column = x + i % one.side - one.side / 2;
                        if (row < 0 || column < 0 || row >= img->height || column >= img->width)
                            continue;
                        wsum += array->values[size_t(i)];
                        sum += array->values[size_t(i)] * picked(row * img->width + column, c);
                    }
                    const int64_t at = int64_t(y) * img->width + x;
                    const double result = sum / wsum > 0 ? std::min(sum / wsum, 65535.) : 0;
                    const double t = img->gmask[at] / 65535.0;
                    const double mixed = blending.blend(picked(at, c), std::floor(result), t);
                    expected->colorPlanes()[size_t(c)][at] = uint16_t(std::min(mixed, 65535.));
                }
        seedRandom15(3);
        EXPECT_EQ(call("convolve", {double(one.side), double(one.mode)}, {"M"}), 0);
        EXPECT_TRUE(samePlanes(*img, *expected)) << one.side << " " << one.mode;
        clearUndoList(img.get());
        call("convolve", {double(one.side)}, {"M"}); // the source is gone
        EXPECT_TRUE(samePlanes(*img, *expected));
        EXPECT_TRUE(heard().endsWith("(tag 13)"));
    }
}

TEST_F(Functions, ALargeMatrixCanBeCancelled)
{
    ScriptArray *array = parser.arrays.create("m");
    array->rows = array->cols = 1001;
    array->values.resize(1001 * 1001, 1.0);
    for (const int patience : {1000, 2}) {
        const ImagePtr img = plainImage(60, 60, 2000, 2000, 2000);
        img->fillGmask(65535);
        saveUndo(img.get(), true);
        img->fill(7, 7, 7, 7);
        parser.images = {img.get(), nullptr, img->undoList.last()};
        space.looks = 0;
        space.patience = patience;
        call("convolve", {1001}, {"m"});
        EXPECT_TRUE(space.ended);
        EXPECT_EQ(img->red[0], 2000);
        EXPECT_EQ(img->blue[3599], patience == 2 ? 7 : 2000);
    }
}
