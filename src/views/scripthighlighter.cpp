// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/scripthighlighter.h"

#include "script/engine/exparser.h"

#include <QColor>
#include <QRegularExpression>
#include <QVector>

#include <algorithm>

namespace
{
/// The colours on a light and on a dark ground; none of them is told apart by hue alone.
struct PartStyle {
    const char *onLight, *onDark;
    bool bold = false, italic = false;
};
constexpr PartStyle kStyles[kScriptParts] = {
    {"#000000", "#e6e6e6"},              // Plain: the palette's own is used instead
    {"#8a3c00", "#ffb27a", true},        // Separator
    {"#5c5c5c", "#b0b0b0"},              // Sign
    {"#7b1fa2", "#d9a6ff", true},        // Control
    {"#0b4fa8", "#82b8ff"},              // Function
    {"#00696b", "#6fd8d2"},              // TextFunction
    {"#7a4a00", "#ffce6b", true},        // Operator
    {"#99004d", "#ff8fc0", true},        // Verb
    {"#1d2b6b", "#c3cfff", false, true}, // Variable
    {"#9c1c00", "#ff9d80"},              // Number
    {"#1b6e1b", "#97dd8b"},              // Text
    {"#6d6d6d", "#9a9a9a", false, true}, // Comment
};

bool isSign(QChar c)
{
    return QStringLiteral("+-*/%(),<>!=~").contains(c);
}

bool isName(const QString &word)
{
    static const QRegularExpression form(QStringLiteral("^[^\\d\\W]\\w*$"),
                                         QRegularExpression::UseUnicodePropertiesOption);
    return form.match(word).hasMatch();
}

bool isNumber(const QString &word)
{
    bool ok = false;
    word.toDouble(&ok);
    if (!ok)
        exParser::parseRadixNumber(word, &ok);
    return ok;
}

/// Where the statement that begins at `from` ends: at a single colon, in quotes too.
int statementEnd(const QString &line, int from)
{
    for (int i = from; i < line.size(); ++i) {
        if (line.at(i) != QLatin1Char(':'))
            continue;
        if (i + 1 < line.size() && line.at(i + 1) == QLatin1Char(':'))
            ++i; // a literal colon
        else
            return i;
    }
    return line.size();
}

/// The words of one statement, as they are met from left to right.
class StatementReader
{
public:
    StatementReader(const QString &text, const ScriptWords &language, const QSet<QString> &names,
                    QVector<ScriptSpan> *result)
        : line(text), words(language), variables(names), spans(result)
    {
    }

    void read(int from, int to)
    {
        while (from < to && line.at(from) == QLatin1Char(' '))
            ++from;
        if (from == to)
            return;
        if (line.at(from) == QLatin1Char('#')) {
            add(from, to, ScriptPart::Comment);
            return;
        }
        readRest(readOpening(from, to), to);
    }

private:
    void add(int from, int to, ScriptPart part)
    {
        if (to > from && part != ScriptPart::Plain)
            spans->append({from, to - from, part});
    }

    /// What stands only at the start of a statement. Returns where the rest begins.
    int readOpening(int from, int to)
    {
        int end = line.indexOf(QLatin1Char(' '), from);
        end = end < 0 ? to : std::min(end, to);
        const QString first = line.mid(from, end - from);
        ScriptPart part = words.opening(first);
        // The runner looks no further than these letters, so "elsewhere=1" is an "else".
        if (first.startsWith(QLatin1String("else")) || first.startsWith(QLatin1String("endif")))
            part = ScriptPart::Control;
        if (part == ScriptPart::Plain) {
            int name = from;
            while (name < to && !isSign(line.at(name)) && line.at(name) != QLatin1Char(' '))
                ++name;
            int sign = name;
            while (sign < to && line.at(sign) == QLatin1Char(' '))
                ++sign;
            if (sign == to || !isName(line.mid(from, name - from)) || !assignsAt(sign))
                return from;
            add(from, name, ScriptPart::Variable);
            return name;
        }
        add(from, end, part);
        return end;
    }

    bool assignsAt(int i) const
    {
        if (line.at(i) == QLatin1Char('~'))
            return true;
        return line.at(i) == QLatin1Char('=') &&
               (i + 1 == line.size() || line.at(i + 1) != QLatin1Char('='));
    }

    void readRest(int from, int to)
    {
        for (int i = from; i < to;) {
            const QChar c = line.at(i);
            int end = i + 1;
            if (c == QLatin1Char('"')) {
                end = line.indexOf(c, i + 1) + 1;
                end = end <= 0 || end > to ? to : end;
                add(i, end, ScriptPart::Text);
            } else if (isSign(c)) {
                end = readSign(i, to);
            } else if (c == QLatin1Char(':')) {
                end = std::min(i + 2, to); // a literal one: single ones end the statement
                add(i, end, ScriptPart::Sign);
            } else if (c != QLatin1Char(' ')) {
                end = readWord(i, to);
            }
            i = end;
        }
    }

    int readSign(int i, int to)
    {
        const bool joins = QStringLiteral("<>!=").contains(line.at(i)) && i + 1 < to &&
                           line.at(i + 1) == QLatin1Char('=');
        const int end = joins ? i + 2 : i + 1;
        add(i, end, !joins && assignsAt(i) ? ScriptPart::Separator : ScriptPart::Sign);
        return end;
    }

