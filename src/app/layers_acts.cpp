// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/busyguard.h"
#include "app/helppage.h"
#include "app/imagepicker.h"
#include "app/layers.h"
#include "app/mainwindow.h"
#include "core/image.h"
#include "formats/orient.h"
#include "layers/stack.h"
#include "views/imgwindow.h"
#include "views/windowacts.h"

#include "ui_layers.h"

#include <QInputDialog>

#include <algorithm>

void Layers::tellNoMemory()
{
    main->messageBox(QString(), tr("Image Allocation Failed"));
}

void Layers::on_masterCombo_activated(int index)
{
    const int serial = ui->masterCombo->itemData(index).toInt();
    const QList<image *> all = main->images;
    const auto found = std::find_if(all.begin(), all.end(), [serial](const image *img) {
        return img->kind == 1 && img->serial == serial;
    });
    if (found != all.end())
        main->showPart(*found); // its window comes forward, and the dialog follows that
}

void Layers::on_addLayer_clicked()
{
    log("on_addLayer_clicked");
    image *of = master();
    if (!of)
        return;
    QList<image *> offered;
    for (image *img : qAsConst(main->images))
        if (img->kind == 0 && !img->inUse)
            offered << img;
    const BusyGuard guard(main->busyDepth());
    if (offered.isEmpty()) {
        main->messageBox(tr("Add Layers"),
                         tr("Every open picture is layered already.<br>Load or make another one "
                            "first; it can then be added here."));
        return;
    }
    ImagePicker picker(tr("Add Layers"), tr("Add"), offered, this);
    if (picker.exec() != QDialog::Accepted || of != master())
        return;
    const QList<image *> picked = picker.picked();
    for (image *layer : picked)
        if (main->images.contains(layer))
            addLayer(of, layer);
}

void Layers::moveTo(image *layer, int place)
{
    if (layer && moveLayer(layer, place))
        selectLayer(layer);
}

void Layers::on_higher_clicked()
{
    log("on_higher_clicked");
    moveTo(selected(), getLayerIndex(selected()) + 1);
}

void Layers::on_lower_clicked()
{
    log("on_lower_clicked");
    moveTo(selected(), getLayerIndex(selected()) - 1);
}

void Layers::on_detach_clicked()
{
    log("on_detach_clicked");
    image *layer = selected();
    if (layer && detachLayer(layer))
        main->showPart(layer);
}

void Layers::on_create_clicked()
{
    log("on_create_clicked");
    image *of = master();
    if (!of)
        return;
    image *layer = createLayer(of);
    if (!layer) {
        tellNoMemory();
        return;
    }
    selectLayer(layer);
    main->showPart(layer); // there is nothing in it yet but what will be drawn there
}

void Layers::on_clone_clicked()
{
    log("on_clone_clicked");
    image *layer = selected();
    if (!layer)
        return;
    if (image *copy = cloneLayer(layer))
        selectLayer(copy);
    else
        tellNoMemory();
}

void Layers::on_destroy_clicked()
{
    log("on_destroy_clicked");
    image *layer = selected();
    if (!layer || layer->master->layers.size() < 2)
        return;
    const BusyGuard guard(main->busyDepth());
    const int answer =
        main->question(tr("Destroy Layer"),
                       tr("Destroy the layer <b>%1</b>?<br><br>It is gone for good then, together "
                          "with what could be undone in it.")
                           .arg(layer->name.toHtmlEscaped()),
                       {tr("Cancel"), tr("Destroy")}, 1, 0);
    if (answer == 1 && layer == selected())
        destroyLayer(layer);
}

void Layers::flip(bool horizontally)
{
    image *layer = selected();
    if (layer && flipImage(layer, horizontally))
        forgetOrientation(layer);
}

void Layers::on_hflip_clicked()
{
    log("on_hflip_clicked");
    flip(true);
}

void Layers::on_vflip_clicked()
{
    log("on_vflip_clicked");
    flip(false);
}

void Layers::rename(image *img)
{
    if (!img)
        return;
    const BusyGuard guard(main->busyDepth());
    bool accepted = false;
    const QString name = QInputDialog::getText(this, tr("Rename: %1").arg(img->name), tr("Name"),
                                               QLineEdit::Normal, img->name, &accepted);
    if (!accepted || !main->ownsImage(img))
        return;
    renameImage(img, name);
    if (image *of = master())
        of->changed = true;
    main->layersChanged(master());
}

void Layers::on_renameLayer_clicked()
{
    log("on_renameLayer_clicked");
    rename(selected());
}

void Layers::on_renameMaster_clicked()
{
    log("on_renameMaster_clicked");
    rename(master());
}

void Layers::on_saveAll_clicked()
{
    log("on_saveAll_clicked");
    image *of = master();
    if (!of)
        return;
    if (!main->findWindow(of))
        main->openView(of);
    main->saveImage(main->findWindow(of));
}

void Layers::on_assignTarget_clicked()
{
    log("on_assignTarget_clicked");
    image *layer = selected();
    if (!layer)
        return;
    layer->master->target = layer;
    main->layersChanged(layer->master);
    main->updateMenus();
}

void Layers::on_clearTarget_clicked()
{
    log("on_clearTarget_clicked");
    image *of = master();
    if (!of)
        return;
    of->target = nullptr;
    main->layersChanged(of);
    main->updateMenus();
}

void Layers::on_help_clicked()
{
    log("on_help_clicked");
    showHelpPage(this, tr("Help: Layers"), QStringLiteral("layers.html"));
}
