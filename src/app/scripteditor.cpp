// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/scripteditor.h"

#include "app/scriptreference.h"
#include "views/codeedit.h"

#include "ui_scripteditor.h"

#include <QInputDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QProgressBar>
#include <QScopedValueRollback>
#include <QTextBlock>

#include <algorithm>

namespace
{
constexpr int kScript = 0, kPresets = 1;
constexpr int kWidthInLetters = 132, kHeightInLines = 40;
constexpr int kBarLetters = 24;
constexpr int kBarSteps = 1000;
} // namespace

ScriptEditor::ScriptEditor(FileBag *bag, RecentList *recent, QWidget *parent)
    : QMainWindow(parent), ui(std::make_unique<Ui::ScriptEditor>()), fileBag(bag),
      recentFiles(recent), message(new QLabel), place(new QLabel), bar(new QProgressBar)
{
    ui->setupUi(this);
    setAnimated(false); // the reference is there at once
    pages[kScript].edit = ui->scriptEdit;
    pages[kPresets].edit = ui->presetsEdit;
    ui->findBar->hide();
    QAction *dock = ui->referenceDock->toggleViewAction();
    dock->setText(tr("Language &Reference"));
    dock->setShortcut(QKeySequence(int(Qt::SHIFT) | Qt::Key_F1));
    ui->menuHelp->addAction(dock);

    message->setTextFormat(Qt::PlainText);
    message->setObjectName(QStringLiteral("message"));
    place->setObjectName(QStringLiteral("place"));
    bar->setMaximumWidth(fontMetrics().averageCharWidth() * kBarLetters);
    bar->setTextVisible(false);
    bar->setRange(0, kBarSteps);
    bar->hide();
    ui->statusBar->addWidget(message, 1);
    ui->statusBar->addPermanentWidget(bar);
    ui->statusBar->addPermanentWidget(place);

    for (Page &one : pages)
        connectPage(&one);
    connect(ui->reference, &ScriptReference::insertRequested, this, &ScriptEditor::insertReference);
    connect(ui->menuRecent, &QMenu::aboutToShow, this, [this]() { fillRecent(ui->menuRecent); });
    resize(fontMetrics().averageCharWidth() * kWidthInLetters,
           fontMetrics().lineSpacing() * kHeightInLines);
    resizeDocks({ui->referenceDock}, {fontMetrics().averageCharWidth() * 46}, Qt::Horizontal);
    showTitle();
    showPlace();
    updateActions();
}

ScriptEditor::~ScriptEditor() = default;

void ScriptEditor::connectPage(Page *one)
{
    connect(one->edit, &CodeEdit::textChanged, this, [this]() {
        updateActions();
        if (!filling)
            emit edited();
    });
    connect(one->edit, &CodeEdit::cursorPositionChanged, this, &ScriptEditor::showPlace);
    connect(one->edit, &CodeEdit::copyAvailable, this, &ScriptEditor::updateActions);
    connect(one->edit->document(), &QTextDocument::modificationChanged, this,
            &ScriptEditor::showTitle);
    connect(one->edit, &CodeEdit::undoAvailable, this, &ScriptEditor::updateActions);
    connect(one->edit, &CodeEdit::redoAvailable, this, &ScriptEditor::updateActions);
}

void ScriptEditor::setWords(const ScriptWords &words)
{
    for (const Page &one : pages)
        one.edit->setWords(words);
}

ScriptReference *ScriptEditor::reference() const
{
    return ui->reference;
}

CodeEdit *ScriptEditor::scriptEdit() const
{
    return ui->scriptEdit;
}

CodeEdit *ScriptEditor::presetsEdit() const
{
    return ui->presetsEdit;
}

ScriptEditor::Page &ScriptEditor::page()
{
    return pages[size_t(ui->tabs->currentIndex() == kPresets ? kPresets : kScript)];
}

CodeEdit *ScriptEditor::edit() const
{
    return const_cast<ScriptEditor *>(this)->page().edit;
}

// --- Texts ------------------------------------------------------------------------------

void ScriptEditor::setTexts(const QString &script, const QString &presets, bool presetsOn)
{
    const QScopedValueRollback<bool> guard(filling, true);
    ui->scriptEdit->replaceText(script);
    ui->presetsEdit->replaceText(presets);
    ui->presetsOn->setChecked(presetsOn);
    updateActions();
}

QString ScriptEditor::script() const
{
    return ui->scriptEdit->toPlainText();
}

QString ScriptEditor::presets() const
{
    return ui->presetsEdit->toPlainText();
}

bool ScriptEditor::presetsOn() const
{
    return ui->presetsOn->isChecked();
}

