// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/adjustment/statisticstext.h"

#include "core/workspace.h"

#include <QColor>
#include <QCoreApplication>
#include <QLocale>

#include <algorithm>

namespace
{
QString translated(const char *source)
{
    return QCoreApplication::translate("SampleStatistics", source);
}

QString cell(int32_t sample)
{
    const QString byte = QLocale().toString(sample / 257.0, 'f', 1);
    return QStringLiteral("<td align='right'>%1<br><small>%2</small></td>")
        .arg(byte, QString::number(sample));
}

QString row(const char *name, const int32_t *rgb)
{
    const auto byte = [](int32_t sample) { return std::clamp(sample, 0, 65535) >> 8; };
    const QColor colour(byte(rgb[0]), byte(rgb[1]), byte(rgb[2]));
    return QStringLiteral("<tr><td>%1</td><td bgcolor='%2'>&nbsp;&nbsp;&nbsp;</td>"
                          "%3%4%5</tr>")
        .arg(translated(name), colour.name(), cell(rgb[0]), cell(rgb[1]), cell(rgb[2]));
}
} // namespace

QString statisticsText()
{
    const int32_t *values = workspace() ? workspace()->sampleStatistics : nullptr;
    if (!values || std::all_of(values, values + 9, [](int32_t value) { return value == 0; }))
        return translated(QT_TRANSLATE_NOOP("SampleStatistics", "Nothing was sampled yet."));
    const auto heading = [](const char *name) {
        return QStringLiteral("<td align='right'>%1</td>").arg(translated(name));
    };
    return QStringLiteral("<table cellspacing='3'><tr><td></td><td></td>%1%2%3</tr>%4%5%6</table>")
        .arg(heading(QT_TRANSLATE_NOOP("SampleStatistics", "Red")),
             heading(QT_TRANSLATE_NOOP("SampleStatistics", "Green")),
             heading(QT_TRANSLATE_NOOP("SampleStatistics", "Blue")),
             row(QT_TRANSLATE_NOOP("SampleStatistics", "Minimum"), values),
             row(QT_TRANSLATE_NOOP("SampleStatistics", "Average"), values + 6),
             row(QT_TRANSLATE_NOOP("SampleStatistics", "Maximum"), values + 3));
}
