// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/assigns.h"

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;
class QTreeWidget;

/// Shows the named folders, and lets the person add, change and remove some. Works on a
/// copy, which becomes the program's assigns when the dialog is accepted.
class AssignsDialog : public QDialog
{
    Q_OBJECT
public:
    explicit AssignsDialog(QWidget *parent);

    void accept() override;

private:
    void makeForm();
    void fillTable(const QString &current);
    void showSelected();
    void check();
    void add();
    void change();
    void remove();
    void browse();
    QString selectedName() const;

    Assigns edited;
    QTreeWidget *table;
    QLineEdit *nameEdit = nullptr, *folderEdit = nullptr;
    QLabel *noteLabel = nullptr;
    QPushButton *addButton = nullptr, *changeButton = nullptr, *removeButton = nullptr;
};
