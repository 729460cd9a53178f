// SPDX-License-Identifier: GPL-3.0-or-later
// Runs of scripts: what the person sees of one, and how it is stopped.
#include "app/scriptdesk.h"

#include "app/mainwindow.h"
#include "app/scriptdebug.h"
#include "app/scripteditor.h"
#include "operators/base/operatortable.h"
#include "operators/dialog/operators.h"
#include "script/run/script.h"
#include "views/codeedit.h"
#include "views/imgwindow.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QProgressDialog>
#include <QScopedValueRollback>
#include <QThread>
#include <QTime>

namespace
{
constexpr int kBreathMs = 40;
constexpr int kBarDelayMs = 700; ///< a shorter run shows no bar of its own
constexpr int kBarSteps = 1000;

bool isInput(QEvent::Type type)
{
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::Wheel:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::Shortcut:
    case QEvent::ShortcutOverride:
    case QEvent::ContextMenu:
    case QEvent::TabletPress:
    case QEvent::TabletMove:
    case QEvent::TabletRelease:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::DragEnter:
    case QEvent::Drop:
        return true;
    default:
        return false;
    }
}
} // namespace

ScriptDesk::Run::Run(ScriptDesk *owner)
    : desk(owner && owner->table->currentOp == kScriptOperator && !owner->running ? owner : nullptr)
{
    if (desk)
        desk->beginRun();
}

ScriptDesk::Run::~Run()
{
    if (desk)
        desk->endRun();
}

void ScriptDesk::beginRun()
{
    running = true;
    stopped = debugShown = false;
    lastBreath = 0;
    clock.start();
    const QString time = QTime::currentTime().toString(QStringLiteral("hh:mm:ss"));
    debugWindow()->beginRun(runName.isEmpty() ? tr("Run of %1").arg(time)
                                              : tr("Run of \"%1\", %2").arg(runName, time));
    if (editorWindow) {
        editorWindow->clearErrors();
        editorWindow->setRunning(true);
        editorWindow->tell(tr("Running…"));
    }
    qApp->installEventFilter(this);
}

void ScriptDesk::endRun()
{
    qApp->removeEventFilter(this);
    running = false;
    delete bar;
    bar = nullptr;
    if (debug)
        debug->flush();
    if (!editorWindow)
        return;
    editorWindow->setRunning(false);
    const QString seconds = QLocale().toString(double(clock.elapsed()) / 1000.0, 'f', 2);
    const int lines =
        editorWindow->scriptEdit()->errors().size() + editorWindow->presetsEdit()->errors().size();
    QString text = stopped ? tr("Stopped after %1 s") : tr("Done in %1 s");
    text = text.arg(seconds);
    if (lines > 0)
        text += tr("; lines with errors: %1 (F8 goes there)").arg(lines);
    else if (debug && debug->errorCount() + runner.failedStatements() > 0)
        text += tr("; the debug window tells of errors");
    editorWindow->tell(text);
}

bool ScriptDesk::pictureReady()
{
    if (main->validCurrent())
        return true;
    main->messageBox(tr("Run Script"),
                     tr("There is no picture to run the script on.<br><br>A script works on the "
                        "picture of the current window: open one, or make a new one, and run the "
                        "script again."));
    return false;
}

void ScriptDesk::apply()
{
    if (table->currentOp != kScriptOperator)
        main->operatorDialog()->selectOperator(kScriptOperator);
    main->operate();
}

void ScriptDesk::run()
{
    if (running || main->busyDepth() > 0 || !script() || !pictureReady())
        return;
    runName.clear();
    apply();
}

