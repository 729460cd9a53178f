// SPDX-License-Identifier: GPL-3.0-or-later
// What the file dialog takes for an answer.
#include "app/filebag.h"
#include "app/filepicker.h"
#include "app/filepickerline.h"
#include "app/filepickermodel.h"
#include "app/filepickerplaces.h"
#include "app/filepickerrules.h"
#include "app/filepreview.h"

#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QListView>
#include <QMessageBox>
#include <QPointer>
#include <QTreeView>

#include <algorithm>

void filePicker::setSuggestedName(const QString &name)
{
    suggested = name;
    if (mode != PickFor::Save) {
        keptCurrent = name;
        keptNames = QStringList(name);
        return;
    }
    const QString full = withExtension(name, currentFilter(), bag->filterList());
    nameLine->setText(full);
    nameLine->setSelection(
        0, full.size() -
               knownExtension(full, bag->filterList() + QStringList(currentFilter())).size());
    updateGoOn();
}

QVector<int> filePicker::selectedRows() const
{
    QVector<int> rows;
    for (const QModelIndex &index : selection->selectedIndexes())
        if (index.column() == FolderModel::NameColumn)
            rows << index.row();
    std::sort(rows.begin(), rows.end());
    return rows;
}

void filePicker::activate(const QModelIndex &index)
{
    if (index.isValid() && model->entry(index.row()).isFolder && selectedRows().size() <= 1)
        goTo(model->path(index.row()));
    else if (index.isValid())
        accept();
}

/// The paths that the name line tells; several stand in quotes.
QStringList filePicker::typedPaths() const
{
    const QString text = nameLine->text().trimmed();
    QStringList names(text);
    if (mode == PickFor::OpenMany && text.startsWith(QLatin1Char('"'))) {
        const QStringList parts = text.split(QLatin1Char('"'));
        names.clear();
        for (int i = 1; i < parts.size(); i += 2)
            names << parts.at(i);
    }
    QStringList paths;
    for (const QString &name : qAsConst(names))
        if (!name.isEmpty())
            paths << absolutePathOf(name, model->folder());
    paths.removeDuplicates();
    return paths;
}

void filePicker::accept()
{
    if (mode == PickFor::Folder)
        acceptFolder();
    else if (mode == PickFor::Save)
        acceptNew();
    else
        acceptExisting();
}

void filePicker::acceptFolder()
{
    const QString path = typedPaths().value(0, model->folder());
    if (QFileInfo(path).isDir())
        finish({path});
    else
        refuse(tr("There is no folder “%1”.\nMake it with “New Folder”, or choose another one.")
                   .arg(path));
}

void filePicker::acceptExisting()
{
    QStringList paths = typedPaths();
    if (!nameTyped) {
        paths.clear();
        for (const int row : selectedRows())
            paths << model->path(row);
    }
    if (paths.size() == 1 && QFileInfo(paths.constFirst()).isDir()) {
        if (goTo(paths.constFirst()))
            view()->setFocus();
        return;
    }
    QStringList files;
    for (const QString &path : qAsConst(paths)) {
        const QString found = existing(path);
        const QFileInfo file(found);
        if (file.isDir())
            continue; // selected with the files around it
        if (!file.isFile())
            return refuse(file.exists() ? tr("“%1” is no ordinary file.").arg(path)
                                        : tr("There is no file “%1”.\nIt may have been moved "
                                             "or renamed.")
                                              .arg(path));
        if (!file.isReadable())
            return refuse(tr("You have no permission to read “%1”.").arg(path));
        files << found;
    }
    if (!files.isEmpty())
        finish(files);
}

/// The file of that path, or the one that it comes to with an extension of the file type.
QString filePicker::existing(const QString &path) const
{
    if (QFileInfo::exists(path))
        return path;
    for (const QString &extension : extensionsOfFilter(currentFilter()))
        if (QFileInfo(path + extension).isFile())
            return path + extension;
    return path;
}

void filePicker::acceptNew()
{
    const QString text = nameLine->text().trimmed();
    const QString typed = typedPaths().value(0);
    if (typed.isEmpty())
        return;
    if (QFileInfo(typed).isDir()) {
        const QString name = suggested;
        if (goTo(typed))
            setSuggestedName(name);
        return;
    }
    if (text.endsWith(QLatin1Char('/')))
        return refuse(tr("There is no folder “%1”.\nMake it with “New Folder”, or choose "
                         "another one.")
                          .arg(typed));
    const QString meant = withoutLeftover(text, bag->filterList());
    if (meant != text) {
        nameLine->setText(meant);
        followTyping(); // the file type goes with it
        return acceptNew();
    }
    const QFileInfo file(typed);
    const QString path =
        QDir(file.path())
            .filePath(withExtension(file.fileName(), currentFilter(), bag->filterList()));
    const QString refusal = saveRefusal(path);
    if (!refusal.isEmpty())
        return refuse(refusal);
    const QPointer<filePicker> self = this; // the question runs the event loop
    if (!QFileInfo::exists(path) || (askReplace(this, path) && self))
        finish({path});
}

void filePicker::finish(const QStringList &chosen)
{
    picked = chosen;
    QDialog::accept();
}

void filePicker::refuse(const QString &text)
{
    QMessageBox box(QMessageBox::Warning, windowTitle(), text, QMessageBox::Ok, this);
    box.setTextFormat(Qt::PlainText);
    box.exec();
}

void filePicker::done(int result)
{
    FileRecord &record = bag->record;
    record.viewStyle = viewStyle;
    record.showHidden = hiddenAction->isChecked();
    record.showPreview = previewAction->isChecked();
    record.sortByDate = model->sortColumn() == FolderModel::DateColumn;
    record.reverseSort = reverseAction->isChecked();
    bag->dialogSize = size();
    if (result == Accepted && mode != PickFor::Folder)
        record.filter = currentFilter();
    previews->giveUp();
    QDialog::done(result);
}

void filePicker::keyPressEvent(QKeyEvent *event)
{
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    // The lists have acted on it already, and the dialog would press its button as well.
    if (enter && (view()->hasFocus() || places->hasFocus())) {
        event->accept();
        return;
    }
    QDialog::keyPressEvent(event);
}
