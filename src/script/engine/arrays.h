// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

#include <cstdint>
#include <list>
#include <vector>

/// More elements than this no array gets.
constexpr int64_t kMostElements = int64_t(1) << 24;

/// A named array of numbers, row by row.
struct ScriptArray {
    QString name; ///< in lower case
    bool dimensioned = false;
    int32_t rows = 0, cols = 0;
    std::vector<double> values;
    QStringList strings; ///< cleared with the array

    int32_t count() const { return int32_t(values.size()); }
};

/// The arrays of a run, by names of any case. Pointers hold until clear().
class ArrayList
{
public:
    /// Null if there is none.
    ScriptArray *find(const QString &name);
    /// The array of that name, emptied if it was there. Null for an empty name.
    ScriptArray *create(const QString &name);
    void clear() { arrays.clear(); }
    int count() const { return int(arrays.size()); }

private:
    std::list<ScriptArray> arrays;
};
