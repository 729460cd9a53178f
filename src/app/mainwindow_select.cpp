// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/mainwindow.h"

#include "app/filepicker.h"
#include "app/parameterdialog.h"
#include "area/areatools.h"
#include "area/maskops.h"
#include "area/pshapefile.h"
#include "area/smoothing.h"
#include "formats/maskpicture.h"
#include "views/commitselection.h"
#include "views/imgwindow.h"
#include "views/windowacts.h"

#include <QFileInfo>

namespace
{
constexpr int kMostGrowth = 500;
} // namespace

/// The image whose selection the menu's acts change: a master hands over to its target, as
/// the area tools do. Null, and nothing is done, without one.
image *MainWindow::selectedImage() const
{
    imgWindow *window = validCurrent();
    return window && busy == 0 ? selectionTaker(window)->img : nullptr;
}

void MainWindow::on_actionDelete_Selection_triggered()
{
    if (image *img = selectedImage())
        selectWhole(img, false);
}

void MainWindow::on_actionSelect_Alpha_triggered()
{
    image *img = selectedImage();
    if (img && actOnSelection(
                   img, [img]() { return selectFromAlpha(img); }, QStringLiteral("alpha")))
        statusText(tr("Selected as much as it is opaque"));
}

void MainWindow::on_actionSelect_Luma_triggered()
{
    image *img = selectedImage();
    if (img && actOnSelection(
                   img, [img]() { return selectFromLuma(img); }, QStringLiteral("luma")))
        statusText(tr("Selected as much as it is bright"));
}

/// Asks for a number of samples and has the current selection changed by it. `word` stands for
/// the act in recorded scripts.
void MainWindow::changeSelectionBy(const char *word, const QString &title,
                                   const QString &explanation, int *samples, int most,
                                   bool (*act)(image *, int))
{
    image *img = selectedImage();
    if (!img)
        return;
    if (!img->anyMaskSet()) {
        statusText(tr("Nothing selected (Ctrl+A selects all)"));
        return;
    }
    ParameterDialog dialog(title, explanation, title, this);
    dialog.whole("samples", tr("&By"), samples, {1, double(most), 0, tr(" samples")}, QString());
    if (dialog.ask() && img == selectedImage() &&
        actOnSelection(
            img, [=]() { return act(img, *samples); },
            QStringLiteral("%1 %2").arg(QLatin1String(word)).arg(*samples)))
        statusText(tr("%1: %2 samples").arg(title).arg(*samples));
}

void MainWindow::on_actionGrow_Selection_triggered()
{
    changeSelectionBy("grow", tr("Grow"), tr("Moves the edge of the selection outwards."), &growth,
                      kMostGrowth, growSelection);
}

void MainWindow::on_actionShrink_Selection_triggered()
{
    changeSelectionBy("shrink", tr("Shrink"), tr("Moves the edge of the selection inwards."),
                      &growth, kMostGrowth, shrinkSelection);
}

void MainWindow::on_actionFeather_Selection_triggered()
{
    changeSelectionBy("feather", tr("Feather"),
                      tr("Makes the edge of the selection soft, as far to either side."), &feather,
                      kMostFeather, featherSelection);
}

void MainWindow::on_actionSave_Selection_triggered()
{
    image *img = selectedImage();
    if (!img)
        return;
    ParameterDialog dialog(tr("Save Selection"),
                           tr("The selection is saved as a grey picture: white is selected, "
                              "black is not."),
                           tr("Go On"), this);
    dialog.choice("depth", tr("&Depth"), &maskDepth,
                  {tr("8 bits: for other programs"), tr("16 bits: nothing is lost")});
    if (!dialog.ask() || img != selectedImage())
        return;
    const QString path =
        filePicker::pick(this, &maskFileBag, filePicker::PickFor::Save, tr("Save Selection"),
                         fileNameFor(img->name) + QStringLiteral("-selection"))
            .value(0);
    if (path.isEmpty() || img != selectedImage())
        return;
    QString error;
    if (saveMaskPicture(*img, path, maskDepth == 0 ? 8 : 16, &error))
        statusText(tr("Selection saved to %1").arg(path));
    else
        messageBox(tr("Save Selection"), error.toHtmlEscaped());
}

void MainWindow::on_actionLoad_Selection_triggered()
{
    image *img = selectedImage();
    if (!img)
        return;
    const QString path = filePicker::pick(this, &imageFileBag, filePicker::PickFor::Open,
                                          tr("Load Selection from a Picture"))
                             .value(0);
    if (path.isEmpty() || img != selectedImage())
        return;
    QString error;
    const int saidBefore = messagesSaid;
    const std::unique_ptr<image> picture(loadMaskPicture(path, &error));
    if (!picture) {
        if (messagesSaid == saidBefore) // most readers say by themselves what is wrong
            messageBox(tr("Load Selection"), error.toHtmlEscaped());
        return;
    }
    if (img == selectedImage() &&
        actOnSelection(img, [&]() { return selectFromPicture(img, *picture); }))
        statusText(tr("Selection loaded from %1").arg(QFileInfo(path).fileName()));
}

// --- P-Shapes ----------------------------------------------------------------------------

void MainWindow::on_actionConvert_to_P_Shape_triggered()
{
    PShape &shape = areaTools.shape;
    if (!shape.convert()) {
        statusText(tr("Draw a figure first: it becomes the shape"));
        return;
    }
    statusText(tr("%1 figure taken as P-Shape").arg(shape.kind));
    shapeChanged();
}

void MainWindow::on_actionSave_P_Shape_triggered()
{
    const PShape &shape = areaTools.shape;
    if (shape.lastCount == 0) {
        statusText(tr("Draw a figure first: it is what is saved"));
        return;
    }
    const QString path =
        filePicker::pick(this, &jsonPShapeFileBag, filePicker::PickFor::Save,
                         tr("Save Recent %1 Area Select as P-Shape").arg(shape.kind),
                         QStringLiteral("shape"))
            .value(0);
    if (path.isEmpty())
        return;
    QString error;
    if (savePShape(path, shape, &error))
        statusText(tr("Shape saved to %1").arg(path));
    else
        messageBox(tr("Save P-Shape"), error.toHtmlEscaped());
}

void MainWindow::on_actionLoad_P_Shape_triggered()
{
    const QString path =
        filePicker::pick(this, &jsonPShapeFileBag, filePicker::PickFor::Open, tr("Load P-Shape"))
            .value(0);
    if (path.isEmpty())
        return;
    QString error;
    if (!loadPShape(path, &areaTools.shape, &error)) {
        messageBox(tr("Load P-Shape"), error.toHtmlEscaped());
        return;
    }
    shapeChanged();
    takeTool(kToolPShape);
}
