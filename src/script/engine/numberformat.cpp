// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/numberformat.h"

#include "script/engine/exparser.h"
#include "script/engine/numbers.h"

#include <QLocale>

#include <cmath>
#include <limits>

namespace
{
/// The whole part of a variable, or `fallback` where it is missing or out of range.
int setting(const exParser &parser, const QString &name, int low, int high, int fallback)
{
    const double none = std::numeric_limits<double>::quiet_NaN();
    const double whole = std::trunc(parser.numberOr(name, none));
    return whole >= low && whole <= high ? int(whole) : fallback;
}
} // namespace

NumberFormat::NumberFormat(const exParser &parser)
    : base(setting(parser, QStringLiteral("m_base"), 2, 16, 10)),
      width(setting(parser, QStringLiteral("m_fieldwidth"), -80, 80, -2)),
      precision(setting(parser, QStringLiteral("m_precision"), -1, 15, 15)),
      letter("eEfgG"[setting(parser, QStringLiteral("m_format"), 0, 4, 3)]),
      noCommas(parser.numberOr(QStringLiteral("m_nocommas"), 0) == 1)
{
    // The filling is a variable like any other; as a number it is written by what is known so
    // far, with blanks.
    QString text;
    if (const Variable *variable = parser.variables.text(u"m_fillchar"))
        text = variable->text;
    else if (const Variable *number = parser.variables.number(u"m_fillchar"))
        text = number->type == kVariableInt ? QString::number(number->intValue)
                                            : fetched(number->value);
    if (text.size() == 1 && text.at(0).unicode() >= 32 && text.at(0).unicode() <= 127)
        fill = text.at(0);
}

QString NumberFormat::padded(const QString &text) const
{
    return width < 0 ? text.leftJustified(-width, fill) : text.rightJustified(width, fill);
}

/// As "%L1" would, but always in English: the user's locale must not change what a script says.
QString NumberFormat::fetched(double value) const
{
    static const QLocale english(QLocale::English, QLocale::UnitedStates);
    QString text = english.toString(value, letter, precision);
    const int missing = width - text.size();
    if (fill == QLatin1Char('0') && missing > 0 && std::isfinite(value)) // zeros follow the sign
        text.insert(text.startsWith(QLatin1Char('-')) ? 1 : 0, QString(missing, fill));
    return padded(text);
}

QString NumberFormat::text(double value) const
{
    QString text;
    if (base == 10)
        text = fetched(value);
    else // below 0 as the complement of two
        text = QStringLiteral("%1").arg(wholeBits(value), width, base, fill).toUpper();
    if (noCommas)
        text.remove(QLatin1Char(','));
    return text;
}

QString formatNumber(const exParser &parser, double value)
{
    return NumberFormat(parser).text(value);
}

QString formatFetched(const exParser &parser, double value)
{
    return NumberFormat(parser).fetched(value);
}
