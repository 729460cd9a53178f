// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "views/keytable.h"

#include <QDialog>

#include <functional>
#include <memory>

class QTreeWidgetItem;
namespace Ui
{
class KeyEditor;
}

/// Shows the window commands with their keys and lets a person change them. What is changed
/// becomes the live table with OK or Apply; Cancel leaves that as it is.
class KeyEditor : public QDialog
{
    Q_OBJECT
public:
    /// What a key does beside the key table, empty if nothing: a hotkey for instance. The
    /// key is a Qt key with its modifiers, as KeyTable::plainKey makes it.
    using OtherUse = std::function<QString(int keyWithModifiers)>;
    /// Asks for a file to save to or to load from; empty if the person gave up.
    using PickFile = std::function<QString(bool save)>;

    KeyEditor(OtherUse useOf, PickFile pick, QWidget *parent);
    ~KeyEditor() override;

    /// The table as it is edited.
    const KeyTable &edited() const { return table; }
    /// Brings a command into view and chooses it.
    void choose(int commandNumber);
    void accept() override;

signals:
    /// The live table has become another one: menus that show keys are out of date.
    void keysChanged();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private slots:
    void on_search_textChanged(const QString &text);
    void on_commands_currentItemChanged(QTreeWidgetItem *current);
    void on_commands_itemActivated(QTreeWidgetItem *item);
    void on_keys_currentRowChanged(int row);
    void on_capture_captured(int key);
    void on_capture_ended();
    void on_add_clicked();
    void on_remove_clicked();
    void on_first_clicked();
    void on_reset_clicked();
    void on_resetAll_clicked();
    void on_load_clicked();
    void on_save_clicked();
    void apply();

private:
    void fillCommands();
    void showKeys();
    void showRow(QTreeWidgetItem *item);
    void showChanges();
    void filterCommands();
    int chosenCommand() const;
    int chosenKey() const;
    bool mayTake(int key, int command);
    bool confirm(const QString &title, const QString &text, const QString &goOn);
    void setKeysOfChosen(const QList<int> &keys, int shownKey);

    std::unique_ptr<Ui::KeyEditor> ui;
    OtherUse otherUse;
    PickFile pickFile;
    KeyTable table;
};
