// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QKeySequence>
#include <QList>
#include <QString>

/// A window command that exists; the numbers are fixed.
struct WindowCommand {
    int number;
    const char *group; ///< of the key editor; marked for translation, as is the name
    const char *name;
    int place = 0; ///< stands for "%1" in the name, if not 0

    QString groupName() const;
    /// The name as menus and the key editor show it.
    QString title() const;
};
/// All of them, those of a group one after another.
const QList<WindowCommand> &windowCommands();
/// Null if there is no command of this number.
const WindowCommand *windowCommand(int number);

/// Binds keys to window command numbers. A key is a Qt key with its modifiers.
class KeyTable
{
public:
    /// Of the commands and of the text form; see keysToText.
    static constexpr int kVersion = 1;

    /// The default bindings: those of this program and, beside them, desktop habits.
    static KeyTable defaults();
    /// The form in which a key is kept. How a sign is reached is not part of it: the keypad
    /// and the Shift that a keyboard needs for a sign do not count.
    static int plainKey(int keyWithModifiers);
    /// Whether a key in plain form is one that can be pressed and written down.
    static bool isBindable(int key);
    /// Whether this key alone is but a modifier or a lock.
    static bool isModifier(int code);

    /// The command of a key, 0 if it has none.
    int command(int key, Qt::KeyboardModifiers modifiers) const;
    /// The command of a key in plain form, 0 if it has none.
    int commandAt(int key) const;
    /// The first key of a command as key | modifiers, 0 if it has none.
    int keyOf(int commandNumber) const;
    /// All keys of a command, the one that menus show first.
    QList<int> keysOf(int commandNumber) const;
    QKeySequence sequenceOf(int commandNumber) const;
    /// Gives a key a command, in place of the one it had; 0 takes it away.
    void bind(int keyWithModifiers, int commandNumber);
    /// Makes these the keys of a command, in this order, in place of those it had; other
    /// commands lose them.
    void setKeys(int commandNumber, const QList<int> &keys);

    struct Binding {
        int key;
        int command;
        bool operator==(const Binding &other) const = default;
    };
    const QList<Binding> &bindings() const { return list; }

private:
    QList<Binding> list;
};

/// The live table of the program.
KeyTable &keyTable();
