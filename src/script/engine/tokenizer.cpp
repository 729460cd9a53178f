// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/exparser.h"

#include <QDebug>
#include <QLoggingCategory>

#include <algorithm>

Q_LOGGING_CATEGORY(scriptTokens, "kestrane.script.tokens", QtWarningMsg)

namespace
{
bool isDigit(ushort c)
{
    return c >= '0' && c <= '9';
}

bool isBreak(ushort c)
{
    switch (c) {
    case '+':
    case '-':
    case '*':
    case '/':
    case '%':
    case '(':
    case ')':
    case ',':
    case '<':
    case '>':
    case '!':
    case ' ':
        return true;
    default:
        return false;
    }
}

/// Exact for what a double holds exactly: up to 15 digits, with a point among them or not.
bool plainNumber(QStringView text, double *value)
{
    constexpr int kExactDigits = 15;
    static const double powers[kExactDigits + 1] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                    1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    if (text.size() > kExactDigits + 1)
        return false;
    int64_t digits = 0;
    int count = 0, fraction = -1;
    for (const QChar c : text) {
        if (isDigit(c.unicode())) {
            digits = digits * 10 + (c.unicode() - '0');
            ++count;
            fraction += fraction >= 0;
        } else if (c == QLatin1Char('.') && fraction < 0) {
            fraction = 0;
        } else {
            return false;
        }
    }
    if (count == 0 || count > kExactDigits)
        return false;
    *value = fraction > 0 ? double(digits) / powers[fraction] : double(digits);
    return true;
}

/// Whether a text may be a number at all: digits, a point, a sign, "inf" and "nan", or blanks
/// around them. Words are told from numbers by it before anything dear is tried.
bool mayBeNumber(QChar first)
{
    const ushort c = first.unicode();
    return isDigit(c) || c == '.' || c == '-' || c == '+' || c == 'i' || c == 'n' || c == 'I' ||
           c == 'N' || first.isSpace();
}

int radixOf(ushort letter)
{
    switch (letter) {
    case 'b':
        return 2;
    case 't':
        return 3;
    case 'q':
        return 4;
    case 'Q':
        return 5;
    case 's':
        return 6;
    case 'S':
        return 7;
    case 'o':
        return 8;
    case 'n':
        return 9;
    case 'd':
        return 10;
    case 'x':
    case 'h':
        return 16;
    default:
        return 0;
    }
}

bool isRadixNumber(QStringView text, double *value)
{
    const int base =
        text.size() >= 2 && text[0] == QLatin1Char('0') ? radixOf(text[1].unicode()) : 0;
    if (base == 0)
        return false;
    bool ok = false;
    const int whole = text.mid(2).toString().toInt(&ok, base);
    if (ok)
        *value = whole;
    return ok;
}

/// A "-" after one of these negates what follows. "%" is not among them.
bool negatesAfter(int previous)
{
    return previous == SO_LPAR || previous == SO_COMMA || previous == SO_DIV ||
           previous == SO_ADD || previous == SO_NOP || previous == SO_SUB || previous == SO_MUL;
}

/// Cuts a text into tokens. They are copied, since a "=" can join one over a word between.
class Scanner
{
public:
    Scanner(const QString &source, ExpressionProgram *out)
        : text(source), scanned(out->scanned), tokens(out->tokens)
    {
        scanned.resize(0);
        scanned.reserve(source.size());
        tokens.clear();
    }

    void scan()
    {
        for (int i = 0; i < text.size(); ++i) {
            const ushort c = text[i].unicode();
            if (c == '=') {
                assignOrJoin(i);
            } else if (isBreak(c)) {
                endWord(i);
                take(i, 1);
            }
        }
        endWord(int(text.size()));
    }

private:
    void take(int start, int length)
    {
        ProgramToken token;
        token.start = int(scanned.size());
        token.length = length;
        scanned.append(text.constData() + start, length);
        tokens.push_back(token);
        wordStart = start + length;
    }

    void endWord(int end)
    {
        if (end > wordStart)
            take(wordStart, end - wordStart);
    }

    /// "=" joins the token before it if that is exactly one of < > ! =. A word between the two
    /// is lost then.
    void assignOrJoin(int at)
    {
        if (!tokens.empty() && joins(tokens.back())) {
            ++tokens.back().length;
            scanned.append(QLatin1Char('='));
            wordStart = at + 1;
            return;
        }
        endWord(at);
        take(at, 1);
    }

    bool joins(const ProgramToken &last) const
    {
        const ushort c = last.length == 1 ? scanned[last.start].unicode() : 0;
        return c == '<' || c == '>' || c == '!' || c == '=';
    }

