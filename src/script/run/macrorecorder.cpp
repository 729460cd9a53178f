// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/run/macrorecorder.h"

#include "area/areastate.h"
#include "area/areatools.h"
#include "area/commitfigure.h"
#include "core/image.h"
#include "core/rows.h"
#include "core/workspace.h"
#include "operators/base/declaredop.h"
#include "operators/base/operatortable.h"
#include "operators/pipeline/random15.h"
#include "script/engine/expression.h"
#include "script/run/masktext.h"
#include "script/run/recordverbs.h"
#include "script/run/runsettings.h"
#include "script/run/script.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <utility>

namespace
{
constexpr int kSample = 80, kScriptOperator = 82;
constexpr int kFlatCurve = 1;
const QString kStatistics = QStringLiteral("sampleStatistics");

uint64_t stirred(uint64_t hash, uint64_t word)
{
    hash = (hash ^ word) * 0x9e3779b97f4a7c15U;
    return hash ^ (hash >> 29);
}

/// A number that differs, as good as always, between planes that differ anywhere.
uint64_t hashOf(const uint16_t *plane, int width, int height)
{
    if (!plane)
        return 0;
    std::atomic<uint64_t> sum = 0;
    parallelRows(height, width, [&](int first, int end) {
        uint64_t own = 0;
        for (int y = first; y < end; ++y) {
            const uint16_t *row = plane + int64_t(y) * width;
            std::array<uint64_t, 4> lanes = {1, 2, 3, 4}; // four words on their way at once
            int x = 0;
            for (; x + 16 <= width; x += 16) {
                std::array<uint64_t, 4> words;
                std::memcpy(words.data(), row + x, sizeof words);
                for (size_t i = 0; i < lanes.size(); ++i)
                    lanes[i] = stirred(lanes[i], words[i]);
            }
            for (; x < width; ++x)
                lanes[0] = stirred(lanes[0], row[x]);
            auto hash = uint64_t(y);
            for (const uint64_t lane : lanes)
                hash = stirred(hash, lane);
            own += hash;
        }
        sum += own;
    });
    return sum;
}

/// A colon would begin a statement.
QString inStatement(const QString &text)
{
    return text.simplified().replace(QLatin1Char(':'), QLatin1String("::"));
}

QString selectionLine(const image &img)
{
    const uint16_t *first = img.gmask, *end = first + img.sampleCount();
    for (const auto &[value, word] : {std::pair(0, "none"), std::pair(65535, "all")})
        if (std::all_of(first, end, [value = value](uint16_t sample) { return sample == value; }))
            return QStringLiteral("area %1\n").arg(QLatin1String(word));
    const QString text = maskText(first, img.width, img.height, kLongestMaskText);
    return text.isEmpty()
               ? QStringLiteral("# a selection was made here that is too large to be written\n")
               : QStringLiteral("selection %1x%2 %3\n").arg(img.width).arg(img.height).arg(text);
}

/// Empty for a figure without words.
QString figureLine(const ToolFigure &figure, AreaJoin join, int listed)
{
    const FigureWord *word = findFigure(figure.tool, figure.constrained);
    if (!word)
        return QString();
    std::vector<AreaPoint> points = {figure.first, figure.last};
    if (figure.tool == kToolEllipse)
        points[1] = {std::abs(figure.last.x - figure.first.x),
                     std::abs(figure.last.y - figure.first.y)};
    if (word->numbers == kPairs)
        points.assign(areaState()->points, areaState()->points + listed);
    else
        points.resize(size_t(word->numbers) / 2);
    static const char *const joins[] = {"replace", "add", "subtract"};
    QString line = QStringLiteral("area %1 %2")
                       .arg(QLatin1String(joins[int(join)]), QLatin1String(word->word));
    for (const AreaPoint &point : points) {
        if (std::max(std::abs(int64_t(point.x)), std::abs(int64_t(point.y))) > kFurthestFigure)
            return QString();
        line += QStringLiteral(" %1 %2").arg(point.x).arg(point.y);
    }
    return line + QLatin1Char('\n');
}

QMap<QString, QString> presentSettings(uint32_t acts)
{
    QMap<QString, QString> values;
    for (const QString &key : runSettingKeys(acts))
        values.insert(key, runSettingText(key));
    return values;
}

/// Starts the random numbers as a script line does that has this text.
QString seedLine(uint32_t seed)
{
    const QString line = QStringLiteral("seed(%1)").arg(seed);
    double answer = 0;
    doubleParam(line, 0, 0, &answer);
    return line;
}

/// Whether random numbers were taken since they were started so.
bool randomUsed(uint32_t seed)
{
    const auto next = [] { return std::array{random15(), random15(), random15(), random15()}; };
    const auto found = next();
    seedLine(seed);
    return found != next();
}
} // namespace

