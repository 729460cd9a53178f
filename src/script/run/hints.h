// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

class OperatorTable;
class exParser;

/// Whether a text is a word that could name something: a letter, then letters, digits, "_".
bool isPlainWord(const QString &text);
/// Keywords, operators, verbs and present variables. `table` may be null.
QStringList knownWords(const exParser &parser, const OperatorTable *table);
/// The known word most like one that is not known; empty if none is near.
QString nearestWord(const QStringList &known, const QString &word);