    int readWord(int i, int to)
    {
        int end = i;
        while (end < to && !isSign(line.at(end)) && line.at(end) != QLatin1Char(' ') &&
               line.at(end) != QLatin1Char('"') && line.at(end) != QLatin1Char(':'))
            ++end;
        const QString word = line.mid(i, end - i);
        ScriptPart part = ScriptPart::Plain;
        if (isNumber(word))
            part = ScriptPart::Number;
        else if (variables.contains(word.toLower()) || words.isKnownVariable(word))
            part = ScriptPart::Variable; // which hides a keyword of that name
        else
            part = words.keyword(word);
        add(i, end, part);
        return end;
    }

    const QString &line;
    const ScriptWords &words;
    const QSet<QString> &variables;
    QVector<ScriptSpan> *spans;
};
} // namespace

void ScriptWords::setLanguage(const OtTable &table, const QStringList &operatorNames,
                              const QStringList &verbNames)
{
    keywords.clear();
    openings.clear();
    for (const QString &word : table.opFunctions)
        keywords.insert(word, ScriptPart::Function);
    for (const QString &word : table.opTextFunctions)
        keywords.insert(word, ScriptPart::TextWord);
    for (const QString &word : table.opConditional)
        keywords.insert(word, ScriptPart::Control);
    for (const int code : {int(SO_LOOPIN), int(SO_LOOPOUT)})
        if (const OtRow *row = table.row(code))
            keywords.insert(QString::fromLatin1(row->keyword), ScriptPart::Control);
    for (const int code : {int(SO_NEGATE2), int(SO_NOP), int(SO_XYZZY)})
        if (const OtRow *row = table.row(code))
            keywords.remove(QString::fromLatin1(row->keyword)); // no word that people write
    for (const QString &word : operatorNames)
        openings.insert(word, ScriptPart::Operator);
    for (const QString &word : verbNames)
        openings.insert(word, ScriptPart::Verb);
}

void ScriptWords::setKnownVariables(const QStringList &names)
{
    knownNames = names;
    known.clear();
    for (const QString &name : names)
        known.insert(name.toLower());
}

QStringList ScriptWords::all() const
{
    QStringList list = keywords.keys() + openings.keys() + knownNames;
    list.erase(std::remove_if(list.begin(), list.end(),
                              [](const QString &word) { return word.size() < 2; }),
               list.end());
    list.removeDuplicates();
    list.sort(Qt::CaseInsensitive);
    return list;
}

QVector<ScriptSpan> scriptSpans(const QString &line, const ScriptWords &words,
                                const QSet<QString> &variables)
{
    QVector<ScriptSpan> spans;
    StatementReader reader(line, words, variables, &spans);
    for (int from = 0; from < line.size();) {
        const int end = statementEnd(line, from);
        reader.read(from, end);
        if (end < line.size())
            spans.append({end, 1, ScriptPart::Separator});
        from = end + 1;
    }
    return spans;
}

QStringList assignedNames(const QString &text)
{
    static const QRegularExpression assignment(QStringLiteral("^ *([^\\d\\W]\\w*) *(?:~|=(?!=))"),
                                               QRegularExpression::UseUnicodePropertiesOption);
    QStringList names;
    QSet<QString> seen;
    const auto lines = text.splitRef(QLatin1Char('\n'));
    for (const QStringRef &part : lines) {
        const QString line = part.toString();
        for (int from = 0; from < line.size();) {
            const int end = statementEnd(line, from);
            const auto match = assignment.match(line.mid(from, end - from));
            const QString name = match.captured(1);
            if (match.hasMatch() && !seen.contains(name.toLower())) {
                seen.insert(name.toLower());
                names << name;
            }
            from = end + 1;
        }
    }
    return names;
}

ScriptHighlighter::ScriptHighlighter(QTextDocument *document) : QSyntaxHighlighter(document)
{
    setDark(false);
}

void ScriptHighlighter::setWords(const ScriptWords &languageWords)
{
    words = languageWords;
    rehighlight();
}

void ScriptHighlighter::setVariables(const QSet<QString> &names)
{
    if (names == variables)
        return;
    variables = names;
    rehighlight();
}

void ScriptHighlighter::setDark(bool dark)
{
    isDark = dark;
    for (int i = 0; i < kScriptParts; ++i) {
        formats[size_t(i)] = QTextCharFormat();
        formats[size_t(i)].setForeground(colour(ScriptPart(i)));
        formats[size_t(i)].setFontWeight(kStyles[i].bold ? QFont::Bold : QFont::Normal);
        formats[size_t(i)].setFontItalic(kStyles[i].italic);
    }
    rehighlight();
}

QColor ScriptHighlighter::colour(ScriptPart part) const
{
    const PartStyle &style = kStyles[int(part)];
    return QColor(QLatin1String(isDark ? style.onDark : style.onLight));
}

void ScriptHighlighter::highlightBlock(const QString &line)
{
    for (const ScriptSpan &span : scriptSpans(line, words, variables))
        setFormat(span.start, span.length, formats[size_t(span.part)]);
}
