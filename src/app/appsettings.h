// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

class QSettings;
class Workspace;

/// Reads every stored setting of the workspace. A value that makes no sense is left out,
/// so the default stays, and the debug channel tells of it.
void loadWorkspaceSettings(QSettings &store, Workspace &into);
void saveWorkspaceSettings(QSettings &store, const Workspace &from);

/// A text of the store; null if there is none, or anything but a text of a sensible length.
QString storedText(const QSettings &store, const QString &key);
/// A list of texts of the store, likewise.
QStringList storedTexts(const QSettings &store, const QString &key);

/// Writes the settings to a file, all or nothing. What belongs to this machine alone is left
/// out: how the last run ended, places of windows, files used last, where the version check
/// asks. False with the reason if that failed; an old file then stands.
bool exportSettings(const QSettings &store, const QString &path, QString *error);
/// Takes the settings of a file over into the store, but for those that exportSettings leaves
/// out. `problems` tells of each line that was not taken. False with the reason, and nothing
/// taken, if the file cannot be read or is none of settings.
bool importSettings(const QString &path, QSettings *store, QStringList *problems, QString *error);
