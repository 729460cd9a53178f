// SPDX-License-Identifier: GPL-3.0-or-later
// Where the file dialog is, and how it shows what is there.
#include "app/filebag.h"
#include "app/filepicker.h"
#include "app/filepickerline.h"
#include "app/filepickermodel.h"
#include "app/filepickerplaces.h"
#include "app/filepickerrules.h"
#include "app/filepreviewpane.h"

#include <QAction>
#include <QActionGroup>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHeaderView>
#include <QInputDialog>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <QStackedWidget>
#include <QStyle>
#include <QToolButton>
#include <QTreeView>

#include <algorithm>
#include <cmath>
#include <filesystem>

namespace
{
constexpr int kPictureSide = 96; ///< points

void check(const QActionGroup *group, int value)
{
    for (QAction *action : group->actions())
        action->setChecked(action->data().toInt() == value);
}
} // namespace

// --- Where it is --------------------------------------------------------------------------

bool filePicker::goTo(const QString &folder)
{
    const QString path = absolutePathOf(folder, model->folder());
    if (!QFileInfo(path).isDir()) {
        refuse(tr("There is no folder “%1”.").arg(path.isEmpty() ? folder : path));
        return false;
    }
    if (path != model->folder()) {
        history = history.mid(0, historyAt + 1);
        history << path;
        historyAt = history.size() - 1;
    }
    showFolder(path);
    return true;
}

void filePicker::showFolder(const QString &folder)
{
    const QString before = model->folder();
    model->setFolder(folder);
    // On the way up the folder that one comes from is where one goes on.
    const QString inside = folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/');
    keptCurrent = before.startsWith(inside)
                      ? before.mid(inside.size()).section(QLatin1Char('/'), 0, 0)
                      : QString();
    keptNames = QStringList(keptCurrent);
    pathLine->setText(folder);
    pathLine->setFolder(folder);
    nameLine->setFolder(folder);
    if (mode != PickFor::Save) {
        nameLine->clear();
        nameTyped = false;
    }
    places->showPlace(folder);
    backTool->defaultAction()->setEnabled(historyAt > 0);
    forwardTool->defaultAction()->setEnabled(historyAt + 1 < history.size());
    upTool->defaultAction()->setEnabled(folder != QLatin1String("/"));
    tellState();
    updatePreview();
}

void filePicker::goBack()
{
    if (historyAt > 0)
        showFolder(history.at(--historyAt));
}

void filePicker::goForward()
{
    if (historyAt + 1 < history.size())
        showFolder(history.at(++historyAt));
}

void filePicker::goUp()
{
    if (model->folder() != QLatin1String("/"))
        goTo(QFileInfo(model->folder()).path());
}

void filePicker::goHome()
{
    goTo(QDir::homePath());
}

/// A path of a file leads to its folder, where the file is then selected or named.
void filePicker::enterTypedPath()
{
    const QString path = absolutePathOf(pathLine->text().trimmed(), model->folder());
    const QFileInfo file(path);
    if (path.isEmpty() || file.isDir() || !QFileInfo(file.path()).isDir()) {
        if (!path.isEmpty() && goTo(path))
            view()->setFocus();
        return;
    }
    if (mode != PickFor::Save && !file.isFile()) {
        refuse(tr("There is no folder “%1”.").arg(path));
        return;
    }
    goTo(file.path());
    if (mode == PickFor::Save) {
        nameLine->setText(file.fileName());
        nameLine->setFocus();
    } else {
        keptCurrent = file.fileName();
        keptNames = QStringList(keptCurrent);
        view()->setFocus();
    }
    followTyping();
}

void filePicker::makeFolder()
{
    const QString name =
        QInputDialog::getText(this, tr("New Folder"), tr("Name of the new folder:")).trimmed();
    if (name.isEmpty())
        return;
    const QString path = absolutePathOf(name, model->folder());
    std::error_code problem;
    if (std::filesystem::create_directory(QFile::encodeName(path).constData(), problem))
        goTo(path);
    else
        refuse(tr("The folder “%1” could not be made: %2.")
                   .arg(path, problem ? QString::fromLocal8Bit(problem.message().c_str())
                                      : tr("something of that name is there")));
}

