// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/variables.h"

#include <QVarLengthArray>

QString Variable::sourceText() const
{
    return source.isNull() ? QString::number(number(), 'g', 15) : source;
}

Variable *VariableStore::find(const Index &index, QStringView name)
{
    const auto entry = [&index](QStringView lowName) {
        const auto found = index.find(lowName);
        return found == index.end() ? nullptr : found->second;
    };
    // Most names are short and plain: no text of the heap is needed to look for them.
    QVarLengthArray<QChar, 64> low(int(name.size()));
    for (qsizetype i = 0; i < name.size(); ++i) {
        const ushort c = name[i].unicode();
        if (c >= 128)
            return entry(name.toString().toLower());
        low[int(i)] = QChar(c >= 'A' && c <= 'Z' ? ushort(c + 32) : c);
    }
    return entry(QStringView(low.constData(), low.size()));
}

Variable *VariableStore::make(Index *index, const QString &lowName, VariableType type)
{
    auto record = std::make_unique<Variable>();
    record->name = lowName;
    record->type = type;
    Variable *made = record.get();
    records.push_back(std::move(record));
    index->emplace(lowName, made);
    ++changes;
    signNames = signNames || (lowName.size() == 1 && !lowName[0].isLetterOrNumber());
    return made;
}

Variable *VariableStore::makeNumber(const QString &lowName)
{
    Variable *found = find(numbers, lowName);
    return found ? found : make(&numbers, lowName, kVariableDouble);
}

Variable *VariableStore::makeText(const QString &lowName)
{
    Variable *found = find(texts, lowName);
    return found ? found : make(&texts, lowName, kVariableText);
}

void VariableStore::clear()
{
    records.clear();
    numbers.clear();
    texts.clear();
    signNames = false;
    ++changes;
}
