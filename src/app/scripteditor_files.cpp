// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/scripteditor.h"

#include "app/appsettings.h"
#include "app/filebag.h"
#include "app/filepicker.h"
#include "app/recentlist.h"
#include "core/workspace.h"
#include "formats/writers.h"
#include "views/codeedit.h"

#include "ui_scripteditor.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QSettings>
#include <QTextCodec>

namespace
{
constexpr qint64 kMostScriptBytes = qint64(8) << 20;
const QString kGeometryKey = QStringLiteral("scriptEditorGeometry");
const QString kPanelsKey = QStringLiteral("scriptEditorPanelsPlace");
const QString kFileKeys[] = {QStringLiteral("scriptEditorFile"),
                             QStringLiteral("scriptPresetsFile")};
const QString kModifiedKeys[] = {QStringLiteral("scriptEditorModified"),
                                 QStringLiteral("scriptPresetsModified")};
constexpr int kStateVersion = 1;
} // namespace

bool readScriptFile(const QString &path, QString *text, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = ScriptEditor::tr("%1 could not be opened: %2").arg(path, file.errorString());
        return false;
    }
    const QByteArray bytes = file.read(kMostScriptBytes + 1);
    if (bytes.size() > kMostScriptBytes || bytes.contains('\0')) {
        *error = bytes.contains('\0') ? ScriptEditor::tr("%1 is no text file.").arg(path)
                                      : ScriptEditor::tr("%1 is too large for a script.").arg(path);
        return false;
    }
    QTextCodec::ConverterState state;
    *text = QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    if (state.invalidChars > 0 || state.remainingChars > 0)
        *text = QString::fromLatin1(bytes);
    text->replace(QLatin1String("\r\n"), QLatin1String("\n"));
    text->replace(QLatin1Char('\r'), QLatin1Char('\n'));
    if (text->startsWith(QChar(QChar::ByteOrderMark)))
        text->remove(0, 1);
    return true;
}

QString ScriptEditor::fileName() const
{
    return pages[0].file;
}

/// Asks before a text goes that is in no file. It could be undone, but only in this run.
bool ScriptEditor::mayReplace(const Page &one)
{
    if (one.edit->document()->isEmpty() || !one.edit->document()->isModified())
        return true;
    return workspace()->question(tr("Script Editor"),
                                 tr("This text has changes that are in no file. Put another one "
                                    "in its place?<br>(Undo brings it back.)"),
                                 {tr("Keep It"), tr("Replace")}, 1, 0) == 1;
}

bool ScriptEditor::loadInto(Page *one, const QString &path)
{
    QString text, error;
    if (!readScriptFile(path, &text, &error)) {
        workspace()->messageBox(tr("Open Script"), error.toHtmlEscaped());
        return false;
    }
    if (!mayReplace(*one))
        return false;
    one->file = path;
    one->edit->clearErrors();
    one->edit->replaceText(text);
    one->edit->document()->setModified(false);
    recentFiles->add(path, RecentList::kMost / 2);
    showTitle();
    updateActions();
    tell(tr("%1 opened").arg(path));
    return true;
}

bool ScriptEditor::openFile(const QString &path)
{
    ui->tabs->setCurrentIndex(0);
    return !running && loadInto(&pages[0], path);
}

bool ScriptEditor::openText(const QString &text)
{
    ui->tabs->setCurrentIndex(0);
    if (running || (text != script() && !mayReplace(pages[0])))
        return false;
    pages[0].file.clear();
    pages[0].edit->clearErrors();
    pages[0].edit->replaceText(text);
    pages[0].edit->document()->setModified(false); // it is kept elsewhere
    showTitle();
    updateActions();
    return true;
}

bool ScriptEditor::saveAs(Page *one, const QString &path)
{
    QString text = one->edit->toPlainText();
    if (!text.endsWith(QLatin1Char('\n')))
        text += QLatin1Char('\n');
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(text.toUtf8());
    if (!commitWhole(file)) {
        workspace()->messageBox(
            tr("Save Script"),
            tr("%1 could not be written: %2").arg(path, file.errorString()).toHtmlEscaped());
        return false;
    }
    one->file = path;
    one->edit->document()->setModified(false);
    recentFiles->add(path, RecentList::kMost / 2);
    showTitle();
    tell(tr("%1 saved").arg(path));
    return true;
}

void ScriptEditor::on_actionNew_triggered()
{
    Page &one = page();
    if (!mayReplace(one))
        return;
    one.file.clear();
    one.edit->clearErrors();
    one.edit->replaceText(QString());
    one.edit->document()->setModified(false);
    showTitle();
    updateActions();
}

void ScriptEditor::on_actionOpen_triggered()
{
    const QString path =
        filePicker::pick(this, fileBag, filePicker::PickFor::Open, tr("Open Script")).value(0);
    if (!path.isEmpty())
        loadInto(&page(), path);
}

void ScriptEditor::on_actionSave_triggered()
{
    if (page().file.isEmpty())
        on_actionSave_As_triggered();
    else
        saveAs(&page(), page().file);
}

void ScriptEditor::on_actionSave_As_triggered()
{
    Page &one = page();
    const QString name =
        one.file.isEmpty() ? tr("script") + QStringLiteral(".txt") : QFileInfo(one.file).fileName();
    const QString path =
        filePicker::pick(this, fileBag, filePicker::PickFor::Save, tr("Save Script"), name)
            .value(0);
    if (!path.isEmpty())
        saveAs(&one, path);
}

void ScriptEditor::fillRecent(QMenu *menu)
{
    menu->clear();
    for (const QString &path : recentFiles->entries()) {
        const QFileInfo info(path);
        QString text = info.fileName() + QStringLiteral(" — ") + info.path();
        QAction *action = menu->addAction(text.replace(QLatin1Char('&'), QLatin1String("&&")));
        connect(action, &QAction::triggered, this, [this, path]() {
            show();
            raise();
            activateWindow();
            openFile(path);
        });
    }
    menu->addSeparator();
    QAction *clear = menu->addAction(tr("Clear This List"));
    clear->setEnabled(!recentFiles->entries().isEmpty());
    connect(clear, &QAction::triggered, this, [this]() { recentFiles->clear(); });
}

void ScriptEditor::load(const QSettings &settings)
{
    restoreGeometry(settings.value(kGeometryKey).toByteArray());
    restoreState(settings.value(kPanelsKey).toByteArray(), kStateVersion);
    for (size_t i = 0; i < pages.size(); ++i) {
        pages[i].file = storedText(settings, kFileKeys[i]);
        pages[i].edit->document()->setModified(settings.value(kModifiedKeys[i]).toBool());
    }
    showTitle();
}

void ScriptEditor::save(QSettings &settings) const
{
    settings.setValue(kGeometryKey, saveGeometry());
    settings.setValue(kPanelsKey, saveState(kStateVersion));
    for (size_t i = 0; i < pages.size(); ++i) {
        settings.setValue(kFileKeys[i], pages[i].file);
        settings.setValue(kModifiedKeys[i], pages[i].edit->document()->isModified());
    }
}
