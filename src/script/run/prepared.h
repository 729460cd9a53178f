// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "script/engine/program.h"

#include <QString>
#include <QStringList>

#include <cstdint>

class OpWrapper;
class OperatorTable;
struct ScriptVerb;

enum class StatementKind {
    Operator,
    Verb,
    Nothing, ///< the word that only tests whether scripts run
    Loop,
    While,
    If,
    Else,
    Endif,
    TextAssignment,
    NumberAssignment,
    Expression
};

/// A statement read once: what it is does not change during a run, so a loop need not ask
/// again.
struct PreparedStatement {
    StatementKind kind = StatementKind::Expression;
    QStringList tokens;
    OpWrapper *op = nullptr;          ///< of an operator
    const ScriptVerb *verb = nullptr; ///< of a verb
    QString left, right;              ///< of an assignment; right: the inside of loop, while, if
    ExpressionProgram program;        ///< what is evaluated, if anything is
    bool quoted = false;              ///< the right side stands in quotes
    bool plainName = false;           ///< assigns one value to a name that any value may have
    bool writes = false;              ///< it may change samples or the selection
    bool hinted = false;              ///< the words that nothing took were told

    /// Whether `right` names a string variable, as of this generation of the variables.
    bool rightIsText = false;
    uint64_t generation = 0;
    /// The variable that is assigned to, as of that generation of the variables.
    Variable *record = nullptr;
    uint64_t recordGeneration = 0;
};

/// Reads a statement that has at least one token. `table` may be null.
void prepareStatement(PreparedStatement *statement, const QStringList &tokens,
                      const OperatorTable *table);
