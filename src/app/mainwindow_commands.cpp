// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/mainwindow.h"
#include "core/rows.h"
#include "core/undo.h"
#include "layers/stack.h"
#include "views/imgwindow.h"

namespace
{
struct HostCommand {
    int number;
    void (MainWindow::*act)();
};

/// Window commands that are the main window's to carry out. Those that need an image test
/// for one themselves, so that keys may come here whatever is open.
constexpr HostCommand kHostCommands[] = {
    {kCommandLoadDialog, &MainWindow::on_actionLoad_Image_2_triggered},
    {kCommandNewDialog, &MainWindow::on_actionNew_Image_triggered},
    {kCommandPasteAsNew, &MainWindow::on_actionPaste_as_New_Image_triggered},
    {kCommandNotations, &MainWindow::on_actionNotations_triggered},
    {kCommandInformation, &MainWindow::on_actionInformation_triggered},
    {kCommandSaveFlat, &MainWindow::on_actionSave_Flattened_triggered},
    {kCommandExportAnimation, &MainWindow::on_actionExport_Animation_triggered},
    {kCommandLoadNext, &MainWindow::on_actionLoad_Next_Image_triggered},
    {kCommandNextImage, &MainWindow::on_actionNext_Image_triggered},
    {kCommandPreviousImage, &MainWindow::on_actionPrevious_Image_triggered},
    {kCommandAssignBrush, &MainWindow::on_actionAssign_as_Brush_triggered},
    {kCommandAssignOrigin, &MainWindow::on_actionAssign_as_Origin_triggered},
    {kCommandApplyAgain, &MainWindow::on_actionApply_Again_triggered},
    {kCommandPreferences, &MainWindow::on_actionPreferences_triggered},
    {kCommandKeys, &MainWindow::on_actionKeys_triggered},
    {kCommandLayers, &MainWindow::on_actionLayers_triggered},
    {kCommandOperators, &MainWindow::on_actionShow_Operators_triggered},
    {kCommandScriptEditor, &MainWindow::on_actionScript_Editor_triggered},
    {kCommandRunScript, &MainWindow::on_actionRun_Script_triggered},
    {kCommandScriptDebug, &MainWindow::on_actionScript_Debug_triggered},
    {kCommandCloseAll, &MainWindow::on_actionClose_All_triggered},
    {kCommandQuit, &MainWindow::on_actionQuit_triggered},
    {kCommandToolRectangle, &MainWindow::on_rectangle_clicked},
    {kCommandToolNumericRectangle, &MainWindow::on_xyrect_clicked},
    {kCommandToolEllipse, &MainWindow::on_ellipse_clicked},
    {kCommandToolEntire, &MainWindow::on_entire_clicked},
    {kCommandToolMagnify, &MainWindow::on_magglass_clicked},
    {kCommandToolPolygon, &MainWindow::on_polygon_clicked},
    {kCommandToolPencil, &MainWindow::on_pencil_clicked},
    {kCommandToolRedo, &MainWindow::on_redo_clicked},
    {kCommandToolWand, &MainWindow::on_wand_clicked},
    {kCommandToolPolyspline, &MainWindow::on_polyspline_clicked},
    {kCommandToolPShape, &MainWindow::on_pshape_clicked},
    {kCommandToolText, &MainWindow::on_textTool_clicked},
    {kCommandBlending, &MainWindow::on_actionBlend_triggered},
    {kCommandInvertSelections, &MainWindow::toggleInvertSelections},
    {kCommandOpenFigure, &MainWindow::toggleOpenFigure},
    {kCommandFilledFigure, &MainWindow::toggleFilledFigure},
    {kCommandOutlineObject, &MainWindow::toggleOutlineObject},
    {kCommandSelectMode, &MainWindow::toggleSelectMode},
    {kCommandEyepoint, &MainWindow::on_toolButton_clicked},
};

/// Mixes the origin's samples into an image of its size, by the selection.
void mixFrom(const image &origin, image *img)
{
    const auto from = origin.colorPlanes(), to = img->colorPlanes();
    parallelRows(img->height, img->width * int(to.size()), [&](int first, int end) {
        const int64_t last = int64_t(end) * img->width;
        for (size_t p = 0; p < to.size(); ++p)
            for (int64_t i = int64_t(first) * img->width; i < last; ++i) {
                const double m = img->gmask[i] / kWhite;
                to[p][i] = uint16_t(to[p][i] * (1 - m) + from[p][i] * m);
            }
    });
}
} // namespace

bool MainWindow::hostCommand(imgWindow *, int number)
{
    for (const HostCommand &command : kHostCommands)
        if (command.number == number) {
            (this->*command.act)();
            return true;
        }
    if (number >= kCommandRecentFirst && number <= kCommandRecentLast) {
        openRecentFile(number - kCommandRecentFirst + 1);
        return true;
    }
    return false;
}

void MainWindow::on_actionRestore_from_Origin_triggered()
{
    imgWindow *window = validCurrent();
    if (!window || busy > 0 || !(satisfiedNeeds() & kNeedsSameOrigin))
        return;
    image *img = window->img;
    if (img->kind == 1 || img->imageMode != originImage->imageMode || !originImage->red) {
        statusText(tr("The origin cannot be restored into this picture"));
        return;
    }
    if (!img->anyMaskSet()) {
        statusText(tr("Nothing selected (Ctrl+A selects all)"));
        return;
    }
    window->settleJobs();
    beginAct(img);
    mixFrom(*originImage, img);
    samplesChanged(img);
    refreshOperatorSource();
    updateMenus();
}