MacroRecorder::PictureState MacroRecorder::stateOf(const image &img)
{
    PictureState state{img.width, img.height, hashOf(img.gmask, img.width, img.height), 0};
    for (const uint16_t *plane : img.colorPlanes())
        state.samples = stirred(state.samples, hashOf(plane, img.width, img.height));
    return state;
}

// --- The text -----------------------------------------------------------------------------

void MacroRecorder::setOn(bool recording, const image *current)
{
    if (recording == on)
        return;
    if (!recording)
        writePending(current);
    on = recording;
    steps.clear();
    takenOut.clear();
    held.clear();
    shaping = false;
    applyLine.clear();
    startPicture = recording ? current : nullptr;
    start = startPicture ? stateOf(*startPicture) : PictureState();
}

/// A selection that no act has used: without it the macro would leave another one.
void MacroRecorder::writePending(const image *current)
{
    const image *last = steps.empty() ? startPicture : steps.back().picture;
    if (!current || current != last || (steps.empty() && stateOf(*current).sameMask(start)))
        return;
    openDraft(*current, *current, true);
    if (!draft.body.isEmpty())
        closeDraft(*current, draft.before, {}, QString());
}

void MacroRecorder::setText(const QString &text)
{
    script->setText(text);
    if (textChanged)
        textChanged();
}

/// What the picture is if nothing but recorded acts has changed it; null if that is not known.
const MacroRecorder::PictureState *MacroRecorder::expected(const image &img) const
{
    return !steps.empty() && steps.back().picture == &img ? &steps.back().after : nullptr;
}

/// Begins an act with what has to be said of its picture first.
void MacroRecorder::openDraft(const image &img, const image &before, bool needsSelection)
{
    // A macro that was cleared away, or whose place another script took, begins anew.
    if (!steps.empty() && !script->text.contains(steps.front().head)) {
        steps.clear();
        takenOut.clear();
    }
    draft = Step();
    draft.before = stateOf(before);
    const PictureState *known = expected(img);
    if (!steps.empty() && !known)
        draft.body = QStringLiteral("# picture %1\n").arg(inStatement(img.name));
    if (known && !known->sameSamples(draft.before))
        draft.body +=
            QStringLiteral("# the picture was changed here by something that is not recorded\n");
    if (needsSelection && before.gmask && !(known && known->sameMask(draft.before)))
        draft.body += selectionLine(before);
}

void MacroRecorder::closeDraft(const image &img, const PictureState &after, const Values &wanted,
                               const QString &line)
{
    draft.picture = &img;
    draft.after = after;
    draft.wanted = wanted;
    draft.body += line;
    takenOut.erase(std::remove_if(takenOut.begin(), takenOut.end(),
                                  [&img](const Step &step) { return step.picture == &img; }),
                   takenOut.end());
    append(img, std::exchange(draft, Step()));
}

/// Writes a step behind the text.
void MacroRecorder::append(const image &img, Step step)
{
    step.head.clear();
    if (steps.empty()) {
        held.clear();
        step.head = QStringLiteral("# recorded on %1, %2 x %3\nuse defaults\n")
                        .arg(inStatement(img.name))
                        .arg(step.before.width)
                        .arg(step.before.height);
    }
    step.heldBefore = held;
    step.head += settingLines(step.wanted);
    QString text = script->text;
    if (!text.isEmpty() && !text.endsWith(QLatin1Char('\n')))
        text += QLatin1Char('\n');
    text += step.head + step.body;
    steps.push_back(std::move(step));
    setText(text);
}

/// The lines for what the macro has not given so far, or given otherwise.
QString MacroRecorder::settingLines(const Values &wanted)
{
    QString lines;
    for (auto it = wanted.begin(); it != wanted.end(); ++it) {
        const QString now = held.value(it.key(), runSettingDefault(it.key()));
        if (!now.isNull() && now == it.value())
            continue;
        lines += QStringLiteral("use %1 %2\n").arg(it.key(), inStatement(it.value()));
        held.insert(it.key(), it.value());
    }
    return lines;
}

// --- Area acts ------------------------------------------------------------------------------

void MacroRecorder::areaBegins(const image &img, bool usesSelection, const image *before)
{
    if (on)
        openDraft(img, before ? *before : img, usesSelection);
}

void MacroRecorder::figureDone(const image &img, const ToolFigure &figure, AreaJoin join,
                               int listed)
{
    if (!on)
        return;
    const QString line = figureLine(figure, join, listed);
    if (line.isEmpty())
        closeDraft(img, stateOf(img), {}, selectionLine(img));
    else
        closeDraft(img, stateOf(img), presentSettings(1u << figure.tool), line);
}

void MacroRecorder::areaDone(const image &img, const QString &words)
{
    if (on)
        closeDraft(img, stateOf(img), {},
                   words.isEmpty() ? selectionLine(img) : QStringLiteral("area %1\n").arg(words));
}

