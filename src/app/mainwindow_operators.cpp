// SPDX-License-Identifier: GPL-3.0-or-later
// The operators as the person meets them: dialog, favourites, hotkeys, split view, eyedropper.
#include "app/mainwindow.h"

#include "app/helppage.h"
#include "operators/base/operatortable.h"
#include "operators/base/opwrapper.h"
#include "operators/dialog/operators.h"
#include "operators/dialog/opfavorites.h"
#include "operators/pipeline/samplestatistics.h"
#include "views/imgwindow.h"

#include "ui_mainwindow.h"

#include <QActionGroup>

#include <algorithm>
#include <array>

void MainWindow::connectOperators()
{
    connect(operators, &Operators::operateRequested, this, &MainWindow::on_operate_clicked);
    connect(operators, &Operators::helpRequested, this, [this](int id) {
        if (const OpWrapper *op = table->byId(id))
            showOperatorHelp(operators, *op);
    });
    connect(operators, &Operators::digitAction, this, &MainWindow::digitAction);
    favorites = new OpFavorites(table.get(), operatorGroup->actions(), this);
    connect(favorites, &OpFavorites::shownChanged, this, [this]() { syncToggles(); });
    if (favoritesShown)
        favorites->show();
}

/// Alt and a digit above the operator dialog: blend modes, whose menu numbers them so.
void MainWindow::digitAction(int entry)
{
    const QList<QAction *> modes = ui->menuBlend_Mode->actions();
    if (entry >= 0 && entry < modes.size())
        modes.at(entry)->trigger();
}

void MainWindow::on_actionOperator_Favorites_triggered(bool on)
{
    if (on)
        favorites->show();
    else
        favorites->close();
}

void MainWindow::on_actionSplit_View_triggered(bool on)
{
    splitView = on;
    splitOutdated();
    if (!on)
        return;
    const imgWindow *window = validCurrent();
    const QString hindrance = window ? window->split.hindrance()
                                     : tr("Before | After is shown in the window of the current "
                                          "picture");
    if (!hindrance.isEmpty())
        statusText(hindrance);
}

void MainWindow::dropperPicked(image *img, const QRect &samples)
{
    std::array<int32_t, 9> found{};
    if (!validImage(img) || !gatherStatistics(*img, samples, found.data()))
        return;
    std::copy(found.begin(), found.end(), sampleStatistics);
    statusText(tr("%1 x %2 samples: %3, %4, %5")
                   .arg(samples.width())
                   .arg(samples.height())
                   .arg(found[6])
                   .arg(found[7])
                   .arg(found[8]));
    previewOutdated();
}

/// The page shows what was read.
void MainWindow::dropperEnded(bool hasRead)
{
    if (hasRead)
        operators->selectOperator(table->currentOp);
}
