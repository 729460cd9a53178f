// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/exparser.h"
#include "support/recordingworkspace.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <random>

namespace
{
/// A parser that keeps its messages as they were reported, but for the step.
class Arrays : public testing::Test, public ScriptLog
{
protected:
    Arrays()
    {
        parser.debug = parser.showParameterTags = true;
        parser.log = this;
    }
    void scriptReport(const ScriptReport &report) override { messages << report.plain; }

    double run(const QString &expression)
    {
        bool ok = false;
        messages.clear();
        return parser.evaluate(expression, &ok);
    }
    /// Rows with ";" between them.
    QString contents(const QString &name)
    {
        const ScriptArray *array = parser.arrays.find(name);
        QString text;
        for (int i = 0; array && i < array->count(); ++i)
            text += (i == 0            ? ""
                     : i % array->cols ? ","
                                       : ";") +
                    QString::number(array->values[size_t(i)], 'g', 12);
        return text;
    }
    std::vector<double> values(const QString &name)
    {
        const ScriptArray *array = parser.arrays.find(name);
        return array ? array->values : std::vector<double>();
    }
    void fill(const QString &name, const std::vector<double> &values, int rows)
    {
        ScriptArray *array = parser.arrays.create(name);
        array->values = values;
        array->rows = rows;
        array->cols = int(values.size()) / rows;
    }

    class StoppedSpace : public RecordingWorkspace
    {
    public:
        bool cancelRequested() override { return true; }
    } space;
    exParser parser;
    QStringList messages;
};
} // namespace

TEST_F(Arrays, EachFunctionOnAnArrayOf3142)
{
    struct {
        const char *call;
        double result;
        const char *contents;
    } const rows[] = {
        {"array(A,5,-6)", 2, "5,-6"},
        {"array(a)", 0, ""},
        {"10+size(a)", 14, "3,1,4,2"},
        {"value(a,0)*value(a,2)", 12, "3,1,4,2"},
        {"acols(a)*10+arows(a)", 41, "3,1,4,2"},
        {"append(a,7,8)", 6, "3,1,4,2,7,8"},
        {"prepend(a,7,8)", 6, "7,8,3,1,4,2"},
        {"insert(a,3,9)", 5, "3,1,4,9,2"},
        {"remove(a,3)", 3, "3,1,4"},
        {"swap(a,0,3)", 4, "2,1,4,3"},
        {"indexof(a,3,1)", -1, "3,1,4,2"},
        {"indexof(a,3,0-5)", 0, "3,1,4,2"},
        {"limit(a,3,2)", 0, "3,2,3,2"},
        {"minimize(a,2)", 0, "2,1,2,2"},
        {"maximize(a,2)", 0, "3,2,4,2"},
        {"normalize(a)", 0, "0.75,0.25,1,0.5"},
        {"normalize(a,-2)", 0, "1.5,0.5,2,1"},
        {"normalize(a,0)", 0, "3,1,4,2"},
        {"minus(a,1)", 0, "2,0,3,1"},
        {"minuend(a,1)", 0, "-2,0,-3,-1"},
        {"dividend(a,12)", 0, "4,12,3,6"},
        {"reverse(a)", 0, "2,4,1,3"},
        {"shiftleft(a)", 3, "1,4,2,0"},
        {"shiftleft(a,9)", 3, "1,4,2,9"},
        {"shiftright(a,9)", 2, "9,3,1,4"},
        {"bits(a,5,4)", 4, "0,1,0,1"},
        {"bits(a,-1,40)+(add(a)*100)+value(a,7)-value(a,8)", 841,
         nullptr}, // 8 bits, then the mask ends
        {"bytes(a,258,2)", 2, "1,2"},
        {"bytes(a,-2,9)", 8, "255,255,255,255,255,255,255,254"},
        {"dim(a,2,2)", 0, "3,1;4,2"},
        {"dim(a,2,2)+append(a,5)", 5, "3,1,4,2,5"},
        {"dim(a,2,2)+assign(a,9,1,0)", 4, "3,1;9,2"},
        {"dim(a,2,2)+value(a,1,0)", 4, "3,1;4,2"},
        {"maxdigits(a)", 2, "3,1,4,2"}, // the field of a parser without variables is 2
    };
    for (const auto &row : rows) {
        fill("a", {3, 1, 4, 2}, 1);
        EXPECT_EQ(run(row.call), row.result) << row.call;
        if (row.contents) {
            EXPECT_EQ(contents("a"), row.contents) << row.call;
        }
        EXPECT_TRUE(messages.isEmpty()) << row.call << qPrintable(messages.join('|'));
    }
    fill("a", {1, 2}, 1);
    parser.setText("which", "A");
    EXPECT_EQ(run("size(which)"), 2);
    EXPECT_EQ(run("duplicate(which,B)"), 2);
    EXPECT_EQ(contents("b"), "1,2");
    EXPECT_EQ(run("array(\"two words\",7)+size(\"two words\")"), 2);
}