bool MacroRecorder::usesSelection(const QString &words)
{
    const AreaWord word = areaWord(words.section(QLatin1Char(' '), 0, 0));
    return word == AreaWord::Invert || word == AreaWord::Grow || word == AreaWord::Shrink ||
           word == AreaWord::Feather;
}

// --- Applies --------------------------------------------------------------------------------

void MacroRecorder::shapeBegins(const image &target)
{
    if (!on)
        return;
    shaping = true;
    openDraft(target, target, true);
}

void MacroRecorder::applied(const image &target, int id, bool begins)
{
    OpWrapper *op = on && id != kScriptOperator ? table->byId(id) : nullptr;
    if (!op || !op->self)
        return;
    if (!begins) {
        if (!applyLine.isEmpty())
            finishApply(target, id);
        return;
    }
    if (!shaping)
        openDraft(target, target, true);
    shaped = draft.before;
    if (shaping)
        shaped.mask = hashOf(target.gmask, target.width, target.height);
    const Workspace &space = *workspace();
    shapes = shaping && (!shaped.sameMask(draft.before) || space.invertSelection ||
                         space.curveMode != kFlatCurve || !target.anyMaskSet());
    shapeValues = presentSettings(kShapingActs);
    op->scriptLine(&applyLine);
    const bool lineless = applyLine.isEmpty() || applyLine.startsWith(QLatin1Char('#'));
    if (lineless)
        applyLine = QStringLiteral("perform %1\n").arg(op->scriptName);
    applyValues = presentSettings(kBlendingActs);
    addParameters(*op, lineless);
    seedLine(++seed);
}

void MacroRecorder::finishApply(const image &target, int id)
{
    QString line = std::exchange(applyLine, QString());
    if (randomUsed(seed))
        line.prepend(seedLine(seed) + QLatin1Char('\n'));
    if (shapes) {
        closeDraft(target, shaped, shapeValues, QStringLiteral("shape\n"));
        draft.before = shaped;
    }
    closeDraft(target, stateOf(target), applyValues, line);
    if (id == kSample) // its line gives them when the macro runs
        held.insert(kStatistics, runSettingText(kStatistics));
}

/// The parameters of an operator that its line leaves out, all of them where it has no line.
void MacroRecorder::addParameters(const OpWrapper &op, bool lineless)
{
    QStringList keys = {QStringLiteral("CurveKnots")};
    if (const auto *declared = dynamic_cast<const DeclaredOp *>(&op))
        for (const OpParameter &parameter : declared->parameters())
            if (lineless || !parameter.inScriptLine)
                keys << QString::fromLatin1(parameter.key);
    for (const QString &key : qAsConst(keys)) {
        const QString value = op.parameterText(key);
        if (!value.isNull())
            applyValues.insert(table->prefix + key, value);
    }
}

// --- History --------------------------------------------------------------------------------

/// The latest act of the picture that began as it is now, and those behind it, are undone.
void MacroRecorder::undone(const image &img)
{
    if (!on || steps.empty())
        return;
    const PictureState now = stateOf(img);
    const auto own = [&](size_t i) { return steps[i].picture == &img; };
    size_t last = steps.size();
    while (last > 0 && !own(last - 1))
        --last;
    if (last == 0)
        return;
    const Step &latest = steps[last - 1];
    if (latest.after == now && latest.before != now) // something else was undone
        return;
    size_t first = last;
    while (first > 0 && !(own(first - 1) && steps[first - 1].before == now))
        --first;
    if (first == 0)
        return;
    for (size_t i = last; i >= first; --i)
        if (own(i - 1))
            takeOut(i - 1);
}

void MacroRecorder::takeOut(size_t index)
{
    const Step step = steps[index];
    const bool newest = index + 1 == steps.size();
    QString text = script->text;
    const int at = text.lastIndexOf(step.body);
    if (newest && text.endsWith(step.head + step.body)) {
        text.chop(step.head.size() + step.body.size());
        held = step.heldBefore;
    } else if (at >= 0) { // what the head gives may serve lines behind it
        text.remove(at, step.body.size());
    } else {
        text += QStringLiteral("# an act was undone here whose lines were changed by hand\n");
    }
    steps.erase(steps.begin() + std::ptrdiff_t(index));
    takenOut.push_back(step);
    setText(text);
}

void MacroRecorder::redone(const image &img)
{
    if (!on || takenOut.empty())
        return;
    const PictureState now = stateOf(img);
    const auto own = [&](size_t i) { return takenOut[i].picture == &img; };
    size_t from = takenOut.size();
    while (from > 0 && !(own(from - 1) && takenOut[from - 1].after == now))
        --from;
    if (from == 0)
        return;
    for (size_t i = takenOut.size(); i >= from; --i) {
        if (!own(i - 1))
            continue;
        Step step = takenOut[i - 1];
        takenOut.erase(takenOut.begin() + std::ptrdiff_t(i - 1));
        append(img, std::move(step));
    }
}
