// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "area/areastate.h"
#include "batch/batchworkspace.h"
#include "batch/options.h"
#include "operators/base/operatortable.h"
#include "operators/pipeline/colorblending.h"
#include "script/engine/exparser.h"
#include "script/run/scriptrunner.h"

class Messages;

/// What one run of the tool holds: the workspace, the operators, the images. Of the
/// images it owns the current one and the assigned ones.
class Session
{
public:
    explicit Session(Messages *messages);
    ~Session();
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    /// Reads the user's stored settings; the store itself is left as it is.
    void readStoredSettings();
    /// Sets the workspace by --set, --depth and --quality. False with a reason.
    bool configure(const Options &options, QString *error);

    /// One setting of the workspace, or one parameter of an operator by its whole key. False
    /// with a reason.
    bool set(const QString &key, const QString &value, QString *error);

    /// Loads a file or makes a fresh image, and makes it the current one. False with a
    /// reason that names it; the current image is then as it was.
    bool load(const QString &input, QString *error);
    /// Saves the current image by the save dispatch. False with a reason that names the file.
    bool save(const QString &path, QString *error);
    /// Ends the current image, if there is one.
    void drop();
    /// The current image, or the layer of it that was chosen. A master is composed first
    /// if a layer changed.
    image *current();
    /// Makes a layer of the current stack, counted from the top from 1, what current()
    /// gives; 0 the master itself. False with a reason.
    bool chooseLayer(int number, QString *error);
    /// Composes the stack that the current image belongs to. False if it is not layered.
    bool composeCurrent(QString *error);
    /// The layers of the current image, bottom first; empty if it is not layered.
    QList<image *> layers() const;
    /// What the current image was loaded from, as it was given.
    QString currentInput() const { return inputName; }

    /// Assigns the image of that name, or clears the assignment if it is empty.
    bool assignOrigin(const QString &input, QString *error);
    bool assignBrush(const QString &input, QString *error);

    /// Runs a whole script on the current image as the Apply button does. What it reports
    /// goes to the parser's log. False if a statement failed or not all were reached.
    bool runScript(const QString &text);

    Workspace *workspace() { return &space; }
    OperatorTable *operators() { return &table; }
    exParser *parser() { return &language; }
    ScriptRunner *scripts() { return &runner; }

private:
    image *read(const QString &input, QString *error);
    bool replace(image **held, const QString &input, QString *error);
    void end(image **held);

    Messages *messages;
    BatchWorkspace space; // first of what follows: images and operators ask it
    AreaState area;       ///< which the area commands find by areaState()
    colorblending blending;
    OperatorTable table;
    exParser language;
    ScriptRunner runner;
    image *currentImage = nullptr; ///< owned: an atomic image or a master
    image *currentLayer = nullptr; ///< one of its layers, or null
    QString inputName;
    image *originImage = nullptr;
    image *brushImage = nullptr;
};
