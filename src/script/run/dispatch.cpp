// SPDX-License-Identifier: GPL-3.0-or-later
// One statement: what it is decides who does it.
#include "script/run/scriptrunner.h"

#include "core/image.h"
#include "operators/base/operatortable.h"
#include "operators/base/opwrapper.h"
#include "script/engine/exparser.h"
#include "script/engine/textexpression.h"
#include "script/run/hints.h"
#include "script/run/verbs.h"

namespace
{
/// Bodies of user functions that are made up anew again and again must not pile up.
constexpr int kMostBodies = 1024;
constexpr int kMeasure = 55, kSample = 80; ///< operators that leave the preview alone
const QString kNoImage = QStringLiteral("there is no image");
} // namespace

bool ScriptRunner::dispatchLine(int *statementIndex, const QStringList &tokens, QString *errorText,
                                int testFlag)
{
    QString unheard;
    QString *error = errorText ? errorText : &unheard;
    error->clear();
    if (tokens.isEmpty())
        return true;
    const bool isTest = testFlag == -1;
    if (isRunning() && !isTest) {
        if (!running)
            return true; // the run is being stopped, and its functions with it
        ++stepsDone;
    }
    const QString key = tokens.join(QLatin1Char(' '));
    std::shared_ptr<PreparedStatement> statement = bodies.value(key);
    if (!statement) {
        statement = std::make_shared<PreparedStatement>();
        prepareStatement(statement.get(), tokens, table);
        if (bodies.size() >= kMostBodies)
            bodies.clear();
        if (isRunning())
            bodies.insert(key, statement);
    }
    if (isTest)
        return usageOnly(*statement, error);
    int ownIndex = 0;
    StatementResult result;
    const bool ok = execute(statement.get(), statementIndex ? statementIndex : &ownIndex, &result);
    *error = result.errorText;
    return ok;
}

bool ScriptRunner::usageOnly(const PreparedStatement &statement, QString *errorText) const
{
    switch (statement.kind) {
    case StatementKind::Operator:
        statement.op->readArguments(-1, {}, errorText); // no number of arguments: usage alone
        return true;
    case StatementKind::Verb: {
        const int count = statement.tokens.size() - 1;
        *errorText = QString::fromLatin1(statement.verb->usage);
        return count >= statement.verb->fewest && count <= statement.verb->most;
    }
    case StatementKind::TextAssignment:
    case StatementKind::NumberAssignment:
    case StatementKind::Expression:
        *errorText =
            QStringLiteral("Unknown operator or formulation \"%1\"").arg(statement.tokens[0]);
        return false;
    default:
        return true;
    }
}

bool ScriptRunner::execute(PreparedStatement *statement, int *index, StatementResult *result)
{
    countDispatch();
    breathe();
    switch (statement->kind) {
    case StatementKind::Operator:
        return !executing || callOperator(*statement, &result->errorText);
    case StatementKind::Verb:
        return callVerb(*statement, &result->errorText);
    case StatementKind::Loop:
        if (executing)
            openLoop(statement, *index);
        break;
    case StatementKind::While:
        if (executing)
            closeLoop(statement, index);
        break;
    case StatementKind::If:
        openIf(statement);
        break;
    case StatementKind::Else:
        elseBranch();
        break;
    case StatementKind::Endif:
        closeIf();
        break;
    case StatementKind::TextAssignment:
        if (executing)
            assignText(*statement);
        break;
    case StatementKind::NumberAssignment:
        if (executing)
            assignNumber(statement);
        break;
    case StatementKind::Expression:
        return !executing || evaluateAlone(statement, result);
    case StatementKind::Nothing:
        break;
    }
    return true;
}

// --- Operators and verbs ----------------------------------------------------------------

/// Where an operator is passed over: on a master it cannot work on, which is told, and on a
/// picture of the preview that it is not for.
bool ScriptRunner::refusesOperator(const OpWrapper &op) const
{
    if (target->kind == 1 && !OperatorTable::allowedOnMaster(op.id)) {
        parser->report(QStringLiteral("e: %1 does not work on a master").arg(op.scriptName));
        return true;
    }
    return internal && (op.id == kMeasure || op.id == kSample);
}

bool ScriptRunner::callOperator(const PreparedStatement &statement, QString *errorText)
{
    OpWrapper *op = statement.op;
    if (!target) {
        *errorText = kNoImage;
        return false;
    }
    if (refusesOperator(*op))
        return true;
    QStringList arguments = statement.tokens.mid(1);
    const int result = op->scriptCall(arguments.size(), &arguments, target, errorText);
    if (result > 0) {
        errorText->clear();
        markChanged(true);
        followEvents(); // the operator may have let some in
    } else if (result < 0) {
        *errorText = QStringLiteral("%1 cannot be called by a script").arg(op->scriptName);
    }
    return result > 0;
}

