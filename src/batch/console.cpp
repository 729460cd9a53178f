// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/console.h"

#include "batch/messages.h"
#include "batch/session.h"
#include "core/memory.h"
#include "core/undo.h"
#include "core/workspace.h"
#include "operators/base/opwrapper.h"

#include <QRegularExpression>

#include <algorithm>
#include <istream>
#include <limits>
#include <ostream>
#include <string>

#include <unistd.h>

namespace
{
/// Longer lines are no script text: they are read to their end and refused.
constexpr size_t kLongestLine = size_t(16) << 20;
constexpr int kLongestQuote = 40;
constexpr int kScriptOperator = 82;
constexpr int kEnd = std::char_traits<char>::eof();

QString quoted(const QString &text)
{
    const QString cut =
        text.size() > kLongestQuote ? text.left(kLongestQuote) + QStringLiteral("...") : text;
    return QLatin1Char('"') + singleLine(cut) + QLatin1Char('"');
}

QStringList words(const QString &text)
{
    static const QRegularExpression blanks(QStringLiteral("\\s+"));
    return text.split(blanks, Qt::SkipEmptyParts);
}

bool readNumber(const QString &text, int low, int high, int *value)
{
    bool ok = false;
    *value = text.toInt(&ok);
    return ok && *value >= low && *value <= high;
}

/// After samples were set directly.
void touched(image *img)
{
    img->changed = true;
    img->markMasterForRebuild();
}
} // namespace

const Console::Command Console::kCommands[] = {
    {".text", "EXPR", 1, -1, false, &Console::text},
    {".value", "EXPR", 1, -1, false, &Console::value},
    {".tokens", "EXPR", 1, -1, false, &Console::tokens},
    {".vars", "", 0, 0, false, &Console::variables},
    {".rich", "on|off", 1, 1, false, &Console::rich},
    {".layers", "", 0, 0, true, &Console::listLayers},
    {".layer", "N", 1, 1, true, &Console::chooseLayer},
    {".compose", "", 0, 0, true, &Console::composeStack},
    {".pixel", "X Y", 2, 2, true, &Console::pixel},
    {".size", "", 0, 0, true, &Console::size},
    {".fill", "R G B A", 4, 4, true, &Console::fill},
    {".poke", "X Y R G B A", 6, 6, true, &Console::poke},
    {".mask", "X Y V", 3, 3, true, &Console::mask},
    {".rect", "L T R B", 4, 4, true, &Console::rect},
    {".ellipse", "XC YC XR YR", 4, 4, true, &Console::ellipse},
    {".rellipse", "L T R B", 4, 4, true, &Console::rellipse},
    {".entire", "", 0, 0, true, &Console::entire},
    {".wand", "X Y TOL", 3, 3, true, &Console::wand},
    {".polygon", "X1 Y1 X2 Y2...", 2, -1, true, &Console::polygon},
    {".spline", "X1 Y1 X2 Y2...", 2, -1, true, &Console::spline},
    {".smooth", "RADIUS AMOUNT", 2, 2, true, &Console::smooth},
    {".load", "IMAGE", 1, -1, false, &Console::load},
    {".save", "PATH", 1, -1, true, &Console::save},
    {".origin", "[IMAGE]", 0, -1, false, &Console::origin},
    {".brush", "[IMAGE]", 0, -1, false, &Console::brush},
    {".set", "KEY VALUE", 1, -1, false, &Console::set},
    {".apply", "NAME ARGS...", 1, -1, true, &Console::apply},
    {".scriptline", "NAME", 1, 1, false, &Console::scriptline},
    {".snapshot", "", 0, 0, true, &Console::snapshot},
    {".undo", "", 0, 0, true, &Console::undoStep},
    {".redo", "", 0, 0, true, &Console::redoStep},
    {".memory", "", 0, 0, false, &Console::memory},
    {".quit", "", 0, 0, false, &Console::quit},
};

Console::Console(Session *work, Messages *sink, const Streams &where)
    : session(work), messages(sink), streams(where), editor(where.out, QStringLiteral("> "))
{
}

void Console::run()
{
    session->parser()->log = this;
    session->scripts()->begin(session->current());
    QString line;
    while (running && streams.out) {
        const Reading reading = streams.inIsTerminal ? readTerminal(&line) : readLine(&line);
        if (reading == Reading::End)
            break;
        ++lineNumber;
        if (reading == Reading::TooLong)
            answer(QStringLiteral("failed: the line is too long"));
        else
            answerLine(line);
    }
    session->scripts()->end();
    session->parser()->log = nullptr;
}