TEST_F(Arrays, WhatCannotBeDoneIsToldAndLeavesTheArray)
{
    const QString wrong = "incorrect parameters for %1 (tag %2)";
    struct {
        const char *call;
        double result;
        QString message;
    } const rows[] = {
        {"value(a,4)", 0, "array access past array a end"},
        {"value(a,-1)", 0, "array access past array a end"},
        {"value(a,0,2)", 4, "array indices do not match array a bounds"},
        {"assign(a,9,2,0)", 4,
         "array indices do not match array a bounds|array access past array a end"},
        {"remove(a,1e9)", 4, "array access past array a end"},
        {"dim(a,3,2)", 0, "array \"a\" cannot be dimensioned to 3,2"},
        {"dim(a,-2,-2)", 0, "array \"a\" cannot be dimensioned to -2,-2"},
        {"duplicate(a,A)", 0, "arrays cannot have same name \"a\""},
        {"array(\"\",1)", 0, "cannot create an array with name of \"\""},
        {"indexof(nosuch,1)", 0, "array \"nosuch\" does not exist"},
        {"matadd(a,b,c)", 0, "size mismatch between a and b"},
        {"matxor(a,nosuch,c)", 0, "array \"nosuch\" does not exist"},
        {"matadd(empty,empty,c)", 0, wrong.arg("n=matadd(a,b,c)").arg(12)},
        {"matmul(a,empty,c)", 0, wrong.arg("n=matmul(a,b,c)").arg(11)},
        {"append(a)", 0, wrong.arg("size=append(arrayName,x[,x])").arg(30)},
        {"assign(a,1)", 0, wrong.arg("size=assign(arrayName,x,index[,index])").arg(27)},
        {"minuend(a)", 0, wrong.arg("void=minuend(arrayName,)").arg(14)},
    };
    for (const auto &row : rows) {
        fill("a", {3, 1, 4, 2}, 2);
        fill("b", {1}, 1);
        parser.arrays.create("empty");
        EXPECT_EQ(run(row.call), row.result) << row.call;
        EXPECT_EQ(messages.join('|'), row.message) << row.call;
        EXPECT_EQ(contents("a"), "3,1;4,2") << row.call;
        EXPECT_FALSE(parser.arrays.find("c")) << row.call;
    }
}

TEST_F(Arrays, DivisionByZeroTakesTheSmallestNumber)
{
    fill("a", {0, 1, 2, 0}, 2);
    run("dividend(a,1)");
    EXPECT_EQ(messages.join('|'), "array \"a\" attempted division by zero, row 0, col 0|"
                                  "array \"a\" attempted division by zero, row 1, col 1");
    EXPECT_EQ(values("a"), (std::vector<double>{1 / DBL_MIN, 1, 0.5, 1 / DBL_MIN}));
    fill("a", {1e-300, 0}, 1);
    run("divide(a,0)");
    EXPECT_EQ(messages.join('|'), "array \"a\" attempted division by zero");
    EXPECT_EQ(values("a"), (std::vector<double>{1e-300 / DBL_MIN, 0}));
    fill("a", {0, 0}, 1);
    run("normalize(a)");
    EXPECT_TRUE(std::isnan(run("value(a,1)")));
}

TEST_F(Arrays, SizesAreBoundedAndLongProductsStop)
{
    std::vector<double> tooMany;
    EXPECT_FALSE(parser.arrays.resize(&tooMany, kMostElements + 1));
    EXPECT_FALSE(parser.arrays.resize(&tooMany, INT64_MAX));
    fill("a", std::vector<double>(5000, 1.0), 5000);
    fill("b", std::vector<double>(5000, 1.0), 1);
    EXPECT_EQ(run("matmul(a,b,a)"), 0); // 25 million
    EXPECT_TRUE(messages.join('|').startsWith("array \"a\" cannot have 25000000 elements"));
    EXPECT_EQ(values("a").size(), 5000u);
    fill("a", std::vector<double>(512 * 512, 1.0), 512);
    EXPECT_EQ(run("matmul(a,a,c)"), 0); // long enough to be stopped
    EXPECT_EQ(messages.join('|'), "the product of a and a was stopped");
    EXPECT_FALSE(parser.arrays.find("c"));
}

TEST_F(Arrays, MatricesAreAsTheLonghandForm)
{
    std::mt19937 random(7);
    for (int round = 0; round < 20; ++round) {
        const int rows = 1 + int(random() % 5), inner = 1 + int(random() % 5),
                  cols = 1 + int(random() % 5);
        const auto numbers = [&random](int count) {
            std::vector<double> values(static_cast<size_t>(count));
            for (double &value : values)
                value = int(random() % 2000) / 16.0 - 60;
            return values;
        };
        const std::vector<double> a = numbers(rows * inner), b = numbers(inner * cols);
        fill("a", a, rows);
        fill("b", b, inner);
        ASSERT_EQ(run("matmul(a,b,b)"), rows);
        const ScriptArray *product = parser.arrays.find("b");
        ASSERT_TRUE(product && product->cols == cols);
        for (int i = 0; i < rows * cols; ++i) {
            double sum = 0;
            for (int k = 0; k < inner; ++k)
                sum += a[size_t(i / cols * inner + k)] * b[size_t(k * cols + i % cols)];
            EXPECT_EQ(product->values[size_t(i)], sum);
        }
    }
    // An element above 2^31 keeps its 32 bits.
    const char *const rows[][3] = {{"matadd(a,b,c)", "c", "4.4,7;3,4294967298"},
                                   {"matsub(a,b,a)", "a", "8.4,-1;-1,4294967292"},
                                   {"matand(a,b,c)", "c", "6,0;0,3"},
                                   {"mator(a,b,c)", "c", "-2,7;3,-1"},
                                   {"matxor(a,b,b)", "b", "-8,7;3,-4"},
                                   {"matnegate(a,c)", "c", "-6,-3;-1,1"},
                                   {"matnot(a,b)", "b", "4294967289,4294967292;4294967294,0"}};
    for (const auto &[call, into, result] : rows) {
        fill("a", {6.4, 3, 1, 4294967295.0}, 2);
        fill("b", {-2, 4, 2, 3}, 1);
        EXPECT_EQ(run(call), 1) << call;
        EXPECT_EQ(contents(into), result) << call;
    }
}
