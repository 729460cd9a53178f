// SPDX-License-Identifier: GPL-3.0-or-later
// The statements of the console, and the commands that look into the language.
#include "batch/console.h"

#include "batch/messages.h"
#include "batch/scriptmessages.h"
#include "batch/session.h"
#include "script/engine/exparser.h"
#include "script/engine/numberformat.h"
#include "script/engine/textexpression.h"
#include "script/run/scriptrunner.h"
#include "script/run/statements.h"

#include <algorithm>
#include <tuple>
#include <utility>
#include <vector>

namespace
{
const QString kNoStatement = QStringLiteral("testscripting"); ///< which does nothing
constexpr int kAllDigits = 17; ///< which bring a double back as it was

QString exactNumber(double value)
{
    return QString::number(value, 'g', kAllDigits);
}
} // namespace

void Console::runStatements(const QString &statements, const Answer &answerTo)
{
    image *target = session->current();
    if (std::exchange(targetIsOld, false))
        session->scripts()->retarget(target);
    session->scripts()->runLine(statements, answerTo);
}

void Console::runScriptLine(const QString &line)
{
    runStatements(line, [this](const StatementResult &result) { answerStatement(result); });
}

bool Console::lookWithin(const std::function<bool()> &look)
{
    // A user function in the expression then runs as part of the run, within its limits.
    bool done = false;
    runStatements(kNoStatement, [&](const StatementResult &) { done = look(); });
    return done;
}

void Console::answerStatement(const StatementResult &result)
{
    if (result.ok && result.isExpression)
        answer(exactNumber(result.value));
    if (result.ok)
        return;
    answer(QStringLiteral("failed: ") + singleLine(result.errorText));
    if (!streams.inIsTerminal)
        messages->error(place() + (result.errorText.isEmpty() ? QStringLiteral("has no value")
                                                              : result.errorText));
}

QString Console::place() const
{
    return streams.inIsTerminal ? QString() : QStringLiteral("line %1: ").arg(lineNumber);
}

void Console::scriptReport(const ScriptReport &report)
{
    const bool isWarning = report.kind == ScriptReport::Kind::Warning;
    if (richReports)
        answer(QStringLiteral("rich: ") + singleLine(report.rich));
    else
        answer((isWarning ? QStringLiteral("warning: ") : QStringLiteral("error: ")) +
               singleLine(report.plain));
    if (streams.inIsTerminal) // the answer stands below its line
        return;
    if (isWarning)
        messages->warning(place() + report.plain);
    else
        messages->error(place() + report.plain);
}

void Console::scriptHint(int, int, const QString &word, const QString &nearest)
{
    messages->warning(place() + unknownWord(word, nearest));
}

bool Console::text(const QStringList &)
{
    return lookWithin([this] {
        answer(singleLine(evaluateText(*session->parser(), rest)));
        return true;
    });
}

bool Console::value(const QStringList &)
{
    failure = QStringLiteral("no value");
    return lookWithin([this] {
        bool ok = false;
        const double result = session->parser()->evaluate(withoutBlanks(rest), &ok);
        if (ok)
            answer(singleLine(formatNumber(*session->parser(), result)));
        return ok;
    });
}

bool Console::tokens(const QStringList &)
{
    const exParser &parser = *session->parser();
    QStringList texts;
    QList<int32_t> codes;
    parser.tokenize(rest, &texts, &codes);
    for (int i = 0; i < texts.size(); ++i)
        answer(
            QStringLiteral("\"%1\" %2 %3")
                .arg(singleLine(texts[i]), QString::number(codes[i]), parser.soNameOf(codes[i])));
    return true;
}

bool Console::variables(const QStringList &)
{
    std::vector<const Variable *> sorted;
    for (const auto &variable : session->parser()->variables.all())
        sorted.push_back(variable.get());
    // A name can stand for a number and for a text; the number comes first.
    std::sort(sorted.begin(), sorted.end(), [](const Variable *a, const Variable *b) {
        return std::tie(a->name, a->type) < std::tie(b->name, b->type);
    });
    for (const Variable *variable : sorted)
        answer(singleLine(
            variable->name + QStringLiteral(" = ") +
            (variable->type == kVariableText ? variable->text : exactNumber(variable->number()))));
    return true;
}

bool Console::rich(const QStringList &arguments)
{
    if (arguments[0] != QLatin1String("on") && arguments[0] != QLatin1String("off"))
        return fail(QStringLiteral("usage: .rich on|off"));
    richReports = arguments[0] == QLatin1String("on");
    return true;
}
