// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "script/engine/arrays.h"
#include "script/engine/genstack.h"
#include "script/engine/optable.h"
#include "script/engine/program.h"
#include "script/engine/scripthost.h"
#include "script/engine/stacks.h"
#include "script/engine/variables.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

class colorblending;
class image;

/// The images that functions of the language reach; all borrowed, all may be null.
struct ScriptImages {
    image *target = nullptr; ///< the current image
    image *origin = nullptr;
    image *source = nullptr; ///< newest undo entry of the target at the start of the run
};

/// The expression engine of the script language: one text becomes one number, in a single
/// pass from left to right and without precedence. It also holds what a run of statements
/// shares: variables, arrays, the user stacks, and the one channel for messages.
///
/// One object belongs to whoever runs the program; it works on the main thread alone, and
/// evaluations nest, since a user function runs statements.
class exParser
{
public:
    exParser();
    ~exParser();
    exParser(const exParser &) = delete;
    exParser &operator=(const exParser &) = delete;

    /// Whether memory allowed the operator table.
    bool ready() const { return table.ready(); }

    // --- Tokens ---------------------------------------------------------------------
    /// Splits one expression; both lists are filled to the same length.
    void tokenize(const QString &text, QStringList *tokens, QList<int32_t> *opCodes) const;
    int lookupKeyword(const QString &word, bool trace = false) const;
    /// The class of a row, 0 beyond the table.
    int classOf(int opCode) const;
    QString soNameOf(int opCode) const;
    /// The usage of a row in the green mark-up of reports.
    QString usageOf(int opCode) const;
    /// A whole number of the form 0x1F: the letter tells the base.
    static double parseRadixNumber(const QString &text, bool *ok);

    // --- Evaluation -----------------------------------------------------------------
    /// The value of an expression. *ok is false where none was reached; leftovers on the
    /// stacks are no error.
    double evaluate(const QString &text, bool *ok);
    /// The same of a text that is evaluated again and again: its tokens are kept.
    double evaluate(ExpressionProgram *program, bool *ok);
    /// A unary or dual function by its code.
    double executeFunction(int opCode, double x, double y);
    /// Words of the last evaluation that nothing took: mistyped, most likely.
    const QStringList &unknownWords() const { return leftWords; }

    // --- Variables ------------------------------------------------------------------
    /// Assigns the value of an expression. False, reported and with the variable as it
    /// was, for an impossible name or an expression without a value.
    bool setNumber(const QString &name, const QString &text);
    bool setNumber(const QString &name, ExpressionProgram *program);
    /// The same with a value that stands.
    bool setNumber(const QString &name, double value);
    /// As setNumber for a text of several parts with ":" between them: the first is the
    /// value, each later "left=right" an assignment of its own.
    bool setNumbers(const QString &name, const QString &text);
    /// Stores a string variable. False for an empty name.
    bool setText(const QString &name, const QString &text);
    /// The record of that name, which is put into lower case in place; or null.
    Variable *findNumber(QString &name);
    Variable *findText(QString &name);
    double getNumber(const QString &name, bool *ok) const;
    /// The value of a numeric variable, or `fallback` if there is none.
    double numberOr(const QString &name, double fallback) const;
    void clearVariables();
    VariableStore variables;

    // --- Messages -------------------------------------------------------------------
    /// The one channel for messages, silent while the debug flag is off. "e:" and "w:"
    /// and bare capitals mark up the text as the debug window shows it.
    void report(const QString &text);
    /// Reports a failed argument check; always 0, the result of such a call.
    double badParameters(int opCode, int tag = -1);
    bool debug = false;             ///< the debug flag, which the variable of that name sets
    bool showParameterTags = false; ///< a failed check tells its number
    ScriptLog *log = nullptr;       ///< borrowed
    int statement = 0;              ///< index of the running statement, presets first
    int presetStatements = 0;
    int line = 0; ///< of the running statement, 0 if it is not known

    // --- What a run of statements shares ----------------------------------------------
    ArrayList arrays;
    std::vector<double> userNumbers; ///< of push and pop
    QStringList userStrings;         ///< of pushs and pops
    std::vector<double> dparms;      ///< of the present user function
    QStringList tparms;
    ScriptImages images;
    colorblending *blending = nullptr;      ///< borrowed
    ScriptDispatcher *dispatcher = nullptr; ///< borrowed
    int32_t testFlag = 0;                   ///< passed on to the statements of user functions

    /// Nested user functions run at most so deep.
    static constexpr int kDeepestNesting = 200;
    int nesting() const { return depth; }
    /// Frees the stacks that nested evaluations left for the next ones.
    void releaseSpares();

    const OtTable &operatorTable() const { return table; }
    /// Coloured forms of ( ) " , + ~ : for the script editor, in this order.
    const QStringList &colouredMarks() const { return marks; }

private:
    class Machine;
    friend class Machine;

    void scanProgram(ExpressionProgram *program) const;
    void classifyProgram(ExpressionProgram *program, bool joined) const;
    void tokenizeProgram(ExpressionProgram *program) const;
    void traceTokens(const QStringList &tokens, const QList<int32_t> &opCodes) const;
    int classify(const ExpressionProgram &program, ProgramToken *result, int previous) const;
    bool checkName(const QString &name, const QString &text);
    bool storeNumber(const QString &lowName, double value, const QString &source);
    bool prepareProgram(ExpressionProgram *program, double *value);
    double runProgram(ExpressionProgram *program, bool *ok);

    OtTable table;
    QStringList marks;
    QStringList leftWords;
    int pdepth = 0; ///< parenthesis depth, shared by nested evaluations
    int depth = 0;  ///< evaluations under way
    std::vector<std::unique_ptr<EvaluationStacks>> stacks;
    genStack<int> unused;
};

/// The parser of this program, or null before it exists: the first one alive.
exParser *scriptParser();
