// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>
#include <QStringList>

class exParser;

/// A text of the language has at most so many characters.
constexpr int kLongestText = 1 << 24;

/// Types that the string tokeniser gives.
enum TextTokenType {
    kTextPunctuation = 0,
    kTextPlus = 1,
    kTextFunction = 4,
    kTextQuoted = 5,
    kTextWord = 6,
    kTextBlank = 8,
    kTextListed = 10 ///< a word of the caller's list
};

/// Splits a text expression; both lists are filled to the same length, and the tokens together
/// are the text. False for an open quote, whose token then is the rest of the text, or
/// unbalanced parentheses.
bool tokenizeText(const exParser &parser, const QString &text, const QStringList &listed,
                  QStringList *tokens, QList<int> *types);

/// The value of a text expression: pieces joined by "+", each a quoted text, a variable or a
/// call of a text function. What is none of these stands for itself, with a warning.
QString evaluateText(exParser &parser, const QString &text);

/// A variable of either kind as text. False if there is none. A name with a capital gives a
/// number's source instead of its value.
bool fetchText(const exParser &parser, const QString &name, QString *text);

/// The simpler rule for the text of an operator: "+" joins, "++" is a plus, each part is a
/// variable or stands for itself. False for a part that is empty.
bool textOperand(const exParser &parser, const QString &text, QString *result);

/// Whether the piece has the form of a call, name(arguments); its value then, empty and with a
/// warning for a name that is no text function.
bool callTextFunction(exParser &parser, const QString &piece, QString *result);

/// What an argument of a text function stands for: the inside of quotes, a variable as text, or,
/// with a warning, itself.
QString textArgument(exParser &parser, const QString &argument);

/// Without the blanks outside of quotes; a quote with a backslash before it stands for itself.
QString withoutBlanks(const QString &text);
/// A text without the quotes around it, if there are any.
QString unquoted(const QString &text);
/// What a named parameter stands for: the inside of quotes, the text of a string variable of
/// that name, or the word itself.
QString namedParameter(const exParser &parser, const QString &word);
/// The same of all named parameters of a call.
QStringList namedParameters(const exParser &parser, const QStringList &words);
