// SPDX-License-Identifier: GPL-3.0-or-later
// The verbs that recorded macros are made of.
#include "script/run/recordverbs.h"

#include "area/areatools.h"
#include "area/commitfigure.h"
#include "area/mask.h"
#include "area/maskops.h"
#include "area/smoothing.h"
#include "core/image.h"
#include "core/rows.h"
#include "core/workspace.h"
#include "operators/base/operatortable.h"
#include "operators/base/opwrapper.h"
#include "script/engine/exparser.h"
#include "script/engine/expression.h"
#include "script/run/masktext.h"
#include "script/run/scriptrunner.h"

#include <QRegularExpression>
#include <QSize>

#include <algorithm>
#include <iterator>

namespace
{
constexpr int kMostGrowth = 500;
constexpr int kScriptOperator = 82;

constexpr FigureWord kFigureWords[] = {
    {"rectangle", kToolRectangle, false, 4},
    {"square", kToolRectangle, true, 4},
    {"numeric", kToolNumericRectangle, false, 4},
    {"ellipse", kToolEllipse, false, 4},
    {"circle", kToolEllipse, true, 4},
    {"entire", kToolEntire, false, 0},
    {"polygon", kToolPolygon, false, kPairs},
    {"pencil", kToolPencil, false, kPairs},
    {"polyspline", kToolPolyspline, false, kPairs},
    {"wand", kToolWand, false, 2},
};

constexpr const char *kAreaWords[] = {"none", "all",  "invert", "alpha",
                                      "luma", "grow", "shrink", "feather"};

const QString kNoMemory = QStringLiteral("e: not enough memory: the selection is as it was");

/// Numbers as they stand, of which a long stroke has many, need no evaluation.
bool readNumber(const QString &token, int low, int high, int *number)
{
    bool plain = false;
    const int value = token.toInt(&plain);
    if (plain && value >= low && value <= high) {
        *number = value;
        return true;
    }
    return intParam(token, low, high, number);
}

/// Tokens from `first` on as numbers, two for each point.
bool readPoints(const QStringList &tokens, int first, std::vector<AreaPoint> *points)
{
    for (int i = first; i + 1 < tokens.size(); i += 2) {
        AreaPoint at = {0, 0};
        if (!readNumber(tokens[i], -kFurthestFigure, kFurthestFigure, &at.x) ||
            !readNumber(tokens[i + 1], -kFurthestFigure, kFurthestFigure, &at.y))
            return false;
        points->push_back(at);
    }
    return true;
}

bool hasSelection(const image *target)
{
    return target && target->gmask;
}

bool changeWhole(image *target, AreaWord word, int samples)
{
    switch (word) {
    case AreaWord::None:
    case AreaWord::All:
        target->fillGmask(word == AreaWord::All ? 65535 : 0);
        return true;
    case AreaWord::Invert:
        target->invertMask();
        return true;
    case AreaWord::Alpha:
        return selectFromAlpha(target);
    case AreaWord::Luma:
        return selectFromLuma(target);
    case AreaWord::Grow:
        return growSelection(target, samples);
    case AreaWord::Shrink:
        return shrinkSelection(target, samples);
    case AreaWord::Feather:
        return featherSelection(target, samples);
    case AreaWord::Unknown:
        break;
    }
    return false;
}

bool takesNumber(AreaWord word)
{
    return word == AreaWord::Grow || word == AreaWord::Shrink || word == AreaWord::Feather;
}
} // namespace

const FigureWord *findFigure(const QString &word)
{
    const auto *const found = std::find_if(
        std::begin(kFigureWords), std::end(kFigureWords),
        [&word](const FigureWord &figure) { return word == QLatin1String(figure.word); });
    return found == std::end(kFigureWords) ? nullptr : found;
}

const FigureWord *findFigure(int tool, bool constrained)
{
    const FigureWord *found = nullptr;
    for (const FigureWord &figure : kFigureWords)
        if (figure.tool == tool && (!found || figure.constrained == constrained))
            found = &figure;
    return found;
}

AreaWord areaWord(const QString &word)
{
    const auto *const found =
        std::find_if(std::begin(kAreaWords), std::end(kAreaWords),
                     [&word](const char *known) { return word == QLatin1String(known); });
    return found == std::end(kAreaWords) ? AreaWord::Unknown : AreaWord(found - kAreaWords);
}