// --- What is seen -------------------------------------------------------------------------

QAbstractItemView *filePicker::view() const
{
    return static_cast<QAbstractItemView *>(views->currentWidget());
}

void filePicker::setViewStyle(uint32_t style)
{
    const bool focused = view()->hasFocus();
    const bool pictures = style == PictureStyle;
    const int line = fontMetrics().lineSpacing();
    const int letter = fontMetrics().averageCharWidth();
    viewStyle = style;
    views->setCurrentWidget(style == DetailStyle ? static_cast<QWidget *>(detailView) : listView);
    // Each of these undoes some of the others, but in this order.
    listView->setViewMode(pictures ? QListView::IconMode : QListView::ListMode);
    listView->setFlow(pictures ? QListView::LeftToRight : QListView::TopToBottom);
    listView->setWrapping(true);
    listView->setMovement(QListView::Static);
    listView->setResizeMode(QListView::Adjust);
    listView->setWordWrap(pictures);
    const QSize cell(std::max(kPictureSide, 17 * letter), kPictureSide);
    const int icon = this->style()->pixelMetric(QStyle::PM_SmallIconSize);
    listView->setIconSize(pictures ? cell : QSize(icon, icon));
    listView->setGridSize(pictures ? QSize(cell.width() + 2 * letter, cell.height() + 3 * line)
                                   : QSize(28 * letter, line + line / 2));
    const qreal ratio = devicePixelRatioF();
    model->setPictureSide(pictures ? int(std::lround(kPictureSide * ratio)) : 0, ratio);
    check(styleGroup, int(style));
    if (selection->currentIndex().isValid())
        view()->scrollTo(selection->currentIndex());
    if (focused)
        view()->setFocus();
}

void filePicker::sortBy(int column, bool reversed)
{
    const bool natural = FolderModel::naturalOrder(column) == Qt::AscendingOrder;
    const Qt::SortOrder order = natural != reversed ? Qt::AscendingOrder : Qt::DescendingOrder;
    model->sort(column, order);
    const QSignalBlocker quiet(detailView->header());
    detailView->header()->setSortIndicator(column, order);
    check(sortGroup, column);
    reverseAction->setChecked(reversed);
}

void filePicker::setHiddenShown(bool shown)
{
    hiddenAction->setChecked(shown);
    model->setHiddenShown(shown);
    tellState();
}

void filePicker::setPreviewShown(bool shown)
{
    previewAction->setChecked(shown);
    pane->setVisible(shown && mode != PickFor::Folder);
    updatePreview();
}

QString filePicker::currentFilter() const
{
    return filterCombo->currentData().toString();
}

void filePicker::chooseFilter(int)
{
    const QStringList patterns = patternsOfFilter(currentFilter());
    model->setPatterns(patterns);
    nameLine->setPatterns(patterns);
    if (mode == PickFor::Save)
        nameLine->setText(withExtension(nameLine->text(), currentFilter(), bag->filterList()));
    tellState();
}

/// What is selected survives a new order and files that come and go.
void filePicker::keepSelection()
{
    if (model->rowCount() == 0)
        return;
    keptNames.clear();
    for (const int row : selectedRows())
        keptNames << model->entry(row).name;
    const QModelIndex current = selection->currentIndex();
    keptCurrent = current.isValid() ? model->entry(current.row()).name : QString();
}

void filePicker::restoreSelection()
{
    const int current = model->rowOf(keptCurrent);
    if (current >= 0)
        selection->setCurrentIndex(model->index(current, 0), QItemSelectionModel::NoUpdate);
    for (const QString &name : qAsConst(keptNames))
        if (const int row = model->rowOf(name); row >= 0)
            selection->select(model->index(row, 0),
                              QItemSelectionModel::Select | QItemSelectionModel::Rows);
    if (current >= 0)
        view()->scrollTo(model->index(current, 0));
    tellState();
    updatePreview();
}

