// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/settingdefaults.h"
#include "core/workspace.h"

#include <QCoreApplication>
#include <QHash>
#include <QLocale>

#include <cmath>

namespace
{
using Setting = Workspace::Setting;
using Type = Setting::Type;

constexpr double kColourTop = 65535;
constexpr double kDpiTop = 32767;
/// Far beyond what the sliders give, and far from where products of it would overflow.
constexpr double kCurveReach = 1000;
constexpr int kMostSmoothing = 200;
/// Numeric rectangles may reach past the image on all sides.
constexpr int kRectReach = 100000;

bool readBool(const QString &text, bool *result)
{
    const bool yes =
        text == QLatin1String("1") || !text.compare(QLatin1String("true"), Qt::CaseInsensitive);
    const bool no =
        text == QLatin1String("0") || !text.compare(QLatin1String("false"), Qt::CaseInsensitive);
    *result = yes;
    return yes || no;
}

bool allowed(const Setting &setting, double value)
{
    if (!std::isfinite(value))
        return false;
    if (setting.low == 0 && setting.high == 0)
        return true;
    return value >= setting.low && value <= setting.high &&
           (setting.step == 0 || std::fmod(value - setting.low, setting.step) == 0);
}

/// Stores the text in the field of a setting; false, with the field as it was, if the
/// text is no value of it.
bool store(const Setting &setting, const QString &text)
{
    bool ok = true;
    switch (setting.type) {
    case Type::Text:
        *static_cast<QString *>(setting.field) = text;
        break;
    case Type::Bool:
        if (bool value = false; (ok = readBool(text, &value)))
            *static_cast<bool *>(setting.field) = value;
        break;
    case Type::Int: {
        const int value = text.toInt(&ok);
        ok = ok && allowed(setting, value);
        if (ok)
            *static_cast<int *>(setting.field) = value;
        break;
    }
    case Type::Double: {
        const double value = text.toDouble(&ok);
        ok = ok && allowed(setting, value);
        if (ok)
            *static_cast<double *>(setting.field) = value;
        break;
    }
    }
    return ok;
}

QString fieldText(const Setting &setting)
{
    switch (setting.type) {
    case Type::Text: {
        const QString &text = *static_cast<const QString *>(setting.field);
        return text.isNull() ? QStringLiteral("") : text;
    }
    case Type::Bool:
        return QString::number(int(*static_cast<const bool *>(setting.field)));
    case Type::Int:
        return QString::number(*static_cast<const int *>(setting.field));
    case Type::Double:
        return numberText(*static_cast<const double *>(setting.field));
    }
    return QString();
}

const Setting *find(const std::vector<Setting> &table, const QString &key)
{
    for (const Setting &setting : table)
        if (key == QLatin1String(setting.key))
            return &setting;
    return nullptr;
}

/// What the fields of a workspace start with is the same for every one.
QHash<QString, QString> &defaultTexts()
{
    static QHash<QString, QString> texts;
    return texts;
}

QString refusal(const Setting &setting, const QString &value)
{
    if (setting.low == 0 && setting.high == 0)
        return QCoreApplication::translate("Workspace", "\"%1\" is no value of %2")
            .arg(value, QLatin1String(setting.key));
    return QCoreApplication::translate("Workspace", "\"%1\" is no value of %2 (%3 to %4)")
        .arg(value, QLatin1String(setting.key), numberText(setting.low), numberText(setting.high));
}
} // namespace