bool ScriptRunner::callVerb(const PreparedStatement &statement, QString *errorText)
{
    const ScriptVerb &verb = *statement.verb;
    const int count = statement.tokens.size() - 1;
    bool ok = count >= verb.fewest && count <= verb.most;
    *errorText = QString::fromLatin1(verb.usage);
    if (ok && executing) {
        if (verb.needsImage && !target) {
            *errorText = kNoImage;
            return false;
        }
        ok = (this->*verb.act)(statement.tokens);
    }
    if (ok)
        errorText->clear();
    return ok;
}

// --- Formulas ---------------------------------------------------------------------------

void ScriptRunner::assignText(const PreparedStatement &statement)
{
    const QString value = evaluateText(*parser, statement.right);
    if (!parser->setText(statement.left, value))
        parser->report(QStringLiteral("e: assignments must have a variable name: G~%1EG")
                           .arg(statement.right));
}

/// Whether the right side names a string variable, found out anew when variables come or go.
bool ScriptRunner::rightIsText(PreparedStatement *statement) const
{
    if (statement->generation != parser->variables.generation()) {
        statement->rightIsText = parser->variables.text(statement->right) != nullptr;
        statement->generation = parser->variables.generation();
    }
    return statement->rightIsText;
}

/// A number that the language itself keeps, made where it is missing.
Variable *ScriptRunner::numberRecord(const char *name, Variable **record, uint64_t *generation)
{
    if (*generation != parser->variables.generation()) {
        *record = parser->variables.makeNumber(QString::fromLatin1(name));
        *generation = parser->variables.generation();
    }
    return *record;
}

void ScriptRunner::assignNumber(PreparedStatement *statement)
{
    const QString &left = statement->left;
    if (statement->quoted || rightIsText(statement)) {
        parser->report(
            QStringLiteral("can't assign string with \"=\": G%1=%2EG").arg(left, statement->right));
        return;
    }
    Variable *assigned = statement->plainName ? assignPlain(statement) : nullptr;
    if (!statement->plainName) {
        parser->setNumbers(left, statement->right);
        assigned = parser->variables.number(left);
    }
    if (statement->writes)
        markChanged(true);
    hint(statement);
    if (!assigned)
        parser->report(QStringLiteral("error: %1=%2").arg(left, statement->right));
    Variable *answer = numberRecord("m_xyzzyplugh", &answerRecord, &answerGeneration);
    answer->value = assigned ? assigned->number() : 0;
    answer->type = kVariableDouble;
    answer->source = QString();
}

/// As exParser::setNumber for a name that is known to be possible, with its record at hand.
/// Gives the record, null if there is none yet.
Variable *ScriptRunner::assignPlain(PreparedStatement *statement)
{
    bool ok = false;
    const double value = parser->evaluate(&statement->program, &ok);
    if (!ok) {
        parser->report(QStringLiteral("e: %1=%2").arg(statement->left.toLower(), statement->right));
        return parser->variables.number(statement->left);
    }
    if (statement->recordGeneration != parser->variables.generation()) {
        statement->record = parser->variables.makeNumber(statement->left.toLower());
        statement->recordGeneration = parser->variables.generation();
    }
    Variable *record = statement->record;
    record->value = value;
    record->type = kVariableDouble;
    record->source = statement->program.text;
    return record;
}

bool ScriptRunner::evaluateAlone(PreparedStatement *statement, StatementResult *result)
{
    bool ok = false;
    const double value = parser->evaluate(&statement->program, &ok);
    if (statement->writes)
        markChanged(true);
    hint(statement);
    if (!ok)
        return false;
    Variable *record = numberRecord("void", &voidRecord, &voidGeneration);
    record->value = value;
    record->type = kVariableDouble;
    record->source = statement->program.text;
    result->isExpression = true;
    result->value = value;
    return true;
}

/// Tells the words of an evaluation that nothing took, each with the known word most like it.
/// Several tokens are an operator call: their first one is the word.
void ScriptRunner::hint(PreparedStatement *statement)
{
    const bool isCall = statement->kind == StatementKind::Expression &&
                        statement->tokens.size() > 1 && isPlainWord(statement->tokens[0]);
    if (statement->hinted || !parser->debug || !parser->log ||
        (parser->unknownWords().isEmpty() && !isCall))
        return;
    statement->hinted = true;
    const QStringList known = knownWords(*parser, table);
    const QString &first = statement->tokens[0];
    const QStringList words = isCall && !known.contains(first, Qt::CaseInsensitive)
                                  ? QStringList(first)
                                  : parser->unknownWords();
    for (const QString &word : words)
        if (!known.contains(word, Qt::CaseInsensitive))
            parser->log->scriptHint(parser->statement, parser->line, word,
                                    nearestWord(known, word));
}
