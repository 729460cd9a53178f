// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/run/scriptdefaults.h"

#include "core/image.h"
#include "script/engine/exparser.h"

#include <QDateTime>

namespace
{
constexpr struct {
    const char *name;
    double value;
} kNumbers[] = {
    {"m_e", 2.718281828459045},
    {"m_pi", 3.141592653589793},
    {"void", 0},
    {"true", 1},
    {"false", 0},
    {"debug", 1},
    {"m_maxops", 10000},
    {"m_fieldwidth", 0},
    {"m_precision", 15},
    {"m_format", 3},
    {"m_base", 10},
    {"m_fontpoints", 100},
    {"m_nocommas", 0},
    {"m_lineheight", 0},
    {"m_leading", 0},
    {"m_ascent", 0},
    {"m_descent", 0},
};

/// Numbers whose source is their usual writing.
constexpr const char *kWrittenNumbers[][2] = {{"m_pc", "6.62607004E-34"}, {"m_c", "299792458"}};
constexpr const char *kTexts[][2] = {{"m_font", "Courier"}, {"m_fillchar", " "}};

void setVariable(exParser *parser, const char *name, double value)
{
    parser->setNumber(QString::fromLatin1(name), value);
}

QString withCode(QString text)
{
    text.replace(QLatin1String("CI"),
                 QLatin1String("<nobr><tt><b><font face=\"Courier\" color=\"#008800\">"
                               "<span style=\"background-color:#dddddd;\">&nbsp;"));
    return text.replace(QLatin1String("CO"), QLatin1String("&nbsp;</span></font></b></tt></nobr>"));
}
} // namespace

void setScriptDefaults(exParser *parser)
{
    parser->debug = true;
    for (const auto &number : kNumbers)
        setVariable(parser, number.name, number.value);
    for (const auto &number : kWrittenNumbers)
        parser->setNumber(QString::fromLatin1(number[0]), QString::fromLatin1(number[1]));
    for (const auto &text : kTexts)
        parser->setText(QString::fromLatin1(text[0]), QString::fromLatin1(text[1]));
    setImageVariables(parser, nullptr, nullptr);
}

void setImageVariables(exParser *parser, const image *target, const image *origin)
{
    const auto field = [target](auto member) { return target ? double(target->*member) : 0.0; };
    const QDateTime now = QDateTime::currentDateTimeUtc();
    const struct {
        const char *name;
        double value;
    } values[] = {
        {"m_width", field(&image::width)},
        {"m_height", field(&image::height)},
        {"m_owidth", origin ? origin->width : 0.0},
        {"m_oheight", origin ? origin->height : 0.0},
        {"m_origin", origin ? 1.0 : 0.0},
        {"m_altitude", field(&image::altitude)},
        {"m_latitude", field(&image::latitude)},
        {"m_longitude", field(&image::longitude)},
        {"m_shutter", field(&image::shutter)},
        {"m_aperture", field(&image::aperture)},
        {"m_iso", field(&image::iso)},
        {"m_focallength", field(&image::focalLength)},
        {"m_xdpi", field(&image::xDpi)},
        {"m_ydpi", field(&image::yDpi)},
        {"m_date", now.toString(QStringLiteral("yyyyMMdd")).toDouble()},
        {"m_time", now.toString(QStringLiteral("hhmmss")).toDouble()},
    };
    for (const auto &[name, value] : values)
        setVariable(parser, name, value);
}

QString limitPassedMessage(double limit)
{
    return withCode(QStringLiteral(
                        "Script aborted; number of operations<br>exceeded the value set by the "
                        "variable<br>CIm_maxopsCO which is set to CI%1CO.<br><br>If you "
                        "<i>really</i> want this script<br>to run longer, change CIm_maxopsCO "
                        "to<br>a larger value."))
        .arg(QString::number(limit, 'g', 15));
}

QString limitBadMessage()
{
    return withCode(QStringLiteral(
                        "Script aborted; the variable CIm_maxopsCO<br>did not evaluate to a "
                        "numeric value.<br><br>CIm_maxopsCO is used to limit the total<br>number "
                        "of script operations to prevent<br>%1 from hanging up due to errors in "
                        "CIloop()CO<br>and/or CIwhile()CO operations.<br><br>Set CIm_maxopsCO to "
                        "a low value, such as<br>CI10000CO, and raise it only for a script "
                        "that<br>needs more operations than that."))
        .arg(QStringLiteral("Kestrane"));
}