Console::Reading Console::readTerminal(QString *line)
{
    const RawTerminal keys(STDIN_FILENO);
    editor.begin(keys.columns());
    for (int c = streams.in.get(); c != kEnd; c = streams.in.get()) {
        const LineEditor::Step step = editor.feed(char(c));
        *line = editor.text();
        if (step != LineEditor::Step::More)
            return step == LineEditor::Step::Line ? Reading::Line : Reading::End;
    }
    return Reading::End;
}

Console::Reading Console::readLine(QString *line)
{
    std::string bytes;
    bool tooLong = false;
    int c = streams.in.get();
    if (c == kEnd)
        return Reading::End;
    for (; c != kEnd && c != '\n'; c = streams.in.get()) {
        if (bytes.size() < kLongestLine)
            bytes.push_back(char(c));
        else
            tooLong = true;
    }
    if (!bytes.empty() && bytes.back() == '\r')
        bytes.pop_back();
    *line = QString::fromUtf8(bytes.data(), int(bytes.size()));
    return tooLong ? Reading::TooLong : Reading::Line;
}

void Console::answer(const QString &line)
{
    writeLine(streams.out, line);
}

bool Console::fail(const QString &why)
{
    failure = why;
    return false;
}

void Console::answerLine(const QString &line)
{
    if (line.size() > 1 && line[0] == QLatin1Char('.') && line[1].isLetter()) {
        if (!runCommand(line))
            answer(QStringLiteral("failed: ") + singleLine(failure));
        targetIsOld = true;
        return;
    }
    runScriptLine(line);
}

bool Console::runCommand(const QString &line)
{
    const QStringList arguments = words(line);
    const QString &name = arguments.first();
    rest = line.mid(name.size()).trimmed();
    const int count = int(arguments.size()) - 1;
    for (const Command &command : kCommands) {
        if (name != QLatin1String(command.name))
            continue;
        if (count < command.least || (command.most >= 0 && count > command.most))
            return fail(QStringLiteral("usage: %1 %2")
                            .arg(name, QLatin1String(command.arguments))
                            .trimmed());
        if (command.needsImage && !session->current())
            return fail(QStringLiteral("no image"));
        return (this->*command.act)(arguments.mid(1));
    }
    return fail(QStringLiteral("unknown command ") + quoted(name));
}

bool Console::readWhole(const QString &text, const char *what, int low, int high, int *value)
{
    return readNumber(text, low, high, value) ||
           fail(QStringLiteral("%1 is %2 to %3, not ").arg(QLatin1String(what)).arg(low).arg(high) +
                quoted(text));
}

bool Console::readReal(const QString &text, const char *what, double low, double high,
                       double *value)
{
    bool ok = false;
    *value = text.toDouble(&ok); // in the C locale
    return (ok && *value >= low && *value <= high) ||
           fail(QStringLiteral("%1 is %2 to %3, not ").arg(QLatin1String(what)).arg(low).arg(high) +
                quoted(text));
}

bool Console::readPlace(const QStringList &arguments, int64_t *index)
{
    const image *img = session->current();
    int x = 0, y = 0;
    if (!readWhole(arguments[0], "X", 0, img->width - 1, &x) ||
        !readWhole(arguments[1], "Y", 0, img->height - 1, &y))
        return false;
    *index = int64_t(y) * img->width + x;
    return true;
}

bool Console::readSamples(const QStringList &arguments, int first, uint16_t *samples)
{
    for (int i = first; i < arguments.size(); ++i) {
        int value = 0;
        if (!readNumber(arguments[i], 0, 65535, &value))
            return fail(QStringLiteral("a sample is 0 to 65535, not ") + quoted(arguments[i]));
        samples[i - first] = uint16_t(value);
    }
    return true;
}

bool Console::pixel(const QStringList &arguments)
{
    int64_t index = 0;
    if (!readPlace(arguments, &index))
        return false;
    QStringList samples;
    for (const uint16_t *plane : session->current()->workPlanes())
        samples += QString::number(plane ? plane[index] : 0);
    answer(samples.join(QLatin1Char(' ')));
    return true;
}

bool Console::size(const QStringList &)
{
    answer(QStringLiteral("%1 %2").arg(session->current()->width).arg(session->current()->height));
    return true;
}

bool Console::fill(const QStringList &arguments)
{
    uint16_t samples[4];
    if (!readSamples(arguments, 0, samples))
        return false;
    session->current()->fill(samples[0], samples[1], samples[2], samples[3]);
    touched(session->current());
    return true;
}

