// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/run/runsettings.h"

#include "area/areatools.h"
#include "core/settingdefaults.h"
#include "core/workspace.h"
#include "operators/base/operatortable.h"

#include <algorithm>
#include <iterator>
#include <type_traits>

namespace
{
constexpr uint32_t of(int tool)
{
    return 1u << tool;
}
/// Entire is drawn as a rectangle, so that its line alone can be selected too.
constexpr uint32_t kFigures = of(kToolRectangle) | of(kToolNumericRectangle) | of(kToolEllipse) |
                              of(kToolEntire) | of(kToolPolygon) | of(kToolPencil) |
                              of(kToolPolyspline) | of(kToolPShape);
constexpr uint32_t kSelecting = kFigures | of(kToolWand);
constexpr uint32_t kWand = of(kToolWand);

constexpr const char *kStatistics = "sampleStatistics";
constexpr const char *kCurrentOperator = "mainOpIndex";

constexpr struct {
    const char *key;
    uint32_t acts;
} kSettings[] = {
    {"openFigure", kFigures},
    {"FilledFigure", kFigures},
    {"rectaa", of(kToolRectangle)},
    {"ellaa", of(kToolEllipse)},
    {"polyaa", of(kToolPolygon)},
    {"splineaa", of(kToolPolyspline)},
    {"pshapeaa", of(kToolPShape)},
    {"pencilaa", of(kToolPencil)},
    {"wandaa", kWand},
    {"textaa", 0}, // of the verb that selects a text
    {"aarange", kSelecting},
    {"aaamount", kSelecting},
    {"outline", kSelecting},
    {"outline8w", kSelecting},
    {"outlineExpand", kSelecting},
    {"edgeOnly", kSelecting},
    {"outlinethresh", kSelecting},
    {"wandTolerance", kWand},
    {"globalPick", kWand},
    {"maskWithTargetAlpha", kWand | kBlendingActs},
    {kCurrentOperator, kSelecting},
    {"tMode", kShapingActs},
    {"tAmplitude", kShapingActs},
    {"tFloor", kShapingActs},
    {"tFactor", kShapingActs},
    {"invertSelection", kShapingActs},
    {"blendMode", kBlendingActs},
    {"foreRed", kBlendingActs},
    {"foreGreen", kBlendingActs},
    {"foreBlue", kBlendingActs},
    {"backRed", kBlendingActs},
    {"backGreen", kBlendingActs},
    {"backBlue", kBlendingActs},
    {kStatistics, kBlendingActs},
};

bool isRunSetting(const QString &key)
{
    return std::any_of(std::begin(kSettings), std::end(kSettings),
                       [&key](const auto &row) { return key == QLatin1String(row.key); });
}

QString statisticsText()
{
    QStringList words;
    for (const int32_t number : workspace()->sampleStatistics)
        words << QString::number(number);
    return words.join(QLatin1Char(' '));
}

bool setStatistics(const QString &text)
{
    const QStringList words = text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    std::remove_reference_t<decltype(workspace()->sampleStatistics)> numbers;
    bool ok = words.size() == int(std::size(numbers));
    for (int i = 0; ok && i < words.size(); ++i)
        numbers[i] = words[i].toInt(&ok);
    if (ok)
        std::copy(std::begin(numbers), std::end(numbers), workspace()->sampleStatistics);
    return ok;
}

bool setRunSetting(const QString &key, const QString &value)
{
    return key == QLatin1String(kStatistics) ? setStatistics(value)
                                             : workspace()->setSetting(key, value, nullptr);
}
} // namespace

QStringList runSettingKeys(uint32_t acts)
{
    QStringList keys;
    for (const auto &row : kSettings)
        if (row.acts & acts)
            keys << QString::fromLatin1(row.key);
    return keys;
}

QString runSettingText(const QString &key)
{
    if (!workspace() || !isRunSetting(key))
        return QString();
    if (key == QLatin1String(kStatistics))
        return statisticsText();
    if (key == QLatin1String(kCurrentOperator)) {
        const int id = workspace()->mainOpIndex;
        return QString::number(id == kOpCenterSelection || id == kOpMeasure ? id : 0);
    }
    return workspace()->settingText(key);
}

QString runSettingDefault(const QString &key)
{
    return key == QLatin1String(kStatistics) ? QStringLiteral("0 0 0 0 0 0 0 0 0")
                                             : defaultSettingText(key);
}

void RunSettings::remember(const QString &key, const QString &value)
{
    const bool known = std::any_of(before.begin(), before.end(),
                                   [&key](const auto &pair) { return pair.first == key; });
    if (!known)
        before.append({key, value});
}

bool RunSettings::use(OperatorTable *table, const QString &key, const QString &value)
{
    if (!workspace())
        return false;
    const bool own = isRunSetting(key);
    QString old;
    if (own)
        old = key == QLatin1String(kStatistics) ? statisticsText() : workspace()->settingText(key);
    else if (table)
        old = table->parameterText(key);
    if (old.isNull() || !(own ? setRunSetting(key, value) : table->setParameter(key, value)))
        return false;
    remember(key, old);
    return true;
}

void RunSettings::useDefaults()
{
    for (const auto &row : kSettings) {
        const QString key = QString::fromLatin1(row.key);
        use(nullptr, key, runSettingDefault(key));
    }
}

void RunSettings::restore(OperatorTable *table)
{
    for (const auto &[key, value] : before)
        if (isRunSetting(key) && workspace())
            setRunSetting(key, value);
        else if (table)
            table->setParameter(key, value);
    before.clear();
}
