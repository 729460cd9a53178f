// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/keyeditor.h"

#include "app/problemlist.h"
#include "formats/writers.h"
#include "views/keyfile.h"

#include "ui_keyeditor.h"

#include <QFile>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMessageBox>
#include <QPushButton>
#include <QSaveFile>
#include <QTreeWidgetItemIterator>

#include <algorithm>
#include <utility>

namespace
{
enum Column { kNameColumn, kKeysColumn, kDefaultColumn };
constexpr int kNumberRole = Qt::UserRole;
constexpr int kWidthInLetters = 84, kHeightInLines = 40;

QString keyText(int key)
{
    return QKeySequence(key).toString(QKeySequence::NativeText);
}

QString keysText(const QList<int> &keys)
{
    QStringList texts;
    for (const int key : keys)
        texts << keyText(key);
    return texts.join(QStringLiteral("   "));
}

/// A key that image windows have a use for beside the table.
bool movesTheView(int key)
{
    return key == Qt::Key_Space;
}
} // namespace

KeyEditor::KeyEditor(OtherUse useOf, PickFile pick, QWidget *parent)
    : QDialog(parent), ui(std::make_unique<Ui::KeyEditor>()), otherUse(std::move(useOf)),
      pickFile(std::move(pick)), table(keyTable())
{
    ui->setupUi(this);
    connect(ui->buttonBox->button(QDialogButtonBox::Apply), &QPushButton::clicked, this,
            &KeyEditor::apply);
    fillCommands();
    const QFontMetrics letters = fontMetrics();
    resize(letters.averageCharWidth() * kWidthInLetters, letters.lineSpacing() * kHeightInLines);
    ui->search->setFocus();
    showChanges();
}

KeyEditor::~KeyEditor() = default;

// --- The list of commands -----------------------------------------------------------------

void KeyEditor::fillCommands()
{
    QTreeWidgetItem *group = nullptr;
    for (const WindowCommand &command : windowCommands()) {
        const QString groupName = command.groupName();
        if (!group || group->text(kNameColumn) != groupName) {
            group = new QTreeWidgetItem(ui->commands, {groupName});
            group->setFlags(Qt::ItemIsEnabled);
            group->setFirstColumnSpanned(true);
            group->setExpanded(true);
            QFont bold = ui->commands->font();
            bold.setBold(true);
            group->setFont(kNameColumn, bold);
        }
        auto *item = new QTreeWidgetItem(group, {command.title()});
        item->setData(kNameColumn, kNumberRole, command.number);
        showRow(item);
    }
    QHeaderView *header = ui->commands->header();
    header->setStretchLastSection(false);
    header->setSectionResizeMode(QHeaderView::ResizeToContents);
    header->setSectionResizeMode(kKeysColumn, QHeaderView::Stretch);
    choose(windowCommands().constFirst().number);
}

void KeyEditor::showRow(QTreeWidgetItem *item)
{
    const int number = item->data(kNameColumn, kNumberRole).toInt();
    const QList<int> keys = table.keysOf(number);
    const QList<int> defaults = KeyTable::defaults().keysOf(number);
    const bool same = keys == defaults;
    item->setText(kKeysColumn, keysText(keys));
    item->setToolTip(kKeysColumn, keysText(keys)); // there may be more than the column shows
    item->setText(kDefaultColumn, same ? tr("yes") : tr("no"));
    const QString usual = defaults.isEmpty() ? tr("no key") : keysText(defaults);
    item->setToolTip(kDefaultColumn, same ? QString() : tr("Default: %1").arg(usual));
}

int KeyEditor::chosenCommand() const
{
    const QTreeWidgetItem *item = ui->commands->currentItem();
    return item ? item->data(kNameColumn, kNumberRole).toInt() : 0;
}

void KeyEditor::choose(int commandNumber)
{
    for (QTreeWidgetItemIterator it(ui->commands); *it; ++it)
        if ((*it)->data(kNameColumn, kNumberRole).toInt() == commandNumber) {
            ui->commands->setCurrentItem(*it);
            ui->commands->scrollToItem(*it);
        }
}

void KeyEditor::on_search_textChanged(const QString &)
{
    filterCommands();
}

