// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/run/hints.h"

#include "operators/base/operatortable.h"
#include "operators/base/opwrapper.h"
#include "script/engine/exparser.h"
#include "script/run/verbs.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace
{
constexpr int kLongestWord = 64; ///< longer ones are no slips of the hand
constexpr int kShortWord = 4;    ///< up to here one slip is the most
constexpr int kMiddleWord = 7;   ///< up to here two are

int mostSlips(int length)
{
    if (length <= kShortWord)
        return 1;
    return length <= kMiddleWord ? 2 : 3;
}

/// Letters to add, drop, change or swap with their neighbour to make one word the other.
int distance(const QString &one, const QString &other)
{
    const int width = other.size() + 1;
    std::vector<int> before, above(size_t(width), 0), row(size_t(width), 0);
    std::iota(above.begin(), above.end(), 0);
    for (int i = 1; i <= one.size(); ++i) {
        row[0] = i;
        for (int j = 1; j < width; ++j) {
            const size_t at = size_t(j);
            const int change = one[i - 1] == other[j - 1] ? 0 : 1;
            row[at] = std::min({above[at] + 1, row[at - 1] + 1, above[at - 1] + change});
            if (i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1])
                row[at] = std::min(row[at], before[at - 2] + 1);
        }
        before = above;
        above = row;
    }
    return above.back();
}
} // namespace

bool isPlainWord(const QString &text)
{
    return !text.isEmpty() && text[0].isLetter() &&
           std::all_of(text.begin(), text.end(),
                       [](QChar c) { return c.isLetterOrNumber() || c == QLatin1Char('_'); });
}

QStringList knownWords(const exParser &parser, const OperatorTable *table)
{
    QStringList words = verbNames();
    for (const OtDefinition &row : kOtDefinitions)
        if (isPlainWord(QString::fromLatin1(row.keyword)))
            words << QString::fromLatin1(row.keyword);
    if (table)
        for (const OpWrapper *op : table->operators())
            words << op->scriptName;
    for (const auto &variable : parser.variables.all())
        words << variable->name;
    return words;
}

QString nearestWord(const QStringList &known, const QString &word)
{
    const QString low = word.toLower();
    if (low.size() > kLongestWord)
        return {};
    QString nearest;
    int best = mostSlips(low.size()) + 1;
    for (const QString &candidate : known) {
        // A word shares more than its slips with what was meant.
        if (std::abs(candidate.size() - low.size()) >= best || candidate.size() <= 1)
            continue;
        const int slips = distance(low, candidate);
        if (slips < best && slips < candidate.size()) {
            best = slips;
            nearest = candidate;
        }
    }
    return nearest;
}
