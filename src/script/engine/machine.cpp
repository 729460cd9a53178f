// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/machine.h"

#include <QLoggingCategory>

#include <algorithm>
#include <array>

Q_LOGGING_CATEGORY(scriptStacks, "kestrane.script.stacks", QtWarningMsg)

namespace
{
/// How many tokens go by between two looks at whether the run is to stop.
constexpr size_t kTokensPerLook = size_t(1) << 14;

/// The numbers of a call: most have a few, arrays may have many.
constexpr int kFewNumbers = 16;
} // namespace

exParser::Machine::Machine(exParser *owner, EvaluationStacks *own, const ExpressionProgram &source)
    : parser(*owner), stacks(*own), program(source)
{
}

bool exParser::Machine::run()
{
    const bool tracing = parser.debug && scriptStacks().isDebugEnabled();
    // The tokens are indexed afresh each time: a user function may evaluate this very text.
    const std::vector<ProgramToken> &tokens = program.tokens;
    for (size_t i = 0; i < tokens.size(); ++i) {
        if (i % kTokensPerLook == kTokensPerLook - 1 && parser.dispatcher &&
            !parser.dispatcher->keepRunning())
            return false;
        if (!act(tokens[i]))
            return false;
        previousClass = tokens[i].opClass;
        while (stackOp()) {
        }
        if (tracing)
            qCDebug(scriptStacks).noquote() << traceLine();
    }
    if (!stacks.deferred.empty()) {
        stacks.operators.push(stacks.deferred.pop());
        stackOp();
    }
    value = stacks.values.empty() ? 0 : stacks.values.pop().value;
    return true;
}

void exParser::Machine::leftovers(QStringList *words) const
{
    for (const NamedEntry &entry : stacks.qp)
        if (entry.valid && entry.q[0].isLetter() && !words->contains(entry.q))
            *words << entry.q;
}

// --- Tokens -----------------------------------------------------------------------------

bool exParser::Machine::act(const ProgramToken &token)
{
    switch (token.opClass) {
    case OT_UNDEF:
        actOnWord(token);
        break;
    case OT_UNARY:
    case OT_MULTI:
    case OT_ZIP:
    case OT_TFUNC:
        defer(token.op, token.opClass);
        break;
    case OT_DUAL:
    case OT_INDETERMINATE:
        stacks.operators.push(
            {token.opClass == OT_DUAL ? token.op : int32_t(SO_SUB), OT_DUAL, 0, 0, parser.pdepth});
        break;
    case OT_CONDITIONAL:
        actOnCondition(token);
        break;
    case OT_OPENP:
        // A bare parenthesis is a call of the identity function.
        if (previousClass != OT_UNARY && previousClass != OT_MULTI && previousClass != OT_ZIP)
            defer(SO_XYZZY, OT_UNARY);
        parIn();
        break;
    case OT_CLOSEP:
        parOut();
        break;
    case OT_VALUE:
        pushNumber(token.value);
        break;
    case OT_COMMA:
        comma();
        break;
    case OT_VAR:
        actOnVariable(token);
        break;
    case OT_QVAR:
        if (asksExistence())
            pushValue(1);
        else
            pushName(token);
        break;
    case OT_IMMEDIATE:
        negate = true;
        break;
    default:
        break;
    }
    return true;
}

bool exParser::Machine::asksExistence() const
{
    const int waiting = stacks.deferred.peek().op; // 0 of an empty stack is another function
    return waiting == SO_EXISTS || waiting == SO_NOTEXISTS;
}

void exParser::Machine::actOnWord(const ProgramToken &token)
{
    if (asksExistence())
        pushValue(0);
    else
        pushName(token);
}

/// A name with a capital passes the name, another one the value.
void exParser::Machine::actOnVariable(const ProgramToken &token)
{
    if (token.capital)
        pushName(token);
    else if (asksExistence())
        pushValue(1);
    else
        pushNumber(token.variable->number());
}

/// Nothing but `condition` follows from these words: control flow is a matter of statements.
void exParser::Machine::actOnCondition(const ProgramToken &token)
{
    if (token.op == SO_IF)
        stacks.deferred.push({SO_IF, OT_CONDITIONAL, 0, 0, parser.pdepth});
    else
        state.condition = token.op == SO_ENDIF || !state.condition;
}

void exParser::Machine::defer(int op, int opClass)
{
    stacks.deferred.push({op, opClass, 0, 0, parser.pdepth});
}

