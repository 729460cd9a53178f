// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/exparser.h"

#include "script/engine/machine.h"

#include <QDebug>

namespace
{
exParser *firstParser = nullptr;

constexpr int kUnusedDepth = 1024;

/// The colour classes of marks in rich text: 0 for punctuation, 1 for what joins.
QString coloured(const char *mark, int colourClass)
{
    static const char *const colours[] = {"#5c5c5c", "#0b4fa8"};
    return QStringLiteral("<font color=\"%1\">%2</font>")
        .arg(QLatin1String(colours[colourClass]), QString::fromLatin1(mark).toHtmlEscaped());
}

Variable *filled(Variable *record, const QString &texts)
{
    record->text = record->source = record->spare = texts;
    return record;
}
} // namespace

exParser *scriptParser()
{
    return firstParser;
}

exParser::exParser() : unused(kUnusedDepth)
{
    if (!firstParser)
        firstParser = this;
    filled(variables.makeNumber(QStringLiteral("void")), QStringLiteral("0"));
    filled(variables.makeText(QStringLiteral("void")), QStringLiteral(" "));
    unused.push(-1);
    for (const char *mark : {"(", ")", "\"", ",", "+", "~", ":"})
        marks << coloured(mark, *mark == '+' ? 1 : 0);
    stacks.push_back(std::make_unique<EvaluationStacks>());
}

exParser::~exParser()
{
    if (firstParser == this)
        firstParser = nullptr;
}

int exParser::classOf(int opCode) const
{
    return table.row(opCode) ? kOtDefinitions[opCode].opClass : int(OT_UNDEF);
}

QString exParser::soNameOf(int opCode) const
{
    const OtRow *row = table.row(opCode);
    return row ? QString::fromLatin1(row->soName) : QStringLiteral("SO_? ==> %1").arg(opCode);
}

QString exParser::usageOf(int opCode) const
{
    const OtRow *row = table.row(opCode);
    return row ? QStringLiteral("G%1EG").arg(QLatin1String(row->usage))
               : QStringLiteral("bad operator token: %1").arg(kOtRows);
}

double exParser::executeFunction(int opCode, double x, double y)
{
    if (table.row(opCode)) {
        const OtImplementation &implementation = kOtDefinitions[opCode].implementation;
        if (const auto *unary = std::get_if<UnaryFunction>(&implementation))
            return (*unary)(*this, x);
        if (const auto *dual = std::get_if<DualFunction>(&implementation))
            return (*dual)(*this, x, y);
    }
    qDebug() << "Unknown function code:" << opCode;
    return 0;
}

// --- Evaluation -------------------------------------------------------------------------

double exParser::evaluate(const QString &text, bool *ok)
{
    if (depth < int(stacks.size())) { // its tokens are scratch that is free
        EvaluationStacks *own = stacks[size_t(depth)].get();
        own->scratch.text = text;
        own->scratch.generation = 0;
        const double value = evaluate(&own->scratch, ok);
        own->shrink();
        return value;
    }
    ExpressionProgram program(text);
    return evaluate(&program, ok);
}

/// What needs no stacks: a quoted text, a number, the name of a numeric variable.
bool exParser::prepareProgram(ExpressionProgram *program, double *value)
{
    if (program->generation != variables.generation()) {
        program->generation = 0;
        program->isQuoted = isQuotedText(program->text);
        program->isNumber = !program->isQuoted && isNumberText(program->text, &program->number);
        program->whole =
            program->isQuoted || program->isNumber ? nullptr : variables.number(program->text);
        if (!program->isQuoted && !program->isNumber && !program->whole)
            tokenizeProgram(program);
        program->generation = variables.generation();
    }
    if (program->isQuoted)
        *value = 0;
    else if (program->isNumber)
        *value = program->number;
    else if (program->whole)
        *value = program->whole->number();
    else
        return false;
    return true;
}

double exParser::evaluate(ExpressionProgram *program, bool *ok)
{
    // While a program runs its tokens stay as they are; a call of it from within itself gets
    // tokens of its own where these would be others now.
    if (program->running > 0 && program->generation != variables.generation())
        return evaluate(QString(program->text), ok);
    bool done = true;
    double value = 0;
    if (!prepareProgram(program, &value)) {
        done = program->balanced && !program->tokens.empty() && depth <= kDeepestNesting;
        if (done)
            value = runProgram(program, &done);
        else
            leftWords.clear();
    } else {
        leftWords.clear();
    }
    if (ok)
        *ok = done;
    return done ? value : 0;
}

