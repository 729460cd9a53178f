// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/run/verbs.h"

#include "area/producers.h"
#include "area/wand.h"
#include "core/image.h"
#include "core/memory.h"
#include "core/workspace.h"
#include "operators/base/operatortable.h"
#include "script/engine/exparser.h"
#include "script/engine/expression.h"
#include "script/run/scriptrunner.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <limits>

namespace
{
constexpr int kNoLimit = std::numeric_limits<int>::max();
/// Figures may reach out of the image by as much as the widest image has.
constexpr int kFurthestPlace = 2 * kMaxImageSide;
/// Ellipses of more have a circumference that the point list does not hold.
constexpr double kMostRadius = 40743;
constexpr int kLongestPause = 10; ///< in seconds
constexpr int kSlice = 50;        ///< of a pause, in ms

constexpr ScriptVerb kVerbs[] = {
    {"mix", "mix [Amount=0.0...100.0]", 1, 1, true, &ScriptRunner::mixVerb},
    {"pause", "pause [Seconds=1...10]", 1, 1, false, &ScriptRunner::pauseVerb},
    {"rect", "rect [Left] [Top] [Right] [Bottom]", 4, 4, true, &ScriptRunner::rectVerb},
    {"ellipse", "ellipse [XCenter] [YCenter] [XRadius] [YRadius]", 4, 4, true,
     &ScriptRunner::ellipseVerb},
    {"rellipse", "rellipse [Left] [Top] [Right] [Bottom]", 4, 4, true, &ScriptRunner::rellipseVerb},
    {"entire", "entire", 0, 0, true, &ScriptRunner::entireVerb},
    {"wand", "wand [X] [Y] [Tolerance=1...100]", 3, 3, true, &ScriptRunner::wandVerb},
    {"vload", "vload [filespec] [origin 0...1] [reload 0...1]", 3, kNoLimit, false,
     &ScriptRunner::vloadVerb},
    {"text", "text [Font] [X] [Y] [Scale=0.1...2.0] [Text]", 5, kNoLimit, true,
     &ScriptRunner::textVerb},
    {"area",
     "area [none, all, invert, alpha, luma, grow N, shrink N, feather N] or area [replace, add, "
     "subtract] [Figure] [Numbers...]",
     1, kNoLimit, true, &ScriptRunner::areaVerb, true},
    {"selection", "selection [WidthxHeight] [Data]", 2, 2, true, &ScriptRunner::selectionVerb,
     true},
    {"use", "use [Key] [Value] or use defaults", 1, kNoLimit, false, &ScriptRunner::useVerb, true},
    {"shape", "shape", 0, 0, true, &ScriptRunner::shapeVerb, true},
    {"perform", "perform [Operator]", 1, 1, true, &ScriptRunner::performVerb, true},
};
} // namespace

const ScriptVerb *findVerb(const QString &word)
{
    const auto *const found = std::find_if(std::begin(kVerbs), std::end(kVerbs), [&](auto &verb) {
        return word == QLatin1String(verb.name);
    });
    return found == std::end(kVerbs) ? nullptr : found;
}

QStringList verbNames()
{
    QStringList names;
    for (const ScriptVerb &verb : kVerbs)
        names << QString::fromLatin1(verb.name);
    return names;
}

bool ScriptRunner::mixVerb(const QStringList &tokens)
{
    double amount = 0;
    if (!doubleParam(tokens[1], 0, 100, &amount))
        return false;
    if (target->kind == 1) {
        parser->report(QStringLiteral("e: mix does not work on a master"));
    } else if (table) {
        table->mix(target, amount);
        markChanged(true);
    }
    return true;
}

/// Waits while events are handled, in which the person may stop the run or close the image.
bool ScriptRunner::pauseVerb(const QStringList &tokens)
{
    int seconds = 0;
    if (!intParam(tokens[1], 1, kLongestPause, &seconds))
        return false;
    if (internal || pausing)
        return true;
    showChanges();
    pausing = true;
    const Clock::time_point until = Clock::now() + std::chrono::seconds(seconds);
    for (auto now = Clock::now(); running && now < until; now = Clock::now()) {
        using std::chrono::milliseconds;
        const int64_t left = std::chrono::duration_cast<milliseconds>(until - now).count();
        const int slice = int(std::clamp<int64_t>(left, 1, kSlice));
        if (QCoreApplication::instance()) {
            QEventLoop events;
            QTimer::singleShot(slice, Qt::PreciseTimer, &events, &QEventLoop::quit);
            events.exec();
        } else {
            QThread::msleep(uint32_t(slice));
        }
        followEvents();
    }
    pausing = false;
    return true;
}

// --- Figures ----------------------------------------------------------------------------

/// What a producer of the area tools came to. Nothing to select is no wrong parameter.
bool ScriptRunner::select(bool done, const char *verb)
{
    if (done)
        markChanged(false);
    else
        parser->report(QStringLiteral("w: %1 selects nothing").arg(QLatin1String(verb)));
    return true;
}

bool ScriptRunner::readBox(const QStringList &tokens, int *box) const
{
    for (int i = 0; i < 4; ++i)
        if (!intParam(tokens[i + 1], -kFurthestPlace, kFurthestPlace, &box[i]))
            return false;
    return true;
}

bool ScriptRunner::rectVerb(const QStringList &tokens)
{
    int box[4];
    return readBox(tokens, box) && target &&
           select(rectSelect(target, box[0], box[1], box[2], box[3], false), "rect");
}

bool ScriptRunner::rellipseVerb(const QStringList &tokens)
{
    int box[4];
    return readBox(tokens, box) && target &&
           select(ellipseInBox(target, box[0], box[1], box[2], box[3]), "rellipse");
}

bool ScriptRunner::ellipseVerb(const QStringList &tokens)
{
    double x = 0, y = 0, across = 0, down = 0;
    return doubleParam(tokens[1], -kFurthestPlace, kFurthestPlace, &x) &&
           doubleParam(tokens[2], -kFurthestPlace, kFurthestPlace, &y) &&
           doubleParam(tokens[3], 0, kMostRadius, &across) &&
           doubleParam(tokens[4], 0, kMostRadius, &down) && target &&
           select(ellipseSelect(target, x, y, across, down, false), "ellipse");
}

bool ScriptRunner::entireVerb(const QStringList &)
{
    return select(entireSelect(target), "entire");
}

bool ScriptRunner::wandVerb(const QStringList &tokens)
{
    int x = 0, y = 0, tolerance = 0;
    return intParam(tokens[1], 0, 0, &x) && intParam(tokens[2], 0, 0, &y) &&
           intParam(tokens[3], 1, 100, &tolerance) && target &&
           select(wandSelect(target, x, y, tolerance), "wand");
}
