// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/undolevels.h"

#include "core/workspace.h"

#include "ui_undolevels.h"

UndoLevels::UndoLevels(QWidget *parent) : QDialog(parent), ui(std::make_unique<Ui::UndoLevels>())
{
    ui->setupUi(this);
    ui->levels->setValue(workspace()->maxUndos);
    ui->levels->selectAll();
}

UndoLevels::~UndoLevels() = default;

void UndoLevels::accept()
{
    workspace()->maxUndos = ui->levels->value();
    QDialog::accept();
}
