// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/functions.h"

#include "core/image.h"
#include "core/workspace.h"
#include "script/engine/exparser.h"
#include "script/engine/numberformat.h"
#include "script/engine/numbers.h"
#include "script/engine/textexpression.h"

#include <QDateTime>
#include <QFont>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QLocale>

namespace
{
constexpr int kTparmTag = 60, kPushTag = 300, kWidthTag = 1, kWidthNameTag = 2;
/// Fonts beyond this size are not measured.
constexpr int kMostFontPoints = 4000;

QString imageText(const TextCall &call, QString image::*field)
{
    const image *target = call.parser.images.target;
    return target ? target->*field : QString();
}

QString imageNumber(const TextCall &call, double image::*field)
{
    const image *target = call.parser.images.target;
    return target ? QString::number(target->*field, 'g', 15) : QString();
}

QString presentTime(const char *format)
{
    return QLocale::c().toString(QDateTime::currentDateTimeUtc(), QLatin1String(format));
}
} // namespace

// --- Fields of the image --------------------------------------------------------------------

QString fnAltitude(TextCall &call)
{
    return imageNumber(call, &image::altitude);
}

QString fnLatitude(TextCall &call)
{
    return imageNumber(call, &image::latitude);
}

QString fnLongitude(TextCall &call)
{
    return imageNumber(call, &image::longitude);
}

QString fnAnnotation(TextCall &call)
{
    return imageText(call, &image::annotation);
}

QString fnAuthor(TextCall &call)
{
    return imageText(call, &image::author);
}

QString fnCopyright(TextCall &call)
{
    return imageText(call, &image::copyright);
}

QString fnSoftware(TextCall &call)
{
    return imageText(call, &image::software);
}

QString fnCreatetime(TextCall &call)
{
    return imageText(call, &image::creationTime);
}

QString fnModtime(TextCall &call)
{
    return imageText(call, &image::modificationTime);
}

QString fnImagename(TextCall &call)
{
    return imageText(call, &image::name);
}

QString fnLayername(TextCall &call)
{
    return imageText(call, &image::name);
}

QString fnMastername(TextCall &call)
{
    const image *master = masterOf(call.parser.images.target);
    return master ? master->name : QString();
}

// --- The world outside ----------------------------------------------------------------------

QString fnDate(TextCall &)
{
    return presentTime("yyyyMMdd");
}

QString fnTime(TextCall &)
{
    return presentTime("hhmmss") + QStringLiteral(" UTC");
}

QString fnAsk(TextCall &call)
{
    QString texts[3]; // title, prompt, preset
    for (int i = 0; i < 3 && i < call.raw.size(); ++i)
        texts[i] = textArgument(call.parser, call.raw.at(i));
    const bool mayAsk = !call.parser.dispatcher || call.parser.dispatcher->mayAsk();
    const bool accepted =
        !mayAsk || !workspace() || workspace()->askText(texts[0], texts[1], &texts[2]);
    return accepted ? texts[2] : QStringLiteral(" ");
}

double fnTwidth(FunctionCall &call)
{
    exParser &parser = call.parser;
    const QString name = call.names.value(0);
    if (name.isEmpty())
        return parser.badParameters(call.opCode, kWidthNameTag);
    const auto missing = [&parser](const QString &variable) {
        parser.report(QStringLiteral("e: unable to fetch \"%1\"").arg(variable));
        return 0.0;
    };
    const Variable *text = parser.variables.text(name);
    if (!text)
        return missing(name);
    QString family;
    if (!fetchText(parser, QStringLiteral("m_font"), &family))
        return missing(QStringLiteral("m_font"));
    bool found = false;
    const int points = roundedNumber(parser.getNumber(QStringLiteral("m_fontpoints"), &found));
    if (!found)
        return missing(QStringLiteral("m_fontpoints"));
    if (family.isEmpty() || points <= 0 || points > kMostFontPoints || text->text.isEmpty())
        return parser.badParameters(call.opCode, kWidthTag);
    if (!qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        return 0; // without one there are no fonts
    QFont font(family);
    font.setPixelSize(points); // a point of the image is a sample, whatever the display
    return QFontMetricsF(font).horizontalAdvance(text->text);
}

// --- Parameters and the string stack ----------------------------------------------------------

QString fnTparm(TextCall &call)
{
    exParser &parser = call.parser;
    if (call.raw.size() != 1) {
        parser.badParameters(call.opCode, kTparmTag);
        return QString();
    }
    bool ok = false;
    const double index = std::round(parser.evaluate(call.raw.first(), &ok));
    if (!ok || !(index >= 0)) {
        parser.report(QStringLiteral("e: invalid index \"R%1ER\"").arg(call.raw.first()));
        return QString();
    }
    if (index >= parser.tparms.size()) {
        parser.report(QStringLiteral("e: tvar(%1) parameter empty").arg(index));
        return QString();
    }
    const QString entry = parser.tparms.at(int(index));
    double number = entry.toDouble(&ok);
    if (!ok)
        number = exParser::parseRadixNumber(entry, &ok);
    return ok ? formatNumber(parser, number) : textArgument(parser, entry);
}

QString fnPops(TextCall &call)
{
    if (!call.parser.userStrings.isEmpty())
        return call.parser.userStrings.takeLast();
    call.parser.report(QStringLiteral("w: string stack is empty"));
    return QString();
}

double fnPushs(FunctionCall &call)
{
    exParser &parser = call.parser;
    const QStringList &names = call.names;
    if (names.size() == 1 && call.count == 0)
        parser.userStrings << textArgument(parser, names.first());
    else if (names.isEmpty() && call.count == 1)
        parser.userStrings << formatNumber(parser, call.a[0]);
    else
        parser.badParameters(call.opCode, kPushTag);
    return 0;
}

// --- Words as they are written ----------------------------------------------------------------

QString fnTruth(TextCall &call)
{
    const QString name = call.raw.value(0);
    bool truth = false;
    if (const Variable *text = call.parser.variables.text(name))
        truth = text->text.startsWith(QLatin1Char('t'), Qt::CaseInsensitive);
    else if (const Variable *number = call.parser.variables.number(name))
        truth = number->number() != 0;
    return truth ? QStringLiteral("true") : QStringLiteral("false");
}

QString fnVerbatim(TextCall &call)
{
    return call.raw.join(QLatin1Char(','));
}