/// A minus that waits takes the next number, wherever that stands.
void exParser::Machine::pushNumber(double number)
{
    pushValue(negate ? -number : number);
    negate = false;
}

void exParser::Machine::pushName(const ProgramToken &token)
{
    stacks.qp.push_back({program.view(token).toString(), state.level, true});
}

void exParser::Machine::comma()
{
    // A function of named parameters takes the numbers of its own call alone: what waits
    // outside of its parenthesis is not moved by the comma after a name.
    const bool ownOnly =
        !stacks.deferred.empty() &&
        parameterCount(parser.table.countWord(stacks.deferred.peek().op)).named > 0;
    if (stacks.values.empty() || (ownOnly && stacks.values.count() <= state.vlimit))
        return;
    stacks.values2.push(stacks.values.pop().value);
    ++state.commaCount;
}

void exParser::Machine::parIn()
{
    stacks.parsing.push(state);
    state.oplimit = stacks.operators.count();
    state.vlimit = stacks.values.count();
    state.stringlimit = int32_t(stacks.qp.size());
    state.level = ++parser.pdepth;
    state.commaCount = 0;
}

void exParser::Machine::parOut()
{
    --parser.pdepth;
    stackOp();
    if (stacks.deferred.empty()) {
        state = stacks.parsing.pop();
        return;
    }
    if (stacks.values.count() > state.vlimit) { // the last argument, which no comma moved
        stacks.values2.push(stacks.values.pop().value);
        ++state.commaCount;
    }
    if (stacks.deferred.peek().level != parser.pdepth)
        return;
    OperatorRecord record = stacks.deferred.pop();
    record.level = state.level;
    record.names = int32_t(stacks.qp.size()) - state.stringlimit;
    record.moved = 0;
    // The first argument ends on top. More than the stack holds are not there to be moved.
    for (int i = std::min(state.commaCount, int32_t(kStackEntries)); i > 0; --i)
        record.moved += stacks.values.push({stacks.values2.pop(), parser.pdepth});
    state.commaCount = 0;
    stacks.operators.push(record);
    state = stacks.parsing.pop();
    stackOp();
}

// --- Operators --------------------------------------------------------------------------

bool exParser::Machine::stackOp()
{
    if (stacks.operators.count() <= state.oplimit)
        return false;
    const OperatorRecord record = stacks.operators.peek();
    if (record.opClass == OT_ZIP) {
        stacks.operators.pop();
        pushValue(std::get<ZipFunction>(kOtDefinitions[record.op].implementation)(parser));
        return true;
    }
    if (record.opClass == OT_TFUNC)
        return refuseText();
    if (record.level < state.level)
        return false;
    switch (record.opClass) {
    case OT_DUAL:
        return fireDual(record);
    case OT_UNARY:
        return fireUnary(record);
    case OT_MULTI:
        return fireMulti(record);
    case OT_CONDITIONAL:
        if (!stacks.values.empty()) {
            state.condition = stacks.values.peek().value != 0;
            stacks.operators.pop();
        }
        return false;
    default:
        return false;
    }
}

/// Said once for each evaluation; the function stays where it is.
bool exParser::Machine::refuseText()
{
    if (!textRefused)
        parser.report(QStringLiteral("e: text functions are illegal in numeric context"));
    textRefused = true;
    return false;
}

bool exParser::Machine::fireDual(const OperatorRecord &record)
{
    if (stacks.values.count() < 2 || stacks.values.peek().level != state.level ||
        stacks.values.peek(1).level != state.level)
        return false;
    stacks.operators.pop();
    const double y = stacks.values.pop().value;
    const double x = stacks.values.pop().value;
    pushValue(std::get<DualFunction>(kOtDefinitions[record.op].implementation)(parser, x, y));
    return true;
}

bool exParser::Machine::fireUnary(const OperatorRecord &record)
{
    if (stacks.values.empty() || stacks.values.peek().level != state.level)
        return false;
    const double x = stacks.values.pop().value;
    pushValue(std::get<UnaryFunction>(kOtDefinitions[record.op].implementation)(parser, x));
    stacks.operators.pop();
    return true;
}

bool exParser::Machine::fireMulti(const OperatorRecord &record)
{
    switch (record.op) {
    case SO_EXISTS:
    case SO_NOTEXISTS:
    case SO_FWIDTH:
    case SO_LOOPIN:
    case SO_LOOPOUT:
        return fireShortcut(record);
    default:
        break;
    }
    const ParameterCount wanted = parameterCount(parser.table.countWord(record.op));
    return wanted.named > 0 ? fireNamed(record, wanted) : fireNumeric(record, wanted);
}

