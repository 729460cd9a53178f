// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/scriptdesk.h"

#include "app/getstringgeneral.h"
#include "app/mainwindow.h"
#include "app/scriptdebug.h"
#include "app/scripteditor.h"
#include "app/scriptlibrarydialog.h"
#include "app/scriptreference.h"
#include "operators/base/operatortable.h"
#include "operators/dialog/operators.h"
#include "script/run/script.h"
#include "script/run/scriptdefaults.h"
#include "script/run/verbs.h"
#include "views/codeedit.h"
#include "views/imgwindow.h"

#include <QMenu>
#include <QProgressDialog>
#include <QScopedValueRollback>
#include <QSettings>

ScriptDesk::ScriptDesk(MainWindow *owner, OperatorTable *operators, FileBag *scriptBag,
                       FileBag *libraryBag)
    : runner(&parser, operators), main(owner), table(operators), scriptFileBag(scriptBag),
      libraryFileBag(libraryBag)
{
    parser.log = this;
    parser.blending = table->blending;
    setScriptDefaults(&parser);
    QStringList names;
    for (const OpWrapper *op : table->operators())
        names << op->scriptName;
    words.setLanguage(parser.operatorTable(), names, verbNames());
    words.setKnownVariables(knownVariables());
    if (Script *op = script()) {
        op->runner = &runner;
        op->openEditor = [this]() { openEditor(); };
    }
    connect(&library, &ScriptLibrary::changed, this, &ScriptDesk::libraryChanged);
}

ScriptDesk::~ScriptDesk()
{
    if (Script *op = script()) {
        op->runner = nullptr;
        op->openEditor = nullptr;
    }
    delete bar;
    delete libraryDialog;
    delete debug;
    delete editorWindow;
}

Script *ScriptDesk::script() const
{
    return qobject_cast<Script *>(table->byId(kScriptOperator));
}

QStringList ScriptDesk::knownVariables() const
{
    QStringList names;
    for (const auto &variable : parser.variables.all())
        names << variable->name;
    names.removeDuplicates();
    names.sort();
    return names;
}

void ScriptDesk::load(const QSettings &settings)
{
    recent.load(const_cast<QSettings &>(settings));
    library.load(settings);
    if (editorWindow)
        followOperator();
}

void ScriptDesk::save(QSettings &settings)
{
    recent.save(settings);
    library.save(settings);
    if (editorWindow)
        editorWindow->save(settings);
}

// --- Windows ----------------------------------------------------------------------------

ScriptEditor *ScriptDesk::editor()
{
    if (editorWindow)
        return editorWindow;
    editorWindow = new ScriptEditor(scriptFileBag, &recent, main);
    editorWindow->setWords(words);
    editorWindow->reference()->setEntries(referenceEntries(*table, knownVariables()));
    followOperator();
    if (table->store)
        editorWindow->load(*table->store);
    connect(editorWindow, &ScriptEditor::edited, this, &ScriptDesk::takeTexts);
    connect(editorWindow, &ScriptEditor::runRequested, this, &ScriptDesk::run);
    connect(editorWindow, &ScriptEditor::stopRequested, this, &ScriptDesk::stop);
    connect(editorWindow, &ScriptEditor::storeRequested, this, &ScriptDesk::storeScript);
    connect(editorWindow, &ScriptEditor::savedScriptsRequested, this, &ScriptDesk::showLibrary);
    connect(editorWindow, &ScriptEditor::debugRequested, this, &ScriptDesk::showDebug);
    return editorWindow;
}

void ScriptDesk::openEditor()
{
    if (!running && table->currentOp != kScriptOperator)
        main->operatorDialog()->selectOperator(kScriptOperator);
    ScriptEditor *window = editor();
    if (window->isMinimized())
        window->showNormal();
    window->show();
    window->raise();
    window->activateWindow();
}

void ScriptDesk::closeEditor()
{
    if (editorWindow && !running)
        editorWindow->close();
}

void ScriptDesk::showReference()
{
    openEditor();
    editor()->showReference();
}

ScriptDebug *ScriptDesk::debugWindow()
{
    if (!debug) {
        debug = new ScriptDebug(scriptFileBag, main);
        connect(debug, &ScriptDebug::placeRequested, this, &ScriptDesk::goTo);
    }
    return debug;
}

void ScriptDesk::showDebug()
{
    debugWindow()->show();
    debug->raise();
}