void ScriptDesk::runSaved(const QString &name)
{
    const SavedScript *saved = library.find(name);
    Script *op = script();
    if (!saved || !op || running || main->busyDepth() > 0 || !pictureReady())
        return;
    const SavedScript copy = *saved; // the list may change meanwhile
    const int before = table->currentOp;
    runName = copy.name;
    {
        // The operator lends itself: the text that the person writes comes back behind.
        const QScopedValueRollback<int> current(table->currentOp, kScriptOperator);
        const QScopedValueRollback<QString> text(op->text, copy.text);
        const QScopedValueRollback<QString> presets(op->presets, copy.presets);
        const QScopedValueRollback<bool> on(op->presetsOn, !copy.presets.isEmpty());
        main->operate();
    }
    if (before != kScriptOperator)
        main->previewOutdated();
}

void ScriptDesk::stop()
{
    if (!running)
        return;
    stopped = true;
    runner.stop();
}

bool ScriptDesk::stopWanted()
{
    if (!running)
        return false;
    if (QThread::currentThread() != thread() || clock.elapsed() - lastBreath < kBreathMs)
        return stopped;
    QCoreApplication::processEvents();
    lastBreath = clock.elapsed();
    return stopped;
}

bool ScriptDesk::takeProgress(const QString &text, int64_t done, int64_t total)
{
    if (!running)
        return false;
    if (QThread::currentThread() != thread())
        return true;
    if (editorWindow && editorWindow->isVisible()) {
        editorWindow->showProgress(text, done, total);
        return true;
    }
    if (total <= 0 || clock.elapsed() < kBarDelayMs)
        return true;
    if (!bar) {
        bar = new QProgressDialog(text, tr("Stop"), 0, kBarSteps, main);
        bar->setObjectName(QStringLiteral("scriptBar"));
        bar->setWindowTitle(tr("Script"));
        bar->setAutoClose(false);
        bar->setAutoReset(false);
        bar->setMinimumDuration(0);
        connect(bar, &QProgressDialog::canceled, this, &ScriptDesk::stop);
        bar->show();
    }
    bar->setLabelText(text);
    bar->setValue(int(double(done) / double(total) * kBarSteps));
    return true;
}

// --- Messages -----------------------------------------------------------------------------

void ScriptDesk::scriptReport(const ScriptReport &report)
{
    if (table->inPreview)
        return;
    debugWindow()->append(report);
    showDebugOnce();
    const bool inEditor = editorWindow && runName.isEmpty();
    if (inEditor && report.line > 0)
        editorWindow->markError(report.inPresets, report.line, report.plain);
}

void ScriptDesk::scriptHint(int statement, int line, const QString &word, const QString &nearest)
{
    if (table->inPreview)
        return;
    const bool inPresets = statement < parser.presetStatements;
    const QString text = nearest.isEmpty()
                             ? tr("unknown word \"%1\"").arg(word)
                             : tr("unknown word \"%1\", did you mean \"%2\"?").arg(word, nearest);
    debugWindow()->appendHint(text, inPresets, line);
    showDebugOnce();
    if (editorWindow && runName.isEmpty() && line > 0)
        editorWindow->markError(inPresets, line, text);
}

// --- Input during a run ---------------------------------------------------------------------

/// The editor, the debug window, the bar with Stop, and whatever dialog the script opened.
bool ScriptDesk::belongsToScripts(const QObject *object) const
{
    for (const QObject *at = object; at; at = at->parent())
        if (at == editorWindow || at == debug || at == bar)
            return true;
    return false;
}

bool ScriptDesk::eventFilter(QObject *watched, QEvent *event)
{
    const bool closes = event->type() == QEvent::Close;
    if (!closes && !isInput(event->type()))
        return false;
    // A dialog that the script opened has the person to itself.
    if (QApplication::activeModalWidget() || belongsToScripts(watched))
        return false;
    if (closes) {
        const auto *window = qobject_cast<QWidget *>(watched);
        const bool real =
            window && window->isWindow() &&
            (window->windowType() == Qt::Window || window->windowType() == Qt::Dialog);
        if (real)
            event->ignore();
        return real;
    }
    return watched->isWidgetType() || qobject_cast<QAction *>(watched);
}
