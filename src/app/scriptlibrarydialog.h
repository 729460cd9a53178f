// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

#include <functional>
#include <memory>

class QTreeWidgetItem;
class ScriptLibrary;
struct FileBag;
namespace Ui
{
class ScriptLibraryDialog;
}

/// The list of saved scripts: run, edit, rename, delete, give a key, exchange with files.
class ScriptLibraryDialog : public QDialog
{
    Q_OBJECT
public:
    /// What a key does already, beside saved scripts; empty if nothing.
    using KeyUse = std::function<QString(int key)>;

    /// `bag` is where scripts are exchanged; it and the library are borrowed.
    ScriptLibraryDialog(ScriptLibrary *scripts, KeyUse useOf, FileBag *bag, QWidget *parent);
    ~ScriptLibraryDialog() override;

    void choose(const QString &name);

signals:
    void runRequested(const QString &name);
    void editRequested(const QString &name);

private slots:
    void on_list_currentItemChanged();
    void on_list_itemActivated();
    void on_run_clicked();
    void on_edit_clicked();
    void on_rename_clicked();
    void on_remove_clicked();
    void on_capture_captured(int key);
    void on_clearKey_clicked();
    void on_importFile_clicked();
    void on_exportFile_clicked();

private:
    void fill();
    QString chosen() const;
    void tell(const QString &text);

    std::unique_ptr<Ui::ScriptLibraryDialog> ui;
    ScriptLibrary *library;
    KeyUse keyUse;
    FileBag *fileBag;
};
