// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/expression.h"

#include <cmath>
#include <limits>

namespace
{
constexpr int kMaxNesting = 200;

/// One pass over the text, without look-back: its time grows with the length alone.
class Evaluator
{
public:
    explicit Evaluator(const QString &source) : text(source) {}

    bool whole(double *value) { return chain(value, 0) && at == text.size(); }

private:
    ushort peek()
    {
        while (at < text.size() &&
               (text.at(at) == QLatin1Char(' ') || text.at(at) == QLatin1Char('\t')))
            ++at;
        return at < text.size() ? text.at(at).unicode() : 0;
    }

    static bool isDigit(ushort c) { return c >= '0' && c <= '9'; }

    void skipDigits()
    {
        while (at < text.size() && isDigit(text.at(at).unicode()))
            ++at;
    }

    bool number(double *value)
    {
        const int start = at;
        skipDigits();
        int digits = at - start;
        if (at < text.size() && text.at(at) == QLatin1Char('.')) {
            ++at;
            skipDigits();
            digits = at - start - 1;
        }
        bool ok = false;
        if (digits > 0)
            *value = text.midRef(start, at - start).toDouble(&ok);
        return ok;
    }

    bool operand(double *value, int depth)
    {
        if (peek() != '(')
            return number(value);
        if (depth >= kMaxNesting)
            return false;
        ++at;
        if (!chain(value, depth + 1) || peek() != ')')
            return false;
        ++at;
        return true;
    }

    /// Operands joined strictly from left to right, up to what is no operator.
    bool chain(double *value, int depth)
    {
        const bool negative = peek() == '-';
        if (negative)
            ++at;
        if (!operand(value, depth))
            return false;
        if (negative)
            *value = -*value;
        for (ushort op = peek(); op == '+' || op == '-' || op == '*' || op == '/' || op == '%';
             op = peek()) {
            ++at;
            double right = 0;
            if (!operand(&right, depth))
                return false;
            *value = join(*value, op, right);
        }
        return true;
    }

    static double join(double left, ushort op, double right)
    {
        switch (op) {
        case '+':
            return left + right;
        case '-':
            return left - right;
        case '*':
            return left * right;
        case '/':
            return left / right;
        default:
            return std::fmod(left, right);
        }
    }

    const QString &text;
    int at = 0;
};

template <class Number>
bool outside(Number value, Number low, Number high)
{
    return (low != 0 || high != 0) && (value < low || value > high);
}
} // namespace

bool evaluateExpression(const QString &text, double *value)
{
    double result = 0;
    if (!value || !Evaluator(text).whole(&result) || !std::isfinite(result))
        return false;
    *value = result;
    return true;
}

bool intParam(const QString &text, int low, int high, int *out)
{
    double value = 0;
    if (!out || !evaluateExpression(text, &value))
        return false;
    value = std::trunc(value);
    if (value < std::numeric_limits<int>::min() || value > std::numeric_limits<int>::max() ||
        outside(int(value), low, high))
        return false;
    *out = int(value);
    return true;
}

bool doubleParam(const QString &text, double low, double high, double *out)
{
    double value = 0;
    if (!out || !evaluateExpression(text, &value) || outside(value, low, high))
        return false;
    *out = value;
    return true;
}
