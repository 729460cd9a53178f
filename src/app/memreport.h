// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

#include <memory>

namespace Ui
{
class MemReport;
}

/// Shows the report of the tracked memory, after a test of all guards.
class MemReport : public QDialog
{
    Q_OBJECT
public:
    explicit MemReport(QWidget *parent = nullptr);
    ~MemReport() override;

private slots:
    void on_showDetails_toggled();
    void on_pack_clicked();

private:
    void refresh();

    std::unique_ptr<Ui::MemReport> ui;
};
