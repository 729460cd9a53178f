// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/functions.h"

#include "core/workspace.h"
#include "operators/pipeline/random15.h"
#include "script/engine/numbers.h"
#include "script/engine/textexpression.h"

#include <QSet>

#include <algorithm>
#include <cmath>

namespace
{
constexpr double kSeedScale = 100000.0;
constexpr double kWords = 4294967296.0; ///< how many values a seed can have
constexpr uint32_t kSeedOfZero = 180200002;

/// The statements of a user function: ";" parts them, ";;" is a semicolon.
QStringList functionStatements(const QString &text)
{
    QStringList statements;
    QString statement;
    for (int i = 0; i < text.size(); ++i) {
        const bool semicolon = text[i] == QLatin1Char(';');
        if (semicolon && i + 1 < text.size() && text[i + 1] == QLatin1Char(';')) {
            statement += text[i++];
        } else if (semicolon) {
            statements << statement;
            statement.clear();
        } else {
            statement += text[i];
        }
    }
    return statements << statement;
}

/// Runs the statements one after the other; control flow in them may set the index. False,
/// reported, after the first one that fails.
bool runStatements(exParser &parser, const QString &name, const QStringList &statements)
{
    for (int index = 0; index < statements.size() && parser.dispatcher->keepRunning(); ++index) {
        const QString &statement = statements[index];
        const QStringList tokens = statement.split(QLatin1Char(' '), Qt::SkipEmptyParts);
        if (tokens.isEmpty() || tokens[0].startsWith(QLatin1Char('#')))
            continue;
        QString errorText;
        if (!parser.dispatcher->dispatchLine(&index, tokens, &errorText, parser.testFlag)) {
            parser.report(QStringLiteral("e: function \"G%1EG\" failed").arg(name));
            parser.report(QStringLiteral("code: \"G%1EG\"").arg(statement));
            return false;
        }
        index = std::max(index, -1); // a loop that began elsewhere is not among these
    }
    return true;
}

/// What keeps a script from having a variable of this name, null for nothing. The name is in
/// lower case.
const char *declarationProblem(exParser &parser, const QString &name, const QSet<QString> &seen)
{
    const auto isPlain = [](QChar c) {
        return (c >= QLatin1Char('a') && c <= QLatin1Char('z')) ||
               (c >= QLatin1Char('0') && c <= QLatin1Char('9')) || c == QLatin1Char('_');
    };
    if (parser.variables.number(name))
        return "w: Numeric variable already exists";
    if (name.isEmpty() || !std::all_of(name.begin(), name.end(), isPlain))
        return "w: Illegal variable name";
    if (name[0].isDigit())
        return "w: Variable names cannot begin with a number";
    if (seen.contains(name))
        return "w: duplicate variable declaration";
    if (parser.variables.text(name))
        return "w: String variable already exists";
    return nullptr;
}
} // namespace

// --- The numeric user stack ---------------------------------------------------------------

double fnPush(exParser &parser, double x)
{
    if (parser.userNumbers.size() >= size_t(kMostElements))
        parser.report(QStringLiteral("e: user stack is full"));
    else
        parser.userNumbers.push_back(x);
    return 0;
}

double fnPop(exParser &parser)
{
    if (parser.userNumbers.empty()) {
        parser.report(QStringLiteral("w: user stack is empty"));
        return 0;
    }
    const double last = parser.userNumbers.back();
    parser.userNumbers.pop_back();
    return last;
}

// --- Chance -------------------------------------------------------------------------------

double fnRnd(exParser &, double x)
{
    return random15() / kRandom15Span * x;
}

/// Seeds as large as a date still differ: they go round rather than stop at the largest word.
double fnSeed(exParser &, double x)
{
    uint32_t seed = kSeedOfZero;
    if (!std::isfinite(x * kSeedScale))
        seed = 2;
    else if (std::round(x) != 0.0)
        seed = uint32_t(std::fmod(std::floor(std::fabs(x * kSeedScale)), kWords)) + 2;
    seedRandom15(seed);
    return 0;
}

// --- User functions -----------------------------------------------------------------------

/// One past the last entry is a silent 0.
double fnDparm(exParser &parser, double x)
{
    const double i = std::round(x), size = double(parser.dparms.size());
    if (i >= 0.0 && i < size)
        return parser.dparms[size_t(i)];
    if (i != size)
        parser.report(QStringLiteral("e: dvar(%1) parameter empty: dparms size=%2")
                          .arg(x)
                          .arg(parser.dparms.size()));
    return 0;
}

/// A function's value is that of its last assignment, which the dispatcher keeps in a variable.
double fnFunc(FunctionCall &call)
{
    exParser &parser = call.parser;
    if (call.names.isEmpty())
        return parser.badParameters(call.opCode, 5);
    const QString name = call.names[0];
    QString text;
    if (!fetchText(parser, name, &text)) {
        parser.report(QStringLiteral("e: unable to fetch function: \"R%1ER\"").arg(name));
        return 0;
    }
    if (!parser.dispatcher) {
        parser.report(QStringLiteral("e: function \"G%1EG\" can only run in a script").arg(name));
        return 0;
    }
    if (parser.nesting() > exParser::kDeepestNesting) {
        parser.report(QStringLiteral("e: function \"G%1EG\" calls itself too often").arg(name));
        return 0;
    }
    parser.dparms.assign(call.a, call.a + call.count);
    parser.tparms = call.names.mid(1);
    if (text.isEmpty()) {
        parser.badParameters(call.opCode, 4);
    } else if (!runStatements(parser, name, functionStatements(text))) {
        parser.report(QStringLiteral("e: function \"G%1EG\" encountered a problem").arg(name));
        return 0;
    }
    return parser.numberOr(QStringLiteral("m_xyzzyplugh"), 0);
}

/// For a script that wants to be told of names that are taken; it makes no variable.
double fnDeclare(FunctionCall &call)
{
    QSet<QString> seen;
    for (const QString &word : call.names) {
        const QString name = word.toLower();
        if (const char *problem = declarationProblem(call.parser, name, seen)) {
            call.parser.report(QLatin1String(problem));
            break;
        }
        seen << name;
    }
    return seen.size();
}

// --- The slider ---------------------------------------------------------------------------

/// A person's choice; 0 if it was given up.
double fnSlider(FunctionCall &call)
{
    const QStringList texts = namedParameters(call.parser, call.names);
    if (texts.size() < 2 || call.count < 3)
        return call.parser.badParameters(call.opCode, 34);
    const auto [low, high] = std::minmax({roundedNumber(call.a[0]), roundedNumber(call.a[1])});
    int value = std::clamp(roundedNumber(call.a[2]), low, high);
    if (call.parser.dispatcher && !call.parser.dispatcher->mayAsk())
        return value;
    return workspace() && workspace()->askSlider(texts[0], texts[1], low, high, &value) ? value : 0;
}
