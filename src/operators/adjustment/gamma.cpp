// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/adjustment/gamma.h"

#include "operators/adjustment/tablefill.h"
#include "operators/base/oppage.h"
#include "script/engine/expression.h"

#include <QLocale>

#include <algorithm>
#include <cmath>

namespace
{
constexpr double kLeast = 0.25, kMost = 4.0;
constexpr double kSpan = kMost - kLeast;
constexpr int kMostDigits = 17;

/// The slider's place for a gamma. Rounded far below what shows, so that a written line reads
/// back as the very place it was written from.
double fieldOf(double gamma)
{
    constexpr double grid = 1e12;
    return std::round((gamma - kLeast) / kSpan * 100 * grid) / grid;
}
} // namespace

Gamma::Gamma(OperatorTable *table) : DeclaredOp(table)
{
    hotkeyKey = QStringLiteral("GammaHotkey");
    declare({.field = &field,
             .key = "Gamma",
             .low = 0,
             .high = 100,
             .initial = fieldOf(1.0),
             .control = ::slider(QT_TR_NOOP("Gamma"))});
}

double Gamma::gammaValue() const
{
    return std::clamp(field, 0.0, 100.0) / 100 * kSpan + kLeast;
}

void Gamma::apply(image *target, image *)
{
    const double power = 1 / gammaValue();
    resetLut();
    fillGreenTable([power](int i) { return std::pow(i / 65535.0, power) * 65535; });
    applyLumaLut(target);
}

void Gamma::build(OpPage *page)
{
    if (!page)
        return;
    page->addSlider(tr("Gamma"), 0, 100, int(field), false);
    label = page->addLabel(gammaText(), OpPage::LabelAlign::Centre, true);
}

QString Gamma::gammaText() const
{
    return tr("Gamma = %1").arg(QLocale().toString(gammaValue(), 'f', 4));
}

void Gamma::showGamma()
{
    if (OpPage *page = ownPage())
        page->setLabel(label, gammaText());
}

int Gamma::slider(int index, int value)
{
    const int handled = DeclaredOp::slider(index, value);
    showGamma();
    return handled;
}

void Gamma::reset()
{
    DeclaredOp::reset();
    showGamma();
}

bool Gamma::setParameter(const QString &key, const QString &value)
{
    const bool done = DeclaredOp::setParameter(key, value);
    showGamma();
    return done;
}

void Gamma::scriptLine(QString *out)
{
    if (!out)
        return;
    // The gamma of a place comes out a hair beside the number that was given for it: the
    // shortest number that leads to the same place is that one.
    const double gamma = gammaValue();
    int digits = 0;
    while (digits < kMostDigits && fieldOf(QString::number(gamma, 'f', digits).toDouble()) != field)
        ++digits;
    *out = QStringLiteral("%1 %2\n").arg(scriptName, QString::number(gamma, 'f', digits));
}

bool Gamma::readArguments(int argc, const QStringList &args, QString *usageText)
{
    if (usageText)
        *usageText = usage();
    double gamma = 0;
    if (argc != 1 || args.size() < 1 || !doubleParam(args.at(0), kLeast, kMost, &gamma))
        return false;
    field = std::clamp(fieldOf(gamma), 0.0, 100.0);
    showFields();
    showGamma();
    return true;
}

/// In the words of a script: the slider's own numbers mean nothing to anybody.
QString Gamma::helpRows() const
{
    return QStringLiteral("<tr><td>%1</td><td>0.25 … 4</td><td>1</td><td>1</td></tr>\n")
        .arg(tr("Gamma"));
}
