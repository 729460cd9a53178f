// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

#include <memory>

namespace Ui
{
class UndoLevels;
}

/// Asks for the number of undo steps that new images keep; OK stores it in the workspace.
class UndoLevels : public QDialog
{
    Q_OBJECT
public:
    explicit UndoLevels(QWidget *parent = nullptr);
    ~UndoLevels() override;

    void accept() override;

private:
    std::unique_ptr<Ui::UndoLevels> ui;
};