/// A command is found by its name, its group and its keys, as they are shown.
void KeyEditor::filterCommands()
{
    const QString wanted = ui->search->text().trimmed();
    const auto has = [&wanted](const QString &text) {
        return text.contains(wanted, Qt::CaseInsensitive);
    };
    for (int g = 0; g < ui->commands->topLevelItemCount(); ++g) {
        QTreeWidgetItem *group = ui->commands->topLevelItem(g);
        bool any = false;
        for (int i = 0; i < group->childCount(); ++i) {
            QTreeWidgetItem *item = group->child(i);
            const bool found = has(group->text(kNameColumn)) || has(item->text(kNameColumn)) ||
                               has(item->text(kKeysColumn));
            item->setHidden(!found);
            any = any || found;
        }
        group->setHidden(!any);
    }
    QTreeWidgetItem *item = ui->commands->currentItem();
    if (item && !item->isHidden())
        return;
    for (QTreeWidgetItemIterator it(ui->commands, QTreeWidgetItemIterator::NotHidden); *it; ++it)
        if ((*it)->parent()) {
            ui->commands->setCurrentItem(*it);
            return;
        }
    ui->commands->setCurrentItem(nullptr); // nothing that cannot be seen is to be changed
}

void KeyEditor::on_commands_currentItemChanged(QTreeWidgetItem *)
{
    showKeys();
}

void KeyEditor::on_commands_itemActivated(QTreeWidgetItem *)
{
    if (chosenCommand() != 0)
        ui->capture->start();
}

// --- The keys of the chosen command -------------------------------------------------------

void KeyEditor::showKeys()
{
    const int number = chosenCommand();
    const WindowCommand *command = windowCommand(number);
    ui->chosen->setTitle(command ? tr("Keys of “%1”").arg(command->title())
                                 : tr("Keys of the command"));
    ui->chosen->setEnabled(command != nullptr);
    ui->keys->clear();
    const QList<int> keys = table.keysOf(number);
    for (const int key : keys) {
        auto *item = new QListWidgetItem(keyText(key), ui->keys);
        item->setData(kNumberRole, key);
    }
    ui->keys->setCurrentRow(0);
    on_keys_currentRowChanged(ui->keys->currentRow());
    ui->reset->setEnabled(keys != KeyTable::defaults().keysOf(number));
}

void KeyEditor::on_keys_currentRowChanged(int row)
{
    ui->remove->setEnabled(row >= 0);
    ui->first->setEnabled(row > 0);
}

int KeyEditor::chosenKey() const
{
    const QListWidgetItem *item = ui->keys->currentItem();
    return item ? item->data(kNumberRole).toInt() : 0;
}

void KeyEditor::setKeysOfChosen(const QList<int> &keys, int shownKey)
{
    table.setKeys(chosenCommand(), keys);
    showChanges();
    for (int row = 0; row < ui->keys->count(); ++row)
        if (ui->keys->item(row)->data(kNumberRole).toInt() == shownKey)
            ui->keys->setCurrentRow(row);
}

/// Shows the edited table anew: a key that moved changes two commands.
void KeyEditor::showChanges()
{
    for (QTreeWidgetItemIterator it(ui->commands); *it; ++it)
        if ((*it)->parent())
            showRow(*it);
    showKeys();
    const KeyTable defaults = KeyTable::defaults();
    ui->resetAll->setEnabled(keysToText(table) != keysToText(defaults));
    ui->buttonBox->button(QDialogButtonBox::Apply)
        ->setEnabled(keysToText(table) != keysToText(keyTable()));
}

void KeyEditor::on_add_clicked()
{
    ui->capture->start();
}

void KeyEditor::on_capture_ended()
{
    if (isActiveWindow() && ui->capture->hasFocus())
        ui->keys->setFocus();
}

void KeyEditor::on_capture_captured(int key)
{
    ui->keys->setFocus();
    const int number = chosenCommand();
    QList<int> keys = table.keysOf(number);
    if (!keys.contains(key)) {
        if (!mayTake(key, number))
            return;
        keys << key;
    }
    setKeysOfChosen(keys, key);
}

