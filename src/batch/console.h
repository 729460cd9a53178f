// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "batch/batch.h"
#include "batch/lineeditor.h"
#include "script/engine/scripthost.h"

#include <QString>
#include <QStringList>

#include <functional>

class Messages;
class Session;
class image;
struct AreaPoint;
struct StatementResult;

/// The console of --interactive: reads commands and statements line by line and answers
/// each in order, flushed after every line. The statements of all lines are one run of the
/// language. Beside the answers, the messages tell the input line of what went wrong.
class Console : private ScriptLog
{
public:
    Console(Session *session, Messages *messages, const Streams &streams);

    /// Runs until .quit or the end of the input.
    void run();

private:
    struct Command {
        const char *name; ///< with its dot
        const char *arguments;
        int least, most; ///< how many arguments; most -1: any number
        bool needsImage;
        bool (Console::*act)(const QStringList &arguments);
    };
    static const Command kCommands[];

    enum class Reading { Line, TooLong, End };
    Reading readLine(QString *line);
    Reading readTerminal(QString *line);
    void answer(const QString &line);
    /// Notes why something cannot be done; always false.
    bool fail(const QString &why);

    void answerLine(const QString &line);
    bool runCommand(const QString &line);

    // In console_script.cpp
    using Answer = std::function<void(const StatementResult &)>;
    void runStatements(const QString &statements, const Answer &answerTo);
    void runScriptLine(const QString &line);
    /// Does something with an expression as if it stood in a statement.
    bool lookWithin(const std::function<bool()> &look);
    void answerStatement(const StatementResult &result);
    void scriptReport(const ScriptReport &report) override;
    void scriptHint(int statement, int line, const QString &word, const QString &nearest) override;
    /// Beside an answer, where the input is read by a program: the line it belongs to.
    QString place() const;
    bool text(const QStringList &arguments);
    bool value(const QStringList &arguments);
    bool tokens(const QStringList &arguments);
    bool variables(const QStringList &arguments);
    bool rich(const QStringList &arguments);

    bool pixel(const QStringList &arguments);
    bool size(const QStringList &arguments);
    bool fill(const QStringList &arguments);
    bool poke(const QStringList &arguments);
    bool mask(const QStringList &arguments);
    bool load(const QStringList &arguments);
    bool save(const QStringList &arguments);
    bool origin(const QStringList &arguments);
    bool brush(const QStringList &arguments);
    bool set(const QStringList &arguments);
    bool apply(const QStringList &arguments);
    bool scriptline(const QStringList &arguments);
    bool snapshot(const QStringList &arguments);
    bool undoStep(const QStringList &arguments);
    bool redoStep(const QStringList &arguments);
    bool memory(const QStringList &arguments);
    bool quit(const QStringList &arguments);
    bool listLayers(const QStringList &arguments);
    bool chooseLayer(const QStringList &arguments);
    bool composeStack(const QStringList &arguments);

    // In console_area.cpp
    bool rect(const QStringList &arguments);
    bool ellipse(const QStringList &arguments);
    bool rellipse(const QStringList &arguments);
    bool entire(const QStringList &arguments);
    bool wand(const QStringList &arguments);
    bool polygon(const QStringList &arguments);
    bool spline(const QStringList &arguments);
    bool smooth(const QStringList &arguments);
    /// Makes a selection of the current image; says why there is none.
    template <class Select>
    bool select(const Select &produce);
    bool selectFigure(AreaPoint closing, bool (*produce)(image *, bool));
    bool readBox(const QStringList &arguments, int *box);
    bool readCorners(const QStringList &arguments);

    /// Reads a number of that range; says what `what` may be if it is none.
    bool readWhole(const QString &text, const char *what, int low, int high, int *value);
    bool readReal(const QString &text, const char *what, double low, double high, double *value);
    /// Reads x and y as the place of a sample of the current image.
    bool readPlace(const QStringList &arguments, int64_t *index);
    bool readSamples(const QStringList &arguments, int first, uint16_t *samples);

    Session *session;
    Messages *messages;
    Streams streams;
    LineEditor editor;
    QString failure;
    QString rest; ///< the arguments of the present command as one text
    bool running = true;
    bool richReports = false;
    bool targetIsOld = false; ///< a command may have changed the images of the run
    int lineNumber = 0;       ///< of the input, from 1
};
