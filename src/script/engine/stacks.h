// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/memory.h"
#include "script/engine/program.h"

#include <QString>

#include <cstdint>
#include <vector>

constexpr int kStackEntries = 1024;

/// An operator that waits for its operands.
struct OperatorRecord {
    int32_t op;
    int32_t opClass;
    int32_t names; ///< named parameters that stand in its call
    int32_t moved; ///< numbers that the closing parenthesis of its call moved
    int32_t level;
};

struct ValueRecord {
    double value;
    int32_t level;
};

/// What a parenthesis saves.
struct ParseState {
    int32_t oplimit = 0, vlimit = 0, stringlimit = 0, level = 0, commaCount = 0;
    bool condition = true;
    uint8_t reserved[24] = {};
};

struct StringRecord {
    char text[256];
};
static_assert(sizeof(ParseState) == 48 && sizeof(OperatorRecord) == 20 &&
              sizeof(ValueRecord) == 16 && sizeof(StringRecord) == 256);

/// A stack of 1024 entries that grows downward. A push on a full stack is dropped; a pop of an
/// empty one gives a zeroed record.
template <class T>
class EvaluationStack
{
public:
    explicit EvaluationStack(const char *tag)
        : base(static_cast<T *>(umalloc(kStackEntries * sizeof(T), tag))), top(base + kStackEntries)
    {
    }
    ~EvaluationStack() { upfree(&base); }
    EvaluationStack(const EvaluationStack &) = delete;
    EvaluationStack &operator=(const EvaluationStack &) = delete;

    bool ready() const { return base != nullptr; }
    void reset() { top = base + kStackEntries; }
    int count() const { return int(base + kStackEntries - top); }
    bool empty() const { return top == base + kStackEntries; }
    bool push(const T &entry)
    {
        if (top == base)
            return false;
        *--top = entry;
        return true;
    }
    T pop() { return empty() ? T{} : *top++; }
    /// The entry `below` the top; a zeroed record beyond.
    T peek(int below = 0) const { return below < count() ? top[below] : T{}; }

private:
    T *base;
    T *top;
};

/// A named parameter that waits for its function.
struct NamedEntry {
    QString q;
    int32_t level;
    bool valid;
};

/// The stacks of one evaluation.
struct EvaluationStacks {
    EvaluationStacks();
    bool ready() const;
    void reset();
    /// Gives back what a long text made the scratch take.
    void shrink();

    EvaluationStack<ParseState> parsing;
    EvaluationStack<OperatorRecord> operators;
    EvaluationStack<OperatorRecord> deferred;
    EvaluationStack<ValueRecord> values;
    EvaluationStack<double> values2;
    EvaluationStack<StringRecord> strings;
    std::vector<NamedEntry> qp; ///< unbounded
    ExpressionProgram scratch;  ///< tokens of a text that is evaluated once
};