void ScriptEditor::goTo(bool inPresets, int line)
{
    ui->tabs->setCurrentIndex(inPresets ? kPresets : kScript);
    edit()->goToLine(line);
    edit()->setFocus(Qt::OtherFocusReason);
}

void ScriptEditor::markError(bool inPresets, int line, const QString &text)
{
    pages[size_t(inPresets ? kPresets : kScript)].edit->markError(line, text);
    updateActions();
}

void ScriptEditor::clearErrors()
{
    for (const Page &one : pages)
        one.edit->clearErrors();
    updateActions();
}

void ScriptEditor::insertReference(const QString &text)
{
    if (edit()->isReadOnly())
        return;
    const int back =
        text.contains(QLatin1Char('|')) ? text.size() - text.indexOf(QLatin1Char('|')) - 1 : 0;
    QTextCursor cursor = edit()->textCursor();
    cursor.insertText(QString(text).remove(QLatin1Char('|')));
    cursor.movePosition(QTextCursor::Left, QTextCursor::MoveAnchor, back);
    edit()->setTextCursor(cursor);
    edit()->setFocus(Qt::OtherFocusReason);
}

// --- What is shown ------------------------------------------------------------------------

void ScriptEditor::setRunning(bool on)
{
    running = on;
    for (const Page &one : pages)
        one.edit->setReadOnly(on);
    if (!on)
        bar->hide();
    updateActions();
}

void ScriptEditor::showProgress(const QString &text, int64_t done, int64_t total)
{
    bar->setVisible(total > 0);
    if (total <= 0)
        return;
    bar->setValue(int(double(done) / double(total) * kBarSteps));
    tell(text);
}

void ScriptEditor::tell(const QString &text)
{
    message->setText(text);
    message->setToolTip(text.toHtmlEscaped());
}

void ScriptEditor::showPlace()
{
    const QTextCursor cursor = edit()->textCursor();
    place->setText(
        tr("Line %1, column %2 ").arg(cursor.blockNumber() + 1).arg(cursor.positionInBlock() + 1));
}

void ScriptEditor::showTitle()
{
    const Page &one = page();
    const QString what = tr("Script Editor");
    const QString name = one.file.section(QLatin1Char('/'), -1);
    setWindowTitle(name.isEmpty() ? what : QStringLiteral("%1[*] — %2").arg(name, what));
    setWindowModified(!name.isEmpty() && one.edit->document()->isModified());
    setWindowFilePath(QString());
}

void ScriptEditor::updateActions()
{
    const CodeEdit *now = edit();
    const bool idle = !running, selected = now->textCursor().hasSelection();
    for (QAction *action : {ui->actionNew, ui->actionOpen, ui->actionPaste, ui->actionComment,
                            ui->actionComplete, ui->menuRecent->menuAction()})
        action->setEnabled(idle);
    const bool any = !ui->scriptEdit->document()->isEmpty();
    ui->actionRun->setEnabled(idle && any);
    ui->actionStore->setEnabled(idle && any);
    ui->actionStop->setEnabled(running);
    ui->actionSaved_Scripts->setEnabled(idle);
    ui->presetsOn->setEnabled(idle);
    ui->actionUndo->setEnabled(idle && now->document()->isUndoAvailable());
    ui->actionRedo->setEnabled(idle && now->document()->isRedoAvailable());
    ui->actionCut->setEnabled(idle && selected);
    ui->actionCopy->setEnabled(selected);
    ui->actionNext_Error->setEnabled(!ui->scriptEdit->errors().isEmpty() ||
                                     !ui->presetsEdit->errors().isEmpty());
}

void ScriptEditor::on_tabs_currentChanged()
{
    showTitle();
    showPlace();
    updateActions();
}

void ScriptEditor::on_presetsOn_clicked()
{
    emit edited();
}

void ScriptEditor::showReference()
{
    ui->referenceDock->show();
    ui->referenceDock->raise();
    ui->reference->focusFilter();
}

void ScriptEditor::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        bar->setMaximumWidth(fontMetrics().averageCharWidth() * kBarLetters);
}

// --- Runs ---------------------------------------------------------------------------------

void ScriptEditor::on_actionRun_triggered()
{
    emit runRequested();
}

void ScriptEditor::on_actionStop_triggered()
{
    tell(tr("Stopping…"));
    emit stopRequested();
}

void ScriptEditor::on_actionStore_triggered()
{
    emit storeRequested();
}

void ScriptEditor::on_actionSaved_Scripts_triggered()
{
    emit savedScriptsRequested();
}

void ScriptEditor::on_actionDebug_triggered()
{
    emit debugRequested();
}

void ScriptEditor::on_actionClose_triggered()
{
    close();
}

// --- Editing ------------------------------------------------------------------------------

