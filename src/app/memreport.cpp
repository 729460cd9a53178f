// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/memreport.h"

#include "core/memory.h"

#include "ui_memreport.h"

#include <QFontDatabase>

MemReport::MemReport(QWidget *parent) : QDialog(parent), ui(std::make_unique<Ui::MemReport>())
{
    ui->setupUi(this);
    ui->report->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    const QFontMetrics metrics(ui->report->font());
    ui->report->setMinimumSize(40 * metrics.averageCharWidth(), 10 * metrics.lineSpacing());
    resize(84 * metrics.averageCharWidth(), 28 * metrics.lineSpacing());
    refresh();
}

MemReport::~MemReport() = default;

void MemReport::on_showDetails_toggled()
{
    refresh();
}

void MemReport::on_pack_clicked()
{
    ui->packResult->setText(memPack());
    refresh();
}

void MemReport::refresh()
{
    memSweep();
    ui->report->setPlainText(memReport(ui->showDetails->isChecked()));
}
