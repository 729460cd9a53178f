// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "views/keytable.h"

#include <QByteArray>
#include <QStringList>

/// A longer text is no key table.
constexpr int kMostKeyTextBytes = 1 << 20;

/// The key table as text, for files and for the settings: every command with its keys, one a
/// line. docs/keys.md describes it.
QByteArray keysToText(const KeyTable &table);

/// Reads what keysToText wrote, or people. A line that makes no sense is left out and told of
/// in `problems`, which may be null; commands that the text does not name get those of their
/// default keys that are still free. False, with `into` as it was and the reason in
/// `problems`, if the text is no key table.
bool keysFromText(const QByteArray &text, KeyTable *into, QStringList *problems);
