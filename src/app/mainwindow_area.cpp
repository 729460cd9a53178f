// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/mainwindow.h"

#include "app/antialiassettings.h"
#include "app/guidesettings.h"
#include "app/helppage.h"
#include "app/outlinemode.h"
#include "app/parameterdialog.h"
#include "app/pshapecontroller.h"
#include "app/textgenerator.h"
#include "app/transsetter.h"
#include "app/xyrect.h"
#include "area/areatools.h"
#include "area/wand.h"
#include "operators/dialog/operators.h"
#include "ui_mainwindow.h"
#include "views/imgwindow.h"
#include "views/windowacts.h"

#include <QActionGroup>
#include <QColorDialog>

namespace
{
/// What the status line says when a tool is taken.
struct ToolFacts {
    const char *action;
    const char *text;
};
constexpr ToolFacts kTools[] = {
    {"actionTool_Rectangle",
     QT_TRANSLATE_NOOP("MainWindow", "Rectangle: drag from corner to corner")},
    {"actionTool_Numeric_Rectangle",
     QT_TRANSLATE_NOOP("MainWindow", "Numeric Rectangle: click to give numbers")},
    {"actionTool_Ellipse", QT_TRANSLATE_NOOP("MainWindow", "Ellipse: drag from the centre")},
    {"actionTool_Entire", QT_TRANSLATE_NOOP("MainWindow", "Entire Image: a click selects it all")},
    {"actionTool_Magnify",
     QT_TRANSLATE_NOOP("MainWindow", "Magnify: click or drag; right click: out")},
    {"actionTool_Polygon",
     QT_TRANSLATE_NOOP("MainWindow", "Polygon: click corners, right click ends it")},
    {"actionTool_Pencil", QT_TRANSLATE_NOOP("MainWindow", "Pencil: draw around what to select")},
    {nullptr, nullptr},
    {"actionTool_Redo",
     QT_TRANSLATE_NOOP("MainWindow", "Re-do: a click brings the selection back")},
    {"actionTool_Wand", nullptr},
    {"actionTool_Polyspline",
     QT_TRANSLATE_NOOP("MainWindow", "Polyspline: click points, right click ends")},
    {"actionTool_P_Shape",
     QT_TRANSLATE_NOOP("MainWindow", "P-Shape \"%1\": click or drag to place it")},
};
constexpr int kToolCount = int(std::size(kTools));

const ToolFacts &factsOf(int tool)
{
    return kTools[tool >= 0 && tool < kToolCount && kTools[tool].action ? tool : kToolRectangle];
}

/// Opens a dialog of which there is one at a time, or brings the open one forward.
template <class Dialog>
Dialog *showOne(QPointer<QDialog> *place, QWidget *parent)
{
    if (!*place) {
        *place = new Dialog(parent);
        (*place)->setAttribute(Qt::WA_DeleteOnClose);
    }
    (*place)->show();
    (*place)->raise();
    (*place)->activateWindow();
    return static_cast<Dialog *>(place->data());
}
} // namespace

void MainWindow::collectAreaTools()
{
    areaGroup = new QActionGroup(this);
    for (const ToolFacts &tool : kTools)
        if (tool.action)
            areaGroup->addAction(findChild<QAction *>(QLatin1String(tool.action)));
    const auto settingsOf = [this](QAction *action, void (MainWindow::*open)()) {
        for (const QToolBar *bar : {ui->areaBar, ui->areaModeBar}) {
            QWidget *button = bar->widgetForAction(action);
            if (!button)
                continue;
            button->setContextMenuPolicy(Qt::CustomContextMenu);
            connect(button, &QWidget::customContextMenuRequested, this, open);
        }
    };
    settingsOf(ui->actionTool_Rectangle, &MainWindow::on_actionGuide_Settings_triggered);
    settingsOf(ui->actionTool_Ellipse, &MainWindow::on_actionGuide_Settings_triggered);
    settingsOf(ui->actionTool_P_Shape, &MainWindow::showShapeMenu);
    settingsOf(ui->actionTool_Wand, &MainWindow::showWandMenu);
    settingsOf(ui->actionOutline_Object, &MainWindow::on_actionOutline_Settings_triggered);
    settingsOf(ui->actionAntialias, &MainWindow::on_actionAntialias_Settings_triggered);
    for (const QToolBar *bar : {ui->areaBar, ui->areaModeBar})
        for (QAction *action : bar->actions())
            if (QWidget *button = bar->widgetForAction(action)) {
                button->setAccessibleName(action->iconText());
                button->setFocusPolicy(action->isSeparator() ? Qt::NoFocus : Qt::TabFocus);
            }
    connect(ui->actionM_Alpha, &QAction::triggered, this, &MainWindow::on_malpha_clicked);
}