bool Console::poke(const QStringList &arguments)
{
    int64_t index = 0;
    uint16_t samples[4];
    if (!readPlace(arguments, &index) || !readSamples(arguments, 2, samples))
        return false;
    const uint16_t *sample = samples;
    for (uint16_t *plane : session->current()->colorPlanes())
        plane[index] = *sample++;
    touched(session->current());
    return true;
}

bool Console::mask(const QStringList &arguments)
{
    int64_t index = 0;
    uint16_t value = 0;
    if (!readPlace(arguments, &index) || !readSamples(arguments, 2, &value))
        return false;
    session->current()->gmask[index] = value;
    return true;
}

bool Console::load(const QStringList &)
{
    return session->load(rest, &failure);
}

bool Console::save(const QStringList &)
{
    return session->save(outputName(rest, session->currentInput(), 1), &failure);
}

bool Console::origin(const QStringList &)
{
    return session->assignOrigin(rest, &failure);
}

bool Console::brush(const QStringList &)
{
    return session->assignBrush(rest, &failure);
}

bool Console::set(const QStringList &arguments)
{
    const QString &key = arguments.first();
    return session->set(key, rest.mid(key.size()).trimmed(), &failure);
}

bool Console::apply(const QStringList &arguments)
{
    OperatorTable *table = session->operators();
    image *target = session->current();
    OpWrapper *op = table->byScriptName(arguments.first());
    if (!op)
        return fail(QStringLiteral("unknown operator ") + quoted(arguments.first()));
    if (target->kind == 1 && !OperatorTable::allowedOnMaster(op->id))
        return fail(op->scriptName + QStringLiteral(" does not work on a master"));
    if (op->id == kScriptOperator) // which would find another run going on: the console's
        return fail(QStringLiteral("the console runs scripts line by line: type its statements"));
    const QStringList values = arguments.mid(1);
    QString usage;
    // An operator without a script line runs with its present parameters.
    if (!op->readArguments(int(values.size()), values, &usage) &&
        !(usage.isEmpty() && values.isEmpty()))
        return fail(usage.isEmpty() ? op->scriptName + QStringLiteral(" takes no values") : usage);
    table->currentOp = op->id;
    table->prepareAndApply(target, true);
    return true;
}

bool Console::scriptline(const QStringList &arguments)
{
    OpWrapper *op = session->operators()->byScriptName(arguments.first());
    if (!op)
        return fail(QStringLiteral("unknown operator ") + quoted(arguments.first()));
    QString line;
    op->scriptLine(&line);
    if (line.isEmpty())
        return fail(op->scriptName + QStringLiteral(" has no script line"));
    answer(line.endsWith(QLatin1Char('\n')) ? line.chopped(1) : line);
    return true;
}

bool Console::snapshot(const QStringList &)
{
    beginAct(session->current());
    return true;
}

bool Console::undoStep(const QStringList &)
{
    image *img = session->current();
    if (img->undoList.isEmpty()) {
        answer(QStringLiteral("nothing"));
        return true;
    }
    undo(img);
    img->markMasterForRebuild();
    return true;
}

bool Console::redoStep(const QStringList &)
{
    image *img = session->current();
    if (img->redoList.isEmpty()) {
        answer(QStringLiteral("nothing"));
        return true;
    }
    redo(img);
    img->markMasterForRebuild();
    return true;
}

bool Console::memory(const QStringList &)
{
    memSweep();
    answer(memReport(true));
    return true;
}

bool Console::quit(const QStringList &)
{
    running = false;
    return true;
}

bool Console::listLayers(const QStringList &)
{
    const QList<image *> layers = session->layers();
    if (layers.isEmpty())
        return fail(QStringLiteral("not a layered picture"));
    for (const image *layer : layers)
        answer(QStringLiteral("%1 %2 %3 %4")
                   .arg(QString::number(layer->layerIndex()), QString::number(layer->layerMode),
                        numberText(layer->opacity), singleLine(layer->name)));
    return true;
}

bool Console::chooseLayer(const QStringList &arguments)
{
    int number = 0;
    if (!readNumber(arguments[0], 0, std::numeric_limits<int>::max(), &number))
        return fail(QStringLiteral("a layer is a whole number from 0, not ") +
                    quoted(arguments[0]));
    return session->chooseLayer(number, &failure);
}

bool Console::composeStack(const QStringList &)
{
    return session->composeCurrent(&failure);
}