    const QString &text;
    QString &scanned;
    std::vector<ProgramToken> &tokens;
    int wordStart = 0;
};

/// What of the rich text of an editor gets into expressions.
QString withoutEntities(const QString &text)
{
    if (!text.contains(QLatin1Char('&')))
        return text;
    return QString(text)
        .replace(QLatin1String("&gt;"), QLatin1String(">"))
        .replace(QLatin1String("&lt;"), QLatin1String("<"));
}

/// Puts the tokens of a text in quotes together again, where it has an end.
void joinQuoted(ExpressionProgram *program)
{
    const QString &scanned = program->scanned;
    if (!scanned.contains(QLatin1Char('"')))
        return;
    std::vector<ProgramToken> &tokens = program->tokens;
    const auto isQuote = [&scanned](int at) { return scanned.at(at) == QLatin1Char('"'); };
    const auto closes = [&](const ProgramToken &token) {
        return isQuote(token.start + token.length - 1);
    };
    const auto last = std::find_if(tokens.rbegin(), tokens.rend(), closes).base();
    size_t kept = 0;
    for (auto token = tokens.begin(); token != tokens.end(); ++token) {
        ProgramToken whole = *token;
        if (isQuote(whole.start) && token < last)
            while ((whole.length < 2 || !closes(whole)) && token + 1 < last)
                whole.length += (++token)->length;
        tokens[kept++] = whole;
    }
    tokens.resize(kept);
}

/// Parentheses as they are counted in all of the text, quotes included. `allowEmpty` lets "()"
/// pass.
bool parenthesesMatch(const QString &text, bool allowEmpty)
{
    int64_t open = 0;
    ushort before = 0;
    for (const QChar ch : text) {
        const ushort c = ch.unicode();
        if (c == '(')
            ++open;
        else if (c == ')' && (--open < 0 || (before == '(' && !allowEmpty)))
            return false;
        before = c;
    }
    return open == 0;
}
} // namespace

bool isQuotedText(const QString &text)
{
    return text.size() > 1 && text.front() == QLatin1Char('"') && text.back() == QLatin1Char('"');
}

bool isNumberText(const QString &text, double *value)
{
    if (text.isEmpty() || !mayBeNumber(text.at(0)))
        return false;
    if (plainNumber(text, value))
        return true;
    bool ok = false;
    *value = text.toDouble(&ok);
    return ok;
}

double exParser::parseRadixNumber(const QString &text, bool *ok)
{
    double value = 0;
    const bool done = isRadixNumber(text, &value);
    if (ok)
        *ok = done;
    return value;
}

int exParser::lookupKeyword(const QString &word, bool trace) const
{
    const int code = table.lookup(word);
    if (trace) {
        if (code == SO_NOP)
            qDebug().noquote() << QStringLiteral("'%1' token not found in otTable").arg(word);
        else
            qDebug().noquote() << soNameOf(code);
    }
    return code;
}

/// Finds what a token is, in the stated order: number, variable, word of the language.
int exParser::classify(const ExpressionProgram &program, ProgramToken *result, int previous) const
{
    const QStringView token = program.view(*result);
    const QChar first = program.scanned.at(result->start);
    result->capital = first != first.toLower();
    if (plainNumber(token, &result->value))
        return SO_DUB;
    if (mayBeNumber(first) && !(token.size() == 1 && isBreak(first.unicode()))) {
        bool ok = false;
        result->value = token.toString().toDouble(&ok);
        if (ok || isRadixNumber(token, &result->value))
            return SO_DUB;
    }
    // An operator is hardly ever a variable's name; it can be one all the same.
    if (token.size() > 1 || !isBreak(first.unicode()) || variables.anyBreakName()) {
        result->variable = variables.number(token);
        if (result->variable)
            return SO_VAR;
        if (variables.text(token))
            return SO_QVAR;
    }
    const int code = table.lookup(token);
    return code == SO_SUB && negatesAfter(previous) ? int(SO_NEGATE2) : code;
}

void exParser::scanProgram(ExpressionProgram *program) const
{
    if (isQuotedText(program->text)) {
        program->scanned = program->text;
        ProgramToken whole;
        whole.length = int(program->text.size());
        program->tokens.assign(1, whole);
    } else {
        Scanner(withoutEntities(program->text), program).scan();
    }
}

/// What the tokens are. A text in quotes within an expression is one word: `joined` puts the
/// tokens back together that blanks and signs in it made of it.
void exParser::classifyProgram(ExpressionProgram *program, bool joined) const
{
    if (joined)
        joinQuoted(program);
    int previous = SO_NOP;
    for (ProgramToken &token : program->tokens) {
        token.op = previous = classify(*program, &token, previous);
        token.opClass = classOf(token.op);
    }
}

void exParser::tokenizeProgram(ExpressionProgram *program) const
{
    scanProgram(program);
    classifyProgram(program, true);
    program->generation = variables.generation();
    program->balanced = parenthesesMatch(program->text, true);
}

void exParser::tokenize(const QString &text, QStringList *tokens, QList<int32_t> *opCodes) const
{
    ExpressionProgram program(text);
    scanProgram(&program);
    classifyProgram(&program, false);
    tokens->clear();
    opCodes->clear();
    for (const ProgramToken &token : program.tokens) {
        *tokens << program.view(token).toString();
        *opCodes << token.op;
    }
    if (scriptTokens().isDebugEnabled())
        traceTokens(*tokens, *opCodes);
}

/// The diagnostic second pass: what the word lists say of each token.
void exParser::traceTokens(const QStringList &tokens, const QList<int32_t> &opCodes) const
{
    QList<int32_t> classes;
    for (int i = 0; i < tokens.size(); ++i) {
        const int op = opCodes[i];
        int listed = 0;
        const QStringList *lists[] = {&table.opPunctuation, &table.opArithmetic,
                                      &table.opConditional, &table.opFunctions,
                                      &table.opRelational};
        for (const QStringList *list : lists)
            if (listed == 0 && list->contains(tokens[i]))
                listed = op;
        classes << (op == SO_VAR || op == SO_QVAR || op == SO_DUB ? op : listed);
    }
    if (classes.size() != opCodes.size())
        qCDebug(scriptTokens) << "tokenclasses != opTypes"
                              << "tClen =" << classes.size() << "and oTlen =" << opCodes.size()
                              << classes << opCodes;
    qCDebug(scriptTokens) << tokens << classes;
}
