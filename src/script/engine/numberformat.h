// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QChar>
#include <QString>

class exParser;

/// How the language writes numbers, by the variables m_base, m_fieldwidth, m_precision,
/// m_format, m_fillchar and m_nocommas as they stand when it is made.
class NumberFormat
{
public:
    explicit NumberFormat(const exParser &parser);

    QString text(double value) const;
    /// In base 10 and with its commas, as a variable fetched by name gives it.
    QString fetched(double value) const;

private:
    QString padded(const QString &text) const;

    int base, width, precision;
    char letter;
    bool noCommas;
    QChar fill = QLatin1Char(' ');
};

QString formatNumber(const exParser &parser, double value);
/// The same without m_base and m_nocommas.
QString formatFetched(const exParser &parser, double value);
