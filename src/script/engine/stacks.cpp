// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/stacks.h"

namespace
{
constexpr size_t kKeptTokens = 1024; ///< as much as any usual expression has
} // namespace

EvaluationStacks::EvaluationStacks()
    : parsing("parsing stack"), operators("operator stack"), deferred("deferred operator stack"),
      values("value stack"), values2("value2 stack"), strings("string  stack")
{
}

bool EvaluationStacks::ready() const
{
    return parsing.ready() && operators.ready() && deferred.ready() && values.ready() &&
           values2.ready() && strings.ready();
}

void EvaluationStacks::reset()
{
    parsing.reset();
    operators.reset();
    deferred.reset();
    values.reset();
    values2.reset();
    strings.reset();
    qp.clear();
}

void EvaluationStacks::shrink()
{
    scratch.text.clear();
    if (scratch.tokens.capacity() > kKeptTokens || scratch.scanned.size() > int(kKeptTokens))
        scratch = ExpressionProgram();
    if (qp.capacity() > kKeptTokens)
        qp = {};
}
