// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/keytable.h"

#include "views/imgwindow.h"

#include <QChar>

#include <algorithm>

namespace
{
constexpr int kShift = int(Qt::SHIFT), kCtrl = int(Qt::CTRL), kAlt = int(Qt::ALT);
constexpr int kModifiers = int(Qt::SHIFT) | int(Qt::CTRL) | int(Qt::ALT) | int(Qt::META);

/// A sign that a keyboard may put behind Shift: the sign counts, not how it is reached.
bool isSign(int key)
{
    return key > Qt::Key_Space && key < Qt::Key_Escape && QChar::isPrint(uint(key)) &&
           !QChar::isLetterOrNumber(uint(key));
}

bool isDigit(int key)
{
    return key >= Qt::Key_0 && key <= Qt::Key_9;
}

constexpr int kRecentKeys = 9; ///< the digits, without 0

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
    {kCtrl | Qt::Key_1, kCommandShowAtOne},
    {Qt::Key_Plus, kCommandZoomIn},
    {Qt::Key_Equal, kCommandZoomIn},
    {kCtrl | Qt::Key_Plus, kCommandZoomIn},
    {kCtrl | Qt::Key_Equal, kCommandZoomIn},
    {Qt::Key_Minus, kCommandZoomOut},
    {kCtrl | Qt::Key_Minus, kCommandZoomOut},
    {Qt::Key_0, kCommandFitView},
    {Qt::Key_F, kCommandFitWindow},
    {kShift | Qt::Key_F, kCommandFillScreen},
    {Qt::Key_F1, kCommandToolEntire},
    {Qt::Key_F2, kCommandToolRectangle},
    {Qt::Key_F3, kCommandToolNumericRectangle},
    {Qt::Key_F4, kCommandToolEllipse},
    {Qt::Key_F5, kCommandToolPolygon},
    {Qt::Key_F6, kCommandToolPolyspline},
    {Qt::Key_F7, kCommandToolPShape},
    {Qt::Key_F8, kCommandToolPencil},
    {Qt::Key_F9, kCommandToolText},
    {Qt::Key_T, kCommandToolText},
    {Qt::Key_F10, kCommandToolWand},
    {Qt::Key_F11, kCommandToolRedo},
    {Qt::Key_F12, kCommandToolMagnify},
    {Qt::Key_Z, kCommandMagnifyOnce},
    {kShift | Qt::Key_F1, kCommandEyepoint},
    {kShift | Qt::Key_F2, kCommandSelectMode},
    {kShift | Qt::Key_F3, kCommandInvertSelections},
    {kShift | Qt::Key_F4, kCommandOpenFigure},
    {kShift | Qt::Key_F5, kCommandFilledFigure},
    {kShift | Qt::Key_F6, kCommandOutlineObject},
    {kShift | Qt::Key_F7, kCommandBlending},
    {kCtrl | Qt::Key_A, kCommandSelectEntire},
    {kCtrl | Qt::Key_D, kCommandSelectNone},
    {kCtrl | kShift | Qt::Key_A, kCommandSelectNone},
    {kCtrl | Qt::Key_I, kCommandInvertMask},
    {kCtrl | kShift | Qt::Key_I, kCommandInvertMask},
    {Qt::Key_A, kCommandAntialias},
    {kShift | Qt::Key_M, kCommandMaskJob},
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
    {kCtrl | kAlt | Qt::Key_Semicolon, kCommandClearGuides},
    {kCtrl | kShift | Qt::Key_N, kCommandNotations},
    {kShift | Qt::Key_N, kCommandNotationsShown},
    {Qt::Key_K, kCommandChecker},
    {kCtrl | Qt::Key_F11, kCommandFullScreen},
    {kShift | Qt::Key_V, kCommandSameView},
    {Qt::Key_I, kCommandInformation},
    {kCtrl | Qt::Key_J, kCommandClone},
    {kCtrl | kShift | Qt::Key_J, kCommandCloneScaled},
    {kShift | Qt::Key_L, kCommandMakeLayered},
    {Qt::Key_B, kCommandAssignBrush},
    {kShift | Qt::Key_O, kCommandAssignOrigin},
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
    {kAlt | Qt::Key_Q, kCommandHalfTurn},
    {kShift | Qt::Key_X, kCommandFlipHorizontal},
    {kShift | Qt::Key_Y, kCommandFlipVertical},
    {kCtrl | kAlt | Qt::Key_U, kCommandTurnUpright},
    {kCtrl | kShift | Qt::Key_D, kCommandDevelop},
    {kCtrl | kAlt | Qt::Key_S, kCommandSaveFlat},
    {kCtrl | kShift | Qt::Key_E, kCommandExportAnimation},
    {kCtrl | kShift | Qt::Key_O, kCommandLoadNext},
    {kCtrl | Qt::Key_Tab, kCommandNextImage},
    {kCtrl | Qt::Key_PageDown, kCommandNextImage},
    {kCtrl | kShift | Qt::Key_Backtab, kCommandPreviousImage},
    {kCtrl | Qt::Key_PageUp, kCommandPreviousImage},
    {kCtrl | kShift | Qt::Key_Return, kCommandApplyAgain},
    {kCtrl | kShift | Qt::Key_Enter, kCommandApplyAgain},
    {Qt::Key_PageUp, kCommandPageUp},
    {Qt::Key_PageDown, kCommandPageDown},
    {kShift | Qt::Key_PageUp, kCommandPageLeft},
    {kShift | Qt::Key_PageDown, kCommandPageRight},
    {kCtrl | Qt::Key_Comma, kCommandPreferences},
    {kCtrl | Qt::Key_K, kCommandKeys},
    {Qt::Key_L, kCommandLayers},
    {Qt::Key_O, kCommandOperators},
    {kCtrl | Qt::Key_E, kCommandScriptEditor},
    {kCtrl | Qt::Key_F5, kCommandRunScript},
    {kCtrl | Qt::Key_F9, kCommandScriptDebug},
    {kCtrl | kShift | Qt::Key_W, kCommandCloseAll},
    {kCtrl | Qt::Key_Q, kCommandQuit},
    {Qt::Key_BracketRight, kCommandPresetIn},
    {Qt::Key_BracketLeft, kCommandPresetOut},
    {Qt::Key_2, kCommandRatioFirst + 8},
    {Qt::Key_3, kCommandRatioFirst + 7},
    {Qt::Key_4, kCommandRatioFirst + 6},
    {Qt::Key_5, kCommandRatioFirst + 5},
    {Qt::Key_6, kCommandRatioFirst + 4},
    {Qt::Key_7, kCommandRatioFirst + 3},
    {Qt::Key_8, kCommandRatioFirst + 2},
    {Qt::Key_9, kCommandRatioFirst + 1},
    {kCtrl | Qt::Key_2, kCommandRatioFirst + 10},
    {kCtrl | Qt::Key_3, kCommandRatioFirst + 11},
    {kCtrl | Qt::Key_4, kCommandRatioFirst + 12},
    {kCtrl | Qt::Key_O, kCommandLoadDialog},
    {kCtrl | Qt::Key_N, kCommandNewDialog},
};
} // namespace

