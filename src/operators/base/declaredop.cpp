// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/base/declaredop.h"

#include "core/workspace.h"
#include "operators/base/operatortable.h"
#include "operators/base/oppage.h"
#include "script/engine/expression.h"

#include <QCoreApplication>
#include <QLocale>
#include <QSettings>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

using Kind = OpControl::Kind;

OpControl slider(const char *label, const char *unit)
{
    OpControl control;
    control.kind = Kind::Slider;
    control.label = label;
    control.unit = unit;
    return control;
}

OpControl spin(const char *label)
{
    OpControl control;
    control.kind = Kind::IntSpin;
    control.label = label;
    return control;
}

OpControl doubleSpin(const char *label, double step, int decimals)
{
    OpControl control;
    control.kind = Kind::DoubleSpin;
    control.label = label;
    control.step = step;
    control.decimals = decimals;
    return control;
}

OpControl choice(const char *label, std::vector<const char *> names)
{
    OpControl control;
    control.kind = Kind::Combo;
    control.label = label;
    control.choices = std::move(names);
    return control;
}

OpControl check(const char *label)
{
    OpControl control;
    control.kind = Kind::Check;
    control.label = label;
    return control;
}

namespace
{
bool hasRange(const OpParameter &parameter)
{
    return parameter.low != 0 || parameter.high != 0;
}

/// The limits of a parameter's control: its range, or as far as a person may want to go.
std::pair<double, double> controlLimits(const OpParameter &parameter)
{
    constexpr double far = 1e9;
    return hasRange(parameter) ? std::pair(parameter.low, parameter.high) : std::pair(-far, far);
}

bool inRange(const OpParameter &parameter, double value)
{
    if (!std::isfinite(value))
        return false;
    if (hasRange(parameter))
        return value >= parameter.low && value <= parameter.high;
    return std::holds_alternative<double *>(parameter.field) ||
           std::abs(value) <= std::numeric_limits<int>::max();
}

double fieldValue(const OpParameter &parameter)
{
    return std::visit([](auto *field) { return double(*field); }, parameter.field);
}

void setField(const OpParameter &parameter, double value)
{
    if (auto *const *whole = std::get_if<int *>(&parameter.field))
        **whole = int(value);
    else if (auto *const *real = std::get_if<double *>(&parameter.field))
        **real = value;
    else
        *std::get<bool *>(parameter.field) = value != 0;
}

/// The number as a script reads it back: a point for decimals, never an exponent.
QString fieldText(const OpParameter &parameter)
{
    const double value = fieldValue(parameter);
    if (std::holds_alternative<double *>(parameter.field))
        return QString::number(value, 'f', QLocale::FloatingPointShortest);
    return QString::number(int(value));
}

QVariant fieldVariant(const OpParameter &parameter)
{
    return std::visit([](auto *field) { return QVariant(*field); }, parameter.field);
}

/// A stored value that no control could have given is passed over.
void readField(const OpParameter &parameter, const QVariant &stored)
{
    bool ok = true;
    const double value =
        std::holds_alternative<bool *>(parameter.field) ? stored.toBool() : stored.toDouble(&ok);
    if (ok && inRange(parameter, value))
        setField(parameter, value);
}

bool evaluate(const QString &token, const OpParameter &parameter, double *value)
{
    if (std::holds_alternative<double *>(parameter.field))
        return doubleParam(token, parameter.low, parameter.high, value);
    int whole = 0;
    if (!intParam(token, int(parameter.low), int(parameter.high), &whole))
        return false;
    *value = whole;
    return true;
}
} // namespace

DeclaredOp::DeclaredOp(OperatorTable *table) : OpWrapper(table)
{
    scriptable = true;
}

void DeclaredOp::declare(OpParameter parameter)
{
    setField(parameter, parameter.initial);
    declared.push_back(std::move(parameter));
}

void DeclaredOp::declareWell(const char *label, int *red, int *green, int *blue)
{
    wells.push_back({label, red, green, blue});
}

