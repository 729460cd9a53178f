// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

class QWidget;

/// What names and paths mean in file dialogs, whoever's dialog it is.

constexpr int kLongestPath = 4096;

/// Whether a text can be an absolute path at all. Asks no disk.
bool isPlausiblePath(const QString &path);
/// "~" and "~/…" under the person's home; other texts as they are.
QString expandHome(const QString &typed);
/// The clean absolute path of what was typed while `folder` was shown: assigns and "~" are
/// resolved, everything else is relative to the folder. Empty for an empty text.
QString absolutePathOf(const QString &typed, const QString &folder);
/// The folder itself, or the nearest one above it that exists, or home.
QString nearestFolder(const QString &folder);

/// What a person means who typed a whole name over the selected part of "old.png", so that
/// "new.jpg.png" stands there: "new.jpg". Only extensions that the filters offer count.
QString withoutLeftover(const QString &name, const QStringList &filters);

/// The patterns of one filter ("Text (*.a *.b)"): what stands in its last brackets.
QStringList patternsOfFilter(const QString &filter);
/// The extensions of one filter, each with its dot; none if it takes every name.
QStringList extensionsOfFilter(const QString &filter);
/// The extension that a name ends in, with its dot, if it is one of `filters` or of any
/// form that the program knows. Empty otherwise: the end of "notes.2024" is none.
QString knownExtension(const QString &name, const QStringList &filters);
/// A name to save under: where its extension is not one of the filter's, the filter's first
/// takes the place of a known one or is put behind the name.
QString withExtension(const QString &name, const QString &filter, const QStringList &filters);

/// Why no file can be written under a path, in words for a person; empty if one can.
QString saveRefusal(const QString &path);
/// Asks whether a file that exists is to be replaced.
bool askReplace(QWidget *parent, const QString &path);