bool ScriptRunner::areaVerb(const QStringList &tokens)
{
    const QStringList joins = {QStringLiteral("replace"), QStringLiteral("add"),
                               QStringLiteral("subtract")};
    const int join = joins.indexOf(tokens[1]);
    if (join >= 0)
        return selectFigure(tokens, join == 0, join == 1);
    const AreaWord word = areaWord(tokens[1]);
    const int numbers = takesNumber(word) ? 1 : 0;
    const int most = word == AreaWord::Feather ? kMostFeather : kMostGrowth;
    int samples = 0;
    if (word == AreaWord::Unknown || tokens.size() != 2 + numbers ||
        (numbers && !readNumber(tokens[2], 1, most, &samples)) || !hasSelection(target))
        return false;
    if (changeWhole(target, word, samples))
        markChanged(false);
    else
        parser->report(kNoMemory);
    return true;
}

/// What an area tool makes of a finished figure, with all that the settings say of it.
bool ScriptRunner::selectFigure(const QStringList &tokens, bool replaces, bool adds)
{
    const FigureWord *word = tokens.size() > 2 ? findFigure(tokens[2]) : nullptr;
    const int numbers = int(tokens.size()) - 3;
    std::vector<AreaPoint> points;
    const bool fits =
        word && (word->numbers == kPairs ? numbers % 2 == 0 && numbers / 2 <= kLastGrowingCount + 1
                                         : numbers == word->numbers);
    if (!fits || !readPoints(tokens, 3, &points) || !hasSelection(target))
        return false;
    ToolFigure figure;
    figure.tool = word->tool;
    figure.constrained = word->constrained;
    if (!points.empty()) {
        figure.first = points.front();
        figure.last = points.back();
    }
    if (figure.tool == kToolEllipse) // the radii follow the middle
        figure.last = {figure.first.x + figure.last.x, figure.first.y + figure.last.y};
    AreaState *shared = areaState();
    if (figure.drawsList() && shared) {
        shared->clearPoints();
        for (const AreaPoint &point : points)
            shared->appendPoint(point.x, point.y);
    }
    Mask old;
    if (!replaces && !old.copyFrom(*target)) {
        parser->report(kNoMemory);
        return true;
    }
    const FigureResult result = commitFigure(target, figure);
    if (result.made && !replaces)
        combineMasks(target->gmask, old.mask, target->width, target->height, adds);
    if (result.nothingToOutline)
        parser->report(QStringLiteral("w: No area selection was generated"));
    return select(result.made, "area");
}

/// A selection of another size is scaled as the tool that brings one back does it.
bool ScriptRunner::selectionVerb(const QStringList &tokens)
{
    static const QRegularExpression form(QStringLiteral("^([1-9][0-9]{0,4})x([1-9][0-9]{0,4})$"));
    const QRegularExpressionMatch size = form.match(tokens[1]);
    Mask read, scaled;
    if (!size.hasMatch() || !hasSelection(target) ||
        !maskFromText(tokens[2], {size.captured(1).toInt(), size.captured(2).toInt()}, &read))
        return false;
    const Mask *source = &read;
    if (read.width != target->width || read.height != target->height) {
        if (!scaled.init(target->width, target->height)) {
            parser->report(kNoMemory);
            return true;
        }
        Mask::rescale(&read, &scaled);
        source = &scaled;
    }
    copyPlane(source->mask, target->gmask, target->width, target->height);
    markChanged(false);
    return true;
}

/// The value as it stands, or, where the setting has no such value, as an expression.
bool ScriptRunner::useVerb(const QStringList &tokens)
{
    const QString &key = tokens[1];
    if (tokens.size() == 2) {
        if (key != QLatin1String("defaults"))
            return false;
        settings.useDefaults();
        return true;
    }
    double number = 0;
    return settings.use(table, key, tokens.mid(2).join(QLatin1Char(' '))) ||
           (tokens.size() == 3 && doubleParam(tokens[2], 0, 0, &number) &&
            settings.use(table, key, numberText(number)));
}

bool ScriptRunner::shapeVerb(const QStringList &)
{
    if (!hasSelection(target))
        return false;
    OperatorTable::shapeMask(target);
    markChanged(false);
    return true;
}

/// For operators that have no script line: as Apply would, with their present parameters.
bool ScriptRunner::performVerb(const QStringList &tokens)
{
    OpWrapper *op = table && target ? table->byScriptName(tokens[1]) : nullptr;
    if (!op || op->id == kScriptOperator)
        return false;
    if (refusesOperator(*op))
        return true;
    image *brush = workspace() ? workspace()->brushImage : nullptr;
    op->apply(target, Workspace::validImage(brush) ? brush : nullptr);
    markChanged(true);
    followEvents(); // the operator may have let some in
    return true;
}
