// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/mainwindow.h"

#include "app/preferences.h"
#include "ui_mainwindow.h"

#include <QMenu>
#include <QToolButton>

#include <algorithm>

namespace
{
constexpr int kTools = 16;

/// What a right click on a tool button offers: acts that belong with it. An empty name is
/// a separator.
const char *const kToolMenus[kTools][8] = {
    {"actionNew_Image", "actionPaste_as_New_Image", "actionClone", "actionClone_Scaled"},
    {"actionLoad_Image_2", "actionLoad_Next_Image", "", "menuRecent_Files"},
    {"actionSave_Image", "actionSave_As", "actionSave_Image_Atomic", "actionSave_Flattened",
     "actionExport_Animation"},
    {"actionCopy", "actionCut", "", "actionClone"},
    {"actionPaste", "actionPaste_as_New_Image", "actionPaste_as_Layer"},
    {"actionUndo", "actionRevert", "", "actionSet_Undo_Levels", "actionClear_Undos_and_Redos"},
    {"actionRedo", "", "actionSet_Undo_Levels", "actionClear_Undos_and_Redos"},
    {"actionSelect_Entire", "actionDelete_Selection", "actionInvert_Selection", "",
     "actionInvert_Selections"},
    {"actionZoom_In", "actionPreset_In", "menuShow_At", "", "actionSet_Zoom_Sep_Size"},
    {"actionZoom_Out", "actionPreset_Out", "menuShow_At", "", "actionSet_Zoom_Sep_Size"},
    {"actionFit_View", "actionFit_Window", "actionFill_Screen", "actionCentre", "actionTop_Left",
     "actionSame_View"},
    {"actionRulers", "actionGuides", "actionClear_Guides", "", "actionPreferences"},
    {"actionGrid", "actionGrid_Color", "actionSnap_Grid", "", "actionPreferences"},
    {"actionSnap_to_Grid", "actionSnap_to_Guides", "actionSnap_Grid", "", "actionPreferences"},
    {"actionNotations", "actionShow_Notations"},
    {"actionLayers", "actionMake_Layered", "actionNew_Layer", "actionAdd_Layers",
     "actionClone_Layer"},
};
} // namespace

/// The buttons in the order of the form, with their icons, and what right clicks do.
void MainWindow::collectTools()
{
    for (const QToolBar *bar : {ui->toolBar, ui->viewBar})
        for (QAction *action : bar->actions()) {
            auto *button = qobject_cast<QToolButton *>(bar->widgetForAction(action));
            if (!button || action->isSeparator())
                continue;
            const int tool = toolButtons.size();
            toolButtons << button;
            toolIcons << action->icon();
            button->setAccessibleName(action->iconText());
            button->setFocusPolicy(Qt::TabFocus);
            button->setContextMenuPolicy(Qt::CustomContextMenu);
            connect(
                button, &QWidget::customContextMenuRequested, this,
                [this, tool, button](QPoint at) { showToolMenu(tool, button->mapToGlobal(at)); });
        }
    // Before there is a native window: to size it later would shift it by its frame.
    applyToolIcons();
}

void MainWindow::showToolMenu(int tool, QPoint where)
{
    QMenu menu(this);
    for (const char *name : kToolMenus[std::clamp(tool, 0, kTools - 1)]) {
        if (!name)
            break;
        if (!*name)
            menu.addSeparator();
        else if (auto *action = findChild<QAction *>(QLatin1String(name)))
            menu.addAction(action);
        else if (auto *submenu = findChild<QMenu *>(QLatin1String(name)))
            menu.addMenu(submenu);
    }
    menu.exec(where);
}

/// A list of other than as many icons as there are buttons belongs to another version.
void MainWindow::applyToolIcons()
{
    const QSize side(toolIconSize, toolIconSize);
    const bool own = customIcons.size() == kTools;
    for (int i = 0; i < toolButtons.size(); ++i) {
        QString error; // a file that went away gives the button its own icon back
        const QIcon custom =
            own && !customIcons.at(i).isEmpty() ? readToolIcon(customIcons.at(i), &error) : QIcon();
        toolButtons.at(i)->defaultAction()->setIcon(custom.isNull() ? toolIcons.at(i) : custom);
    }
    int needed = 0;
    for (QToolBar *bar : {ui->toolBar, ui->viewBar, ui->areaBar, ui->areaModeBar}) {
        bar->setIconSize(side);
        needed = std::max(needed, bar->sizeHint().width());
    }
    if (width() < needed) // a resize for nothing would shift the window by its frame
        resize(needed, height());
}
