// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/run/prepared.h"

#include "operators/base/operatortable.h"
#include "operators/base/opwrapper.h"
#include "script/engine/textexpression.h"
#include "script/run/hints.h"
#include "script/run/statements.h"
#include "script/run/verbs.h"

#include <algorithm>
#include <iterator>

namespace
{
bool startsSingle(const QString &token, char mark)
{
    return token.startsWith(QLatin1Char(mark)) &&
           (mark != '=' || !token.startsWith(QLatin1String("==")));
}

/// An assignment is told by its first token, or by a second one that begins with its mark.
StatementKind formulaKind(const QStringList &tokens)
{
    const QString &first = tokens[0];
    const int tilde = first.indexOf(QLatin1Char('~'));
    const int equals = first.indexOf(QLatin1Char('='));
    if (tilde >= 0 && (equals < 0 || equals > tilde))
        return StatementKind::TextAssignment;
    if (equals >= 0)
        return StatementKind::NumberAssignment;
    if (tokens.size() > 1 && startsSingle(tokens[1], '~'))
        return StatementKind::TextAssignment;
    if (tokens.size() > 1 && startsSingle(tokens[1], '='))
        return StatementKind::NumberAssignment;
    return StatementKind::Expression;
}

/// Only the beginning of the first token counts.
bool isControlFlow(const QString &first, StatementKind *kind)
{
    constexpr struct {
        const char *begin;
        StatementKind kind;
    } words[] = {
        {"loop(", StatementKind::Loop},  {"while(", StatementKind::While},
        {"if(", StatementKind::If},      {"else", StatementKind::Else},
        {"endif", StatementKind::Endif},
    };
    for (const auto &word : words)
        if (first.startsWith(QLatin1String(word.begin))) {
            *kind = word.kind;
            return true;
        }
    return false;
}

/// What stands between the first parenthesis and the last character, which closes it.
QString insideOf(const QString &token)
{
    const int open = token.indexOf(QLatin1Char('('));
    const int end = token.endsWith(QLatin1Char(')')) ? token.size() - 1 : token.size();
    return token.mid(open + 1, end - open - 1);
}

bool mayWrite(const QString &expression)
{
    const char *const words[] = {"writep", "convolve", "setm", "writem", "aam", "linem"};
    return std::any_of(std::begin(words), std::end(words), [&expression](const char *word) {
        return expression.contains(QLatin1String(word), Qt::CaseInsensitive);
    });
}

void prepareControlFlow(PreparedStatement *statement)
{
    const bool counts = statement->kind == StatementKind::Loop;
    if (!counts && statement->kind != StatementKind::While && statement->kind != StatementKind::If)
        return;
    const QString &first = statement->tokens[0];
    statement->right = insideOf(first);
    // The conditions are evaluated with the word around them, which hands the value on.
    statement->program.text = counts ? statement->right : first;
}

/// Whether a name can be given any value, without another effect.
bool isFreeName(const QString &name)
{
    bool isNumber = false;
    name.toDouble(&isNumber); // "inf" is one
    const QStringList held = {QStringLiteral("true"), QStringLiteral("false"),
                              QStringLiteral("debug")};
    return !isNumber && isPlainWord(name) && !held.contains(name, Qt::CaseInsensitive);
}

void prepareAssignment(PreparedStatement *statement, const QString &text)
{
    const bool isText = statement->kind == StatementKind::TextAssignment;
    const int cut = text.indexOf(QLatin1Char(isText ? '~' : '='));
    statement->left = text.left(cut).trimmed();
    statement->right = text.mid(cut + 1).trimmed();
    if (isText)
        return;
    statement->quoted = isQuotedText(statement->right);
    statement->right = withoutBlanks(statement->right);
    statement->plainName =
        isFreeName(statement->left) && !statement->right.contains(QLatin1Char(':'));
    statement->program.text = statement->right;
}
/// A word that may be a variable's name is a verb only where parameters follow.
bool standsForVariable(const ScriptVerb &verb, const QStringList &tokens)
{
    return verb.yields && (tokens.size() > 1 ? !tokens[1][0].isLetterOrNumber() : verb.fewest > 0);
}
} // namespace

void prepareStatement(PreparedStatement *statement, const QStringList &tokens,
                      const OperatorTable *table)
{
    statement->tokens = tokens;
    const QString &first = tokens[0];
    statement->op = table ? table->byScriptName(first) : nullptr;
    statement->verb = findVerb(first);
    if (statement->verb && standsForVariable(*statement->verb, tokens))
        statement->verb = nullptr;
    if (statement->op) {
        statement->kind = StatementKind::Operator;
    } else if (statement->verb) {
        statement->kind = StatementKind::Verb;
    } else if (first == QLatin1String("testscripting")) {
        statement->kind = StatementKind::Nothing;
    } else if (isControlFlow(first, &statement->kind)) {
        prepareControlFlow(statement);
    } else {
        const QString text = tokens.join(QLatin1Char(' '));
        statement->kind = formulaKind(tokens);
        if (statement->kind == StatementKind::Expression)
            statement->program.text = withoutBlanks(text);
        else
            prepareAssignment(statement, text);
    }
    statement->writes = mayWrite(statement->program.text);
}