void ScriptEditor::on_actionUndo_triggered()
{
    edit()->undo();
}

void ScriptEditor::on_actionRedo_triggered()
{
    edit()->redo();
}

void ScriptEditor::on_actionCut_triggered()
{
    edit()->cut();
}

void ScriptEditor::on_actionCopy_triggered()
{
    edit()->copy();
}

void ScriptEditor::on_actionPaste_triggered()
{
    edit()->paste();
}

void ScriptEditor::on_actionSelect_All_triggered()
{
    edit()->selectAll();
}

void ScriptEditor::on_actionComment_triggered()
{
    edit()->toggleComment();
}

void ScriptEditor::on_actionComplete_triggered()
{
    edit()->complete(true);
}

void ScriptEditor::on_actionLook_Up_triggered()
{
    QTextCursor cursor = edit()->textCursor();
    if (!cursor.hasSelection())
        cursor.select(QTextCursor::WordUnderCursor);
    const QString word = cursor.selectedText();
    ui->referenceDock->show();
    ui->referenceDock->raise();
    if (word.isEmpty())
        ui->reference->focusFilter();
    else if (!ui->reference->choose(word))
        tell(tr("The reference has no entry \"%1\".").arg(word.left(60)));
}

void ScriptEditor::on_actionGo_to_Line_triggered()
{
    bool accepted = false;
    const int line =
        QInputDialog::getInt(this, tr("Go to Line"), tr("Line:"), edit()->currentLine(), 1,
                             edit()->blockCount(), 1, &accepted);
    if (accepted)
        edit()->goToLine(line);
}

/// The marked line behind the cursor; behind the last one the other tab's first, and so on.
void ScriptEditor::on_actionNext_Error_triggered()
{
    const bool here = edit() == ui->presetsEdit;
    const auto marks = edit()->errors();
    const auto next = marks.upperBound(edit()->currentLine());
    bool inPresets = here;
    int line = next == marks.constEnd() ? 0 : next.key();
    if (line == 0) {
        const auto others = pages[size_t(here ? kScript : kPresets)].edit->errors();
        inPresets = others.isEmpty() ? here : !here;
        const auto &from = others.isEmpty() ? marks : others;
        line = from.isEmpty() ? 0 : from.firstKey();
    }
    if (line == 0)
        return;
    goTo(inPresets, line);
    tell(edit()->errors().value(line));
}

// --- Finding ------------------------------------------------------------------------------

void ScriptEditor::on_actionFind_triggered()
{
    const QString selected = edit()->textCursor().selectedText();
    ui->findBar->show();
    if (!selected.isEmpty() && !selected.contains(QChar::ParagraphSeparator))
        ui->findText->setText(selected);
    ui->findText->setFocus(Qt::ShortcutFocusReason);
    ui->findText->selectAll();
}

void ScriptEditor::find(bool backward, bool fromStart)
{
    const QString wanted = ui->findText->text();
    tell(QString());
    if (wanted.isEmpty())
        return;
    QTextDocument::FindFlags flags;
    flags.setFlag(QTextDocument::FindBackward, backward);
    flags.setFlag(QTextDocument::FindCaseSensitively, ui->matchCase->isChecked());
    QTextCursor from = edit()->textCursor();
    if (fromStart) // what is being typed is looked for from where it was first found
        from.setPosition(from.selectionStart());
    QTextCursor found = edit()->document()->find(wanted, from, flags);
    if (found.isNull()) {
        from.movePosition(backward ? QTextCursor::End : QTextCursor::Start);
        found = edit()->document()->find(wanted, from, flags);
        tell((found.isNull() ? tr("\"%1\" is not found") : tr("\"%1\": found from the other end"))
                 .arg(wanted));
    }
    if (!found.isNull())
        edit()->setTextCursor(found);
}

void ScriptEditor::on_actionFind_Next_triggered()
{
    if (ui->findText->text().isEmpty())
        on_actionFind_triggered();
    else
        find(false, false);
}

void ScriptEditor::on_actionFind_Previous_triggered()
{
    if (ui->findText->text().isEmpty())
        on_actionFind_triggered();
    else
        find(true, false);
}

void ScriptEditor::on_findText_textChanged()
{
    find(false, true);
}

void ScriptEditor::on_findText_returnPressed()
{
    find(false, false);
}

void ScriptEditor::on_findNext_clicked()
{
    find(false, false);
}

void ScriptEditor::on_findPrevious_clicked()
{
    find(true, false);
}

void ScriptEditor::on_findClose_clicked()
{
    ui->findBar->hide();
    edit()->setFocus();
}

void ScriptEditor::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && ui->findBar->isVisible())
        on_findClose_clicked();
    else
        QMainWindow::keyPressEvent(event);
}
