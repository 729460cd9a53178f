// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QString>

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

/// What a variable holds.
enum VariableType : int32_t { kVariableInt = 1, kVariableDouble = 2, kVariableText = 3 };

struct Variable {
    double value = 0;
    int32_t intValue = 0; ///< of the integer type
    int32_t type = kVariableDouble;
    QString text;   ///< of a string variable
    QString source; ///< the expression that a number was assigned by; null: the number itself
    QString spare;
    QString name; ///< in lower case

    double number() const { return type == kVariableInt ? intValue : value; }
    /// The text that a number was assigned by.
    QString sourceText() const;
};

/// Numbers and strings under one roof. A name can stand twice, once per kind.
class VariableStore
{
public:
    /// By a name of any case; null if there is none of the kind.
    Variable *number(QStringView name) const { return find(numbers, name); }
    Variable *text(QStringView name) const { return find(texts, name); }
    /// The record of a name in lower case, made if it is missing.
    Variable *makeNumber(const QString &lowName);
    Variable *makeText(const QString &lowName);
    void clear();
    /// Records in the order of their making.
    const std::vector<std::unique_ptr<Variable>> &all() const { return records; }
    /// Changes whenever a record is made or deleted: tokens read before may mean another thing.
    uint64_t generation() const { return changes; }
    /// Whether a name of a single sign stands among them, such as "+".
    bool anyBreakName() const { return signNames; }

private:
    struct Hash {
        using is_transparent = void;
        size_t operator()(QStringView name) const { return qHash(name); }
        size_t operator()(const QString &name) const { return qHash(QStringView(name)); }
    };
    struct Equal {
        using is_transparent = void;
        bool operator()(QStringView a, QStringView b) const { return a == b; }
    };
    using Index = std::unordered_map<QString, Variable *, Hash, Equal>;

    static Variable *find(const Index &index, QStringView name);
    Variable *make(Index *index, const QString &lowName, VariableType type);

    std::vector<std::unique_ptr<Variable>> records;
    Index numbers, texts;
    uint64_t changes = 1;
    bool signNames = false;
};