void filePicker::tellState()
{
    int folders = 0;
    const int count = model->rowCount();
    while (folders < count && model->entry(folders).isFolder)
        ++folders;
    QString text = folders == 1 ? tr("1 folder") : tr("%1 folders").arg(folders);
    if (mode != PickFor::Folder)
        text += count - folders == 1 ? tr(", 1 file") : tr(", %1 files").arg(count - folders);
    if (model->state() == FolderModel::State::Reading)
        text = tr("Reading the folder…");
    else if (model->state() == FolderModel::State::Missing)
        text = tr("This folder is gone.");
    else if (model->state() == FolderModel::State::Forbidden)
        text = tr("This folder may not be read.");
    else if (count == 0 && mode != PickFor::Folder)
        text = model->isEmpty() ? tr("This folder is empty.")
                                : tr("Nothing in this folder is of that file type.");
    stateLabel->setText(text);
    updateGoOn();
}

void filePicker::updateGoOn()
{
    const bool named = !nameLine->text().trimmed().isEmpty();
    const bool selected = selection->hasSelection() && mode != PickFor::Save;
    goOn->setEnabled(named || selected || mode == PickFor::Folder);
}

void filePicker::followSelection()
{
    QStringList names;
    for (const int row : selectedRows())
        if (model->entry(row).isFolder == (mode == PickFor::Folder))
            names << model->entry(row).name;
    const bool typing = nameTyped || mode == PickFor::Save; // a name is not lost by a click
    if (names.size() == 1)
        nameLine->setText(names.constFirst());
    else if (!names.isEmpty())
        nameLine->setText(QLatin1Char('"') + names.join(QStringLiteral("\" \"")) +
                          QLatin1Char('"'));
    else if (!typing || selection->hasSelection())
        if (mode != PickFor::Save)
            nameLine->clear();
    if (selection->hasSelection() && mode != PickFor::Save)
        nameTyped = false;
    updateGoOn();
    updatePreview();
}

void filePicker::followTyping()
{
    nameTyped = true;
    if (mode == PickFor::Save) {
        // The extension and the file type always agree; the later act decides.
        const QString extension = knownExtension(nameLine->text(), bag->filterList());
        const QString current = currentFilter();
        if (!extensionsOfFilter(current).contains(extension, Qt::CaseInsensitive))
            for (int i = 0; i < filterCombo->count() && !extension.isEmpty(); ++i)
                if (extensionsOfFilter(filterCombo->itemData(i).toString())
                        .contains(extension, Qt::CaseInsensitive)) {
                    filterCombo->setCurrentIndex(i);
                    chooseFilter(i);
                    break;
                }
    } else {
        selection->clearSelection();
    }
    updateGoOn();
}

void filePicker::updatePreview()
{
    if (!pane->isVisibleTo(this))
        return;
    const QModelIndex current = selection->currentIndex();
    if (!current.isValid() || !selection->isSelected(current)) {
        pane->showText({});
        return;
    }
    pane->showFile(model->entry(current.row()));
    const auto request = model->requestFor(current.row(), pane->side());
    if (!request)
        return;
    if (const FilePreview *made = FilePreviews::made(*request))
        pane->showPreview(*made);
    else
        previews->askNow(*request);
}

bool filePicker::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Resize && watched == detailView->viewport())
        fitNameColumn();
    if (event->type() != QEvent::KeyPress || watched != view())
        return QDialog::eventFilter(watched, event);
    const auto *key = static_cast<const QKeyEvent *>(event);
    if (key->key() == Qt::Key_Backspace && key->modifiers() == Qt::NoModifier) {
        goUp();
        return true;
    }
    // No name begins so: a path is going to be typed.
    if (key->text() == QLatin1String("/") || key->text() == QLatin1String("~")) {
        nameLine->setFocus();
        nameLine->selectAll();
        nameLine->insert(key->text());
        emit nameLine->textEdited(nameLine->text());
        return true;
    }
    return QDialog::eventFilter(watched, event);
}
