// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "batch/batch.h"
#include "batch/lineeditor.h"

#include <QString>
#include <QStringList>

class Session;
class image;
struct AreaPoint;

/// The console of --interactive: reads commands and statements line by line and answers
/// each in order, flushed after every line.
class Console
{
public:
    Console(Session *session, const Streams &streams);

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
    bool runStatement(const QString &statement);

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
    bool needsLanguage(const QStringList &arguments);
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
    Streams streams;
    LineEditor editor;
    QString failure;
    QString rest; ///< the arguments of the present command as one text
    bool running = true;
};
