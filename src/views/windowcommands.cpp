// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/imgwindow.h"
#include "views/keytable.h"

#include <QCoreApplication>

#include <algorithm>

namespace
{
constexpr const char *kMoving = QT_TRANSLATE_NOOP("WindowCommand", "Moving");
constexpr const char *kZoom = QT_TRANSLATE_NOOP("WindowCommand", "Zoom");
constexpr const char *kView = QT_TRANSLATE_NOOP("WindowCommand", "View");
constexpr const char *kTools = QT_TRANSLATE_NOOP("WindowCommand", "Area tools");
constexpr const char *kSelection = QT_TRANSLATE_NOOP("WindowCommand", "Selection");
constexpr const char *kClipboard = QT_TRANSLATE_NOOP("WindowCommand", "Clipboard");
constexpr const char *kImage = QT_TRANSLATE_NOOP("WindowCommand", "Image");
constexpr const char *kLayers = QT_TRANSLATE_NOOP("WindowCommand", "Layers");
constexpr const char *kFiles = QT_TRANSLATE_NOOP("WindowCommand", "Files");
constexpr const char *kHistory = QT_TRANSLATE_NOOP("WindowCommand", "History");
constexpr const char *kOperators = QT_TRANSLATE_NOOP("WindowCommand", "Operators");
constexpr const char *kProgram = QT_TRANSLATE_NOOP("WindowCommand", "Program");

QList<WindowCommand> namedCommands()
{
    return {
        {kCommandCentre, kMoving, QT_TRANSLATE_NOOP("WindowCommand", "Move to the middle")},
        {kCommandHome, kMoving, QT_TRANSLATE_NOOP("WindowCommand", "Move to the top left")},
        {kCommandUp, kMoving, QT_TRANSLATE_NOOP("WindowCommand", "Pan up")},
        {kCommandUp10, kMoving, QT_TRANSLATE_NOOP("WindowCommand", "Pan up by 10")},
        {kCommandDown, kMoving, QT_TRANSLATE_NOOP("WindowCommand", "Pan down")},
        {kCommandDown10, kMoving, QT_TRANSLATE_NOOP("WindowCommand", "Pan down by 10")},
        {kCommandLeft, kMoving, QT_TRANSLATE_NOOP("WindowCommand", "Pan left")},
        {kCommandLeft10, kMoving, QT_TRANSLATE_NOOP("WindowCommand", "Pan left by 10")},
        {kCommandRight, kMoving, QT_TRANSLATE_NOOP("WindowCommand", "Pan right")},
        {kCommandRight10, kMoving, QT_TRANSLATE_NOOP("WindowCommand", "Pan right by 10")},
        {kCommandPageUp, kMoving, QT_TRANSLATE_NOOP("WindowCommand", "Move up by a page")},
        {kCommandPageDown, kMoving, QT_TRANSLATE_NOOP("WindowCommand", "Move down by a page")},
        {kCommandPageLeft, kMoving, QT_TRANSLATE_NOOP("WindowCommand", "Move left by a page")},
        {kCommandPageRight, kMoving, QT_TRANSLATE_NOOP("WindowCommand", "Move right by a page")},
        {kCommandZoomIn, kZoom, QT_TRANSLATE_NOOP("WindowCommand", "Zoom in")},
        {kCommandZoomOut, kZoom, QT_TRANSLATE_NOOP("WindowCommand", "Zoom out")},
        {kCommandPresetIn, kZoom, QT_TRANSLATE_NOOP("WindowCommand", "Zoom in to the next preset")},
        {kCommandPresetOut, kZoom,
         QT_TRANSLATE_NOOP("WindowCommand", "Zoom out to the next preset")},
        {kCommandZoomOne, kZoom, QT_TRANSLATE_NOOP("WindowCommand", "Zoom to scale 1")},
        {kCommandFitView, kZoom, QT_TRANSLATE_NOOP("WindowCommand", "Show the whole image")},
        {kCommandFitWindow, kZoom, QT_TRANSLATE_NOOP("WindowCommand", "Fit the window")},
        {kCommandFillScreen, kZoom, QT_TRANSLATE_NOOP("WindowCommand", "Fill the screen")},
        {kCommandFullScreen, kZoom, QT_TRANSLATE_NOOP("WindowCommand", "Full screen")},
        {kCommandShowAtOne, kZoom, QT_TRANSLATE_NOOP("WindowCommand", "Show at scale 1")},
        {kCommandRatioFirst + 0, kZoom, QT_TRANSLATE_NOOP("WindowCommand", "Show at 10:1")},
        {kCommandRatioFirst + 1, kZoom, QT_TRANSLATE_NOOP("WindowCommand", "Show at 9:1")},
        {kCommandRatioFirst + 2, kZoom, QT_TRANSLATE_NOOP("WindowCommand", "Show at 8:1")},
        {kCommandRatioFirst + 3, kZoom, QT_TRANSLATE_NOOP("WindowCommand", "Show at 7:1")},
        {kCommandRatioFirst + 4, kZoom, QT_TRANSLATE_NOOP("WindowCommand", "Show at 6:1")},
        {kCommandRatioFirst + 5, kZoom, QT_TRANSLATE_NOOP("WindowCommand", "Show at 5:1")},
        {kCommandRatioFirst + 6, kZoom, QT_TRANSLATE_NOOP("WindowCommand", "Show at 4:1")},
        {kCommandRatioFirst + 7, kZoom, QT_TRANSLATE_NOOP("WindowCommand", "Show at 3:1")},
        {kCommandRatioFirst + 8, kZoom, QT_TRANSLATE_NOOP("WindowCommand", "Show at 2:1")},
        {kCommandRatioFirst + 9, kZoom, QT_TRANSLATE_NOOP("WindowCommand", "Show at 1:1")},
        {kCommandRatioFirst + 10, kZoom, QT_TRANSLATE_NOOP("WindowCommand", "Show at 1:2")},
        {kCommandRatioFirst + 11, kZoom, QT_TRANSLATE_NOOP("WindowCommand", "Show at 1:3")},
        {kCommandRatioFirst + 12, kZoom, QT_TRANSLATE_NOOP("WindowCommand", "Show at 1:4")},
        {kCommandGrid, kView, QT_TRANSLATE_NOOP("WindowCommand", "Pixel grid")},
        {kCommandGridColor, kView, QT_TRANSLATE_NOOP("WindowCommand", "Colour of the pixel grid")},
        {kCommandRulers, kView, QT_TRANSLATE_NOOP("WindowCommand", "Rulers")},
        {kCommandSnapGrid, kView, QT_TRANSLATE_NOOP("WindowCommand", "Snap grid")},
        {kCommandSnapToGrid, kView, QT_TRANSLATE_NOOP("WindowCommand", "Snap to the grid")},
        {kCommandGuides, kView, QT_TRANSLATE_NOOP("WindowCommand", "Guides")},
        {kCommandSnapToGuides, kView, QT_TRANSLATE_NOOP("WindowCommand", "Snap to guides")},
        {kCommandClearGuides, kView, QT_TRANSLATE_NOOP("WindowCommand", "Remove all guides")},
        {kCommandChecker, kView, QT_TRANSLATE_NOOP("WindowCommand", "Checker behind transparency")},
        {kCommandNotationsShown, kView, QT_TRANSLATE_NOOP("WindowCommand", "Notes shown")},
        {kCommandNotations, kView, QT_TRANSLATE_NOOP("WindowCommand", "Edit notes")},
        {kCommandAnotherView, kView, QT_TRANSLATE_NOOP("WindowCommand", "Open another view")},
        {kCommandSameView, kView,
         QT_TRANSLATE_NOOP("WindowCommand", "Same zoom and place in all views")},
        {kCommandFrameMargins, kView, QT_TRANSLATE_NOOP("WindowCommand", "Record frame margins")},
        {kCommandToolEntire, kTools, QT_TRANSLATE_NOOP("WindowCommand", "Entire image")},
        {kCommandToolRectangle, kTools, QT_TRANSLATE_NOOP("WindowCommand", "Rectangle")},
        {kCommandToolNumericRectangle, kTools,
         QT_TRANSLATE_NOOP("WindowCommand", "Numeric rectangle")},
        {kCommandToolEllipse, kTools, QT_TRANSLATE_NOOP("WindowCommand", "Ellipse")},
        {kCommandToolPolygon, kTools, QT_TRANSLATE_NOOP("WindowCommand", "Polygon")},
        {kCommandToolPolyspline, kTools, QT_TRANSLATE_NOOP("WindowCommand", "Polyspline")},
        {kCommandToolPShape, kTools, QT_TRANSLATE_NOOP("WindowCommand", "P-Shape")},
        {kCommandToolPencil, kTools, QT_TRANSLATE_NOOP("WindowCommand", "Pencil")},
        {kCommandToolText, kTools, QT_TRANSLATE_NOOP("WindowCommand", "Text")},
        {kCommandToolWand, kTools, QT_TRANSLATE_NOOP("WindowCommand", "Wand")},
        {kCommandToolRedo, kTools, QT_TRANSLATE_NOOP("WindowCommand", "Re-do previous selection")},
        {kCommandToolMagnify, kTools, QT_TRANSLATE_NOOP("WindowCommand", "Magnify")},
        {kCommandMagnifyOnce, kTools, QT_TRANSLATE_NOOP("WindowCommand", "Magnify once")},
        {kCommandSelectMode, kTools,
         QT_TRANSLATE_NOOP("WindowCommand", "Apply as soon as selected")},
        {kCommandInvertSelections, kTools, QT_TRANSLATE_NOOP("WindowCommand", "Invert selections")},
        {kCommandOpenFigure, kTools,
         QT_TRANSLATE_NOOP("WindowCommand", "Open, unfilled selections")},
        {kCommandFilledFigure, kTools, QT_TRANSLATE_NOOP("WindowCommand", "Filled selections")},
        {kCommandOutlineObject, kTools, QT_TRANSLATE_NOOP("WindowCommand", "Outline object")},
        {kCommandBlending, kTools, QT_TRANSLATE_NOOP("WindowCommand", "Open blending dialog")},
        {kCommandEyepoint, kTools, QT_TRANSLATE_NOOP("WindowCommand", "Preview eyepoint")},
        {kCommandSelectEntire, kSelection,
         QT_TRANSLATE_NOOP("WindowCommand", "Select the entire image")},
        {kCommandSelectNone, kSelection, QT_TRANSLATE_NOOP("WindowCommand", "Select nothing")},
        {kCommandInvertMask, kSelection,
         QT_TRANSLATE_NOOP("WindowCommand", "Invert the selection")},
        {kCommandAntialias, kSelection,
         QT_TRANSLATE_NOOP("WindowCommand", "Antialias of the area tool")},
        {kCommandMaskJob, kSelection,
         QT_TRANSLATE_NOOP("WindowCommand", "Work the mask out in the background")},
        {kCommandCopy, kClipboard, QT_TRANSLATE_NOOP("WindowCommand", "Copy")},
        {kCommandCut, kClipboard, QT_TRANSLATE_NOOP("WindowCommand", "Cut")},
        {kCommandPaste, kClipboard, QT_TRANSLATE_NOOP("WindowCommand", "Paste")},
        {kCommandPasteAsNew, kClipboard, QT_TRANSLATE_NOOP("WindowCommand", "Paste as new image")},
        {kCommandPasteAsLayer, kClipboard, QT_TRANSLATE_NOOP("WindowCommand", "Paste as layer")},
        {kCommandClone, kImage, QT_TRANSLATE_NOOP("WindowCommand", "Clone")},
        {kCommandCloneScaled, kImage,
         QT_TRANSLATE_NOOP("WindowCommand", "Clone at the window's size")},
        {kCommandRestoreCrop, kImage,
         QT_TRANSLATE_NOOP("WindowCommand", "Restore crop to its origin")},
        {kCommandRename, kImage, QT_TRANSLATE_NOOP("WindowCommand", "Rename")},
        {kCommandInformation, kImage,
         QT_TRANSLATE_NOOP("WindowCommand", "Information on the image")},
        {kCommandQuarterTurn, kImage, QT_TRANSLATE_NOOP("WindowCommand", "Quarter turn clockwise")},
        {kCommandQuarterTurnLeft, kImage,
         QT_TRANSLATE_NOOP("WindowCommand", "Quarter turn anticlockwise")},
        {kCommandHalfTurn, kImage, QT_TRANSLATE_NOOP("WindowCommand", "Half turn")},
        {kCommandFlipHorizontal, kImage, QT_TRANSLATE_NOOP("WindowCommand", "Flip left and right")},
        {kCommandFlipVertical, kImage, QT_TRANSLATE_NOOP("WindowCommand", "Flip top and bottom")},
        {kCommandTurnUpright, kImage,
         QT_TRANSLATE_NOOP("WindowCommand", "Turn upright as the camera was held")},
        {kCommandDevelop, kImage,
         QT_TRANSLATE_NOOP("WindowCommand", "Develop a camera's raw picture")},
        {kCommandAssignBrush, kImage, QT_TRANSLATE_NOOP("WindowCommand", "Assign as brush")},
        {kCommandAssignOrigin, kImage, QT_TRANSLATE_NOOP("WindowCommand", "Assign as origin")},
        {kCommandMakeLayered, kLayers, QT_TRANSLATE_NOOP("WindowCommand", "Make layered")},
        {kCommandLayers, kLayers, QT_TRANSLATE_NOOP("WindowCommand", "Layer dialog")},
        {kCommandNewDialog, kFiles, QT_TRANSLATE_NOOP("WindowCommand", "New image")},
        {kCommandLoadDialog, kFiles, QT_TRANSLATE_NOOP("WindowCommand", "Load an image")},
        {kCommandLoadNext, kFiles,
         QT_TRANSLATE_NOOP("WindowCommand", "Load the folder's next image")},
        {kCommandSave, kFiles, QT_TRANSLATE_NOOP("WindowCommand", "Save")},
        {kCommandSaveAs, kFiles, QT_TRANSLATE_NOOP("WindowCommand", "Save as")},
        {kCommandSaveFlat, kFiles, QT_TRANSLATE_NOOP("WindowCommand", "Save a flattened copy")},
        {kCommandExportAnimation, kFiles,
         QT_TRANSLATE_NOOP("WindowCommand", "Export an animation")},
        {kCommandRevert, kFiles, QT_TRANSLATE_NOOP("WindowCommand", "Revert to the file")},
        {kCommandClose, kFiles, QT_TRANSLATE_NOOP("WindowCommand", "Close")},
        {kCommandCloseAll, kFiles, QT_TRANSLATE_NOOP("WindowCommand", "Close all")},
        {kCommandUndo, kHistory, QT_TRANSLATE_NOOP("WindowCommand", "Undo")},
        {kCommandRedo, kHistory, QT_TRANSLATE_NOOP("WindowCommand", "Redo")},
        {kCommandGroupUndo, kHistory, QT_TRANSLATE_NOOP("WindowCommand", "Group undo")},
        {kCommandGroupRedo, kHistory, QT_TRANSLATE_NOOP("WindowCommand", "Group redo")},
        {kCommandApply, kOperators, QT_TRANSLATE_NOOP("WindowCommand", "Apply the operator")},
        {kCommandApplyAgain, kOperators,
         QT_TRANSLATE_NOOP("WindowCommand", "Apply the last operator again")},
        {kCommandOperators, kOperators, QT_TRANSLATE_NOOP("WindowCommand", "Operator dialog")},
        {kCommandScriptEditor, kOperators, QT_TRANSLATE_NOOP("WindowCommand", "Script editor")},
        {kCommandRunScript, kOperators, QT_TRANSLATE_NOOP("WindowCommand", "Run the script")},
        {kCommandScriptDebug, kOperators,
         QT_TRANSLATE_NOOP("WindowCommand", "Script debug window")},
        {kCommandNextImage, kProgram, QT_TRANSLATE_NOOP("WindowCommand", "Next image")},
        {kCommandPreviousImage, kProgram, QT_TRANSLATE_NOOP("WindowCommand", "Previous image")},
        {kCommandPreferences, kProgram, QT_TRANSLATE_NOOP("WindowCommand", "Preferences")},
        {kCommandKeys, kProgram, QT_TRANSLATE_NOOP("WindowCommand", "Keys")},
        {kCommandQuit, kProgram, QT_TRANSLATE_NOOP("WindowCommand", "Quit")},
    };
}

QList<WindowCommand> allCommands()
{
    QList<WindowCommand> all = namedCommands();
    const auto end = std::find_if(all.begin(), all.end(),
                                  [](const WindowCommand &c) { return c.group == kHistory; });
    int at = int(end - all.begin()); // behind the other commands on files
    for (int number = kCommandRecentFirst; number <= kCommandRecentLast; ++number)
        all.insert(at++, {number, kFiles, QT_TRANSLATE_NOOP("WindowCommand", "Recent file %1"),
                          number - kCommandRecentFirst + 1});
    return all;
}
} // namespace

QString WindowCommand::groupName() const
{
    return QCoreApplication::translate("WindowCommand", group);
}

QString WindowCommand::title() const
{
    const QString text = QCoreApplication::translate("WindowCommand", name);
    return place > 0 ? text.arg(place) : text;
}

const QList<WindowCommand> &windowCommands()
{
    static const QList<WindowCommand> commands = allCommands();
    return commands;
}

const WindowCommand *windowCommand(int number)
{
    const QList<WindowCommand> &all = windowCommands();
    const auto found = std::find_if(
        all.begin(), all.end(), [number](const WindowCommand &c) { return c.number == number; });
    return found == all.end() ? nullptr : &*found;
}
