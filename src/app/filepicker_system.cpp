// SPDX-License-Identifier: GPL-3.0-or-later
// The one call that asks for files, and the desktop's own dialog behind it.
#include "app/filebag.h"
#include "app/filepicker.h"
#include "app/filepickerrules.h"
#include "app/recentlist.h"
#include "core/workspace.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPointer>

namespace
{
using PickFor = filePicker::PickFor;

void prepare(QFileDialog *dialog, const FileBag &bag, PickFor mode, const QString &suggestedName)
{
    dialog->setDirectory(bag.startFolder());
    if (mode == PickFor::Folder) {
        dialog->setFileMode(QFileDialog::Directory);
        dialog->setOption(QFileDialog::ShowDirsOnly);
        return;
    }
    dialog->setNameFilters(bag.filterList());
    if (!bag.record.filter.isEmpty())
        dialog->selectNameFilter(bag.record.filter);
    if (mode != PickFor::Save) {
        dialog->setFileMode(mode == PickFor::Open ? QFileDialog::ExistingFile
                                                  : QFileDialog::ExistingFiles);
        return;
    }
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    // The name may still get its extension: the question is ours, about the final name.
    dialog->setOption(QFileDialog::DontConfirmOverwrite);
    dialog->selectFile(suggestedName);
}

/// The path to save under, null if it cannot be or may not be.
QString checkedPath(QWidget *parent, const QString &path, const QString &filter, const FileBag &bag)
{
    const QFileInfo file(path);
    const QString full =
        QDir(file.path()).filePath(withExtension(file.fileName(), filter, bag.filterList()));
    const QString refusal = saveRefusal(full);
    if (!refusal.isEmpty())
        QMessageBox::warning(parent, QObject::tr("Save"), refusal);
    const bool allowed =
        refusal.isEmpty() && (!QFileInfo::exists(full) || askReplace(parent, full));
    return allowed ? full : QString();
}

QStringList pickWithSystem(QWidget *parent, FileBag *bag, PickFor mode, const QString &title,
                           const QString &suggestedName)
{
    // Whoever owns the parent may close it while the dialog waits.
    const QPointer<QFileDialog> dialog = new QFileDialog(parent, title);
    prepare(dialog, *bag, mode, suggestedName);
    QStringList paths;
    while (paths.isEmpty() && dialog->exec() == QDialog::Accepted) {
        paths = dialog->selectedFiles();
        if (mode == PickFor::Save && !paths.isEmpty()) {
            const QString path =
                checkedPath(dialog, paths.constFirst(), dialog->selectedNameFilter(), *bag);
            paths = path.isEmpty() ? QStringList() : QStringList(path);
        }
        if (!dialog)
            return {};
    }
    if (dialog && !paths.isEmpty() && mode != PickFor::Folder)
        bag->record.filter = dialog->selectedNameFilter();
    delete dialog;
    return paths;
}

QStringList pickWithOwn(QWidget *parent, FileBag *bag, PickFor mode, const QString &title,
                        const QString &suggestedName)
{
    const QPointer<filePicker> dialog = new filePicker(mode, bag, title, parent);
    dialog->setSuggestedName(suggestedName);
    const bool accepted = dialog->exec() == QDialog::Accepted;
    const QStringList paths = dialog && accepted ? dialog->paths() : QStringList();
    delete dialog;
    return paths;
}
} // namespace

QStringList filePicker::pick(QWidget *parent, FileBag *bag, PickFor mode, const QString &title,
                             const QString &suggestedName)
{
    const bool system = workspace() && workspace()->systemFileDialog;
    bag->record.title = title;
    bag->record.forSaving = mode == PickFor::Save;
    const QStringList paths =
        (system ? pickWithSystem : pickWithOwn)(parent, bag, mode, title, suggestedName);
    if (paths.isEmpty())
        return {};
    const QString &first = paths.constFirst();
    bag->record.folder = mode == PickFor::Folder ? first : QFileInfo(first).path();
    recentFolders().add(bag->record.folder, kRecentFolders);
    return paths;
}
