// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/textexpression.h"

#include "script/engine/exparser.h"
#include "script/engine/functions.h"
#include "script/engine/heldtexts.h"
#include "script/engine/numberformat.h"

namespace
{
constexpr QChar kQuote = QLatin1Char('"');
constexpr int kLongestCallResult = 80;
/// Messages hold the beginning of what they speak of, and one text gives so many at most.
constexpr int kShownOfPiece = 200, kMostWarnings = 100;

/// A quote that stands for itself has a backslash directly before it.
bool isQuote(const QString &text, int at)
{
    return text.at(at) == kQuote && (at == 0 || text.at(at - 1) != QLatin1Char('\\'));
}

/// As QString::replace, whose time grows faster than a long text.
QString replaced(const QString &text, QLatin1String from, QLatin1String to)
{
    int at = text.indexOf(from);
    if (at < 0)
        return text;
    QString result;
    result.reserve(text.size());
    int start = 0;
    for (; at >= 0; at = text.indexOf(from, start)) {
        result += QStringView(text).mid(start, at - start);
        result += to;
        start = at + from.size();
    }
    result += QStringView(text).mid(start);
    return result;
}

/// The type of a character that is a token of its own; kTextWord for the others.
TextTokenType typeOf(QChar c)
{
    switch (c.unicode()) {
    case '(':
    case ')':
    case ',':
        return kTextPunctuation;
    case '+':
        return kTextPlus;
    case ' ':
    case '\t':
        return kTextBlank;
    default:
        return kTextWord;
    }
}

bool startsWithCapital(const QString &name)
{
    return !name.isEmpty() && name.at(0) != name.at(0).toLower();
}

QString shown(const QString &text)
{
    return text.size() > kShownOfPiece ? text.left(kShownOfPiece) + QChar(0x2026) : text;
}

/// The pieces of a text expression between the pluses outside of quotes.
bool splitPieces(const exParser &parser, const QString &text, QStringList *pieces)
{
    QStringList tokens;
    QList<int> types;
    if (!tokenizeText(parser, text, {}, &tokens, &types))
        return false;
    QString piece;
    for (int i = 0; i < tokens.size(); ++i) {
        if (types[i] != kTextPlus) {
            piece += tokens[i];
        } else {
            pieces->append(piece);
            piece.clear();
        }
    }
    pieces->append(piece);
    return true;
}

/// What a piece stands for. False if it is nothing known and stands for itself.
bool pieceText(exParser &parser, const QString &piece, QString *text)
{
    if (isQuotedText(piece)) {
        *text = unquoted(piece);
    } else if (const Variable *number = parser.variables.number(piece)) {
        *text = startsWithCapital(piece) ? number->sourceText()
                                         : formatNumber(parser, number->number());
    } else if (const Variable *variable = parser.variables.text(piece)) {
        *text = variable->text;
    } else if (!callTextFunction(parser, piece, text)) {
        *text = piece;
        return piece.isEmpty();
    }
    return true;
}

/// A doubled comma is a comma of the text.
QStringList callArguments(const QString &text)
{
    if (text.isEmpty())
        return {};
    QStringList arguments = replaced(text, QLatin1String(",,"), kHeldComma).split(QLatin1Char(','));
    for (QString &argument : arguments)
        argument = replaced(argument, kHeldComma, QLatin1String(","));
    return arguments;
}

/// Where in the arguments of a function the texts before and after its own stand; -1 if it
/// takes none.
int surroundingsAt(TextFunction function)
{
    for (const TextFunction bare : {&fnAsk, &fnPops, &fnTparm, &fnVerbatim})
        if (function == bare)
            return -1;
    return function == &fnTruth ? 1 : 0;
}

QString surrounded(exParser &parser, const QString &text, const QStringList &arguments, int at)
{
    if (at < 0 || at >= arguments.size())
        return text;
    const QString before = textArgument(parser, arguments.at(at)); // its warning comes first
    return before + text +
           (at + 1 < arguments.size() ? textArgument(parser, arguments.at(at + 1)) : QString());
}

/// One line of at most 80 characters.
QString singleLine(QString text)
{
    // No character of the result comes from more than two.
    text.truncate(2 * kLongestCallResult + 2);
    for (const char *lineEnd : {"\n\r", "\r\n", "\n", "\r", "\t"})
        text = replaced(text, QLatin1String(lineEnd), QLatin1String(" "));
    if (text.size() > kLongestCallResult)
        text.truncate(kLongestCallResult - text.at(kLongestCallResult - 1).isHighSurrogate());
    return text;
}

/// Text functions are in the table as such, but for the one that acts in numbers too.
QString runTextFunction(exParser &parser, int opCode, const QStringList &arguments)
{
    if (opCode == SO_PUSHS) {
        FunctionCall call{parser, opCode, nullptr, 0, arguments};
        fnPushs(call);
        return QString();
    }
    const TextFunction function = std::get<TextFunction>(kOtDefinitions[opCode].implementation);
    TextCall call{parser, opCode, arguments};
    const QString text = function(call);
    return singleLine(surrounded(parser, text, arguments, surroundingsAt(function)));
}
} // namespace