void Workspace::buildSettings()
{
    settingTable = {
        {"maxUndos", Type::Int, &maxUndos, 1, 50, true},
        {"xDpi", Type::Int, &xDpi, 1, kDpiTop, true},
        {"yDpi", Type::Int, &yDpi, 1, kDpiTop, true},
        {"scaleMemory", Type::Double, &scaleMemory, 0.01, 100, true},
        {"mainAnnotation", Type::Text, &mainAnnotation, 0, 0, true},
        {"mainAuthor", Type::Text, &mainAuthor, 0, 0, true},
        {"mainCopyright", Type::Text, &mainCopyright, 0, 0, true},
        {"jpegImageQuality", Type::Int, &jpegImageQuality, 1, 100, true},
        {"saveEXIF", Type::Bool, &saveEXIF, 0, 1, true},
        {"imgClose", Type::Bool, &imgClose, 0, 1, true},
        {"zoomSteps", Type::Int, &zoomSteps, 1, 32, true},
        {"checkerOn", Type::Bool, &checkerOn, 0, 1, true},
        {"checkerDark", Type::Int, &checkerDark, 0, 255, true},
        {"checkerLight", Type::Int, &checkerLight, 0, 255, true},
        {"gridState", Type::Bool, &gridState, 0, 1, true},
        {"gridColorToggle", Type::Bool, &gridColorToggle, 0, 1, true},
        {"rememberPosition", Type::Bool, &rememberPosition, 0, 1, true},
        {"showRulers", Type::Bool, &showRulers, 0, 1, true},
        {"rulerUnit", Type::Int, &rulerUnit, 0, 2, true},
        {"snapGridX", Type::Int, &snapGridX, 1, kMaxImageSide, true},
        {"snapGridY", Type::Int, &snapGridY, 1, kMaxImageSide, true},
        {"snapOffsetX", Type::Int, &snapOffsetX, 0, kMaxImageSide, true},
        {"snapOffsetY", Type::Int, &snapOffsetY, 0, kMaxImageSide, true},
        {"snapGridShown", Type::Bool, &snapGridShown, 0, 1, true},
        {"snapToGrid", Type::Bool, &snapToGrid, 0, 1, true},
        {"snapToGuides", Type::Bool, &snapToGuides, 0, 1, true},
        {"guidesShown", Type::Bool, &guidesShown, 0, 1, true},
        {"showNotations", Type::Bool, &showNotations, 0, 1, true},
        {"png16", Type::Bool, &png16, 0, 1, true},
        {"rawDevelop", Type::Bool, &rawDevelop, 0, 1, true},
        {"systemFileDialog", Type::Bool, &systemFileDialog, 0, 1, true},
        {"recentLimit", Type::Int, &recentLimit, 1, 33, true},
        {"recoveryMinutes", Type::Int, &recoveryMinutes, 0, 120, true},
        {"toolIconSize", Type::Int, &toolIconSize, 16, 64, true},
        {"tMode", Type::Int, &curveMode, 0, 3, true},
        {"tAmplitude", Type::Double, &curveAmplitude, -kCurveReach, kCurveReach, true},
        {"tFloor", Type::Double, &curveFloor, -kCurveReach, kCurveReach, true},
        {"tFactor", Type::Int, &curveFactor, 0, 7, true},
        {"invertSelection", Type::Bool, &invertSelection, 0, 1, true},
        {"selectMode", Type::Bool, &selectMode, 0, 1, true},
        {"thumbnail", Type::Bool, &thumbnail, 0, 1, true},
        {"opsX2Preview", Type::Bool, &opsX2Preview, 0, 1, true},
        {"splitView", Type::Bool, &splitView, 0, 1, true},
        {"splitPlace", Type::Int, &splitPlace, 0, 100, true},
        {"histogramChannel", Type::Int, &histogramChannel, 0, 4, true},
        {"histogramLog", Type::Bool, &histogramLog, 0, 1, true},
        {"confirmClearScipt", Type::Bool, &confirmClearScript, 0, 1, true},
        {"showBuiltScript", Type::Bool, &showBuiltScript, 0, 1, true},
        {"opFavOn", Type::Bool, &favoritesShown, 0, 1, true},
        {"dropperSize", Type::Int, &dropperSize, 1, 101, true, 2},
        {"mainOpIndex", Type::Int, &mainOpIndex, 0, 96, true},
        {"foreRed", Type::Int, &foreRed, 0, kColourTop, true},
        {"foreGreen", Type::Int, &foreGreen, 0, kColourTop, true},
        {"foreBlue", Type::Int, &foreBlue, 0, kColourTop, true},
        {"backRed", Type::Int, &backRed, 0, kColourTop, true},
        {"backGreen", Type::Int, &backGreen, 0, kColourTop, true},
        {"backBlue", Type::Int, &backBlue, 0, kColourTop, true},
        {"blendMode", Type::Int, &blendMode, 0, 10, false},
        {"rgbaDepth", Type::Int, &rgbaDepth, 32, 64, false, 32},
        {"maskWithTargetAlpha", Type::Bool, &maskWithTargetAlpha, 0, 1, true},
        {"toolSelect", Type::Int, &toolSelect, 0, 11, true},
        {"openFigure", Type::Bool, &openFigure, 0, 1, true},
        {"FilledFigure", Type::Bool, &filledFigure, 0, 1, true},
        {"outline", Type::Bool, &outlineObject, 0, 1, true},
        {"outline8w", Type::Bool, &outline8w, 0, 1, true},
        {"outlineExpand", Type::Bool, &outlineExpand, 0, 1, true},
        {"edgeOnly", Type::Bool, &edgeOnly, 0, 1, true},
        {"outlinethresh", Type::Int, &outlinethresh, 0, 255, true},
        {"wandTolerance", Type::Int, &wandTolerance, 0, 100, true},
        {"globalPick", Type::Bool, &globalPick, 0, 1, true},
        {"rectaa", Type::Bool, &rectaa, 0, 1, true},
        {"ellaa", Type::Bool, &ellaa, 0, 1, true},
        {"polyaa", Type::Bool, &polyaa, 0, 1, true},
        {"splineaa", Type::Bool, &splineaa, 0, 1, true},
        {"pshapeaa", Type::Bool, &pshapeaa, 0, 1, true},
        {"pencilaa", Type::Bool, &pencilaa, 0, 1, true},
        {"wandaa", Type::Bool, &wandaa, 0, 1, true},
        {"textaa", Type::Bool, &textaa, 0, 1, true},
        {"aarange", Type::Int, &aarange, 1, kMostSmoothing, true},
        {"aaamount", Type::Double, &aaamount, -10, 10, true},
        {"useCropGuides", Type::Bool, &useCropGuides, 0, 1, true},
        {"useOvalGuides", Type::Bool, &useOvalGuides, 0, 1, true},
        {"cropAspect", Type::Int, &cropAspect, 0, 9, true},
        {"cropGuide", Type::Int, &cropGuide, 0, 5, true},
        {"nrectX1", Type::Int, &nrectX1, -kRectReach, kRectReach, true},
        {"nrectY1", Type::Int, &nrectY1, -kRectReach, kRectReach, true},
        {"nrectX2", Type::Int, &nrectX2, -kRectReach, kRectReach, true},
        {"nrectY2", Type::Int, &nrectY2, -kRectReach, kRectReach, true},
        {"nrectWidth", Type::Int, &nrectWidth, -kRectReach, kRectReach, true},
        {"nrectHeight", Type::Int, &nrectHeight, -kRectReach, kRectReach, true},
        {"stepXY", Type::Int, &stepXY, 1, kMaxImageSide, true},
        {"dashLength", Type::Int, &dashLength, 0, 100, true},
        {"marchingOutline", Type::Bool, &marchingOutline, 0, 1, true},
        {"aSelectColor", Type::Text, &aSelectColor, 0, 0, true},
        {"lockPAspect", Type::Bool, &lockPAspect, 0, 1, true},
        {"transX", Type::Int, &transX, -kRectReach, kRectReach, true},
        {"transY", Type::Int, &transY, -kRectReach, kRectReach, true},
        {"textFont", Type::Text, &textFont, 0, 0, true},
        {"textPoints", Type::Int, &textPoints, 4, 2000, true},
        {"textBold", Type::Bool, &textBold, 0, 1, true},
        {"textItalic", Type::Bool, &textItalic, 0, 1, true},
        {"textAlign", Type::Int, &textAlign, 0, 2, true},
    };
    if (defaultTexts().isEmpty())
        for (const Setting &setting : settingTable)
            defaultTexts().insert(QString::fromLatin1(setting.key), fieldText(setting));
}

QString defaultSettingText(const QString &key)
{
    return defaultTexts().value(key);
}

bool Workspace::setSetting(const QString &key, const QString &value, QString *error)
{
    const Setting *setting = find(settingTable, key);
    if (setting && store(*setting, value))
        return true;
    if (error)
        *error = setting
                     ? refusal(*setting, value)
                     : QCoreApplication::translate("Workspace", "unknown setting \"%1\"").arg(key);
    return false;
}

QString Workspace::settingText(const QString &key) const
{
    const Setting *setting = find(settingTable, key);
    return setting ? fieldText(*setting) : QString();
}

QString numberText(double value)
{
    return QString::number(value, 'g', QLocale::FloatingPointShortest);
}
