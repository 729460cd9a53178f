// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "script/engine/exparser.h"
#include "script/engine/optable.h"
#include "script/engine/program.h"
#include "script/engine/stacks.h"

#include <QStringList>

#include <vector>

/// One evaluation: a single pass over the tokens. Operands go on the value stack, infix
/// operators on the operator stack; functions wait on the deferred stack for the parenthesis
/// that closes their call. After each token whatever can fire does.
class exParser::Machine
{
public:
    Machine(exParser *owner, EvaluationStacks *own, const ExpressionProgram &source);

    /// False if the evaluation ended without a value.
    bool run();
    double result() const { return value; }
    /// Appends the named parameters that no function took.
    void leftovers(QStringList *words) const;

private:
    bool act(const ProgramToken &token);
    void actOnWord(const ProgramToken &token);
    void actOnVariable(const ProgramToken &token);
    void actOnCondition(const ProgramToken &token);
    void defer(int op, int opClass);
    void pushValue(double number) { stacks.values.push({number, state.level}); }
    void pushNumber(double number);
    void pushName(const ProgramToken &token);
    bool asksExistence() const;

    void parIn();
    void parOut();
    void comma();

    bool stackOp();
    bool refuseText();
    QString traceLine() const;
    bool fireDual(const OperatorRecord &record);
    bool fireUnary(const OperatorRecord &record);
    bool fireMulti(const OperatorRecord &record);
    bool fireShortcut(const OperatorRecord &record);
    bool fireNumeric(const OperatorRecord &record, const ParameterCount &wanted);
    bool fireNamed(const OperatorRecord &record, const ParameterCount &wanted);
    void call(int op, int numbers, const QStringList &names);
    int valuesAtLevel() const;
    int namesAbove(int level) const;
    QStringList takeNames(const OperatorRecord &record, int wanted);

    exParser &parser;
    EvaluationStacks &stacks;
    const ExpressionProgram &program;
    ParseState state;
    int previousClass = OT_UNDEF;
    bool negate = false;
    bool textRefused = false;
    double value = 0;
};