KeyTable KeyTable::defaults()
{
    KeyTable table;
    for (const Binding &binding : kDefaults)
        table.list << binding;
    for (int i = 0; i < kRecentKeys; ++i)
        table.list << Binding{kAlt | (Qt::Key_1 + i), kCommandRecentFirst + i};
    return table;
}

int KeyTable::plainKey(int keyWithModifiers)
{
    const int code = keyWithModifiers & ~int(Qt::KeyboardModifierMask);
    const int modifiers = keyWithModifiers & kModifiers;
    if (isSign(code))
        return code | (modifiers & ~kShift);
    // Shift with Tab is another key to some keyboards, and to others it is not.
    const bool backtab = code == Qt::Key_Backtab || (code == Qt::Key_Tab && (modifiers & kShift));
    return backtab ? Qt::Key_Backtab | modifiers | kShift : code | modifiers;
}

bool KeyTable::isModifier(int code)
{
    return (code >= Qt::Key_Shift && code <= Qt::Key_ScrollLock) ||
           (code >= Qt::Key_Super_L && code <= Qt::Key_Hyper_R) || code == Qt::Key_AltGr ||
           code == Qt::Key_Mode_switch;
}

bool KeyTable::isBindable(int key)
{
    const int code = key & ~int(Qt::KeyboardModifierMask);
    const bool blank = code < Qt::Key_Escape && code != Qt::Key_Space &&
                       (!QChar::isPrint(uint(code)) || QChar::isSpace(uint(code)));
    if (code <= 0 || blank || code == Qt::Key_unknown || isModifier(code) || plainKey(key) != key)
        return false;
    const QString text = QKeySequence(key).toString(QKeySequence::PortableText);
    const QKeySequence read = QKeySequence::fromString(text, QKeySequence::PortableText);
    return !text.isEmpty() && read.count() == 1 && read[0] == key;
}

int KeyTable::commandAt(int key) const
{
    const auto found =
        std::find_if(list.begin(), list.end(), [key](const Binding &b) { return b.key == key; });
    return found == list.end() ? 0 : found->command;
}

int KeyTable::command(int key, Qt::KeyboardModifiers modifiers) const
{
    const int wanted = plainKey(key | int(modifiers));
    const int bound = commandAt(wanted);
    // There are keyboards with the digits behind Shift.
    return bound == 0 && isDigit(key) && (wanted & kShift) ? commandAt(wanted & ~kShift) : bound;
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

QList<int> KeyTable::keysOf(int commandNumber) const
{
    QList<int> keys;
    for (const Binding &binding : list)
        if (binding.command == commandNumber)
            keys << binding.key;
    return keys;
}

void KeyTable::bind(int keyWithModifiers, int commandNumber)
{
    const int key = plainKey(keyWithModifiers);
    list.erase(
        std::remove_if(list.begin(), list.end(), [key](const Binding &b) { return b.key == key; }),
        list.end());
    if (commandNumber > 0)
        list << Binding{key, commandNumber};
}

void KeyTable::setKeys(int commandNumber, const QList<int> &keys)
{
    for (const int key : keysOf(commandNumber))
        bind(key, 0);
    for (const int key : keys)
        bind(key, commandNumber);
}

KeyTable &keyTable()
{
    static KeyTable table = KeyTable::defaults();
    return table;
}
