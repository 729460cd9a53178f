// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>
#include <vector>

struct Variable;

/// One token of an expression.
struct ProgramToken {
    int32_t op = 0;
    int32_t opClass = 0;
    int start = 0, length = 0; ///< in the text of its program
    double value = 0;          ///< of a number
    Variable *variable = nullptr;
    bool capital = false; ///< begins with a letter that has a lower-case form
};

/// An expression with its tokens, which hold as long as no variable comes or goes.
struct ExpressionProgram {
    ExpressionProgram() = default;
    explicit ExpressionProgram(const QString &source) : text(source) {}

    QString text;
    QString scanned; ///< what the tokens point into
    std::vector<ProgramToken> tokens;
    uint64_t generation = 0; ///< of the variables; 0: not split yet
    int running = 0;         ///< evaluations of it under way: its tokens must stay
    bool balanced = false;   ///< its parentheses
    bool isNumber = false;   ///< the whole text is a number
    bool isQuoted = false;   ///< the whole text stands in quotes
    double number = 0;
    Variable *whole = nullptr; ///< the whole text names this numeric variable

    QStringView view(const ProgramToken &token) const
    {
        return QStringView(scanned).mid(token.start, token.length);
    }
};

/// A text in quotes, which as a number is 0.
bool isQuotedText(const QString &text);
/// A text that is one number as it stands, sign and exponent included.
bool isNumberText(const QString &text, double *value);
