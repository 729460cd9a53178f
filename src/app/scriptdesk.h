// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/recentlist.h"
#include "app/scriptlibrary.h"
#include "script/engine/exparser.h"
#include "script/engine/scripthost.h"
#include "script/run/scriptrunner.h"
#include "views/scripthighlighter.h"

#include <QElapsedTimer>
#include <QObject>

#include <memory>

class MainWindow;
class OperatorTable;
class QMenu;
class QProgressDialog;
class QSettings;
class Script;
class ScriptDebug;
class ScriptEditor;
class ScriptLibraryDialog;
struct FileBag;

constexpr int kScriptOperator = 82; ///< its id

/// Everything of the script language that a person sees: the parser and the runner of the
/// program, the editor with its debug window, the saved scripts, and the runs themselves.
class ScriptDesk : public QObject, public ScriptLog
{
    Q_OBJECT
public:
    /// What runs while a script does: the guard lets nothing but the script's own windows hear
    /// the person, since a run works on the pictures that other windows would change.
    class Run;

    /// All borrowed; the main window owns the desk.
    ScriptDesk(MainWindow *owner, OperatorTable *operators, FileBag *scriptBag,
               FileBag *libraryBag);
    ~ScriptDesk() override;

    void load(const QSettings &settings);
    void save(QSettings &settings);

    // --- Windows ----------------------------------------------------------------------
    void openEditor();
    void closeEditor();
    void showReference();
    void showDebug();
    void showLibrary();
    /// Keeps the editor's script under a name that the person gives.
    void storeScript();
    /// Fills the menu of saved scripts.
    void fillLibraryMenu(QMenu *menu);
    void fillRecentMenu(QMenu *menu);
    /// The page of the operator dialog, or the operator, has got another script.
    void followOperator();

    // --- Runs -------------------------------------------------------------------------
    /// Applies the Script operator to the current picture.
    void run();
    void runSaved(const QString &name);
    void stop();
    bool isRunning() const { return running; }
    /// Lets the person in now and then while a script runs. True if it is to stop.
    bool stopWanted();
    /// Shows how far a run is; false if none is on.
    bool takeProgress(const QString &text, int64_t done, int64_t total);

    void scriptReport(const ScriptReport &report) override;
    void scriptHint(int statement, int line, const QString &word, const QString &nearest) override;

    exParser parser;
    ScriptRunner runner;
    ScriptLibrary library;
    ScriptWords words;

signals:
    /// The saved scripts, or their keys, are others.
    void libraryChanged();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    Script *script() const;
    ScriptEditor *editor();
    ScriptDebug *debugWindow();
    QStringList knownVariables() const;
    void takeTexts();
    void goTo(bool inPresets, int line);
    void beginRun();
    void endRun();
    void showDebugOnce();
    void apply();
    bool pictureReady();
    bool belongsToScripts(const QObject *object) const;

    MainWindow *main;
    OperatorTable *table;
    FileBag *scriptFileBag, *libraryFileBag;
    ScriptEditor *editorWindow = nullptr; ///< this and the next are made when first used
    ScriptDebug *debug = nullptr;
    ScriptLibraryDialog *libraryDialog = nullptr;
    QProgressDialog *bar = nullptr;
    RecentList recent{QStringLiteral("recentScripts")};
    bool running = false, stopped = false, debugShown = false;
    bool following = false; ///< the page's editor follows the window's
    QString runName;        ///< of the saved script that runs, or ran last; empty: the editor's
    QElapsedTimer clock;
    qint64 lastBreath = 0;
};

class ScriptDesk::Run
{
public:
    explicit Run(ScriptDesk *desk);
    ~Run();
    Run(const Run &) = delete;
    Run &operator=(const Run &) = delete;

private:
    ScriptDesk *desk; ///< null: no script is to run, or one does already
};
