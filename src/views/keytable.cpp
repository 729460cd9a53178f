// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/keytable.h"

#include "views/imgwindow.h"

#include <QtGlobal>

#include <algorithm>

namespace
{
constexpr int kShift = int(Qt::SHIFT), kCtrl = int(Qt::CTRL), kAlt = int(Qt::ALT);
constexpr int kModifiers = int(Qt::SHIFT) | int(Qt::CTRL) | int(Qt::ALT) | int(Qt::META);

/// A sign that a keyboard may put behind Shift: the sign counts, not how it is reached.
bool isSign(int key)
{
    return key > Qt::Key_Space && key < 0x7F && !(key >= Qt::Key_A && key <= Qt::Key_Z) &&
           !(key >= Qt::Key_0 && key <= Qt::Key_9);
}

/// For each command its own key first: menus show that one and send it.
constexpr KeyTable::Binding kDefaults[] = {
    {Qt::Key_U, kCommandUndo},
    {kCtrl | Qt::Key_Z, kCommandUndo},
    {Qt::Key_R, kCommandRedo},
    {kCtrl | kShift | Qt::Key_Z, kCommandRedo},
    {kCtrl | Qt::Key_Y, kCommandRedo},
    {kShift | Qt::Key_U, kCommandGroupUndo},
    {kShift | Qt::Key_R, kCommandGroupRedo},
    {kCtrl | kShift | Qt::Key_R, kCommandRevert},
    {Qt::Key_C, kCommandCentre},
    {kCtrl | Qt::Key_0, kCommandZoomOne},
    {Qt::Key_Home, kCommandHome},
    {Qt::Key_Up, kCommandUp10},
    {kShift | Qt::Key_Up, kCommandUp},
    {Qt::Key_Down, kCommandDown10},
    {kShift | Qt::Key_Down, kCommandDown},
    {Qt::Key_Left, kCommandLeft10},
    {kShift | Qt::Key_Left, kCommandLeft},
    {Qt::Key_Right, kCommandRight10},
    {kShift | Qt::Key_Right, kCommandRight},
    {Qt::Key_G, kCommandGrid},
    {kShift | Qt::Key_G, kCommandGridColor},
    {Qt::Key_1, kCommandShowAtOne},
    {Qt::Key_Plus, kCommandZoomIn},
    {Qt::Key_Equal, kCommandZoomIn},
    {kCtrl | Qt::Key_Plus, kCommandZoomIn},
    {kCtrl | Qt::Key_Equal, kCommandZoomIn},
    {Qt::Key_Minus, kCommandZoomOut},
    {kCtrl | Qt::Key_Minus, kCommandZoomOut},
    {Qt::Key_0, kCommandFitView},
    {Qt::Key_F, kCommandFitWindow},
    {kShift | Qt::Key_F, kCommandFillScreen},
    {kCtrl | Qt::Key_A, kCommandSelectEntire},
    {Qt::Key_F1, kCommandSelectEntire},
    {kCtrl | Qt::Key_D, kCommandSelectNone},
    {kCtrl | Qt::Key_I, kCommandInvertMask},
    {kCtrl | Qt::Key_C, kCommandCopy},
    {kCtrl | Qt::Key_X, kCommandCut},
    {kCtrl | Qt::Key_V, kCommandPaste},
    {kCtrl | kShift | Qt::Key_V, kCommandPasteAsNew},
    {kCtrl | kAlt | Qt::Key_V, kCommandPasteAsLayer},
    {kCtrl | Qt::Key_R, kCommandRulers},
    {kCtrl | Qt::Key_G, kCommandSnapGrid},
    {kCtrl | kShift | Qt::Key_G, kCommandSnapToGrid},
    {Qt::Key_Semicolon, kCommandGuides},
    {kCtrl | Qt::Key_Semicolon, kCommandSnapToGuides},
    {kCtrl | kShift | Qt::Key_N, kCommandNotations},
    {kShift | Qt::Key_N, kCommandNotationsShown},
    {Qt::Key_K, kCommandChecker},
    {Qt::Key_F11 | kCtrl, kCommandFullScreen},
    {kShift | Qt::Key_V, kCommandSameView},
    {Qt::Key_I, kCommandInformation},
    {kCtrl | Qt::Key_J, kCommandClone},
    {kCtrl | kShift | Qt::Key_J, kCommandCloneScaled},
    {kShift | Qt::Key_B, kCommandRestoreCrop},
    {Qt::Key_N, kCommandRename},
    {kCtrl | Qt::Key_W, kCommandClose},
    {Qt::Key_V, kCommandAnotherView},
    {kCtrl | Qt::Key_S, kCommandSave},
    {kCtrl | kShift | Qt::Key_S, kCommandSaveAs},
    {kCtrl | Qt::Key_Return, kCommandApply},
    {kCtrl | Qt::Key_Enter, kCommandApply},
    {Qt::Key_Q, kCommandQuarterTurn},
    {kShift | Qt::Key_Q, kCommandQuarterTurnLeft},
    {kShift | Qt::Key_H, kCommandFlipHorizontal},
    {kCtrl | kAlt | Qt::Key_S, kCommandSaveFlat},
    {kCtrl | kShift | Qt::Key_O, kCommandLoadNext},
    {kCtrl | Qt::Key_Tab, kCommandNextImage},
    {kCtrl | Qt::Key_PageDown, kCommandNextImage},
    {kCtrl | kShift | Qt::Key_Backtab, kCommandPreviousImage},
    {kCtrl | Qt::Key_PageUp, kCommandPreviousImage},
    {kCtrl | kShift | Qt::Key_Return, kCommandApplyAgain},
    {Qt::Key_PageUp, kCommandPageUp},
    {Qt::Key_PageDown, kCommandPageDown},
    {kShift | Qt::Key_PageUp, kCommandPageLeft},
    {kShift | Qt::Key_PageDown, kCommandPageRight},
    {kCtrl | Qt::Key_Comma, kCommandPreferences},
    {kCtrl | Qt::Key_K, kCommandKeys},
    {Qt::Key_L, kCommandLayers},
    {Qt::Key_O, kCommandOperators},
    {kCtrl | kShift | Qt::Key_W, kCommandCloseAll},
    {kCtrl | Qt::Key_Q, kCommandQuit},
    {Qt::Key_BracketRight, kCommandPresetIn},
    {Qt::Key_BracketLeft, kCommandPresetOut},
    {Qt::Key_2, kCommandRatioFirst + 8},
    {Qt::Key_3, kCommandRatioFirst + 7},
    {Qt::Key_4, kCommandRatioFirst + 6},
    {Qt::Key_5, kCommandRatioFirst + 5},
    {kCtrl | Qt::Key_O, kCommandLoadDialog},
    {kCtrl | Qt::Key_N, kCommandNewDialog},
};
} // namespace

