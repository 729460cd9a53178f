// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/mainwindow.h"

#include "app/busyguard.h"
#include "app/layers.h"
#include "core/compose.h"
#include "views/imgwindow.h"

#include <QFileDialog>

/// What the main window does for layered pictures and their dialog.

void MainWindow::showLayers()
{
    if (!layersDialog) {
        layersDialog = new Layers(this);
        layersDialog->setAttribute(Qt::WA_DeleteOnClose);
        connect(layersDialog, &QDialog::finished, this, [this]() {
            layersDialog->settings(*store, true);
            layersDialog = nullptr; // it is deleted when its event is over
        });
        layersDialog->settings(*store, false);
        const imgWindow *window = validCurrent();
        image *of = window ? masterOf(window->img) : nullptr;
        if (of)
            layersDialog->follow(window->img);
        else if (!layersDialog->setMaster(findAnotherMaster(nullptr)))
            layersDialog->setLayerList();
    }
    layersDialog->show();
    layersDialog->raise();
    layersDialog->activateWindow();
}

void MainWindow::on_actionLayers_triggered()
{
    showLayers();
}

void MainWindow::on_actionNew_Layer_triggered()
{
    showLayers();
    layersDialog->on_create_clicked();
}

void MainWindow::on_actionAdd_Layers_triggered()
{
    showLayers();
    layersDialog->on_addLayer_clicked();
}

void MainWindow::on_actionClone_Layer_triggered()
{
    showLayers();
    layersDialog->on_clone_clicked();
}

void MainWindow::on_actionSave_Flattened_triggered()
{
    showSaveDialog(validCurrent(), true);
}

void MainWindow::layersChanged(image *master)
{
    if (layersDialog)
        layersDialog->stackChanged(master);
    updateMenus();
}

void MainWindow::closeHelpers()
{
    if (layersDialog)
        layersDialog->close();
}

void MainWindow::showPart(image *img)
{
    if (!ownsImage(img) || !validImage(img))
        return;
    if (imgWindow *window = findWindow(img))
        activate(window);
    else
        openView(img);
}

void MainWindow::showStack(image *master, const FileRecord &record)
{
    const BusyGuard guard(busy);
    const int count = master->layers.size();
    for (int i = 0; i < count; ++i) {
        progress(tr("Image loaded; building layer %1").arg(i + 1), i, count + 1);
        image *layer = master->layers.at(i);
        if (layer->serial == 0)
            giveSerial(layer);
        layer->rebuildTitle();
        addWindow(layer, record, false);
        layer->viewCount = 1;
    }
    progress(tr("All layers loaded; building master"), count, count + 1);
    master->needsRebuild = true;
    addWindow(master, record, true);
    master->viewCount = 1;
    progress(QString(), 0, 0);
}

/// Before a master goes, the dialog that shows it goes to another one, or away.
void MainWindow::leaveMaster(const image *master)
{
    if (!layersDialog || layersDialog->master() != master)
        return;
    if (image *other = findAnotherMaster(master))
        layersDialog->setMaster(other);
    else
        layersDialog->close();
}

QString MainWindow::askAnimationFile(const QString &name)
{
    QFileDialog dialog(layersDialog, tr("Save Animation"), animFileBag.record.folder,
                       animFileBag.filters);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(QStringLiteral("gif"));
    dialog.selectFile(fileNameFor(name));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return QString();
    animFileBag.record.folder = dialog.directory().absolutePath();
    return dialog.selectedFiles().constFirst();
}