void ScriptDesk::showDebugOnce()
{
    // Each message would take the front from the window that the person looks at.
    if (debugShown && debug && debug->isVisible())
        return;
    debugShown = true;
    showDebug();
}

void ScriptDesk::showLibrary()
{
    if (!libraryDialog) {
        libraryDialog = new ScriptLibraryDialog(
            &library, [this](int key) { return main->useOfScriptKey(key); }, libraryFileBag, main);
        connect(libraryDialog, &ScriptLibraryDialog::runRequested, this, &ScriptDesk::runSaved);
        connect(libraryDialog, &ScriptLibraryDialog::editRequested, this,
                [this](const QString &name) {
                    const SavedScript *saved = library.find(name);
                    if (!saved)
                        return;
                    const SavedScript copy = *saved;
                    openEditor();
                    if (!editor()->openText(copy.text))
                        return;
                    if (!copy.presets.isEmpty())
                        editor()->setTexts(copy.text, copy.presets, true);
                    takeTexts();
                });
    }
    libraryDialog->show();
    libraryDialog->raise();
    libraryDialog->activateWindow();
}

void ScriptDesk::storeScript()
{
    SavedScript saved;
    saved.text = editor()->script();
    if (editor()->presetsOn() && !editor()->presets().trimmed().isEmpty())
        saved.presets = editor()->presets();
    QString name =
        editor()->fileName().section(QLatin1Char('/'), -1).section(QLatin1Char('.'), 0, 0);
    for (QString error = QStringLiteral(" "); !error.isEmpty();) {
        GetStringGeneral dialog(tr("Store in Saved Scripts"),
                                error.trimmed().isEmpty() ? tr("Name of the script:") : error, name,
                                editor());
        if (dialog.exec() != QDialog::Accepted)
            return;
        error.clear();
        name = dialog.text().simplified();
        if (library.find(name) &&
            main->question(tr("Store in Saved Scripts"),
                           tr("Put this script in place of the saved script \"%1\"?")
                               .arg(name.toHtmlEscaped()),
                           {tr("Cancel"), tr("Replace")}, 1, 0) != 1) {
            error = tr("Another name of the script:");
            continue;
        }
        saved.name = name;
        if (library.store(saved, &error))
            editor()->tell(tr("\"%1\" is kept in the saved scripts. Give it a key there, or find "
                              "it in the Script menu.")
                               .arg(name));
    }
}

void ScriptDesk::fillLibraryMenu(QMenu *menu)
{
    menu->clear();
    for (const SavedScript &saved : library.scripts()) {
        QString text = saved.name;
        QAction *action = menu->addAction(text.replace(QLatin1Char('&'), QLatin1String("&&")));
        // A shortcut proper: image windows hand keys on that no command is bound to.
        if (saved.key)
            action->setShortcut(QKeySequence(saved.key));
        const QString name = saved.name;
        // Later: the entry itself may go while its script runs.
        connect(
            action, &QAction::triggered, this, [this, name]() { runSaved(name); },
            Qt::QueuedConnection);
    }
    if (!library.scripts().isEmpty())
        menu->addSeparator();
    connect(menu->addAction(tr("&Edit Saved Scripts…")), &QAction::triggered, this,
            &ScriptDesk::showLibrary);
}

void ScriptDesk::fillRecentMenu(QMenu *menu)
{
    editor()->fillRecent(menu);
}

// --- The texts of the operator ------------------------------------------------------------

void ScriptDesk::followOperator()
{
    const Script *op = script();
    if (editorWindow && op && !following)
        editorWindow->setTexts(op->text, op->presets, op->presetsOn);
}

/// What is edited in the window is what the operator runs; its page follows.
void ScriptDesk::takeTexts()
{
    Script *op = script();
    if (!op || !editorWindow)
        return;
    const QScopedValueRollback<bool> guard(following, true);
    op->setText(editorWindow->script());
    op->presets = editorWindow->presets();
    op->setPresetsOn(editorWindow->presetsOn());
    main->scriptTextChanged();
}

void ScriptDesk::goTo(bool inPresets, int line)
{
    // A saved script that was run from the menu is not what the editor shows.
    const SavedScript *saved = library.find(runName);
    if (saved && !inPresets && editor()->script() != saved->text) {
        const QString text = saved->text;
        openEditor();
        if (!editor()->openText(text))
            return;
        takeTexts();
    }
    openEditor();
    editor()->goTo(inPresets, line);
}
