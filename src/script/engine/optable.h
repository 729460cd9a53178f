// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

#include <cstdint>
#include <variant>

class exParser;

/// What a token is for the stack machine.
enum OtClass : int32_t {
    OT_UNDEF = 0,         ///< unknown word; becomes a named parameter
    OT_UNARY = 1,         ///< function of exactly one number
    OT_INDETERMINATE = 2, ///< acts as a subtraction; no row has this class
    OT_DUAL = 3,          ///< binary infix operator
    OT_CONDITIONAL = 4,   ///< if, else, endif
    OT_MULTI = 5,         ///< function whose numbers of parameters the count word gives
    OT_OPENP = 6,
    OT_CLOSEP = 7,
    OT_VALUE = 8,
    OT_COMMA = 9,
    OT_VAR = 11,       ///< numeric variable
    OT_QVAR = 12,      ///< string variable
    OT_IMMEDIATE = 14, ///< the unary minus: acts at once on the number that follows
    OT_TFUNC = 15,     ///< text function, illegal in numeric context
    OT_ZIP = 16        ///< function of no parameters
};

/// Codes that the engine itself speaks of; each is the index of its row.
enum OtCode : int32_t {
    SO_ADD = 4,
    SO_COMMA = 54,
    SO_DECLARE = 69,
    SO_DIV = 70,
    SO_DUB = 76,
    SO_ELSE = 77,
    SO_ENDIF = 78,
    SO_EXISTS = 80,
    SO_FUNC = 93,
    SO_FWIDTH = 94,
    SO_IF = 100,
    SO_LOOPIN = 115,
    SO_LOOPOUT = 116,
    SO_LPAR = 117,
    SO_MUL = 136,
    SO_NEGATE2 = 140,
    SO_NOP = 141,
    SO_NOTEXISTS = 142,
    SO_PUSHS = 167,
    SO_QVAR = 168,
    SO_SUB = 189,
    SO_VAR = 198,
    SO_XYZZY = 205
};

constexpr int kOtRows = 206;
constexpr int kRelationalPriority = 3;

/// One call as a function of several parameters sees it.
struct FunctionCall {
    exParser &parser;
    int opCode;
    const double *a;          ///< the numbers, in written order
    int count;                ///< how many
    const QStringList &names; ///< the named parameters, in written order
};

/// One call of a text function.
struct TextCall {
    exParser &parser;
    int opCode;
    const QStringList &raw; ///< the arguments as they are written
};

using UnaryFunction = double (*)(exParser &parser, double x);
using DualFunction = double (*)(exParser &parser, double x, double y);
using ZipFunction = double (*)(exParser &parser);
using MultiFunction = double (*)(FunctionCall &call);
using TextFunction = QString (*)(TextCall &call);
using OtImplementation = std::variant<std::monostate, UnaryFunction, DualFunction, ZipFunction,
                                      MultiFunction, TextFunction>;

/// All that there is to know of one word of the language.
struct OtDefinition {
    int32_t opCode;
    OtClass opClass;
    int32_t opPriority; ///< read by nothing: the language has no precedence
    const char *keyword;
    const char *usage;
    const char *soName;
    int32_t count; ///< low four bits and next four: numbers taken; above: named parameters
    OtImplementation implementation;
    const char *explanation; ///< one line for the reference
};
extern const OtDefinition kOtDefinitions[kOtRows];

/// The two numbers of numeric arguments and the number of named ones that a count word means.
struct ParameterCount {
    int first, second, named;
};
ParameterCount parameterCount(int32_t countWord);

/// The name of a class, for traces; "OT_? ==> %1" for one that is not listed.
QString otNameOf(int opClass);

constexpr int kOtText = 66;

/// A row as the parser holds it.
struct OtRow {
    int32_t opCode, opClass, opPriority;
    char keyword[kOtText], usage[kOtText], soName[kOtText], otName[kOtText];
};

/// The operator table in tracked memory, with the word lists that are made while it is filled.
class OtTable
{
public:
    OtTable();
    ~OtTable();
    OtTable(const OtTable &) = delete;
    OtTable &operator=(const OtTable &) = delete;

    /// Whether memory allowed the table.
    bool ready() const { return rows && counts; }
    /// Row `opCode`, or null beyond the table.
    const OtRow *row(int opCode) const;
    int32_t countWord(int opCode) const;
    /// The index of the row with this keyword, case-sensitively; SO_NOP if there is none.
    int lookup(QStringView word) const;

    QStringList opPunctuation, opArithmetic, opConditional, opRelational, opFunctions,
        opTextFunctions;
    QList<int32_t> opTextCodes;

private:
    void addToLists(const OtDefinition &row);
    void addStackFunction();
    void addToBuckets(const OtDefinition &row);

    OtRow *rows = nullptr;
    int32_t *counts = nullptr;
    static constexpr uint32_t kBuckets = 1024; // a power of two, several times the rows
    static uint32_t bucketOf(QStringView word);
    int16_t buckets[kBuckets]; ///< rows by the hash of their keywords, -1 for none
};
