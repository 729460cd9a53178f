// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/expression.h"

#include <gtest/gtest.h>

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
        EXPECT_TRUE(evaluateExpression(QString::fromUtf8(one.text), &value)) << one.text;
        EXPECT_EQ(value, one.value) << one.text;
    }
}

TEST(Expression, WhatIsNoExpressionLeavesTheValue)
{
    const QString texts[] = {QString(),
                             QStringLiteral(" "),
                             QStringLiteral("."),
                             QStringLiteral("-"),
                             QStringLiteral("1+"),
                             QStringLiteral("1 2"),
                             QStringLiteral("(1"),
                             QStringLiteral("1)"),
                             QStringLiteral("()"),
                             QStringLiteral("2*-3"),
                             QStringLiteral("--1"),
                             QStringLiteral("1,5"),
                             QStringLiteral("1e5"),
                             QStringLiteral("0x10"),
                             QStringLiteral("nan"),
                             QStringLiteral("1..2"),
                             QStringLiteral("1/0"),
                             QStringLiteral("0/0"),
                             QStringLiteral("5%0"),
                             QString(QChar(0x0663)),         // a digit, but of another script
                             QString(400, QLatin1Char('9')), // beyond a double
                             QString(1 << 20, QLatin1Char('(')),
                             QString(201, QLatin1Char('(')) + QLatin1Char('1') +
                                 QString(201, QLatin1Char(')'))};
    for (const QString &text : texts) {
        double value = 99;
        EXPECT_FALSE(evaluateExpression(text, &value)) << qPrintable(text.left(40));
        EXPECT_EQ(value, 99);
    }
    double value = 0;
    EXPECT_TRUE(evaluateExpression(QString(200, QLatin1Char('(')) + QLatin1Char('1') +
                                       QString(200, QLatin1Char(')')),
                                   &value));
    EXPECT_TRUE(
        evaluateExpression(QStringLiteral("0") + QStringLiteral("+1").repeated(1 << 20), &value));
    EXPECT_EQ(value, 1 << 20);
}

TEST(Expression, LimitsAreInclusiveAndBothZeroMeansNone)
{
    int whole = 7;
    double real = 7;
    EXPECT_TRUE(intParam(QStringLiteral("-100"), -100, 100, &whole));
    EXPECT_EQ(whole, -100);
    EXPECT_TRUE(intParam(QStringLiteral("100.9"), -100, 100, &whole));
    EXPECT_EQ(whole, 100);
    EXPECT_FALSE(intParam(QStringLiteral("101"), -100, 100, &whole));
    EXPECT_FALSE(intParam(QStringLiteral("-1"), 0, 1, &whole));
    EXPECT_FALSE(intParam(QStringLiteral("2147483648"), 0, 0, &whole));
    EXPECT_EQ(whole, 100);
    EXPECT_TRUE(intParam(QStringLiteral("-2147483648"), 0, 0, &whole));
    EXPECT_TRUE(doubleParam(QStringLiteral(".25"), 0.25, 4, &real));
    EXPECT_FALSE(doubleParam(QStringLiteral(".2499"), 0.25, 4, &real));
    EXPECT_EQ(real, 0.25);
    EXPECT_TRUE(doubleParam(QStringLiteral("99999"), 0, 0, &real));
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
        double value = -1;
        if (evaluateExpression(text, &value)) {
            ++accepted;
            ASSERT_TRUE(std::isfinite(value)) << qPrintable(text);
        }
    }
    EXPECT_GT(accepted, 100);
}
