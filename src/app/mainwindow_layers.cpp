// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/mainwindow.h"

#include "app/animationexport.h"
#include "app/busyguard.h"
#include "app/filepicker.h"
#include "app/layeranimation.h"
#include "app/layers.h"
#include "app/notations.h"
#include "core/compose.h"
#include "formats/writers.h"
#include "views/imgwindow.h"

#include <QApplication>

#include <algorithm>

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
    if (notationsDialog)
        notationsDialog->close();
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

void MainWindow::exportAnimation(image *master, QWidget *parent)
{
    const BusyGuard guard(busy);
    if (std::none_of(master->layers.begin(), master->layers.end(), isFrame)) {
        messageBox(tr("Animation"), tr("No layer with a picture is visible."));
        return;
    }
    AnimationExport dialog(master, &animation, parent);
    const bool goesOn = dialog.exec() == QDialog::Accepted;
    refreshViews(master); // which the making of the frames has composed otherwise
    const QString path = goesOn ? askAnimationFile(master->name) : QString();
    if (path.isEmpty())
        return;
    QString error;
    const bool written = writeLayerAnimation(master, animation, path, &error);
    refreshViews(master);
    if (written)
        statusText(tr("Save Complete"));
    else if (error == QLatin1String(kSaveCancelled))
        statusText(tr("save cancelled"));
    else if (!error.isEmpty())
        messageBox(tr("Animation"), error.toHtmlEscaped());
}

void MainWindow::on_actionExport_Animation_triggered()
{
    const imgWindow *window = validCurrent();
    image *stack = window && busy == 0 ? masterOf(window->img) : nullptr;
    if (stack)
        exportAnimation(stack, this);
}

QString MainWindow::askAnimationFile(const QString &name)
{
    QWidget *parent = QApplication::activeModalWidget();
    return filePicker::pick(parent ? parent : this, &animFileBag, filePicker::PickFor::Save,
                            tr("Save Animation"), fileNameFor(name))
        .value(0);
}
