// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QSyntaxHighlighter>
#include <QTextCharFormat>

#include <array>

class OtTable;

/// What a piece of script text is, as the colours tell it.
enum class ScriptPart {
    Plain,
    Separator, ///< the colon between statements, and the signs of an assignment
    Sign,      ///< arithmetic, relations, parentheses, commas
    Control,   ///< if, else, endif, loop, while
    Function,  ///< of numbers, arrays and pictures
    TextWord,
    Operator, ///< the script name of an image operator
    Verb,
    Variable, ///< assigned in the text, or set by the program
    Number,
    Text, ///< in quotes
    Comment
};
constexpr int kScriptParts = int(ScriptPart::Comment) + 1;

/// The words of the language, by what they are.
class ScriptWords
{
public:
    /// The keywords of the table, and the names that stand at the start of a statement.
    void setLanguage(const OtTable &table, const QStringList &operatorNames,
                     const QStringList &verbNames);
    /// Variables that the program sets.
    void setKnownVariables(const QStringList &names);

    /// What a word inside an expression is; Plain if it is no keyword.
    ScriptPart keyword(const QString &word) const { return keywords.value(word); }
    /// What a word at the start of a statement is; Plain if it is neither operator nor verb.
    ScriptPart opening(const QString &word) const { return openings.value(word); }
    bool isKnownVariable(const QString &name) const { return known.contains(name.toLower()); }
    /// All of them, sorted, for completion.
    QStringList all() const;

private:
    QHash<QString, ScriptPart> keywords, openings;
    QSet<QString> known; ///< in lower case
    QStringList knownNames;
};

/// A piece of one line.
struct ScriptSpan {
    int start, length;
    ScriptPart part;
};

/// Splits one line of a script as the runner does, statements at single colons and words at
/// the signs of the language, and tells what each piece is. `variables` are names in lower
/// case that the text assigns.
QVector<ScriptSpan> scriptSpans(const QString &line, const ScriptWords &words,
                                const QSet<QString> &variables);

/// The names that a script assigns with = or ~, in the order in which they come.
QStringList assignedNames(const QString &text);

/// Colours a script in the colours that suit a light or a dark background.
class ScriptHighlighter : public QSyntaxHighlighter
{
    Q_OBJECT
public:
    explicit ScriptHighlighter(QTextDocument *document);

    void setWords(const ScriptWords &languageWords);
    /// Names in lower case; colours the text anew if they are others than before.
    void setVariables(const QSet<QString> &names);
    void setDark(bool dark);
    QColor colour(ScriptPart part) const;

protected:
    void highlightBlock(const QString &line) override;

private:
    ScriptWords words;
    QSet<QString> variables;
    std::array<QTextCharFormat, kScriptParts> formats;
    bool isDark = false;
};