void MainWindow::showShapeMenu()
{
    ui->menuP_Shape->exec(QCursor::pos());
}

void MainWindow::showWandMenu()
{
    ui->menuWand->exec(QCursor::pos());
}

/// Which tool is active, and whether it smooths, as the buttons show it.
void MainWindow::syncAreaTools()
{
    QAction *active = findChild<QAction *>(QLatin1String(factsOf(toolSelect).action));
    if (active && !active->isChecked())
        active->setChecked(true);
    const auto smooths = smoothingSwitch(toolSelect);
    ui->actionAntialias->setEnabled(smooths != nullptr);
    const bool on = smooths && this->*smooths;
    if (ui->actionAntialias->isChecked() != on)
        ui->actionAntialias->setChecked(on);
    if (ui->actionPreview_Eyepoint->isChecked() != eyepointPending)
        ui->actionPreview_Eyepoint->setChecked(eyepointPending);
}

void MainWindow::chooseTool(int tool)
{
    toolSelect = tool;
    QString text =
        tool == kToolWand ? wandStatus(wandTolerance, globalPick) : tr(factsOf(tool).text);
    if (tool == kToolPShape)
        text = areaTools.shape.usable() ? text.arg(areaTools.shape.shapeName)
                                        : tr("P-Shape: convert a figure or load a shape");
    statusText(text);
    syncAreaTools();
    for (imgWindow *window : qAsConst(windows)) {
        window->gesture.showCursor();
        window->refreshOverlay();
    }
    if (imgWindow *window = validCurrent())
        window->activateWindow();
}

/// A tool that is taken by hand stays.
void MainWindow::takeTool(int tool)
{
    toolBefore = -1;
    chooseTool(tool);
}

void MainWindow::on_rectangle_clicked()
{
    takeTool(kToolRectangle);
}

void MainWindow::on_xyrect_clicked()
{
    takeTool(kToolNumericRectangle);
}

void MainWindow::on_ellipse_clicked()
{
    takeTool(kToolEllipse);
}

void MainWindow::on_entire_clicked()
{
    takeTool(kToolEntire);
}

void MainWindow::on_magglass_clicked()
{
    takeTool(kToolMagnify);
}

void MainWindow::on_polygon_clicked()
{
    takeTool(kToolPolygon);
}

void MainWindow::on_pencil_clicked()
{
    takeTool(kToolPencil);
}

void MainWindow::on_redo_clicked()
{
    takeTool(kToolRedo);
}

void MainWindow::on_wand_clicked()
{
    takeTool(kToolWand);
}

void MainWindow::on_polyspline_clicked()
{
    takeTool(kToolPolyspline);
}

void MainWindow::on_pshape_clicked()
{
    takeTool(kToolPShape);
}

void MainWindow::on_textTool_clicked()
{
    showOne<TextGenerator>(&textGenerator, this);
}

bool MainWindow::askNumericRectangle(imgWindow *window)
{
    XYRect dialog(window->img, window);
    return dialog.exec() == QDialog::Accepted;
}

void MainWindow::shapeChanged()
{
    if (auto *controller = qobject_cast<pShapeController *>(shapeController.data()))
        controller->shapeChanged();
    for (imgWindow *window : qAsConst(windows))
        window->refreshOverlay();
}

// --- Switches ---------------------------------------------------------------------------

QString MainWindow::toggleToolAntialias()
{
    const auto smooths = smoothingSwitch(toolSelect);
    if (!smooths)
        return tr("This tool has no antialias switch");
    this->*smooths = !(this->*smooths);
    if (auto *dialog = qobject_cast<AntialiasSettings *>(antialiasSettings.data()))
        dialog->settingsChanged();
    syncAreaTools();
    const QString tool =
        findChild<QAction *>(QLatin1String(factsOf(toolSelect).action))->iconText();
    return this->*smooths ? tr("%1: selections are smoothed").arg(tool)
                          : tr("%1: selections are not smoothed").arg(tool);
}

void MainWindow::on_actionAntialias_triggered()
{
    statusText(toggleToolAntialias());
}

/// Switches a flag of the area tools over and says how it stands.
void MainWindow::flip(bool *flag, const QString &on, const QString &off)
{
    *flag = !*flag;
    statusText(*flag ? on : off);
    for (imgWindow *window : qAsConst(windows))
        window->refreshOverlay();
    updateMenus();
}

