// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/arrays.h"

#include "script/engine/exparser.h"

#include <new>

namespace
{
/// Arrays of fewer elements are not worth adding up.
constexpr int64_t kSmall = 65536;
} // namespace

void ScriptArray::lineUp()
{
    rows = values.empty() ? 0 : 1;
    cols = count();
    dimensioned = !values.empty();
}

ScriptArray *ArrayList::create(const QString &name)
{
    if (name.isEmpty())
        return nullptr;
    const QString lowName = name.toLower();
    ScriptArray *&array = index[lowName];
    if (!array)
        array = &arrays.emplace_back();
    *array = ScriptArray();
    array->name = lowName;
    return array;
}

bool ArrayList::resize(std::vector<double> *elements, int64_t count) const
{
    if (count > kMostElements)
        return false;
    if (count > kSmall) {
        int64_t together = count;
        for (const ScriptArray &array : arrays)
            together += &array.values == elements ? 0 : array.count();
        if (together > kMostElementsTogether)
            return false;
    }
    try {
        elements->resize(size_t(count));
    } catch (const std::bad_alloc &) {
        return false;
    }
    return true;
}

void ArrayList::clear()
{
    index.clear();
    arrays.clear();
}

ScriptArray *lookUpArray(exParser &parser, const QString &name)
{
    ScriptArray *array = parser.arrays.find(name);
    if (!array)
        parser.report(QStringLiteral("e: array \"R%1ER\" does not exist").arg(name.toLower()));
    return array;
}

bool resizeArray(exParser &parser, const QString &name, std::vector<double> *elements,
                 int64_t count)
{
    if (parser.arrays.resize(elements, count))
        return true;
    parser.report(QStringLiteral("e: array \"G%1EG\" cannot have %2 elements; an array has at "
                                 "most %3, and all together %4")
                      .arg(name, QString::number(count), QString::number(kMostElements),
                           QString::number(kMostElementsTogether)));
    return false;
}

ScriptArray *storeArray(exParser &parser, const QString &name, std::vector<double> elements)
{
    ScriptArray *array = parser.arrays.create(name);
    if (!array) {
        parser.report(QStringLiteral("e: cannot create an array with name of \"\""));
        return nullptr;
    }
    array->values = std::move(elements);
    array->lineUp();
    return array;
}