QString withoutBlanks(const QString &text)
{
    QString kept;
    kept.reserve(text.size());
    bool inside = false;
    for (int i = 0; i < text.size(); ++i) {
        inside ^= isQuote(text, i);
        if (inside || text.at(i) != QLatin1Char(' '))
            kept += text.at(i);
    }
    return kept;
}

bool tokenizeText(const exParser &parser, const QString &text, const QStringList &listed,
                  QStringList *tokens, QList<int> *types)
{
    tokens->clear();
    types->clear();
    int start = 0; // of the token that is being read
    const auto endToken = [&](int end, int type) {
        if (end > start) {
            tokens->append(text.mid(start, end - start));
            types->append(type);
        }
        start = end;
    };
    int depth = 0;
    bool inside = false;
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (isQuote(text, i)) {
            endToken(inside ? i + 1 : i, inside ? kTextQuoted : kTextWord);
            inside = !inside;
        } else if (const TextTokenType type = typeOf(c); !inside && type != kTextWord) {
            endToken(i, kTextWord);
            endToken(i + 1, type);
            depth += (c == QLatin1Char('(')) - (c == QLatin1Char(')'));
        }
    }
    endToken(text.size(), inside ? kTextQuoted : kTextWord);
    for (int i = 0; i < tokens->size(); ++i)
        if (types->at(i) == kTextWord && listed.contains(tokens->at(i)))
            (*types)[i] = kTextListed;
        else if (types->at(i) == kTextWord &&
                 parser.operatorTable().opTextFunctions.contains(tokens->at(i)))
            (*types)[i] = kTextFunction;
    return depth == 0 && !inside;
}

QString evaluateText(exParser &parser, const QString &text)
{
    const QString dense = withoutBlanks(text);
    QStringList pieces;
    if (!splitPieces(parser, dense, &pieces)) {
        parser.report(QStringLiteral("e: string tokenize failure: %1").arg(shown(dense)));
        return QString();
    }
    QString joined, part;
    int warnings = 0;
    for (const QString &piece : qAsConst(pieces)) {
        if (!pieceText(parser, piece, &part) && ++warnings <= kMostWarnings)
            parser.report(QStringLiteral("w: not parsed: \"%1\"").arg(shown(piece)));
        if (joined.size() > kLongestText - part.size()) {
            parser.report(
                QStringLiteral("e: a text cannot have more than %1 characters").arg(kLongestText));
            return QString();
        }
        joined += part;
    }
    joined = replaced(joined, kHeldPlus, QLatin1String("+"));
    return replaced(joined, QLatin1String("\\\""), QLatin1String("\""));
}

bool fetchText(const exParser &parser, const QString &name, QString *text)
{
    const Variable *number = parser.variables.number(name);
    const Variable *variable = parser.variables.text(name);
    if (number && startsWithCapital(name))
        *text = number->sourceText();
    else if (variable)
        *text = variable->text;
    else if (number)
        *text = number->type == kVariableInt ? QString::number(number->intValue)
                                             : formatFetched(parser, number->value);
    return number || variable;
}

bool textOperand(const exParser &parser, const QString &text, QString *result)
{
    if (text.isEmpty() || fetchText(parser, text, result)) {
        if (text.isEmpty())
            result->clear();
        return true;
    }
    QString joined;
    const QStringList parts =
        replaced(text, QLatin1String("++"), kHeldDoublePlus).split(QLatin1Char('+'));
    for (const QString &part : parts) {
        QString value = part;
        fetchText(parser, part, &value);
        if (part.isEmpty() || joined.size() > kLongestText - value.size())
            return false;
        joined += value;
    }
    *result = replaced(joined, kHeldDoublePlus, QLatin1String("+"));
    return true;
}

bool callTextFunction(exParser &parser, const QString &piece, QString *result)
{
    const int open = piece.indexOf(QLatin1Char('('));
    if (piece.size() < 4 || open < 1 || !piece.endsWith(QLatin1Char(')')))
        return false;
    const OtTable &table = parser.operatorTable();
    const int opCode = table.lookup(piece.left(open).toLower());
    result->clear();
    if (table.opTextCodes.contains(opCode))
        *result = runTextFunction(parser, opCode,
                                  callArguments(piece.mid(open + 1, piece.size() - open - 2)));
    else
        parser.report(QStringLiteral("w: not parsed: \"%1\"").arg(shown(piece)));
    return true;
}

QString textArgument(exParser &parser, const QString &argument)
{
    QString text;
    if (isQuotedText(argument))
        return unquoted(argument);
    if (fetchText(parser, argument, &text))
        return text;
    if (!argument.isEmpty())
        parser.report(QStringLiteral("w: \"%1\" not parsed").arg(shown(argument)));
    return argument;
}

QString unquoted(const QString &text)
{
    return isQuotedText(text) ? text.mid(1, text.size() - 2) : text;
}

QString namedParameter(const exParser &parser, const QString &word)
{
    if (isQuotedText(word))
        return unquoted(word);
    const Variable *variable = parser.variables.text(word);
    return variable ? variable->text : word;
}

QStringList namedParameters(const exParser &parser, const QStringList &words)
{
    QStringList names;
    for (const QString &word : words)
        names << namedParameter(parser, word);
    return names;
}