const QList<WindowCommand> &windowCommands()
{
    static const QList<WindowCommand> commands = {
        {kCommandCentre, QT_TRANSLATE_NOOP("WindowCommand", "Move to the middle")},
        {kCommandZoomOne, QT_TRANSLATE_NOOP("WindowCommand", "Zoom to scale 1")},
        {kCommandHome, QT_TRANSLATE_NOOP("WindowCommand", "Move to the top left")},
        {kCommandUp10, QT_TRANSLATE_NOOP("WindowCommand", "Pan up by 10")},
        {kCommandUp, QT_TRANSLATE_NOOP("WindowCommand", "Pan up")},
        {kCommandDown10, QT_TRANSLATE_NOOP("WindowCommand", "Pan down by 10")},
        {kCommandDown, QT_TRANSLATE_NOOP("WindowCommand", "Pan down")},
        {kCommandLeft10, QT_TRANSLATE_NOOP("WindowCommand", "Pan left by 10")},
        {kCommandLeft, QT_TRANSLATE_NOOP("WindowCommand", "Pan left")},
        {kCommandRight10, QT_TRANSLATE_NOOP("WindowCommand", "Pan right by 10")},
        {kCommandRight, QT_TRANSLATE_NOOP("WindowCommand", "Pan right")},
        {kCommandGridColor, QT_TRANSLATE_NOOP("WindowCommand", "Grid colour")},
        {kCommandGrid, QT_TRANSLATE_NOOP("WindowCommand", "Pixel grid")},
        {kCommandUndo, QT_TRANSLATE_NOOP("WindowCommand", "Undo")},
        {kCommandShowAtOne, QT_TRANSLATE_NOOP("WindowCommand", "Show at 1:1")},
        {kCommandZoomIn, QT_TRANSLATE_NOOP("WindowCommand", "Zoom in")},
        {kCommandZoomOut, QT_TRANSLATE_NOOP("WindowCommand", "Zoom out")},
        {kCommandFitView, QT_TRANSLATE_NOOP("WindowCommand", "Show the whole image")},
        {kCommandSelectEntire, QT_TRANSLATE_NOOP("WindowCommand", "Select the entire image")},
        {kCommandSelectNone, QT_TRANSLATE_NOOP("WindowCommand", "Select nothing")},
        {kCommandInvertMask, QT_TRANSLATE_NOOP("WindowCommand", "Invert the selection")},
        {kCommandClone, QT_TRANSLATE_NOOP("WindowCommand", "Clone")},
        {kCommandCloneScaled, QT_TRANSLATE_NOOP("WindowCommand", "Clone at the window's size")},
        {kCommandRedo, QT_TRANSLATE_NOOP("WindowCommand", "Redo")},
        {kCommandRestoreCrop, QT_TRANSLATE_NOOP("WindowCommand", "Restore crop to its origin")},
        {kCommandRename, QT_TRANSLATE_NOOP("WindowCommand", "Rename")},
        {kCommandClose, QT_TRANSLATE_NOOP("WindowCommand", "Close")},
        {kCommandAnotherView, QT_TRANSLATE_NOOP("WindowCommand", "Open another view")},
        {kCommandSave, QT_TRANSLATE_NOOP("WindowCommand", "Save")},
        {kCommandSaveAs, QT_TRANSLATE_NOOP("WindowCommand", "Save as")},
        {kCommandApply, QT_TRANSLATE_NOOP("WindowCommand", "Apply the operator")},
        {kCommandQuarterTurn, QT_TRANSLATE_NOOP("WindowCommand", "Quarter turn clockwise")},
        {kCommandFitWindow, QT_TRANSLATE_NOOP("WindowCommand", "Fit the window")},
        {kCommandRevert, QT_TRANSLATE_NOOP("WindowCommand", "Revert to the file")},
        {kCommandLoadDialog, QT_TRANSLATE_NOOP("WindowCommand", "Load an image")},
        {kCommandNewDialog, QT_TRANSLATE_NOOP("WindowCommand", "New image")},
        {kCommandGroupUndo, QT_TRANSLATE_NOOP("WindowCommand", "Group undo")},
        {kCommandFillScreen, QT_TRANSLATE_NOOP("WindowCommand", "Fill the screen")},
        {kCommandGroupRedo, QT_TRANSLATE_NOOP("WindowCommand", "Group redo")},
        {kCommandFrameMargins, QT_TRANSLATE_NOOP("WindowCommand", "Record frame margins")},
    };
    return commands;
}

