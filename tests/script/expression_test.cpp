// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/expression.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <random>

TEST(Expression, TextsAndTheirValues)
{
    struct {
        const char *text;
        double value;
    } const cases[] = {{"25", 25},       {"50+50", 100},    {"1+2*3", 9}, // from left to right
                       {"1+(2*3)", 7},   {"7%4", 3},        {"-7%4", -3},
                       {".5", 0.5},      {"2.", 2},         {"-(3+4)", -7},
                       {"((-2))*3", -6}, {" 1 / 4 ", 0.25}, {"0.1+0.2", 0.1 + 0.2}};
    for (const auto &one : cases) {
        double value = 99;
        EXPECT_TRUE(evaluateExpression(one.text, &value)) << one.text;
        EXPECT_EQ(value, one.value) << one.text;
    }
}

TEST(Expression, WhatIsNoExpressionLeavesTheValue)
{
    const auto nested = [](int depth) { return QString(depth, '(') + '1' + QString(depth, ')'); };
    const QString bad = "| |.|-|1+|1 2|(1|1)|()|2*-3|--1|1,5|1e5|0x10|nan|1..2|1/0|0/0|5%0|\u0663";
    const QStringList texts = bad.split('|')
                              << QString(400, '9') << nested(201) << QString(1 << 20, '(');
    double value = 99;
    for (const QString &text : texts) {
        EXPECT_FALSE(evaluateExpression(text, &value)) << qPrintable(text.left(40));
        EXPECT_EQ(value, 99);
    }
    EXPECT_TRUE(evaluateExpression(nested(200) + QString("+1").repeated(1 << 20), &value));
    EXPECT_EQ(value, (1 << 20) + 1);
}

TEST(Expression, LimitsAreInclusiveAndBothZeroMeansNone)
{
    struct {
        const char *text;
        int low, high, value; // 7: as it was
    } const cases[] = {{"-100", -100, 100, -100}, {"100.9", -100, 100, 100},
                       {"101", -100, 100, 7},     {"-1", 0, 1, 7},
                       {"2147483648", 0, 0, 7},   {"-2147483648", 0, 0, INT_MIN}};
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

TEST(Expression, RandomTextsNeverGiveAValueThatIsNoNumber)
{
    std::mt19937 generator(20240611);
    const QString alphabet = QStringLiteral("0123456789.+-*/%() x,") + QChar(0) + QChar(0x2212);
    int accepted = 0;
    for (int i = 0; i < 20000; ++i) {
        QString text;
        for (uint32_t n = generator() % 12; n > 0; --n)
            text += alphabet.at(int(generator() % uint32_t(alphabet.size())));
        double value = 0;
        accepted += evaluateExpression(text, &value);
        ASSERT_TRUE(std::isfinite(value)) << qPrintable(text);
    }
    EXPECT_GT(accepted, 100);
}
