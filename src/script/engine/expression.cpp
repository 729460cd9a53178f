// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/expression.h"

#include "script/engine/exparser.h"

#include <cmath>
#include <limits>
#include <optional>

namespace
{
bool evaluateParameter(const QString &text, double *value)
{
    if (isQuotedText(text.trimmed())) // whose value is 0, as an unknown word's
        return false;
    std::optional<exParser> own;
    exParser *parser = scriptParser();
    if (!parser)
        parser = &own.emplace();
    bool ok = false;
    *value = parser->evaluate(text, &ok);
    // A mistyped name would pass for 0 otherwise, and change a picture.
    return ok && parser->unknownWords().isEmpty() && std::isfinite(*value);
}

template <class Number>
bool outside(Number value, Number low, Number high)
{
    return (low != 0 || high != 0) && (value < low || value > high);
}
} // namespace

bool intParam(const QString &text, int low, int high, int *out)
{
    double value = 0;
    if (!out || !evaluateParameter(text, &value))
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
    if (!out || !evaluateParameter(text, &value) || outside(value, low, high))
        return false;
    *out = value;
    return true;
}