void MainWindow::toggleInvertSelections()
{
    flip(&invertSelection, tr("Each Apply inverts the selection"),
         tr("Selections are applied as they are"));
}

void MainWindow::toggleOpenFigure()
{
    flip(&openFigure, tr("Figures stay open"), tr("Figures are closed"));
}

void MainWindow::toggleFilledFigure()
{
    flip(&filledFigure, tr("Figures are filled"), tr("Only the lines of figures are selected"));
}

void MainWindow::toggleOutlineObject()
{
    flip(&outlineObject, tr("Selections become their outlines"), tr("Selections are not outlined"));
}

void MainWindow::toggleSelectMode()
{
    setSelectMode(!selectMode);
    statusText(selectMode ? tr("A finished selection applies the operator at once")
                          : tr("Selections wait for Apply"));
    updateMenus();
}

void MainWindow::on_actionGlobal_Pick_triggered(bool on)
{
    globalPick = on;
    statusText(wandStatus(wandTolerance, globalPick));
}

void MainWindow::on_malpha_clicked(bool on)
{
    maskWithTargetAlpha = on;
    statusText(on ? tr("The wand leaves fully transparent parts out")
                  : tr("The wand takes transparent parts too"));
}

void MainWindow::on_actionMarching_Outline_triggered(bool on)
{
    marchingOutline = on;
    for (imgWindow *window : qAsConst(windows))
        window->refreshOverlay();
}

/// The preview eyepoint: the next click says what the operator preview shows.
void MainWindow::on_toolButton_clicked()
{
    eyepointPending = !eyepointPending;
    statusText(eyepointPending ? tr("Click in an image to choose what the preview shows")
                               : tr("The preview shows what it showed before"));
    syncAreaTools();
}

// --- Settings of the tools ---------------------------------------------------------------

void MainWindow::on_actionGuide_Settings_triggered()
{
    showOne<GuideSettings>(&guideSettings, this);
}

void MainWindow::on_actionOutline_Settings_triggered()
{
    showOne<OutLineMode>(&outlineMode, this);
}

void MainWindow::on_actionAntialias_Settings_triggered()
{
    showOne<AntialiasSettings>(&antialiasSettings, this);
}

void MainWindow::on_actionBlend_triggered()
{
    showOne<TransSetter>(&transSetter, this);
}

void MainWindow::on_actionP_Shape_Controller_triggered()
{
    showOne<pShapeController>(&shapeController, this);
}

void MainWindow::on_actionWand_Tolerance_triggered()
{
    ParameterDialog dialog(tr("Wand Tolerance"),
                           tr("How far a colour may differ from the one clicked on. 0 takes the "
                              "exact colour anywhere in the image, 1 the exact colour where it is "
                              "connected."),
                           tr("Set"), this);
    dialog.whole("tolerance", tr("&Tolerance"), &wandTolerance, {0, 100, 0, {}}, QString());
    if (dialog.ask())
        statusText(wandStatus(wandTolerance, globalPick));
}

void MainWindow::on_actionDash_Length_triggered()
{
    ParameterDialog dialog(tr("Dash Length"), tr("Length of the dashes around a selection."),
                           tr("Set"), this);
    dialog.whole("dashLength", tr("&Length"), &dashLength, {2, 20, 0, {}}, QString());
    if (!dialog.ask())
        return;
    for (imgWindow *window : qAsConst(windows))
        window->refreshOverlay();
}

void MainWindow::on_actionSelection_Color_triggered()
{
    const QStringList now = aSelectColor.split(QLatin1Char(' '));
    const char *const titles[] = {QT_TR_NOOP("First Colour of Outlines"),
                                  QT_TR_NOOP("Second Colour of Outlines")};
    QStringList chosen;
    for (int i = 0; i < 2; ++i) {
        QColor colour(now.value(i));
        if (!colour.isValid())
            colour = i == 0 ? Qt::black : Qt::white;
        colour = QColorDialog::getColor(colour, this, tr(titles[i]));
        if (!colour.isValid())
            return;
        chosen << colour.name();
    }
    aSelectColor = chosen.join(QLatin1Char(' '));
    for (imgWindow *window : qAsConst(windows))
        window->refreshOverlay();
}

void MainWindow::on_actionHelp_Area_Tools_triggered()
{
    showHelpPage(this, tr("Help: Area Tools"), QStringLiteral("areatools.html"));
}

void MainWindow::on_actionHelp_Blending_triggered()
{
    showHelpPage(this, tr("Help: Area Selection Blending"), QStringLiteral("blending.html"));
}
