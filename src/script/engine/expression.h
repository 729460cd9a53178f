// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// One parameter of an operator's script line: an expression of the language, evaluated by the
/// program's parser (see scriptParser), or by one of its own where there is none. False, with
/// *out untouched, for an expression without a value or with a word that means nothing, for a
/// value that is not finite, and for one outside of low to high where either is nonzero. The
/// whole-number form truncates the value.
bool intParam(const QString &text, int low, int high, int *out);
bool doubleParam(const QString &text, double low, double high, double *out);