bool DeclaredOp::setParameter(const QString &key, const QString &value)
{
    for (const OpParameter &parameter : declared) {
        if (key != QLatin1String(parameter.key))
            continue;
        bool ok = false;
        const double number = value.toDouble(&ok);
        if (!ok || !inRange(parameter, number))
            return false;
        setField(parameter, number);
        showFields();
        return true;
    }
    return false;
}

QString DeclaredOp::parameterText(const QString &key) const
{
    for (const OpParameter &parameter : declared)
        if (key == QLatin1String(parameter.key))
            return fieldText(parameter);
    return QString();
}

QString DeclaredOp::helpRows() const
{
    QString rows;
    int place = 0;
    for (const OpParameter &parameter : declared) {
        const QString number = parameter.inScriptLine ? QString::number(++place) : QString();
        rows += QStringLiteral("<tr><td>%1</td><td>%2</td><td>%3</td><td>%4</td></tr>\n")
                    .arg(translated(parameter.control.label).toHtmlEscaped(), rangeText(parameter),
                         initialText(parameter), number);
    }
    return rows;
}

QString DeclaredOp::translated(const char *source) const
{
    return QCoreApplication::translate(metaObject()->className(), source);
}

/// What can be chosen, in a person's words.
QString DeclaredOp::rangeText(const OpParameter &parameter) const
{
    if (parameter.control.kind == Kind::Check)
        return QCoreApplication::translate("DeclaredOp", "0 off, 1 on");
    if (parameter.control.kind == Kind::Combo) {
        QStringList names;
        for (size_t i = 0; i < parameter.control.choices.size(); ++i)
            names << QStringLiteral("%1 %2").arg(QString::number(int(i) + int(parameter.low)),
                                                 translated(parameter.control.choices[i]));
        return names.join(QStringLiteral(", ")).toHtmlEscaped();
    }
    if (!hasRange(parameter))
        return QCoreApplication::translate("DeclaredOp", "any number");
    return QStringLiteral("%1 … %2").arg(numberText(parameter.low), numberText(parameter.high));
}

QString DeclaredOp::initialText(const OpParameter &parameter) const
{
    return numberText(parameter.initial);
}

void DeclaredOp::reset()
{
    for (const OpParameter &parameter : declared)
        if (!parameter.keptByReset)
            setField(parameter, parameter.initial);
    showFields();
}

void DeclaredOp::settings(bool save)
{
    QSettings *store = ops ? ops->store : nullptr;
    if (!store)
        return;
    for (const OpParameter &parameter : declared) {
        const QString key = ops->prefix + QLatin1String(parameter.key);
        if (save)
            store->setValue(key, fieldVariant(parameter));
        else
            readField(parameter, store->value(key, fieldVariant(parameter)));
    }
    if (hotkeyKey.isEmpty())
        return;
    if (save)
        store->setValue(ops->prefix + hotkeyKey, hotkey);
    else
        hotkey = store->value(ops->prefix + hotkeyKey, hotkey).toString();
}

void DeclaredOp::scriptLine(QString *out)
{
    if (!out)
        return;
    *out = scriptName;
    for (const OpParameter &parameter : declared)
        if (parameter.inScriptLine)
            *out += QLatin1Char(' ') + fieldText(parameter);
    *out += QLatin1Char('\n');
}

bool DeclaredOp::readArguments(int argc, const QStringList &args, QString *usageText)
{
    if (usageText)
        *usageText = usage();
    std::vector<const OpParameter *> wanted;
    for (const OpParameter &parameter : declared)
        if (parameter.inScriptLine)
            wanted.push_back(&parameter);
    if (argc != int(wanted.size()) || args.size() < argc)
        return false;
    std::vector<double> values(wanted.size());
    for (int i = 0; i < argc; ++i)
        if (!evaluate(args.at(i), *wanted[size_t(i)], &values[size_t(i)]))
            return false;
    // Last: a bad token must not leave half of the fields changed.
    for (size_t i = 0; i < wanted.size(); ++i)
        setField(*wanted[i], values[i]);
    showFields();
    return true;
}

int DeclaredOp::scriptCall(int argc, QStringList *args, image *target, QString *usageText)
{
    if (!readArguments(argc, args ? *args : QStringList(), usageText))
        return 0;
    apply(target, nullptr);
    return 1;
}

