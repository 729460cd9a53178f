// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Evaluates one arithmetic expression: numbers with a point for decimals, + - * / %,
/// parentheses, a leading minus. Operators act strictly from left to right, without
/// precedence (1+2*3 is 9). False for anything else, for a result that is not finite,
/// and for nesting deeper than 200; *value is then untouched.
bool evaluateExpression(const QString &text, double *value);

/// The same, limited to low to high when either is nonzero; *out is set on success only.
/// The whole-number form truncates the value.
bool intParam(const QString &text, int low, int high, int *out);
bool doubleParam(const QString &text, double low, double high, double *out);
