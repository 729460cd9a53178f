// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/filter/monochrome.h"

#include "operators/base/oppage.h"
#include "operators/filter/monochrome_kernels.h"
#include "operators/pipeline/linearmix.h"
#include "script/engine/expression.h"

namespace
{
constexpr GreyWeights kPresetWeights[Monochrome::kPresets] = {
    {0.3, 0.59, 0.11}, {1, 1, 1}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 1, 0}, {1, 0, 1}, {0, 1, 1}};

bool sameWeights(const GreyWeights &a, const GreyWeights &b)
{
    return a.red == b.red && a.green == b.green && a.blue == b.blue;
}
} // namespace

Monochrome::Monochrome(OperatorTable *table) : DeclaredOp(table)
{
    hotkeyKey = QStringLiteral("MonochromeHotkey");
    declare({.field = &preset,
             .key = "MonochromePreset",
             .low = 0,
             .high = kOwnWeights,
             .control = choice(QT_TR_NOOP("Preset"),
                               {QT_TR_NOOP("Luminance"), QT_TR_NOOP("Average"), QT_TR_NOOP("Red"),
                                QT_TR_NOOP("Green"), QT_TR_NOOP("Blue"),
                                QT_TR_NOOP("Red and Green"), QT_TR_NOOP("Red and Blue"),
                                QT_TR_NOOP("Green and Blue"), QT_TR_NOOP("Own weights")}),
             .inScriptLine = false}); // as a line of its own, see readArguments
    const auto weight = [this](double *field, const char *key, double initial, const char *label) {
        declare({.field = field,
                 .key = key,
                 .low = 0,
                 .high = 255,
                 .initial = initial,
                 .control = doubleSpin(label, 0.05, 3)});
    };
    weight(&redWeight, "MonochromeRed", kPresetWeights[0].red, QT_TR_NOOP("Red"));
    weight(&greenWeight, "MonochromeGreen", kPresetWeights[0].green, QT_TR_NOOP("Green"));
    weight(&blueWeight, "MonochromeBlue", kPresetWeights[0].blue, QT_TR_NOOP("Blue"));
}

void Monochrome::apply(image *target, image *)
{
    GreyWeights weights{redWeight, greenWeight, blueWeight};
    if (redWeight + greenWeight + blueWeight == 0)
        weights = {1, 1, 1};
    overSpans(target, [&](const MixSpan &span) { KERNEL_DISPATCH(greySpan, span, weights); });
}

/// The weights decide: a stored preset that does not fit them is passed over.
void Monochrome::settings(bool save)
{
    DeclaredOp::settings(save);
    if (!save)
        findPreset();
}

void Monochrome::scriptLine(QString *out)
{
    DeclaredOp::scriptLine(out);
    if (out && preset < kPresets)
        *out = QStringLiteral("%1 %2\n").arg(scriptName).arg(preset);
}

bool Monochrome::readArguments(int argc, const QStringList &args, QString *usageText)
{
    int number = 0;
    if (argc != 1 || args.isEmpty()) {
        const bool taken = DeclaredOp::readArguments(argc, args, usageText);
        findPreset();
        return taken;
    }
    if (usageText)
        *usageText = usage();
    if (!intParam(args.at(0), 0, kPresets - 1, &number))
        return false;
    usePreset(number);
    return true;
}

bool Monochrome::setParameter(const QString &key, const QString &value)
{
    if (!DeclaredOp::setParameter(key, value))
        return false;
    if (key == QLatin1String("MonochromePreset"))
        usePreset(preset);
    else
        findPreset();
    return true;
}

int Monochrome::combo(int index, int value)
{
    if (!DeclaredOp::combo(index, value))
        return 0;
    usePreset(preset);
    return 1;
}

int Monochrome::dubspin(int index, double value)
{
    if (!DeclaredOp::dubspin(index, value))
        return 0;
    findPreset();
    return 1;
}

/// "Own weights" keeps the weights as they are.
void Monochrome::usePreset(int index)
{
    preset = index;
    if (index < kPresets) {
        redWeight = kPresetWeights[index].red;
        greenWeight = kPresetWeights[index].green;
        blueWeight = kPresetWeights[index].blue;
    }
    showFields();
}

/// Only the list is set: the weight that is being typed stays as it is typed.
void Monochrome::findPreset()
{
    const GreyWeights weights{redWeight, greenWeight, blueWeight};
    preset = 0;
    while (preset < kPresets && !sameWeights(weights, kPresetWeights[preset]))
        ++preset;
    if (OpPage *page = ownPage())
        page->setCombo(0, preset);
}