const OpParameter *DeclaredOp::ofKind(OpControl::Kind kind, int index) const
{
    for (const OpParameter &parameter : declared)
        if (parameter.control.kind == kind && index-- == 0)
            return &parameter;
    return nullptr;
}

int DeclaredOp::changed(OpControl::Kind kind, int index, double value)
{
    const OpParameter *parameter = ofKind(kind, index);
    if (!parameter)
        return 0;
    if (inRange(*parameter, value))
        setField(*parameter, value);
    showWells();
    return 1;
}

int DeclaredOp::slider(int index, int value)
{
    return changed(Kind::Slider, index, value);
}

int DeclaredOp::intspin(int index, int value)
{
    return changed(Kind::IntSpin, index, value);
}

int DeclaredOp::dubspin(int index, double value)
{
    return changed(Kind::DoubleSpin, index, value);
}

int DeclaredOp::combo(int index, int value)
{
    return changed(Kind::Combo, index, value);
}

int DeclaredOp::checkbox(int index, bool state)
{
    return changed(Kind::Check, index, state);
}

void DeclaredOp::addControl(OpPage *page, const OpParameter &parameter) const
{
    const auto text = [this](const char *source) { return translated(source); };
    const OpControl &control = parameter.control;
    const double value = fieldValue(parameter);
    const auto [low, high] = controlLimits(parameter);
    const auto labelled = [&] {
        page->addLabel(text(control.label), OpPage::LabelAlign::Left, false);
    };
    switch (control.kind) {
    case Kind::None:
        break;
    case Kind::Slider:
        page->addSlider(text(control.label), int(low), int(high), int(value), true,
                        QString::fromUtf8(control.unit));
        break;
    case Kind::IntSpin:
        labelled();
        page->addIntSpin(int(low), int(high), int(value), true);
        break;
    case Kind::DoubleSpin:
        labelled();
        page->addDoubleSpin(low, high, control.step, control.decimals, value, true);
        break;
    case Kind::Combo: {
        QStringList names;
        for (const char *name : control.choices)
            names << text(name);
        labelled();
        page->addCombo(names, int(value), true);
        break;
    }
    case Kind::Check:
        page->addCheck(text(control.label), value != 0, true);
    }
}

void DeclaredOp::build(OpPage *page)
{
    if (!page)
        return;
    for (const OpParameter &parameter : declared)
        addControl(page, parameter);
    for (const Well &well : wells) {
        page->addLabel(translated(well.label), OpPage::LabelAlign::Left, false);
        page->addWell(*well.red * 257, *well.green * 257, *well.blue * 257, true);
    }
}

int DeclaredOp::colorwell(int index, int value)
{
    if (index < 0 || index >= int(wells.size()))
        return 0;
    const Well &well = wells[size_t(index)];
    *well.red = value >> 16 & 255;
    *well.green = value >> 8 & 255;
    *well.blue = value & 255;
    showFields();
    return 1;
}

OpPage *DeclaredOp::ownPage() const
{
    return ops && ops->current() == this ? ops->page : nullptr;
}

void DeclaredOp::showFields()
{
    OpPage *page = ownPage();
    if (!page)
        return;
    int next[6] = {}; // per kind: the index of its next control
    for (const OpParameter &parameter : declared) {
        const int index = next[int(parameter.control.kind)]++;
        const double value = fieldValue(parameter);
        switch (parameter.control.kind) {
        case Kind::None:
            break;
        case Kind::Slider:
            page->setSlider(index, int(value));
            break;
        case Kind::IntSpin:
            page->setIntSpin(index, int(value));
            break;
        case Kind::DoubleSpin:
            page->setDoubleSpin(index, value);
            break;
        case Kind::Combo:
            page->setCombo(index, int(value));
            break;
        case Kind::Check:
            page->setCheck(index, value != 0);
        }
    }
    showWells();
}

void DeclaredOp::showWells()
{
    OpPage *page = ownPage();
    for (size_t i = 0; page && i < wells.size(); ++i)
        page->setWell(int(i), *wells[i].red * 257, *wells[i].green * 257, *wells[i].blue * 257);
}