/// Five words act as soon as they are seen, whatever their counts.
bool exParser::Machine::fireShortcut(const OperatorRecord &record)
{
    stacks.operators.pop();
    if (record.op == SO_FWIDTH) {
        call(record.op, 0, takeNames(record, 1));
        return true;
    }
    if (stacks.values.empty())
        return true;
    if (!stacks.qp.empty())
        stacks.qp.pop_back();
    ValueRecord top = stacks.values.pop();
    if (record.op == SO_NOTEXISTS)
        top.value = top.value == 0;
    stacks.values.push(top); // at the level that it had
    return true;
}

/// A function of numbers alone takes what it needs of all values of its level, also such as
/// waited outside of its parenthesis.
bool exParser::Machine::fireNumeric(const OperatorRecord &record, const ParameterCount &wanted)
{
    const int delta = valuesAtLevel();
    if (delta == 0 || (wanted.first > delta && wanted.second > delta))
        return false;
    stacks.operators.pop();
    const auto [fewer, more] = std::minmax(wanted.first, wanted.second);
    if (wanted.named != 0) // the count -1: nothing is pulled
        return true;
    if (more <= delta)
        call(record.op, more, {});
    else if (fewer != 0 && fewer <= delta)
        call(record.op, fewer, {});
    return true;
}

bool exParser::Machine::fireNamed(const OperatorRecord &record, const ParameterCount &wanted)
{
    const int named = namesAbove(state.level);
    const bool pushesNumber = record.op == SO_PUSHS && record.moved == 1 && named == 0;
    if (named < wanted.named && !pushesNumber)
        return false;
    stacks.operators.pop();
    call(record.op, record.moved, takeNames(record, wanted.named));
    return true;
}

/// Pulls the numbers, the first argument first, and calls the function of the row.
void exParser::Machine::call(int op, int numbers, const QStringList &names)
{
    std::array<double, kFewNumbers> few;
    std::vector<double> many;
    double *a = few.data();
    if (numbers > kFewNumbers) {
        many.resize(size_t(numbers));
        a = many.data();
    }
    for (int i = 0; i < numbers; ++i)
        a[i] = stacks.values.pop().value;
    FunctionCall parameters{parser, op, a, numbers, names};
    pushValue(std::get<MultiFunction>(kOtDefinitions[op].implementation)(parameters));
}

int exParser::Machine::valuesAtLevel() const
{
    int count = 0;
    for (int i = 0; i < stacks.values.count(); ++i)
        count += stacks.values.peek(i).level >= state.level;
    return count;
}

int exParser::Machine::namesAbove(int level) const
{
    return int(std::count_if(stacks.qp.begin(), stacks.qp.end(),
                             [level](const NamedEntry &entry) { return entry.level > level; }));
}

/// The named parameters of a call, in written order; they are gone from the list then. A call
/// with too few of its own takes what earlier ones left. Two functions take any number of
/// names, the others the first ones.
QStringList exParser::Machine::takeNames(const OperatorRecord &record, int wanted)
{
    int most = record.names >= wanted ? record.names : wanted;
    QStringList names;
    for (size_t i = stacks.qp.size(); i > 0 && most > 0; --i) {
        NamedEntry &entry = stacks.qp[i - 1];
        if (entry.level <= state.level)
            continue;
        if (entry.q != QLatin1String(" "))
            names.prepend(entry.q);
        entry.valid = false;
        --most;
    }
    stacks.qp.erase(std::remove_if(stacks.qp.begin(), stacks.qp.end(),
                                   [](const NamedEntry &entry) { return !entry.valid; }),
                    stacks.qp.end());
    const bool any = record.op == SO_FUNC || record.op == SO_DECLARE;
    return any ? names : names.mid(0, wanted);
}

QString exParser::Machine::traceLine() const
{
    return QStringLiteral("stackOp() entry conditions: vars on stack: %1 vlimit=%2 ops on stack: "
                          "%3 oplimit=%4 strings on stack: %5 stringlimit %6")
        .arg(stacks.values.count())
        .arg(state.vlimit)
        .arg(stacks.operators.count())
        .arg(state.oplimit)
        .arg(stacks.qp.size())
        .arg(state.stringlimit);
}
