// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/optable.h"

#include "core/memory.h"

#include <algorithm>
#include <cstring>

namespace
{
constexpr int kTableRows = 208; // two spare rows at the end

const char *className(int opClass)
{
    switch (opClass) {
    case OT_UNDEF:
        return "OT_UNDEF";
    case OT_UNARY:
        return "OT_UNARY";
    case OT_INDETERMINATE:
        return "OT_INDETERMINATE";
    case OT_DUAL:
        return "OT_DUAL";
    case OT_CONDITIONAL:
        return "OT_CONDITIONAL";
    case OT_MULTI:
        return "OT_MULTI";
    case OT_OPENP:
        return "OT_OPENP";
    case OT_CLOSEP:
        return "OT_CLOSEP";
    case OT_VALUE:
        return "OT_VALUE";
    case OT_COMMA:
        return "OT_COMMA";
    case OT_VAR:
        return "OT_VAR";
    case OT_QVAR:
        return "OT_QVAR";
    case OT_IMMEDIATE:
        return "OT_IMMEDIATE";
    case OT_TFUNC:
        return "OT_TFUNC";
    case OT_ZIP:
        return "OT_ZIP";
    default:
        return nullptr;
    }
}

void copyText(char (&field)[kOtText], const char *text)
{
    std::strncpy(field, text, kOtText - 1);
}

bool sameWord(QStringView word, const char *keyword)
{
    qsizetype i = 0;
    while (i < word.size() && keyword[i] && word[i].unicode() == uchar(keyword[i]))
        ++i;
    return i == word.size() && !keyword[i];
}
} // namespace

ParameterCount parameterCount(int32_t countWord)
{
    return {countWord & 15, (countWord >> 4) & 15, countWord >> 8};
}

QString otNameOf(int opClass)
{
    const char *name = className(opClass);
    return name ? QString::fromLatin1(name) : QStringLiteral("OT_? ==> %1").arg(opClass);
}

OtTable::OtTable()
    : rows(static_cast<OtRow *>(ucalloc(kTableRows, sizeof(OtRow), "exParser operator table"))),
      counts(static_cast<int32_t *>(
          ucalloc(kTableRows, sizeof(int32_t), "exParser operator pCount table")))
{
    std::fill(std::begin(buckets), std::end(buckets), int16_t(-1));
    if (!ready())
        return;
    for (const OtDefinition &definition : kOtDefinitions) {
        OtRow &row = rows[definition.opCode];
        row.opCode = definition.opCode;
        row.opClass = definition.opClass;
        row.opPriority = definition.opPriority;
        copyText(row.keyword, definition.keyword);
        copyText(row.usage, definition.usage);
        copyText(row.soName, definition.soName);
        copyText(row.otName, className(definition.opClass));
        counts[definition.opCode] = definition.count;
        if (*definition.keyword)
            addToBuckets(definition);
        addToLists(definition);
    }
    addStackFunction();
}

uint32_t OtTable::bucketOf(QStringView word)
{
    uint32_t hash = 2166136261u; // FNV-1a, over characters
    for (const QChar c : word)
        hash = (hash ^ c.unicode()) * 16777619u;
    return (hash ^ (hash >> 16)) % kBuckets;
}

void OtTable::addToBuckets(const OtDefinition &row)
{
    uint32_t bucket = bucketOf(QString::fromLatin1(row.keyword));
    while (buckets[bucket] >= 0)
        bucket = (bucket + 1) % kBuckets;
    buckets[bucket] = int16_t(row.opCode);
}

OtTable::~OtTable()
{
    upfree(&counts);
    upfree(&rows);
}

void OtTable::addToLists(const OtDefinition &row)
{
    const QString keyword = QString::fromLatin1(row.keyword);
    switch (row.opClass) {
    case OT_OPENP:
    case OT_CLOSEP:
    case OT_COMMA:
        opPunctuation += keyword;
        break;
    case OT_CONDITIONAL:
        opConditional += keyword;
        break;
    case OT_DUAL:
        (row.opPriority == kRelationalPriority ? opRelational : opArithmetic) += keyword;
        break;
    case OT_TFUNC:
        opTextFunctions += keyword;
        opTextCodes += row.opCode;
        opFunctions += keyword;
        break;
    case OT_UNARY:
    case OT_MULTI:
    case OT_ZIP:
        opFunctions += keyword;
        break;
    default:
        break;
    }
}

/// `pushs` counts among the text functions although it answers a number.
void OtTable::addStackFunction()
{
    opTextFunctions += QString::fromLatin1(rows[SO_PUSHS].keyword);
    opTextCodes += SO_PUSHS;
}

const OtRow *OtTable::row(int opCode) const
{
    return ready() && opCode >= 0 && opCode < kOtRows ? rows + opCode : nullptr;
}

int32_t OtTable::countWord(int opCode) const
{
    return row(opCode) ? counts[opCode] : 0;
}

int OtTable::lookup(QStringView word) const
{
    if (word.size() >= kOtText)
        return SO_NOP;
    for (uint32_t bucket = bucketOf(word); buckets[bucket] >= 0; bucket = (bucket + 1) % kBuckets)
        if (sameWord(word, rows[buckets[bucket]].keyword))
            return buckets[bucket];
    return SO_NOP;
}
