// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QKeySequence>
#include <QList>
#include <QString>

/// Names of the window commands that exist; the numbers are fixed.
struct WindowCommand {
    int number;
    const char *name; ///< marked for translation, as menus and the key list show it
};
const QList<WindowCommand> &windowCommands();

/// Binds keys to window command numbers. A key is a Qt key with its modifiers.
class KeyTable
{
public:
    /// The default bindings: those of this program and, beside them, desktop habits.
    static KeyTable defaults();

    /// The command of a key, 0 if it has none.
    int command(int key, Qt::KeyboardModifiers modifiers) const;
    /// The first key of a command as key | modifiers, 0 if it has none.
    int keyOf(int commandNumber) const;
    QKeySequence sequenceOf(int commandNumber) const;
    /// Gives a key a command, in place of the one it had; 0 takes it away.
    void bind(int keyWithModifiers, int commandNumber);

    struct Binding {
        int key;
        int command;
    };
    const QList<Binding> &bindings() const { return list; }

private:
    QList<Binding> list;
};

/// The live table of the program.
KeyTable &keyTable();