double exParser::runProgram(ExpressionProgram *program, bool *ok)
{
    while (int(stacks.size()) <= depth)
        stacks.push_back(std::make_unique<EvaluationStacks>());
    EvaluationStacks *own = stacks[size_t(depth)].get();
    if (!own->ready()) {
        *ok = false;
        return 0;
    }
    ++depth;
    ++program->running;
    own->reset();
    pdepth = 0;
    Machine machine(this, own, *program);
    *ok = machine.run();
    --program->running;
    --depth;
    leftWords.clear();
    machine.leftovers(&leftWords);
    if (depth == 0 && !dispatcher)
        releaseSpares();
    return machine.result();
}

void exParser::releaseSpares()
{
    if (int(stacks.size()) > depth + 1)
        stacks.resize(size_t(depth) + 1);
}

// --- Variables --------------------------------------------------------------------------

bool exParser::checkName(const QString &name, const QString &text)
{
    bool isNumber = false;
    if (name.isEmpty()) {
        report(QStringLiteral("e: assignments must have a variable name: ") +
               QStringLiteral("G=%1EG").arg(text));
        return false;
    }
    if (name[0].isDigit()) {
        report(QStringLiteral("e: variable names can't start with a digit: ") + name);
        return false;
    }
    name.toDouble(&isNumber);
    if (isNumber)
        report(QStringLiteral("e: variables can't be numbers: ") + name + QLatin1Char('=') + text);
    return !isNumber;
}

bool exParser::setNumber(const QString &name, const QString &text)
{
    ExpressionProgram program(text);
    return setNumber(name, &program);
}

bool exParser::setNumber(const QString &name, ExpressionProgram *program)
{
    if (!checkName(name, program->text))
        return false;
    const QString lowName = name.toLower();
    if (lowName == QLatin1String("true"))
        return storeNumber(lowName, 1, QStringLiteral("1"));
    if (lowName == QLatin1String("false"))
        return storeNumber(lowName, 0, QStringLiteral("0"));
    bool ok = false;
    const double value = evaluate(program, &ok);
    if (!ok) {
        report(QStringLiteral("e: ") + lowName + QLatin1Char('=') + program->text);
        return false;
    }
    return storeNumber(lowName, value, program->text);
}

bool exParser::setNumber(const QString &name, double value)
{
    return checkName(name, QString()) && storeNumber(name.toLower(), value, QString());
}

bool exParser::storeNumber(const QString &lowName, double value, const QString &source)
{
    Variable *record = variables.makeNumber(lowName);
    record->value = value;
    record->source = source;
    record->type = kVariableDouble;
    if (lowName == QLatin1String("debug"))
        debug = value != 0;
    return true;
}

bool exParser::setNumbers(const QString &name, const QString &text)
{
    const QStringList pieces = text.split(QLatin1Char(':'));
    if (!setNumber(name, pieces.first()))
        return false;
    for (int i = 1; i < pieces.size(); ++i) {
        const QStringList sides = pieces[i].split(QLatin1Char('='));
        if (sides.size() == 2 && !setNumber(sides[0], sides[1]))
            return false;
    }
    return true;
}

bool exParser::setText(const QString &name, const QString &text)
{
    if (name.isEmpty())
        return false;
    Variable *record = variables.makeText(name.toLower());
    record->text = text;
    record->type = kVariableText;
    return true;
}

Variable *exParser::findNumber(QString &name)
{
    name = name.toLower();
    return variables.number(name);
}

Variable *exParser::findText(QString &name)
{
    name = name.toLower();
    return variables.text(name);
}

double exParser::getNumber(const QString &name, bool *ok) const
{
    const Variable *record = variables.number(name);
    if (ok)
        *ok = record != nullptr;
    return record ? record->number() : 0;
}

double exParser::numberOr(const QString &name, double fallback) const
{
    const Variable *record = variables.number(name);
    return record ? record->number() : fallback;
}

void exParser::clearVariables()
{
    variables.clear();
}
