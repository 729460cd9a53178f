// SPDX-License-Identifier: GPL-3.0-or-later
// The verb that selects a text.
#include "script/run/scriptrunner.h"

#include "core/image.h"
#include "core/scale.h"
#include "core/workspace.h"
#include "script/engine/exparser.h"
#include "script/engine/expression.h"
#include "script/engine/textexpression.h"
#include "text/textimage.h"
#include "text/textselect.h"

#include <QFontDatabase>

#include <algorithm>
#include <cmath>

namespace
{
constexpr int kFurthestPlace = 2 * kMaxImageSide;
constexpr double kLeastPoints = 10, kMostPoints = 200, kUsualPoints = 100;
constexpr double kSmallestScale = 0.1, kLargestScale = 2.0;

/// The family of that name in any case, or the usual one.
QString knownFamily(const QString &name)
{
    const QStringList families = QFontDatabase().families();
    const auto found =
        std::find_if(families.begin(), families.end(), [&name](const QString &family) {
            return family.compare(name, Qt::CaseInsensitive) == 0;
        });
    return found == families.end() ? QStringLiteral("Courier") : *found;
}

std::unique_ptr<image> scaled(std::unique_ptr<image> glyphs, double scale)
{
    if (scale == 1)
        return glyphs;
    auto result = std::make_unique<image>();
    const auto side = [scale](int length) {
        return std::clamp(int(std::lround(length * scale)), 1, kMaxImageSide);
    };
    if (!result->allocateUnfilled(side(glyphs->width), side(glyphs->height), glyphs->name) ||
        !scaleBilinear(glyphs.get(), result.get(), false))
        return nullptr;
    return result;
}

void setMeasures(exParser *parser, const TextMetrics &metrics, double scale)
{
    parser->setNumber(QStringLiteral("m_lineheight"), metrics.lineHeight * scale);
    parser->setNumber(QStringLiteral("m_leading"), metrics.leading * scale);
    parser->setNumber(QStringLiteral("m_ascent"), metrics.ascent * scale);
    parser->setNumber(QStringLiteral("m_descent"), metrics.descent * scale);
}

/// The text of a verb's parameter, which may stand in quotes.
bool operandText(const exParser &parser, const QString &written, QString *text)
{
    if (!textOperand(parser, written, text))
        return false;
    *text = unquoted(*text);
    return true;
}
} // namespace

/// Y names the bottom of the line, X the left edge of the ink.
bool ScriptRunner::textVerb(const QStringList &tokens)
{
    int x = 0, y = 0;
    double scale = 0;
    QString text, family;
    if (!intParam(tokens[2], -kFurthestPlace, kFurthestPlace, &x) ||
        !intParam(tokens[3], -kFurthestPlace, kFurthestPlace, &y) ||
        !doubleParam(tokens[4], kSmallestScale, kLargestScale, &scale) ||
        !operandText(*parser, tokens.mid(5).join(QLatin1Char(' ')), &text) ||
        !operandText(*parser, tokens[1], &family) || !target)
        return false;
    if (text.isEmpty())
        return true;
    const double points = parser->numberOr(QStringLiteral("m_fontpoints"), kUsualPoints);
    TextStyle style;
    style.family = knownFamily(family);
    style.pixels = points >= kLeastPoints && points <= kMostPoints ? points : kUsualPoints;
    style.antialias = !workspace() || workspace()->textaa;
    TextMetrics metrics = {};
    std::unique_ptr<image> glyphs(renderText(text, style, &metrics));
    if (glyphs)
        setMeasures(parser, metrics, scale);
    if (glyphs)
        glyphs = scaled(std::move(glyphs), scale);
    if (!glyphs) {
        parser->report(QStringLiteral("e: text is too large to be drawn"));
        return true;
    }
    const int left = x - std::max(0, firstInkColumn(*glyphs));
    const int top = y - int(std::lround(metrics.lineHeight * scale));
    selectGlyphs(target, *glyphs, left, top);
    markChanged(false);
    return true;
}