/// Whether a command may have this key, which may have a use already.
bool KeyEditor::mayTake(int key, int command)
{
    const QString name = windowCommand(command)->title();
    const WindowCommand *holder = windowCommand(table.commandAt(key));
    if (holder && !confirm(tr("Key in Use"),
                           tr("%1 is the key of “%2”. It can be moved to “%3”.")
                               .arg(keyText(key), holder->title(), name),
                           tr("Move the Key")))
        return false;
    const QString named = otherUse ? otherUse(key) : QString();
    const QString other = movesTheView(key) ? tr("dragging the view") : named;
    return other.isEmpty() ||
           confirm(tr("Key in Use"),
                   tr("%1 is in use for %2. In image windows “%3” would come first.")
                       .arg(keyText(key), other, name),
                   tr("Use It Here"));
}

bool KeyEditor::confirm(const QString &title, const QString &text, const QString &goOn)
{
    QMessageBox box(QMessageBox::Question, title, text, QMessageBox::NoButton, this);
    box.setTextFormat(Qt::PlainText);
    const QAbstractButton *go = box.addButton(goOn, QMessageBox::AcceptRole);
    box.setDefaultButton(box.addButton(QMessageBox::Cancel));
    box.exec();
    return box.clickedButton() == go;
}

void KeyEditor::on_remove_clicked()
{
    QList<int> keys = table.keysOf(chosenCommand());
    keys.removeAll(chosenKey());
    setKeysOfChosen(keys, 0);
}

void KeyEditor::on_first_clicked()
{
    const int key = chosenKey();
    QList<int> keys = table.keysOf(chosenCommand());
    keys.removeAll(key);
    keys.prepend(key);
    setKeysOfChosen(keys, key);
}

void KeyEditor::on_reset_clicked()
{
    const int number = chosenCommand();
    QList<int> keys;
    const QList<int> defaults = KeyTable::defaults().keysOf(number);
    for (const int key : defaults)
        if (table.commandAt(key) == number || mayTake(key, number))
            keys << key;
    setKeysOfChosen(keys, 0);
}

void KeyEditor::on_resetAll_clicked()
{
    if (!confirm(tr("Reset All"), tr("Every command gets its default keys, and no others."),
                 tr("Reset All")))
        return;
    table = KeyTable::defaults();
    showChanges();
}

// --- Files --------------------------------------------------------------------------------

void KeyEditor::on_load_clicked()
{
    const QString path = pickFile ? pickFile(false) : QString();
    if (path.isEmpty())
        return;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        QMessageBox::warning(this, tr("Load Keys"),
                             tr("“%1” could not be read: %2").arg(path, file.errorString()));
        return;
    }
    QStringList problems;
    const bool isTable = keysFromText(file.read(kMostKeyTextBytes + 1), &table, &problems);
    showChanges();
    filterCommands();
    showProblems(this, tr("Load Keys"),
                 isTable ? tr("The keys of “%1” are shown now, but for these lines:").arg(path)
                         : tr("“%1” was not loaded; the keys are as they were.").arg(path),
                 problems);
}

void KeyEditor::on_save_clicked()
{
    const QString path = pickFile ? pickFile(true) : QString();
    if (path.isEmpty())
        return;
    const QByteArray text = keysToText(table);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size() || !commitWhole(file))
        QMessageBox::warning(this, tr("Save Keys"),
                             tr("“%1” could not be written: %2\nIf there was a file of that name, "
                                "it is as it was. Choose another place.")
                                 .arg(path, file.errorString()));
}

// --- The live table -----------------------------------------------------------------------

void KeyEditor::apply()
{
    if (keysToText(table) == keysToText(keyTable()))
        return;
    keyTable() = table;
    showChanges();
    emit keysChanged();
}

/// Enter in one of the lists or in the search does not end the dialog: people press it to go
/// on to a command or to a new key.
void KeyEditor::keyPressEvent(QKeyEvent *event)
{
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (enter && ui->search->hasFocus())
        ui->commands->setFocus();
    else if (!enter)
        QDialog::keyPressEvent(event);
}

void KeyEditor::accept()
{
    apply();
    QDialog::accept();
}
