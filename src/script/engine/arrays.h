// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <list>
#include <vector>

class exParser;

/// More elements than this no array gets.
constexpr int64_t kMostElements = int64_t(1) << 24;
/// And so many all of them together.
constexpr int64_t kMostElementsTogether = kMostElements * 4;

/// A named array of numbers, row by row.
struct ScriptArray {
    QString name; ///< in lower case
    bool dimensioned = false;
    int32_t rows = 0, cols = 0;
    std::vector<double> values;
    QStringList strings; ///< cleared with the array

    int32_t count() const { return int32_t(values.size()); }
    /// Makes it one row of all its elements, as it is after each change of its size.
    void lineUp();
};

/// The arrays of a run, by names of any case. Pointers hold until clear().
class ArrayList
{
public:
    /// Null if there is none.
    ScriptArray *find(const QString &name) const { return index.value(name.toLower()); }
    /// The array of that name, emptied if it was there. Null for an empty name.
    ScriptArray *create(const QString &name);
    /// Makes `elements` hold `count` numbers, new ones 0. False, with them as they were, for
    /// more than arrays may have or if memory is short.
    bool resize(std::vector<double> *elements, int64_t count) const;
    void clear();
    int count() const { return int(arrays.size()); }

private:
    std::list<ScriptArray> arrays;
    QHash<QString, ScriptArray *> index;
};

// --- What functions of arrays have in common: a failure is reported, then null or false ------

/// The array of that name.
ScriptArray *lookUpArray(exParser &parser, const QString &name);
/// Makes the elements of the array `name`, or such as it is to get, so many.
bool resizeArray(exParser &parser, const QString &name, std::vector<double> *elements,
                 int64_t count);
/// Creates or refills an array with one row of elements.
ScriptArray *storeArray(exParser &parser, const QString &name, std::vector<double> elements);