KeyTable KeyTable::defaults()
{
    KeyTable table;
    for (const Binding &binding : kDefaults)
        table.list << binding;
    return table;
}

int KeyTable::command(int key, Qt::KeyboardModifiers modifiers) const
{
    int wanted = key | (int(modifiers) & kModifiers);
    if (isSign(key))
        wanted &= ~kShift;
    const auto found = std::find_if(list.begin(), list.end(),
                                    [wanted](const Binding &b) { return b.key == wanted; });
    return found == list.end() ? 0 : found->command;
}

int KeyTable::keyOf(int commandNumber) const
{
    const auto found = std::find_if(list.begin(), list.end(), [commandNumber](const Binding &b) {
        return b.command == commandNumber;
    });
    return found == list.end() ? 0 : found->key;
}

QKeySequence KeyTable::sequenceOf(int commandNumber) const
{
    const int key = keyOf(commandNumber);
    return key ? QKeySequence(key) : QKeySequence();
}

void KeyTable::bind(int keyWithModifiers, int commandNumber)
{
    const int key =
        isSign(keyWithModifiers & ~kModifiers) ? keyWithModifiers & ~kShift : keyWithModifiers;
    list.erase(
        std::remove_if(list.begin(), list.end(), [key](const Binding &b) { return b.key == key; }),
        list.end());
    if (commandNumber > 0)
        list << Binding{key, commandNumber};
}

KeyTable &keyTable()
{
    static KeyTable table = KeyTable::defaults();
    return table;
}
